#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "dxf/layers.h"
#include "dxf/polyline_records.h"
#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "page/page_polylines.h"
#include "page/translators.h"

namespace kalmor {
namespace {

// A bounding box's centre in drawing units, computed in double from the integer box.
struct Centre {
  double x;
  double y;
};

Centre BoxCentre(const PageContext& page, int32_t left, int32_t right, int32_t top,
                 int32_t bottom) {
  const double l = left;
  const double t = top;
  return {(l + (right - l) * 0.5) * page.s, (page.H - (t + (bottom - t) * 0.5)) * page.s};
}

void WriteBox(PageContext& page, const DboGraphicInstance* graphic) {
  const LineWidthT width = DboGraphicBoxInst::sGetLineWidth(graphic, page.state);
  CRect box;
  box.left = DboGraphicBoxInst::sGetLeft(graphic, page.state);
  box.top = DboGraphicBoxInst::sGetTop(graphic, page.state);
  box.right = DboGraphicBoxInst::sGetRight(graphic, page.state);
  box.bottom = DboGraphicBoxInst::sGetBottom(graphic, page.state);
  page_detail::WriteRectangle(page, layer::kComments, width, box);
}

void WriteLine(PageContext& page, const DboGraphicInstance* graphic) {
  const LineWidthT width = DboGraphicLineInst::sGetLineWidth(graphic, page.state);
  CPoint start;
  CPoint end;
  start.x = DboGraphicLineInst::sGetStartX(graphic, page.state);
  start.y = DboGraphicLineInst::sGetStartY(graphic, page.state);
  end.x = DboGraphicLineInst::sGetEndX(graphic, page.state);
  end.y = DboGraphicLineInst::sGetEndY(graphic, page.state);
  page_detail::WriteSegment(page, layer::kComments, width, start, end);
}

// One bulged segment from start to end, counter-clockwise about the box's centre; the sweep is
// brought into range with the full turn VectorAngle works in.
void WriteArc(PageContext& page, const DboGraphicInstance* graphic) {
  const int32_t left = DboGraphicArcInst::sGetBoundingBoxLeft(graphic, page.state);
  const int32_t right = DboGraphicArcInst::sGetBoundingBoxRight(graphic, page.state);
  const int32_t top = DboGraphicArcInst::sGetBoundingBoxTop(graphic, page.state);
  const int32_t bottom = DboGraphicArcInst::sGetBoundingBoxBottom(graphic, page.state);
  const double sx = page.X(DboGraphicArcInst::sGetStartX(graphic, page.state));
  const double sy = page.Y(DboGraphicArcInst::sGetStartY(graphic, page.state));
  const double ex = page.X(DboGraphicArcInst::sGetEndX(graphic, page.state));
  const double ey = page.Y(DboGraphicArcInst::sGetEndY(graphic, page.state));
  const LineWidthT width = DboGraphicArcInst::sGetLineWidth(graphic, page.state);

  const Centre c = BoxCentre(page, left, right, top, bottom);
  const double endAngle = VectorAngle(ex - c.x, ey - c.y);
  const double startAngle = VectorAngle(sx - c.x, sy - c.y);
  double sweep = endAngle - startAngle;
  if (sweep < 0.0) {
    sweep += kFullTurn;
  }
  DxfPolylineBegin(page.out, layer::kComments, width);
  DxfBulgeVertex(page.out, layer::kComments, sx, sy, std::tan(sweep * 0.25));
  DxfVertex(page.out, layer::kComments, ex, ey);
  DxfSeqEnd(page.out, layer::kComments);
}

// Radii are taken as absolute values, so a box given right to left or bottom to top draws the
// same ellipse.
void WriteEllipse(PageContext& page, const DboGraphicInstance* graphic) {
  const int32_t left = DboGraphicEllipseInst::sGetBoundingBoxLeft(graphic, page.state);
  const int32_t right = DboGraphicEllipseInst::sGetBoundingBoxRight(graphic, page.state);
  const int32_t top = DboGraphicEllipseInst::sGetBoundingBoxTop(graphic, page.state);
  const int32_t bottom = DboGraphicEllipseInst::sGetBoundingBoxBottom(graphic, page.state);
  const LineWidthT width = DboGraphicEllipseInst::sGetLineWidth(graphic, page.state);

  const Centre c = BoxCentre(page, left, right, top, bottom);
  const double rx = std::fabs((static_cast<double>(right) - left) * 0.5) * page.s;
  const double ry = std::fabs((static_cast<double>(bottom) - top) * 0.5) * page.s;
  DxfClosedPolylineBegin(page.out, layer::kComments, width);
  DxfEllipseVertices(page.out, layer::kComments, c.x, c.y, rx, ry);
  DxfSeqEnd(page.out, layer::kComments);
}

// The vertices of a polygon or polyline, up to the first point the host fails to give. A
// missing point list leaves the polyline empty.
void WritePoints(PageContext& page, const DboPolygon* points) {
  ForEachPoint(points, page.state, [&](CPoint at) {
    DxfVertex(page.out, layer::kComments, page.X(at.x), page.Y(at.y));
  });
}

// Outlines only: a polygon's fill is not drawn.
void WritePolygon(PageContext& page, const DboGraphicInstance* graphic) {
  DxfClosedPolylineBegin(page.out, layer::kComments,
                         DboGraphicPolygonInst::sGetLineWidth(graphic, page.state));
  WritePoints(page, DboGraphicPolygonInst::GetDboPolygon(graphic, page.state));
  DxfSeqEnd(page.out, layer::kComments);
}

void WritePolyline(PageContext& page, const DboGraphicInstance* graphic) {
  DxfPolylineBegin(page.out, layer::kComments,
                   DboGraphicPolylineInst::sGetLineWidth(graphic, page.state));
  WritePoints(page, DboGraphicPolylineInst::GetDboPolyline(graphic, page.state));
  DxfSeqEnd(page.out, layer::kComments);
}

// The text box, flipped but not scaled. A quarter turn exchanges its top and bottom and a half
// turn its left and right, as the box is stored for turned text; three quarters keep it.
void WriteCommentText(PageContext& page, const DboGraphicInstance* graphic) {
  int32_t a = DboGraphicCommentTextInst::sGetBoundingBoxLeft(graphic, page.state);
  int32_t b = DboGraphicCommentTextInst::sGetBoundingBoxRight(graphic, page.state);
  int32_t c = page.H - DboGraphicCommentTextInst::sGetBoundingBoxTop(graphic, page.state);
  int32_t d = page.H - DboGraphicCommentTextInst::sGetBoundingBoxBottom(graphic, page.state);
  const RotationT rotation = graphic->GetRotation(page.state);
  if (rotation == 1) {
    std::swap(c, d);
  } else if (rotation == 2) {
    std::swap(a, b);
  }
  const LogFont font = DboGraphicCommentTextInst::sGetFont(graphic, page.state);
  std::string text = DboGraphicCommentTextInst::sGetText(graphic, page.state);
  DxfTextBox(page.out, layer::kComments, std::move(text), font, rotation, page.s, a, b, c, d);
}

// Only the bitmap's outline is drawn; the image stays behind.
void WriteBitMap(PageContext& page, const DboGraphicInstance* graphic) {
  CRect box;
  box.left = DboGraphicBitMapInst::sGetLeft(graphic, page.state);
  box.top = DboGraphicBitMapInst::sGetTop(graphic, page.state);
  box.right = DboGraphicBitMapInst::sGetRight(graphic, page.state);
  box.bottom = DboGraphicBitMapInst::sGetBottom(graphic, page.state);
  page_detail::WriteRectangle(page, layer::kBitmaps, 0, box);
}

void TranslateCommentGraphic(PageContext& page, const DboGraphicInstance* graphic) {
  switch (graphic->GetObjectType(page.state)) {
    case dbo_type::kGraphicBoxInst:
      WriteBox(page, graphic);
      break;
    case dbo_type::kGraphicLineInst:
      WriteLine(page, graphic);
      break;
    case dbo_type::kGraphicArcInst:
      WriteArc(page, graphic);
      break;
    case dbo_type::kGraphicEllipseInst:
      WriteEllipse(page, graphic);
      break;
    case dbo_type::kGraphicPolygonInst:
      WritePolygon(page, graphic);
      break;
    case dbo_type::kGraphicPolylineInst:
      WritePolyline(page, graphic);
      break;
    case dbo_type::kGraphicCommentTextInst:
      WriteCommentText(page, graphic);
      break;
    case dbo_type::kGraphicBitMapInst:
      WriteBitMap(page, graphic);
      break;
    default:  // kinds this export does not draw
      break;
  }
}

}  // namespace

void TranslateCommentGraphics(PageContext& page) {
  ForEachDbo(page.page.NewCommentGraphicsIter(page.state),
             &DboPageCommentGraphicsIter::NextCommentGraphic, page.state,
             [&](const DboGraphicInstance& graphic) { TranslateCommentGraphic(page, &graphic); });
}

}  // namespace kalmor
