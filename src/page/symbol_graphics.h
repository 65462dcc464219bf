#pragma once

// Draws the graphic objects of a placed symbol (lines, boxes, arcs, ellipses, polygons,
// polylines, comment text, bitmap outlines and nested symbol vectors) with the placement's
// rotation and mirror.

#include <cstdint>
#include <string_view>

#include "dxf/byte_sink.h"
#include "kalmor/dbo.h"

namespace kalmor {

// A symbol point (px, py) placed in the box (left, top, right, bottom; top above bottom) at a
// quarter-turn rotation, in page units. Mirroring reflects about the width or height rounded
// down to even, so a box 7 wide mirrors px = 1 to 5. Unknown rotations place without turning
// and ignore the mirror.
double SymbolPointX(int32_t px, int32_t py, RotationT rotation, int32_t mirror, int32_t left,
                    int32_t top, int32_t right);
double SymbolPointY(int32_t px, int32_t py, RotationT rotation, int32_t mirror, int32_t left,
                    int32_t top, int32_t right, int32_t bottom);

// Draws one graphic object of a symbol on `layer` (comment text always on "PARTTEXT").
// Coordinates are first multiplied by `symbolScale` and truncated, then placed, then multiplied
// by `pageScale`. Objects of other types draw nothing.
void SymbolGraphicsRenderer(ByteSink& out, std::string_view layer, const DboBaseObject* object,
                            DboState& state, double pageScale, int32_t left, int32_t top,
                            int32_t right, int32_t bottom, RotationT rotation, int32_t mirror,
                            double symbolScale);

}  // namespace kalmor
