#include "kicad/shape_primitives.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <type_traits>

#include "kicad/units.h"

namespace kalmor::kicad::detail {
namespace {

using model::detail::ArcShape;
using model::detail::BitMapShape;
using model::detail::BoxShape;
using model::detail::EllipseShape;
using model::detail::GraphicList;
using model::detail::LineShape;
using model::detail::PolygonShape;
using model::detail::PolylineShape;
using model::detail::TextShape;

constexpr double kLineWidthMillimetres = 0.508;
constexpr int kBezierSegments = 16;
// Symbol arcs longer than this are split; the renderer's choice of the short way is then never
// in doubt, even after the ends are rounded to whole units.
constexpr double kLongestWholeArc = 135.0 * std::numbers::pi / 180.0;
constexpr double kLongestArcPiece = 120.0 * std::numbers::pi / 180.0;

struct Point {
  double x = 0;
  double y = 0;
};

CPoint Rounded(Point point) {
  return {static_cast<int32_t>(std::lround(point.x)), static_cast<int32_t>(std::lround(point.y))};
}

Point Placed(const Frame& frame, Vec point) {
  return {frame.X(point.x), frame.Y(point.y)};
}

void AppendLine(Point a, Point b, LineWidthT width, GraphicList& out) {
  auto line = model::detail::New<LineShape>();
  line->start = Rounded(a);
  line->end = Rounded(b);
  line->width = width;
  out.push_back(std::move(line));
}

void AppendPoints(const std::vector<Point>& points, bool closed, LineWidthT width,
                  GraphicList& out) {
  if (points.size() < 2) {
    return;
  }
  if (points.size() == 2 && !closed) {
    AppendLine(points[0], points[1], width, out);
    return;
  }
  std::vector<CPoint> rounded;
  rounded.reserve(points.size());
  for (const Point& point : points) {
    rounded.push_back(Rounded(point));
  }
  if (closed) {
    if (rounded.size() > 2 && rounded.front() == rounded.back()) {
      rounded.pop_back();  // the polygon closes itself
    }
    auto polygon = model::detail::New<PolygonShape>();
    polygon->points = std::move(rounded);
    polygon->width = width;
    out.push_back(std::move(polygon));
    return;
  }
  auto polyline = model::detail::New<PolylineShape>();
  polyline->points = std::move(rounded);
  polyline->width = width;
  out.push_back(std::move(polyline));
}

// The circle through three points, or nothing when they lie on a line.
bool CircleThrough(Point a, Point b, Point c, Point& centre, double& radius) {
  const double d = 2 * (a.x * (b.y - c.y) + b.x * (c.y - a.y) + c.x * (a.y - b.y));
  if (std::fabs(d) < 1e-9) {
    return false;
  }
  const double a2 = a.x * a.x + a.y * a.y;
  const double b2 = b.x * b.x + b.y * b.y;
  const double c2 = c.x * c.x + c.y * c.y;
  centre.x = (a2 * (b.y - c.y) + b2 * (c.y - a.y) + c2 * (a.y - b.y)) / d;
  centre.y = (a2 * (c.x - b.x) + b2 * (a.x - c.x) + c2 * (b.x - a.x)) / d;
  radius = std::hypot(a.x - centre.x, a.y - centre.y);
  return true;
}

double Normalised(double angle) {
  angle = std::fmod(angle, 2 * std::numbers::pi);
  return angle < 0 ? angle + 2 * std::numbers::pi : angle;
}

void AppendArc(Point start, Point mid, Point end, bool inSymbol, LineWidthT width,
               GraphicList& out) {
  Point centre;
  double radius = 0;
  if (!CircleThrough(start, mid, end, centre, radius) || radius < 0.5) {
    AppendLine(start, end, width, out);
    return;
  }
  const double from = std::atan2(start.y - centre.y, start.x - centre.x);
  const double toMid = Normalised(std::atan2(mid.y - centre.y, mid.x - centre.x) - from);
  const double toEnd = Normalised(std::atan2(end.y - centre.y, end.x - centre.x) - from);
  // Positive sweeps turn clockwise on the page (y downward).
  const double sweep = toMid <= toEnd ? toEnd : toEnd - 2 * std::numbers::pi;
  const CPoint middle = Rounded(centre);
  const auto r = static_cast<int32_t>(std::lround(radius));
  const CRect circle{middle.x - r, middle.y - r, middle.x + r, middle.y + r};
  const auto pointAt = [&](double angle) {
    return Rounded({centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)});
  };
  int pieces = 1;
  if (inSymbol && std::fabs(sweep) > kLongestWholeArc) {
    pieces = static_cast<int>(std::ceil(std::fabs(sweep) / kLongestArcPiece));
  }
  for (int piece = 0; piece < pieces; ++piece) {
    auto arc = model::detail::New<ArcShape>();
    arc->rect = circle;
    arc->start = pointAt(from + sweep * piece / pieces);
    arc->end = pointAt(from + sweep * (piece + 1) / pieces);
    if (!inSymbol && sweep > 0) {
      std::swap(arc->start, arc->end);  // a page arc runs counter-clockwise in the drawing
    }
    arc->width = width;
    out.push_back(std::move(arc));
  }
}

std::vector<Point> BezierPoints(const std::vector<Point>& control) {
  if (control.size() < 4) {
    return control;  // too few control points for a curve: their polyline
  }
  std::vector<Point> points{control.front()};
  for (std::size_t first = 0; first + 3 < control.size(); first += 3) {
    const Point& p0 = control[first];
    const Point& p1 = control[first + 1];
    const Point& p2 = control[first + 2];
    const Point& p3 = control[first + 3];
    for (int step = 1; step <= kBezierSegments; ++step) {
      const double t = static_cast<double>(step) / kBezierSegments;
      const double u = 1 - t;
      const double a = u * u * u;
      const double b = 3 * u * u * t;
      const double c = 3 * u * t * t;
      const double d = t * t * t;
      points.push_back(
          {a * p0.x + b * p1.x + c * p2.x + d * p3.x, a * p0.y + b * p1.y + c * p2.y + d * p3.y});
    }
  }
  return points;
}

template <typename Visit>
void VisitPoints(DboBaseObject& primitive, Visit&& visit) {
  if (auto* line = dynamic_cast<LineShape*>(&primitive)) {
    visit(line->start);
    visit(line->end);
  } else if (auto* box = dynamic_cast<BoxShape*>(&primitive)) {
    visit(box->rect);
  } else if (auto* arc = dynamic_cast<ArcShape*>(&primitive)) {
    visit(arc->rect);
    visit(arc->start);
    visit(arc->end);
  } else if (auto* ellipse = dynamic_cast<EllipseShape*>(&primitive)) {
    visit(ellipse->rect);
  } else if (auto* bitmap = dynamic_cast<BitMapShape*>(&primitive)) {
    visit(bitmap->rect);
  } else if (auto* text = dynamic_cast<TextShape*>(&primitive)) {
    visit(text->rect);
  } else if (auto* polygon = dynamic_cast<PolygonShape*>(&primitive)) {
    for (CPoint& point : polygon->points) {
      visit(point);
    }
  } else if (auto* polyline = dynamic_cast<PolylineShape*>(&primitive)) {
    for (CPoint& point : polyline->points) {
      visit(point);
    }
  }
}

}  // namespace

