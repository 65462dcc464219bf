#pragma once

// KiCad's shapes as the design's graphic primitives, in whole page units.

#include <memory>

#include "kicad/sheet_file.h"
#include "model/graphics.h"

namespace kalmor::kicad::detail {

// Where a shape's millimetres land in page units: x / 0.254 + dx, ySign * y / 0.254 + dy.
// Library symbols count y upward (ySign -1), pages downward.
struct Frame {
  double dx = 0;
  double dy = 0;
  double ySign = 1;
  double X(double x) const;
  double Y(double y) const;
};

// A KiCad line width in the design's line-width units of 0.508 mm; lines under 0.381 mm are
// drawn thin, as KiCad's default lines are.
LineWidthT LineWidthUnits(double millimetres);

// Appends the primitives of one shape. The symbol renderer draws an arc the short way round, so
// in a symbol a long arc comes in pieces of at most 120 degrees; on a page an arc is one piece,
// started from the end that makes it run counter-clockwise in the drawing. Filled polylines
// become polygons, circles ellipses, and beziers polylines.
void AppendShape(const Shape& shape, bool inSymbol, const Frame& frame,
                 model::detail::GraphicList& out);

// The box a primitive covers, as the design document would compute it for a page graphic.
CRect PrimitiveExtent(const DboBaseObject& primitive);

// The code a primitive has as a page graphic.
int32_t PageGraphicType(const DboBaseObject& primitive);

// Moves a primitive by whole units.
void Translate(DboBaseObject& primitive, CPoint by);

}  // namespace kalmor::kicad::detail
