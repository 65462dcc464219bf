#pragma once

// Reads the DXF files the exporter writes into a list of entities. Only the HEADER and ENTITIES
// sections and the LINE, CIRCLE, SOLID, POLYLINE/VERTEX/SEQEND and TEXT records are known;
// anything else is a DxfReadError naming the line and the record.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "dxf/layers.h"
#include "render/svg_render.h"

namespace kalmor {

// The layers an entity may be on, in legend order; an entity holds an index into this list.
inline constexpr std::array<std::string_view, 7> kDrawingLayers = {
    layer::kTitle,    layer::kParts,    layer::kPartText, layer::kWire,
    layer::kWireText, layer::kComments, layer::kBitmaps};

struct DrawingPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const DrawingPoint&, const DrawingPoint&) = default;
};

struct DrawnLine {
  DrawingPoint start;
  DrawingPoint end;
};

struct DrawnCircle {
  DrawingPoint centre;
  double radius = 0;
};

// Corners as the record holds them (groups 10, 11, 12, 13); the outline runs 0, 1, 3, 2.
struct DrawnSolid {
  std::array<DrawingPoint, 4> corners;
};

struct PolylineVertex {
  DrawingPoint at;
  double bulge = 0;  // of the segment to the next vertex: tan(included angle / 4), + is ccw
};

struct DrawnPolyline {
  std::vector<PolylineVertex> vertices;
  bool closed = false;
  double width = 0;  // constant width; 0 is a hairline
};

struct DrawnText {
  DrawingPoint at;  // left end of the base line
  double height = 0;
  double angle = 0;   // degrees, counter-clockwise
  std::string value;  // as written, "%%o" toggles included
};

struct DxfEntity {
  std::size_t layer = 0;  // index into kDrawingLayers
  std::size_t line = 0;   // line of the record's name in the file
  std::variant<DrawnLine, DrawnCircle, DrawnSolid, DrawnPolyline, DrawnText> shape;
};

struct DxfDrawing {
  std::vector<DxfEntity> entities;
};

// Throws DxfReadError; `sourceName` only prefixes the messages. The file is read a buffer at a
// time: memory follows the entities drawn, not the file's size.
DxfDrawing ReadDxf(ByteSource& bytes, std::string_view sourceName);
DxfDrawing ReadDxf(std::string_view dxf, std::string_view sourceName);

}  // namespace kalmor
