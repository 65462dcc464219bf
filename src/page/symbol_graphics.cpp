#include "page/symbol_graphics.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "dxf/layers.h"
#include "dxf/polyline_records.h"
#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "page/instance_placement.h"
#include "text/text_extent.h"

namespace kalmor {
namespace {

// From `low` halfway to `high`, the half truncated toward zero.
int32_t Midpoint(int32_t low, int32_t high) {
  return Wrap32(low + (int64_t{high} - low) / 2);
}

// Halved with truncation toward zero, then doubled.
int64_t EvenPart(int64_t value) {
  return value / 2 * 2;
}

// One object's placement: symbol scale first, then rotation and mirror, then page scale.
struct Placer {
  ByteSink& out;
  std::string_view layer;
  DboState& state;
  double pageScale;
  int32_t left, top, right, bottom;
  RotationT rotation;
  int32_t mirror;
  double symbolScale;

  int32_t Scaled(int32_t value) const { return TruncateToInt(value * symbolScale); }
  CPoint Scaled(CPoint p) const { return {Scaled(p.x), Scaled(p.y)}; }

  double PlacedX(CPoint p) const {
    return SymbolPointX(p.x, p.y, rotation, mirror, left, top, right);
  }
  double PlacedY(CPoint p) const {
    return SymbolPointY(p.x, p.y, rotation, mirror, left, top, right, bottom);
  }
  double X(CPoint p) const { return PlacedX(p) * pageScale; }
  double Y(CPoint p) const { return PlacedY(p) * pageScale; }

