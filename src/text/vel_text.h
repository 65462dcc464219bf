#pragma once

// The text shape's measuring path: a text in a logical font, anchored at a point, measured at
// construction so that its bounding rectangle is ready at once.

#include <cstdint>
#include <string>

#include "kalmor/types.h"

namespace kalmor {

class CVelText {
 public:
  static constexpr uint32_t kStyleText = 48;          // style word the export passes
  static constexpr uint32_t kFormatCalcRect = 0x400;  // compute-rectangle layout
  static constexpr uint32_t kFormatNoClip = 0x100;
  static constexpr int32_t kTrueTypeFlag = 4;

  // The text's lines are separated by carriage returns; line feeds are ignored. The font's
  // escapement (tenths of a degree) becomes the shape's angle: 0, 900, 1800 and 2700 are measured,
  // any other angle gives an empty rectangle at the origin.
  CVelText(std::string text, CPoint anchor, const LogFont& font, uint32_t style,
           uint32_t formatFlags);

  // Left <= right, top <= bottom, both dimensions even.
  CRect GetBoundingRect() const { return rect_; }

  uint32_t ShapeId() const { return shapeId_; }
  uint32_t Style() const { return style_; }
  const std::string& Text() const { return text_; }
  int32_t Angle() const { return angle_; }
  int32_t FontSlot() const { return fontSlot_; }
  int32_t FontIndex() const { return fontIndex_; }
  uint32_t FormatFlags() const { return formatFlags_; }
  int32_t TrueTypeFlag() const { return trueTypeFlag_; }
  // The drawing path's two layout words, -1 and 0 from construction.
  int32_t LayoutWord(int which) const { return layoutWords_[which != 0 ? 1 : 0]; }

 private:
  void SetBoundingRect(const CRect& rect);
  void Measure();
  CRect LayOut(CRect rect);

  CRect rect_;
  uint32_t shapeId_ = 0;
  uint32_t style_ = 0;
  std::string text_;
  int32_t angle_ = 0;
  int32_t fontSlot_ = 0;
  int32_t fontIndex_ = 0;
  uint32_t formatFlags_ = 0;
  int32_t trueTypeFlag_ = 0;
  int32_t layoutWords_[2] = {0, 0};
};

// The escapement moves to the shape's angle; the record asks for a TrueType outline at draft
// quality with stroke clipping, a height of 0 becomes the default height, and a positive (cell)
// height becomes the negative character height.
LogFont NormaliseTextFont(const LogFont& font);

// Loads the font a text shape in `font` would be measured in; throws EnvironmentError when it
// cannot be found or opened.
void PrepareTextFont(const LogFont& font);

}  // namespace kalmor
