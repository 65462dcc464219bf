#pragma once

// POLYLINE / VERTEX / SEQEND, the filled dot, the ellipse as bulged vertices, and the angle of a
// direction vector. Callers bracket vertices with a header and DxfSeqEnd on one layer.

#include <cstdint>
#include <string_view>

#include "dxf/byte_sink.h"
#include "kalmor/types.h"

namespace kalmor {

// `width` is in host line-width units, written as width * 0.02 (nothing for 0).
void DxfPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width);
void DxfClosedPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width);
void DxfVertex(ByteSink& out, std::string_view layer, double x, double y);
void DxfBulgeVertex(ByteSink& out, std::string_view layer, double x, double y, double bulge);
void DxfSeqEnd(ByteSink& out, std::string_view layer);
// A filled disc: a closed two-vertex polyline of width `w` (drawing units).
void DxfDot(ByteSink& out, std::string_view layer, double x, double y, double w);
// Sixteen bulged vertices, counter-clockwise from the end of the x axis.
void DxfEllipseVertices(ByteSink& out, std::string_view layer, double cx, double cy, double a,
                        double b);
// Radians in [0, 6.283184), with truncated multiples of pi.
double VectorAngle(double dx, double dy);

}  // namespace kalmor