  DxfPoint At(CPoint p) const { return {X(p), Y(p)}; }
  void Vertex(CPoint p) const { DxfVertex(out, layer, X(p), Y(p)); }
};

// A closed outline through the corners of a box already in scaled symbol units, in the order
// left-top, right-top, right-bottom, left-bottom.
void DrawOutline(const Placer& at, CRect box, LineWidthT width) {
  DxfRectangle(at.out, at.layer, width,
               {at.At({box.left, box.top}), at.At({box.right, box.top}),
                at.At({box.right, box.bottom}), at.At({box.left, box.bottom})});
}

void DrawLine(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  const CPoint start =
      at.Scaled(CPoint{DboLine::sGetStartX(object, st), DboLine::sGetStartY(object, st)});
  const CPoint end =
      at.Scaled(CPoint{DboLine::sGetEndX(object, st), DboLine::sGetEndY(object, st)});
  DxfSegment(at.out, at.layer, at.Scaled(DboLine::sGetLineWidth(object, st)), at.At(start),
             at.At(end));
}

void DrawBox(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  const CRect box{at.Scaled(DboBox::sGetLeft(object, st)), at.Scaled(DboBox::sGetTop(object, st)),
                  at.Scaled(DboBox::sGetRight(object, st)),
                  at.Scaled(DboBox::sGetBottom(object, st))};
  DrawOutline(at, box, at.Scaled(DboBox::sGetLineWidth(object, st)));
}

void DrawArc(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  const int32_t l = DboArc::sGetBoundingBoxLeft(object, st);
  const int32_t t = DboArc::sGetBoundingBoxTop(object, st);
  const int32_t r = DboArc::sGetBoundingBoxRight(object, st);
  const int32_t b = DboArc::sGetBoundingBoxBottom(object, st);
  const CPoint centre = at.Scaled(CPoint{Midpoint(l, r), Midpoint(t, b)});
  CPoint start = at.Scaled(CPoint{DboArc::sGetStartX(object, st), DboArc::sGetStartY(object, st)});
  CPoint end = at.Scaled(CPoint{DboArc::sGetEndX(object, st), DboArc::sGetEndY(object, st)});
  // Only the unturned and half-turned mirrors reverse the arc; the quarter turns keep it.
  if (at.mirror != 0 && (at.rotation == 0 || at.rotation == 2)) {
    std::swap(start, end);
  }
  const double cx = at.X(centre);
  const double cy = at.Y(centre);
  const double sx = at.X(start);
  const double sy = at.Y(start);
  const double ex = at.X(end);
  const double ey = at.Y(end);
  double sweep = VectorAngle(ex - cx, ey - cy) - VectorAngle(sx - cx, sy - cy);
  // Always the shorter way round, at most a half turn.
  if (sweep < 0 && std::fabs(sweep) > kHalfTurn) {
    sweep += kFullTurn;
  } else if (sweep > 0 && std::fabs(sweep) > kHalfTurn) {
    sweep -= kFullTurn;
  }
  DxfPolylineBegin(at.out, at.layer, at.Scaled(DboArc::sGetLineWidth(object, st)));
  DxfBulgeVertex(at.out, at.layer, sx, sy, std::tan(sweep * 0.25));
  DxfVertex(at.out, at.layer, ex, ey);
  DxfSeqEnd(at.out, at.layer);
}

void DrawEllipse(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  const int32_t l = at.Scaled(DboEllipse::sGetBoundingBoxLeft(object, st));
  const int32_t t = at.Scaled(DboEllipse::sGetBoundingBoxTop(object, st));
  const int32_t r = at.Scaled(DboEllipse::sGetBoundingBoxRight(object, st));
  const int32_t b = at.Scaled(DboEllipse::sGetBoundingBoxBottom(object, st));
  const CPoint centre{Midpoint(l, r), Midpoint(t, b)};
  double rx = static_cast<double>(std::abs((int64_t{r} - l) / 2)) * at.pageScale;
  double ry = static_cast<double>(std::abs((int64_t{b} - t) / 2)) * at.pageScale;
  if (at.rotation == 1 || at.rotation == 3) {
    std::swap(rx, ry);
  }
  DxfClosedPolylineBegin(at.out, at.layer, at.Scaled(DboEllipse::sGetLineWidth(object, st)));
  DxfEllipseVertices(at.out, at.layer, at.X(centre), at.Y(centre), rx, ry);
  DxfSeqEnd(at.out, at.layer);
}

// The points of a polygon or polyline, each scaled and moved by `offset` (already scaled); no
// points without a shape.
void DrawPoints(const Placer& at, const DboPolygon* shape, bool closed, LineWidthT width,
                CPoint offset) {
  if (closed) {
    DxfClosedPolylineBegin(at.out, at.layer, width);
  } else {
    DxfPolylineBegin(at.out, at.layer, width);
  }
  ForEachPoint(shape, at.state, [&](CPoint p) {
    const CPoint scaled = at.Scaled(p);
    at.Vertex({Wrap32(int64_t{scaled.x} + offset.x), Wrap32(int64_t{scaled.y} + offset.y)});
  });
  DxfSeqEnd(at.out, at.layer);
}

// An object known only by its type code has no points: like every other kind, it is drawn
// from the host's zero answers, here as a polyline without vertices.
void DrawPolygon(const Placer& at, const DboBaseObject* object, bool closed) {
  DrawPoints(at, dynamic_cast<const DboPolygon*>(object), closed,
             at.Scaled(DboPolygon::sGetLineWidth(object, at.state)), {});
}

void DrawCommentText(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  LogFont font = DboCommentText::sGetFont(object, st);
  font.lfHeight = at.Scaled(font.HeightOrDefault());
  font.lfWidth = at.Scaled(font.lfWidth);
  const CPoint corner = at.Scaled(CPoint{DboCommentText::sGetBoundingBoxLeft(object, st),
                                         DboCommentText::sGetBoundingBoxTop(object, st)});
  std::string text = DboCommentText::sGetText(object, st);
  const CRect extent = MeasureTextExtent(text, font);
  const CPoint far{Wrap32(int64_t{corner.x} + extent.right - extent.left),
                   Wrap32(int64_t{corner.y} + extent.bottom - extent.top)};
  DxfTextBox(at.out, layer::kPartText, std::move(text), font, at.rotation, at.pageScale,
             TruncateToInt(at.PlacedX(corner)), TruncateToInt(at.PlacedX(far)),
             TruncateToInt(at.PlacedY(corner)), TruncateToInt(at.PlacedY(far)));
}

void DrawBitmap(const Placer& at, const DboBaseObject* object) {
  DboState& st = at.state;
  const CRect box{at.Scaled(DboBitMap::sGetBoundingBoxLeft(object, st)),
                  at.Scaled(DboBitMap::sGetBoundingBoxTop(object, st)),
                  at.Scaled(DboBitMap::sGetBoundingBoxRight(object, st)),
                  at.Scaled(DboBitMap::sGetBoundingBoxBottom(object, st))};
  DrawOutline(at, box, 0);
}

// Only the member polylines of a nested vector are drawn, without width; other members are
// left out on purpose.
void DrawSymbolVector(const Placer& at, const DboBaseObject* object) {
  const auto* group = dynamic_cast<const DboSymbolVector*>(object);
  if (group == nullptr) {
    return;
  }
  const CPoint offset = at.Scaled(group->GetLocation(at.state));
  const std::unique_ptr<DboSymbolVectorVectorsIter> members = group->NewVectorsIter(at.state);
  if (members == nullptr) {
    return;
  }
  for (;;) {
    DboState next;
    const DboBaseObject* member = members->NextVector(next);
    if (member == nullptr || !next.OK()) {
      break;
    }
    const auto* polyline = dynamic_cast<const DboPolygon*>(member);
    if (polyline != nullptr && member->GetObjectType(at.state) == dbo_type::kPolyline) {
      DrawPoints(at, polyline, false, 0, offset);
    }
  }
}

}  // namespace

double SymbolPointX(int32_t px, int32_t py, RotationT rotation, int32_t mirror, int32_t left,
                    int32_t /*top*/, int32_t right) {
  const int64_t w = int64_t{right} - left;
  const bool mirrored = mirror != 0;
  switch (rotation) {
    case 0:
      return static_cast<double>(left + (mirrored ? EvenPart(w) - px : int64_t{px}));
    case 1:
      return static_cast<double>(int64_t{left} + py);
    case 2:
      return static_cast<double>(left + w - (mirrored ? EvenPart(w) - px : int64_t{px}));
    case 3:
      return static_cast<double>(left + w - py);
    default:
      return static_cast<double>(int64_t{left} + px);
  }
}

double SymbolPointY(int32_t px, int32_t py, RotationT rotation, int32_t mirror, int32_t /*left*/,
                    int32_t top, int32_t /*right*/, int32_t bottom) {
  const int64_t h = int64_t{top} - bottom;
  const bool mirrored = mirror != 0;
  switch (rotation) {
    case 1:
      return static_cast<double>(top - h + (mirrored ? EvenPart(h) - px : int64_t{px}));
    case 2:
      return static_cast<double>(top - h + py);
    case 3:
      return static_cast<double>(top - (mirrored ? EvenPart(h) - px : int64_t{px}));
    default:  // 0 and unknown rotations
      return static_cast<double>(int64_t{top} - py);
  }
}

void SymbolGraphicsRenderer(ByteSink& out, std::string_view layer, const DboBaseObject* object,
                            DboState& state, double pageScale, int32_t left, int32_t top,
                            int32_t right, int32_t bottom, RotationT rotation, int32_t mirror,
                            double symbolScale) {
  if (object == nullptr) {
    return;
  }
  const Placer at{out,   layer,  state,    pageScale, left,       top,
                  right, bottom, rotation, mirror,    symbolScale};
  switch (object->GetObjectType(state)) {
    case dbo_type::kBox:
      DrawBox(at, object);
      break;
    case dbo_type::kLine:
      DrawLine(at, object);
      break;
    case dbo_type::kArc:
      DrawArc(at, object);
      break;
    case dbo_type::kEllipse:
      DrawEllipse(at, object);
      break;
    case dbo_type::kPolygon:
      DrawPolygon(at, object, true);
      break;
    case dbo_type::kPolyline:
      DrawPolygon(at, object, false);
      break;
    case dbo_type::kCommentText:
      DrawCommentText(at, object);
      break;
    case dbo_type::kBitMap:
      DrawBitmap(at, object);
      break;
    case dbo_type::kSymbolVector:
      DrawSymbolVector(at, object);
      break;
    default:
      break;
  }
}

}  // namespace kalmor
