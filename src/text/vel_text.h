#pragma once

// The text shape's measuring path: a text in a logical font, anchored at a point, measured at
// construction so that its bounding rectangle is ready at once.

#include <cstdint>
#include <string>

#include "host/types.h"

namespace kalmor {

class CVelText {
 public:
  static constexpr uint32_t kStyleText = 48;            // style word the export passes
  static constexpr uint32_t kFormatCalcRect = 0x400;    // compute-rectangle layout
  static constexpr uint32_t kFormatNoClip = 0x100;

  CVelText(std::string text, CPoint anchor, const LogFont& font, uint32_t style,
           uint32_t formatFlags);

  // Left <= right, top <= bottom, both dimensions even.
  CRect GetBoundingRect() const { return rect_; }

 private:
  CRect rect_;
  std::string text_;
};

}  // namespace kalmor
