#pragma once

// Where KiCad's texts go. KiCad anchors a text at a point with a justification (left, centre or
// right; top, centre or bottom); the design anchors every text at one corner and the page walk
// puts the base line a fixed distance from it. So each text's base line is worked out here, from
// its measured width, and then handed to whatever host object carries it.

#include <string>

#include "kalmor/types.h"
#include "kicad/sheet_file.h"

namespace kalmor::kicad::detail {

// The font record for a KiCad text: a size of u units (KiCad's height over 0.254 mm) becomes
// the height -round(175 asin(u / 100)), so that the page walk draws it u units high.
LogFont FontFor(const TextEffects& effects);

// The extent of `text` in `font`, as the design measures it (a rectangle at the origin).
CRect MeasuredExtent(const std::string& text, const LogFont& font);

// The height the page walk draws a text of this font at, in page units.
double DrawnHeight(const LogFont& font);

// The width of `text` drawn at that height, in page units: its measured width, scaled from the
// measuring font's em to the em of capitals `DrawnHeight` high.
double DrawnWidth(const std::string& text, const LogFont& font);

// The start of a text's base line on the page (units, y downward); a vertical text reads upward.
struct Baseline {
  double x = 0;
  double y = 0;
  bool vertical = false;
};

// A text anchored at (x, y) with KiCad's justification, `width` long and `height` high.
Baseline Justified(double x, double y, bool vertical, HJustify h, VJustify v, double width,
                   double height);

// A symbol's orientation as KiCad gives it: turned counter-clockwise by quarter turns, then
// mirrored ('x': upside down, 'y': left to right).
struct Orientation {
  int quarterTurns = 0;
  char mirror = 0;
  // Applies the orientation to an offset (page units, y downward).
  template <typename T>
  void Apply(T& x, T& y) const {
    for (int turn = 0; turn < quarterTurns; ++turn) {
      const T was = x;
      x = y;
      y = -was;
    }
    if (mirror == 'x') {
      y = -y;
    } else if (mirror == 'y') {
      x = -x;
    }
  }
  bool SwapsAxes() const { return quarterTurns % 2 != 0; }
};

Orientation OrientationOf(double angle, char mirror);

// A symbol's field (or library text) as KiCad shows it on a placed symbol: justified in its own
// frame, that frame turned with the symbol, and the text drawn centred where its box lands, always
// reading left to right or upward.
Baseline FieldBaseline(double x, double y, double angle, const TextEffects& effects,
                       const Orientation& symbol, double width, double height);

}  // namespace kalmor::kicad::detail
