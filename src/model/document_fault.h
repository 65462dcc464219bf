#pragma once

#include <string>
#include <string_view>

namespace kalmor::model::detail {

// A complaint about a design document: where (a JSON pointer) and what.
struct DocumentFault {
  std::string pointer;
  std::string message;
};

// A name as a complaint quotes it.
inline std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

}  // namespace kalmor::model::detail
