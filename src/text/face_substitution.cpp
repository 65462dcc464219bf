#include "text/face_substitution.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace kalmor::text_detail {
namespace {

constexpr std::pair<std::string_view, std::string_view> kSubstitutes[] = {
    {"Arial", kFallbackFamily},
    {"Helvetica", kFallbackFamily},
    {"MS Sans Serif", kFallbackFamily},
    {"Microsoft Sans Serif", kFallbackFamily},
    {"Segoe UI", kFallbackFamily},
    {"Tahoma", kFallbackFamily},
    {"Arial Narrow", "Liberation Sans Narrow"},
    {"Times New Roman", "Liberation Serif"},
    {"Times", "Liberation Serif"},
    {"MS Serif", "Liberation Serif"},
    {"Courier New", "Liberation Mono"},
    {"Courier", "Liberation Mono"},
};

bool SameFace(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

}  // namespace

std::string_view SubstituteFace(std::string_view face) {
  for (const auto& [name, family] : kSubstitutes) {
    if (SameFace(face, name)) {
      return family;
    }
  }
  return face;
}

}  // namespace kalmor::text_detail
