#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalmor::test {

// The values of one group code (" 10", " 42", ...) in written order, each followed by '|'.
inline std::string GroupValues(std::string_view bytes, std::string_view code) {
  std::string values;
  std::vector<std::string_view> lines;
  for (std::size_t end; (end = bytes.find("\r\n")) != std::string_view::npos;) {
    lines.push_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 2);
  }
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    if (lines[i] == code) {
      values.append(lines[i + 1]).push_back('|');
    }
  }
  return values;
}

}  // namespace kalmor::test
