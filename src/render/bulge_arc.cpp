#include "render/bulge_arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kalmor {

std::optional<BulgeArc> ArcFromBulge(DrawingPoint from, DrawingPoint to, double bulge) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double chord = std::hypot(dx, dy);
  // Below this a bulge bends a segment of any page-sized chord by far less than the file's
  // precision, and its radius would overflow: the segment is drawn straight.
  constexpr double kStraight = 1e-8;
  if (std::fabs(bulge) < kStraight || chord == 0) {
    return std::nullopt;
  }
  // The centre lies on the chord's perpendicular bisector, c(1 - b^2) / 4b to the left of the
  // chord (to the right for a negative bulge); b = 1 puts it on the chord: a half circle.
  const double offset = (1 - bulge * bulge) / (4 * bulge);
  BulgeArc arc;
  arc.centre = {(from.x + to.x) / 2 - dy * offset, (from.y + to.y) / 2 + dx * offset};
  arc.radius = chord * (1 + bulge * bulge) / (4 * std::fabs(bulge));
  arc.startAngle = std::atan2(from.y - arc.centre.y, from.x - arc.centre.x);
  arc.sweep = 4 * std::atan(bulge);
  return arc;
}

void ExtendByArc(const BulgeArc& arc, DrawingPoint& low, DrawingPoint& high) {
  const auto take = [&](double angle) {
    const double x = arc.centre.x + arc.radius * std::cos(angle);
    const double y = arc.centre.y + arc.radius * std::sin(angle);
    low = {std::min(low.x, x), std::min(low.y, y)};
    high = {std::max(high.x, x), std::max(high.y, y)};
  };
  take(arc.startAngle);
  take(arc.startAngle + arc.sweep);
  constexpr double kTurn = 2 * std::numbers::pi;
  for (int quarter = 0; quarter < 4; ++quarter) {
    const double axis = quarter * std::numbers::pi / 2;
    // How far the sweep must run from the start to reach this axis direction.
    double reach = arc.sweep > 0 ? axis - arc.startAngle : arc.startAngle - axis;
    reach = std::fmod(std::fmod(reach, kTurn) + kTurn, kTurn);
    if (reach <= std::fabs(arc.sweep)) {
      take(axis);
    }
  }
}

}  // namespace kalmor
