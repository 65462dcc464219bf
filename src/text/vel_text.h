#pragma once

// The text shape's measuring path: a text in a logical font, anchored at a point, measured at
// construction so that its bounding rectangle is ready at once.

#include <string_view>

#include "kalmor/types.h"

namespace kalmor {

class CVelText {
 public:
  // The text's lines are separated by carriage returns; line feeds are ignored. The font's
  // escapement (tenths of a degree) is the text's angle: 0, 900, 1800 and 2700 are measured, any
  // other angle gives an empty rectangle at the origin.
  CVelText(std::string_view text, CPoint anchor, const LogFont& font);

  // Left <= right, top <= bottom, both dimensions even.
  CRect GetBoundingRect() const { return rect_; }

 private:
  CRect rect_;
};

// The escapement moves to the shape's angle; the record asks for a TrueType outline at draft
// quality with stroke clipping, a height of 0 becomes the default height, and a positive (cell)
// height becomes the negative character height.
LogFont NormaliseTextFont(const LogFont& font);

// Loads the font a text shape in `font` would be measured in; throws EnvironmentError when it
// cannot be found or opened.
void PrepareTextFont(const LogFont& font);

}  // namespace kalmor
