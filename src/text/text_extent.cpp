#include "text/text_extent.h"

#include "text/vel_text.h"

namespace kalmor {

CRect MeasureTextExtent(const std::string& text, const LogFont& font) {
  const CVelText shape(text, CPoint{0, 0}, font, CVelText::kStyleText, CVelText::kFormatCalcRect);
  const CRect box = shape.GetBoundingRect();
  return {0, 0, box.right - box.left, box.bottom - box.top};
}

}  // namespace kalmor
