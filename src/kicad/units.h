#pragma once

// KiCad measures in millimetres; the design measures in page units of 10 mil, so that KiCad's
// 2.54 mm pin pitch is 10 units and its 1.27 mm grid 5, and a page of pin-to-pin 100 comes out
// in inches at true size.

#include <cmath>
#include <cstdint>

#include "kalmor/types.h"
#include "kicad/sheet_file.h"

namespace kalmor::kicad::detail {

inline constexpr double kMillimetresPerUnit = 0.254;

// Off-grid values go to the nearest unit.
inline int32_t ToUnits(double millimetres) {
  return static_cast<int32_t>(std::lround(millimetres / kMillimetresPerUnit));
}

inline double ToUnitsExact(double millimetres) {
  return millimetres / kMillimetresPerUnit;
}

// A point of a library symbol (y upward) in the symbol's own units, y downward like the page.
inline CPoint LibraryPoint(Vec point) {
  return {ToUnits(point.x), ToUnits(-point.y)};
}

}  // namespace kalmor::kicad::detail