double Frame::X(double x) const {
  return ToUnitsExact(x) + dx;
}

double Frame::Y(double y) const {
  return ySign * ToUnitsExact(y) + dy;
}

LineWidthT LineWidthUnits(double millimetres) {
  return static_cast<LineWidthT>(std::floor(millimetres / kLineWidthMillimetres + 0.25));
}

void AppendShape(const Shape& shape, bool inSymbol, const Frame& frame, GraphicList& out) {
  const LineWidthT width = LineWidthUnits(shape.width);
  std::vector<Point> points;
  points.reserve(shape.points.size());
  for (const Vec& point : shape.points) {
    points.push_back(Placed(frame, point));
  }
  switch (shape.kind) {
    case Shape::Kind::kPolyline:
      AppendPoints(points, shape.filled && points.size() > 2, width, out);
      break;
    case Shape::Kind::kBezier:
      if (!points.empty()) {
        AppendPoints(BezierPoints(points), shape.filled && points.size() > 2, width, out);
      }
      break;
    case Shape::Kind::kRectangle: {
      const CPoint a = Rounded(points[0]);
      const CPoint b = Rounded(points[1]);
      auto box = model::detail::New<BoxShape>();
      box->rect = {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
      box->width = width;
      out.push_back(std::move(box));
      break;
    }
    case Shape::Kind::kCircle: {
      const CPoint centre = Rounded(points[0]);
      const auto r = static_cast<int32_t>(std::lround(ToUnitsExact(shape.radius)));
      auto ellipse = model::detail::New<EllipseShape>();
      ellipse->rect = {centre.x - r, centre.y - r, centre.x + r, centre.y + r};
      ellipse->width = width;
      out.push_back(std::move(ellipse));
      break;
    }
    case Shape::Kind::kArc:
      AppendArc(points[0], points[1], points[2], inSymbol, width, out);
      break;
  }
}

CRect PrimitiveExtent(const DboBaseObject& primitive) {
  bool any = false;
  CRect box;
  const auto add = [&](CPoint point) {
    if (!any) {
      box = {point.x, point.y, point.x, point.y};
      any = true;
      return;
    }
    box.left = std::min(box.left, point.x);
    box.top = std::min(box.top, point.y);
    box.right = std::max(box.right, point.x);
    box.bottom = std::max(box.bottom, point.y);
  };
  // Arcs count by their circle's box alone, as a page graphic's box does.
  if (const auto* arc = dynamic_cast<const ArcShape*>(&primitive)) {
    add({arc->rect.left, arc->rect.top});
    add({arc->rect.right, arc->rect.bottom});
    return box;
  }
  VisitPoints(const_cast<DboBaseObject&>(primitive), [&](auto& value) {
    if constexpr (std::is_same_v<std::decay_t<decltype(value)>, CRect>) {
      add({value.left, value.top});
      add({value.right, value.bottom});
    } else {
      add(value);
    }
  });
  return box;
}

int32_t PageGraphicType(const DboBaseObject& primitive) {
  DboState state;
  switch (primitive.GetObjectType(state)) {
    case dbo_type::kLine:
      return dbo_type::kGraphicLineInst;
    case dbo_type::kBox:
      return dbo_type::kGraphicBoxInst;
    case dbo_type::kArc:
      return dbo_type::kGraphicArcInst;
    case dbo_type::kEllipse:
      return dbo_type::kGraphicEllipseInst;
    case dbo_type::kPolygon:
      return dbo_type::kGraphicPolygonInst;
    case dbo_type::kPolyline:
      return dbo_type::kGraphicPolylineInst;
    case dbo_type::kCommentText:
      return dbo_type::kGraphicCommentTextInst;
    case dbo_type::kBitMap:
      return dbo_type::kGraphicBitMapInst;
    default:
      return 0;
  }
}

void Translate(DboBaseObject& primitive, CPoint by) {
  VisitPoints(primitive, [&](auto& value) {
    if constexpr (std::is_same_v<std::decay_t<decltype(value)>, CRect>) {
      value.left += by.x;
      value.right += by.x;
      value.top += by.y;
      value.bottom += by.y;
    } else {
      value.x += by.x;
      value.y += by.y;
    }
  });
}

}  // namespace kalmor::kicad::detail
