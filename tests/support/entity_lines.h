#pragma once

// DXF entity records condensed to one line each, so that expectations stay readable while
// still pinning every written value: "TYPE LAYER code=value ...", reals as printed without
// their padding, Z coordinates (always "0.0") left out. Bytes that are not CR LF pairs of
// group code and value come back as a single "malformed" line.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace kalmor::test {

inline std::vector<std::string> EntityLines(std::string_view bytes) {
  std::vector<std::string> lines;
  std::vector<std::string_view> parts;
  while (!bytes.empty()) {
    const std::size_t end = bytes.find("\r\n");
    if (end == std::string_view::npos) {
      return {"malformed: no CR LF"};
    }
    parts.push_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 2);
  }
  if (parts.size() % 2 != 0) {
    return {"malformed: odd line count"};
  }
  for (std::size_t i = 0; i < parts.size(); i += 2) {
    std::string_view code = parts[i];
    std::string_view value = parts[i + 1];
    code.remove_prefix(std::min(code.find_first_not_of(' '), code.size()));
    if (code == "0") {
      lines.emplace_back(value);
      continue;
    }
    if (lines.empty()) {
      return {"malformed: group before the first record"};
    }
    if (code.size() == 2 && code[0] == '3') {
      continue;
    }
    if (code != "1") {  // text values keep their blanks
      value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    }
    lines.back() += ' ';
    if (code != "8") {
      lines.back().append(code).append("=");
    }
    lines.back().append(value);
  }
  return lines;
}

}  // namespace kalmor::test
