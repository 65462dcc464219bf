#pragma once

// The circular arc that a polyline bulge describes between two vertices.

#include <optional>

#include "render/dxf_reader.h"

namespace kalmor {

struct BulgeArc {
  DrawingPoint centre;
  double radius = 0;
  double startAngle = 0;  // radians, direction from the centre to the first vertex
  double sweep = 0;       // radians, 4 * atan(bulge): positive counter-clockwise
};

// The arc from `from` to `to`; none for a straight segment (bulge 0, or too small to bend it)
// or a zero-length chord.
std::optional<BulgeArc> ArcFromBulge(DrawingPoint from, DrawingPoint to, double bulge);

// Grows [low, high] to take in the arc, including the points where it crosses an axis direction.
void ExtendByArc(const BulgeArc& arc, DrawingPoint& low, DrawingPoint& high);

}  // namespace kalmor
