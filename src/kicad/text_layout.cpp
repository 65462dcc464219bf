#include "kicad/text_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "input/character_start.h"
#include "kalmor/display_text.h"
#include "kicad/units.h"

namespace kalmor::kicad::detail {
namespace {

// The page walk's text height is 100 sin(|h| / 175) units for a font height h.
constexpr double kHeightDivisor = 175.0;
// Capitals of the Arial-like fonts texts are drawn in stand this part of the em.
constexpr double kCapHeightEm = 1409.0 / 2048.0;
constexpr int32_t kBoldWeight = 700;

int QuarterTurns(double angle) {
  const long turns = std::lround(angle / 90.0);
  return static_cast<int>(((turns % 4) + 4) % 4);
}

}  // namespace

LogFont FontFor(const TextEffects& effects) {
  LogFont font;
  const double units = std::clamp(ToUnitsExact(effects.height), 0.0, 100.0);
  font.lfHeight = -static_cast<int32_t>(std::lround(kHeightDivisor * std::asin(units / 100.0)));
  if (font.lfHeight == 0) {
    font.lfHeight = -1;
  }
  if (effects.bold) {
    font.lfWeight = kBoldWeight;
  }
  font.lfItalic = effects.italic ? 1 : 0;
  if (!effects.face.empty()) {
    // At most 31 bytes, cut between characters.
    const std::size_t size = CharacterStart(effects.face, sizeof font.lfFaceName - 1);
    font.SetFaceName(effects.face.substr(0, size).c_str());
  }
  return font;
}

CRect MeasuredExtent(const std::string& text, const LogFont& font) {
  constexpr DisplayTypeT kValueAsItIs = 0;
  return MeasureDisplayPropText({}, text, kValueAsItIs, font);
}

double DrawnHeight(const LogFont& font) {
  return 100.0 * std::sin(std::abs(static_cast<double>(font.lfHeight)) / kHeightDivisor);
}

double DrawnWidth(const std::string& text, const LogFont& font) {
  if (text.empty()) {
    return 0.0;
  }
  const CRect extent = MeasuredExtent(text, font);
  const double em = std::abs(static_cast<double>(font.lfHeight));
  return (extent.right - extent.left) * DrawnHeight(font) / (kCapHeightEm * em);
}

Baseline Justified(double x, double y, bool vertical, HJustify h, VJustify v, double width,
                   double height) {
  // How far back along the reading direction the text starts, and how far below the anchor
  // (towards the foot of the letters) its base line runs.
  const double back = h == HJustify::kLeft ? 0.0 : h == HJustify::kCenter ? width / 2 : width;
  const double below = v == VJustify::kBottom ? 0.0 : v == VJustify::kCenter ? height / 2 : height;
  if (vertical) {
    return {x + below, y + back, true};
  }
  return {x - back, y + below, false};
}

Orientation OrientationOf(double angle, char mirror) {
  return {QuarterTurns(angle), mirror};
}

Baseline FieldBaseline(double x, double y, double angle, const TextEffects& effects,
                       const Orientation& symbol, double width, double height) {
  // The centre of the text's box, from the anchor, in the field's own frame.
  double cx = effects.hJustify == HJustify::kLeft    ? width / 2
              : effects.hJustify == HJustify::kRight ? -width / 2
                                                     : 0.0;
  double cy = effects.vJustify == VJustify::kTop      ? height / 2
              : effects.vJustify == VJustify::kBottom ? -height / 2
                                                      : 0.0;
  const Orientation own{QuarterTurns(angle), 0};
  own.Apply(cx, cy);
  symbol.Apply(cx, cy);
  const bool vertical = (own.quarterTurns % 2 != 0) != symbol.SwapsAxes();
  return Justified(x + cx, y + cy, vertical, HJustify::kCenter, VJustify::kCenter, width, height);
}

}  // namespace kalmor::kicad::detail
