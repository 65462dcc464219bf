#include "text/text_extent.h"

#include "text/saturate.h"
#include "text/vel_text.h"

namespace kalmor {

CRect MeasureTextExtent(const std::string& text, const LogFont& font) {
  const CVelText shape(text, CPoint{0, 0}, font);
  const CRect box = shape.GetBoundingRect();
  // A text of very many lines can reach beyond the 32-bit range on both sides of its anchor.
  return {0, 0, text_detail::SaturateToInt32(int64_t{box.right} - box.left),
          text_detail::SaturateToInt32(int64_t{box.bottom} - box.top)};
}

}  // namespace kalmor
