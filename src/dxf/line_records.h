#pragma once

// Single-record entities: LINE, CIRCLE and SOLID. Coordinates are drawing units.

#include <string_view>

#include "dxf/byte_sink.h"

namespace kalmor {

void DxfLine(ByteSink& out, std::string_view layer, double x1, double y1, double x2, double y2);
void DxfCircle(ByteSink& out, std::string_view layer, double cx, double cy, double radius);
// Corners in outline order A, B, C, D; the record holds them as A, B, D, C.
void DxfSolid(ByteSink& out, std::string_view layer, double ax, double ay, double bx, double by,
              double cx, double cy, double dx, double dy);

}  // namespace kalmor
