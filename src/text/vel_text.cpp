#include "text/vel_text.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace kalmor {

// Until fonts are measured: a line is |height| high and each character half as wide.
CVelText::CVelText(std::string text, CPoint anchor, const LogFont& font, uint32_t /*style*/,
                   uint32_t /*formatFlags*/)
    : text_(std::move(text)) {
  const int32_t height = std::abs(font.lfHeight);
  int32_t lines = 1;
  std::size_t widest = 0;
  std::size_t current = 0;
  for (char c : text_) {
    if (c == '\r') {
      ++lines;
      current = 0;
    } else if (c != '\n') {
      widest = std::max(widest, ++current);
    }
  }
  const int32_t width = static_cast<int32_t>(widest) * height / 2;
  rect_ = {anchor.x, anchor.y, anchor.x + width + (width & 1),
           anchor.y + lines * height + ((lines * height) & 1)};
}

}  // namespace kalmor
