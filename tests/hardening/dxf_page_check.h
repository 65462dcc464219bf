#pragma once

// What every page file of the export must be, whatever the design: the header, group code and
// value lines in pairs ending in CR LF, every real value a finite number, and the end-of-file
// record last. A NaN or an infinity in a coordinate is a drawing silently broken.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

namespace kalmor::test {

// Empty when `dxf` is a whole page file, else what is wrong with it and where.
inline std::string DxfPageProblem(std::string_view dxf) {
  constexpr std::string_view kHead =
      " 0\r\nSECTION\r\n 2\r\nHEADER\r\n 9\r\n$ACADVER\r\n 1\r\nAC1009\r\n 0\r\nENDSEC\r\n";
  constexpr std::string_view kTail = " 0\r\nENDSEC\r\n 0\r\nEOF\r\n";
  if (!dxf.starts_with(kHead)) {
    return "the header is missing";
  }
  if (!dxf.ends_with(kTail)) {
    return "the end-of-file record is missing";
  }
  std::size_t line = 1;
  for (std::string_view rest = dxf; !rest.empty(); line += 2) {
    const std::size_t codeEnd = rest.find("\r\n");
    const std::size_t valueEnd =
        codeEnd == std::string_view::npos ? codeEnd : rest.find("\r\n", codeEnd + 2);
    if (valueEnd == std::string_view::npos) {
      return "line " + std::to_string(line) + ": a group code without its value";
    }
    const std::string_view codeText = rest.substr(0, codeEnd);
    int code = -1;
    const auto parsed =
        std::from_chars(codeText.data() + 1, codeText.data() + codeText.size(), code);
    if (!codeText.starts_with(' ') || parsed.ec != std::errc() ||
        parsed.ptr != codeText.data() + codeText.size()) {
      return "line " + std::to_string(line) + ": not a group code: " + std::string(codeText);
    }
    std::string_view value = rest.substr(codeEnd + 2, valueEnd - codeEnd - 2);
    const bool real = (code >= 10 && code <= 13) || (code >= 20 && code <= 23) ||
                      (code >= 40 && code <= 42) || code == 50;
    if (real) {
      value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
      double number = 0;
      const auto read = std::from_chars(value.data(), value.data() + value.size(), number);
      if (read.ec != std::errc() || read.ptr != value.data() + value.size() ||
          !std::isfinite(number)) {
        return "line " + std::to_string(line + 1) + ": group " + std::to_string(code) +
               " is not a finite number: " + std::string(value);
      }
    }
    rest.remove_prefix(valueEnd + 2);
  }
  return {};
}

}  // namespace kalmor::test
