#include "kicad/label_shapes.h"

#include <cmath>
#include <numbers>

namespace kalmor::kicad::detail {
namespace {

using Point = LabelOutline::Point;

// KiCad's default label proportions: the box of a global label stands this part of the text
// height clear of the text, and a hierarchical label's text this part beyond its shape.
constexpr double kBoxExpansion = 0.375;
constexpr double kTextOffset = 0.15;
// A net class flag's end shape, as a part of the text height.
constexpr double kFlagShapeSize = 0.6;

// The outlines are drawn for a label whose text runs to the left of its anchor, then turned.
Point Turned(Point point, Spin spin) {
  switch (spin) {
    case Spin::kRight:
      return {-point.x, -point.y};
    case Spin::kUp:
      return {-point.y, point.x};
    case Spin::kBottom:
      return {point.y, -point.x};
    case Spin::kLeft:
      break;
  }
  return point;
}

void PlaceText(LabelOutline& outline, double distance, Spin spin) {
  outline.text = Turned({-distance, 0}, spin);
  outline.vertical = spin == Spin::kUp || spin == Spin::kBottom;
  outline.justify = spin == Spin::kRight || spin == Spin::kUp ? HJustify::kLeft : HJustify::kRight;
}

std::vector<Point> Scaled(std::initializer_list<Point> template_, double by, Spin spin) {
  std::vector<Point> points;
  for (const Point& point : template_) {
    points.push_back(Turned({point.x * by, point.y * by}, spin));
  }
  return points;
}

}  // namespace

Spin SpinOf(double angle) {
  switch (((static_cast<int>(std::lround(angle / 90.0)) % 4) + 4) % 4) {
    case 1:
      return Spin::kUp;
    case 2:
      return Spin::kLeft;
    case 3:
      return Spin::kBottom;
    default:
      return Spin::kRight;
  }
}

LabelOutline GlobalLabelOutline(std::string_view shape, Spin spin, double size, double textWidth) {
  const double margin = kBoxExpansion * size;
  const double half = size / 2 + margin;
  const double length = textWidth + 2 * margin;
  // A box from the anchor away along the text; a pointed end where the signal enters or leaves.
  const bool pointedNear = shape == "input" || shape == "bidirectional" || shape == "tri_state";
  const bool pointedFar = shape == "output" || shape == "bidirectional" || shape == "tri_state";
  const double shift = pointedNear ? -half : 0;
  std::vector<Point> points = {{pointedNear ? half : 0, 0},
                               {0, -half},
                               {-length, -half},
                               {pointedFar ? -length - half : -length, 0},
                               {-length, half},
                               {0, half}};
  LabelOutline outline;
  for (Point& point : points) {
    point = Turned({point.x + shift, point.y}, spin);
  }
  outline.polygons.push_back(std::move(points));
  PlaceText(outline, margin - shift, spin);
  return outline;
}

LabelOutline HierarchicalLabelOutline(std::string_view shape, Spin spin, double size) {
  const double half = size / 2;
  LabelOutline outline;
  if (shape == "input") {
    outline.polygons.push_back(Scaled({{0, 0}, {-1, -1}, {-2, -1}, {-2, 1}, {-1, 1}}, half, spin));
  } else if (shape == "output") {
    outline.polygons.push_back(Scaled({{-2, 0}, {-1, 1}, {0, 1}, {0, -1}, {-1, -1}}, half, spin));
  } else if (shape == "bidirectional" || shape == "tri_state") {
    outline.polygons.push_back(Scaled({{0, 0}, {-1, -1}, {-2, 0}, {-1, 1}}, half, spin));
  } else {
    outline.polygons.push_back(Scaled({{0, -1}, {-2, -1}, {-2, 1}, {0, 1}}, half, spin));
  }
  PlaceText(outline, 2 * half + kTextOffset * size, spin);
  return outline;
}

LabelOutline DirectiveLabelOutline(std::string_view shape, double angle, double size,
                                   double length) {
  // The flag stands up from its anchor at angle 0 and turns counter-clockwise with the angle.
  const double radians = angle * std::numbers::pi / 180.0;
  const Point up{-std::sin(radians), -std::cos(radians)};
  const Point across{up.y, -up.x};
  const double side = kFlagShapeSize * size;
  const auto at = [&](double along, double aside) {
    return Point{up.x * along + across.x * aside, up.y * along + across.y * aside};
  };
  LabelOutline outline;
  outline.polylines.push_back({{0, 0}, at(length - side / 2, 0)});
  if (shape == "diamond") {
    outline.polygons.push_back({at(length - side / 2, 0), at(length, side / 2),
                                at(length + side / 2, 0), at(length, -side / 2)});
  } else if (shape == "rectangle") {
    outline.polygons.push_back({at(length - side / 2, -side / 2), at(length - side / 2, side / 2),
                                at(length + side / 2, side / 2), at(length + side / 2, -side / 2)});
  } else {
    outline.circles.push_back({at(length, 0), side / 2});  // round, and dot
  }
  outline.text = at(length + side, 0);
  outline.vertical = false;
  return outline;
}

}  // namespace kalmor::kicad::detail
