#pragma once

// A font-metrics source with fixed numbers: every character is the same width, and chosen lines
// can be given any extent.

#include <map>
#include <string>
#include <string_view>

#include "text/font_metrics.h"

namespace kalmor::test {

class FixedMetrics final : public FontMetricsSource {
 public:
  TextMetrics metrics{.height = 12, .descent = 3, .averageCharWidth = 5};
  bool readable = true;
  int32_t charWidth = 7;
  std::map<std::string, TextExtent, std::less<>> extents;  // lines measured otherwise

  bool GetTextMetrics(const LogFont&, TextMetrics& out) override {
    if (readable) {
      out = metrics;
    }
    return readable;
  }
  TextExtent GetTextExtent(const LogFont&, std::string_view line) override {
    if (const auto chosen = extents.find(line); chosen != extents.end()) {
      return chosen->second;
    }
    return {charWidth * static_cast<int32_t>(line.size()), metrics.height};
  }
};

}  // namespace kalmor::test
