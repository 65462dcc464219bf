#pragma once

// Shared by the renderer's tests: DXF pages built around a few entity records.

#include <string>
#include <string_view>

namespace kalmor::test {

// Lines 1 to 14 of a page; the first entity record starts on line 15.
inline constexpr std::string_view kPageOpening =
    " 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1009\n 0\nENDSEC\n 0\nSECTION\n 2\nENTITIES\n";

inline std::string DxfPage(std::string_view entities) {
  return std::string(kPageOpening) + std::string(entities) + " 0\nENDSEC\n 0\nEOF\n";
}

}  // namespace kalmor::test
