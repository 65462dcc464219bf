#pragma once

// POLYLINE / VERTEX / SEQEND, the filled dot, the ellipse as bulged vertices, and the angle of a
// direction vector. Callers bracket vertices with a header and DxfSeqEnd on one layer.

#include <array>
#include <cstdint>
#include <string_view>

#include "dxf/byte_sink.h"
#include "kalmor/types.h"

namespace kalmor {

// Angles in radians, measured against π cut after six decimals: the bulges of arcs and ellipses
// and the directions VectorAngle answers with are all defined in these turns, not the exact π.
inline constexpr double kHalfTurn = 3.141592;
inline constexpr double kFullTurn = 2 * kHalfTurn;
inline constexpr double kQuarterTurn = kHalfTurn / 2;
// 1.5 × kHalfTurn taken in decimals; the binary product would be one unit in the last place more.
inline constexpr double kThreeQuarterTurns = 4.712388;

// `width` is in host line-width units, written as width * 0.02 (nothing for 0).
void DxfPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width);
void DxfClosedPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width);
void DxfVertex(ByteSink& out, std::string_view layer, double x, double y);
void DxfBulgeVertex(ByteSink& out, std::string_view layer, double x, double y, double bulge);
void DxfSeqEnd(ByteSink& out, std::string_view layer);

// A point in drawing units.
struct DxfPoint {
  double x;
  double y;
};
// A whole polyline of one segment, from `a` to `b`.
void DxfSegment(ByteSink& out, std::string_view layer, LineWidthT width, DxfPoint a, DxfPoint b);
// A whole closed polyline through the four corners of a rectangle, in the order given.
void DxfRectangle(ByteSink& out, std::string_view layer, LineWidthT width,
                  const std::array<DxfPoint, 4>& corners);
// A filled disc: a closed two-vertex polyline of width `w` (drawing units).
void DxfDot(ByteSink& out, std::string_view layer, double x, double y, double w);
// Sixteen bulged vertices, counter-clockwise from the end of the x axis.
void DxfEllipseVertices(ByteSink& out, std::string_view layer, double cx, double cy, double a,
                        double b);
// The direction of (dx, dy) in [0, kFullTurn).
double VectorAngle(double dx, double dy);

}  // namespace kalmor
