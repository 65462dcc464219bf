#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kalmor::model::detail {

// A complaint about a design document: where (a JSON pointer) and what.
struct DocumentFault {
  std::string pointer;
  std::string message;
};

// `text` as a complaint quotes it: whole when short, else its first few dozen bytes and "...",
// so that a name of megabytes gives a message of a line.
inline std::string Abbreviated(std::string_view text) {
  constexpr std::size_t kLongest = 64;
  if (text.size() <= kLongest) {
    return std::string(text);
  }
  std::size_t cut = kLongest - 3;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) {
    --cut;  // not inside a character
  }
  return std::string(text.substr(0, cut)) + "...";
}

// A name as a complaint quotes it.
inline std::string Quoted(std::string_view text) {
  return "\"" + Abbreviated(text) + "\"";
}

}  // namespace kalmor::model::detail
