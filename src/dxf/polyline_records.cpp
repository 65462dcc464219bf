#include "dxf/polyline_records.h"

#include <cmath>

#include "dxf/detail/piece.h"

namespace kalmor {

using dxf_detail::WritePiece;

namespace {

// Host line-width units to drawing units.
constexpr double kWidthUnit = 0.02;

void WriteBasePointAndWidth(ByteSink& out, double width) {
  WritePiece<" 10\n0.0\n 20\n0.0\n 30\n0.0\n">(out);
  if (width != 0.0) {
    WritePiece<" 40\n%8.4f\n 41\n%8.4f\n">(out, width, width);
  }
}

}  // namespace

void DxfPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width) {
  WritePiece<" 0\nPOLYLINE\n 8\n%s\n 66\n1\n">(out, layer);
  WriteBasePointAndWidth(out, static_cast<double>(width) * kWidthUnit);
}

void DxfClosedPolylineBegin(ByteSink& out, std::string_view layer, LineWidthT width) {
  WritePiece<" 0\nPOLYLINE\n 8\n%s\n 66\n1\n 70\n1\n">(out, layer);
  WriteBasePointAndWidth(out, static_cast<double>(width) * kWidthUnit);
}

void DxfVertex(ByteSink& out, std::string_view layer, double x, double y) {
  WritePiece<" 0\nVERTEX\n 8\n%s\n">(out, layer);
  WritePiece<" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n">(out, x, y);
}

void DxfBulgeVertex(ByteSink& out, std::string_view layer, double x, double y, double bulge) {
  WritePiece<" 0\nVERTEX\n 8\n%s\n">(out, layer);
  WritePiece<" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 42\n%8.4f\n">(out, x, y, bulge);
}

void DxfSeqEnd(ByteSink& out, std::string_view layer) {
  WritePiece<" 0\nSEQEND\n 8\n%s\n">(out, layer);
}

void DxfSegment(ByteSink& out, std::string_view layer, LineWidthT width, DxfPoint a, DxfPoint b) {
  DxfPolylineBegin(out, layer, width);
  DxfVertex(out, layer, a.x, a.y);
  DxfVertex(out, layer, b.x, b.y);
  DxfSeqEnd(out, layer);
}

void DxfRectangle(ByteSink& out, std::string_view layer, LineWidthT width,
                  const std::array<DxfPoint, 4>& corners) {
  DxfClosedPolylineBegin(out, layer, width);
  for (const DxfPoint& corner : corners) {
    DxfVertex(out, layer, corner.x, corner.y);
  }
  DxfSeqEnd(out, layer);
}

void DxfDot(ByteSink& out, std::string_view layer, double x, double y, double w) {
  // Two half circles of diameter w traced with width w: a disc of diameter 2w with no hole. The
  // width is already in drawing units, so it is written even when zero.
  WritePiece<" 0\nPOLYLINE\n 8\n%s\n 66\n1\n 70\n1\n">(out, layer);
  WritePiece<" 10\n0.0\n 20\n0.0\n 30\n0.0\n">(out);
  WritePiece<" 40\n%8.4f\n 41\n%8.4f\n">(out, w, w);
  for (const double vx : {x - w / 2.0, x + w / 2.0}) {
    WritePiece<" 0\nVERTEX\n 8\n%s\n">(out, layer);
    WritePiece<" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 42\n1.0\n">(out, vx, y);
  }
  DxfSeqEnd(out, layer);
}

void DxfEllipseVertices(ByteSink& out, std::string_view layer, double cx, double cy, double a,
                        double b) {
  // The vertices of the first quadrant after the end of the x axis lie an eighth, a quarter and
  // three eighths of a half turn round.
  constexpr double kDirection[3] = {kHalfTurn / 8, kHalfTurn / 4, 3 * (kHalfTurn / 8)};
  double ac[3];
  double bs[3];
  for (int i = 0; i < 3; ++i) {
    ac[i] = a * std::cos(kDirection[i]);
    bs[i] = b * std::sin(kDirection[i]);
  }

  // Segments near the ends of the long axis bulge more; from an axis ratio of 10 on the ellipse
  // is a sixteen-sided polygon.
  double b1 = 0.0;
  double b2 = 0.0;
  double b3 = 0.0;
  double b4 = 0.0;
  if (a / b > 0.1 && b / a > 0.1) {
    b1 = std::tan(kHalfTurn / 32 * std::log10(10.0 * a / b));
    b2 = std::tan(kHalfTurn / 64 * std::log10(100.0 * a / b));
    b3 = std::tan(kHalfTurn / 64 * std::log10(100.0 * b / a));
    b4 = std::tan(kHalfTurn / 32 * std::log10(10.0 * b / a));
  }

  struct Vertex {
    double x, y, bulge;
  };
  const Vertex vertices[16] = {
      {cx + a, cy, b1},
      {cx + ac[0], cy + bs[0], b2},
      {cx + ac[1], cy + bs[1], b3},
      {cx + ac[2], cy + bs[2], b4},
      {cx, cy + b, b4},
      {cx - ac[2], cy + bs[2], b3},
      {cx - ac[1], cy + bs[1], b2},
      {cx - ac[0], cy + bs[0], b1},
      {cx - a, cy, b1},
      {cx - ac[0], cy - bs[0], b2},
      {cx - ac[1], cy - bs[1], b3},
      {cx - ac[2], cy - bs[2], b4},
      {cx, cy - b, b4},
      {cx + ac[2], cy - bs[2], b3},
      {cx + ac[1], cy - bs[1], b2},
      {cx + ac[0], cy - bs[0], b1},
  };
  for (const Vertex& v : vertices) {
    DxfBulgeVertex(out, layer, v.x, v.y, v.bulge);
  }
}

double VectorAngle(double dx, double dy) {
  if (dx == 0.0) {
    return dy < 0.0 ? kThreeQuarterTurns : kQuarterTurn;
  }
  if (dy == 0.0) {
    return dx < 0.0 ? kHalfTurn : 0.0;
  }
  const double r = std::sqrt(std::pow(dx, 2.0) + std::pow(dy, 2.0));
  const double angle = std::asin(dy / r);
  if (dx < 0.0 && dy < 0.0) {
    return kHalfTurn + std::fabs(angle);
  }
  if (dx < 0.0 && dy > 0.0) {
    return kHalfTurn - angle;
  }
  if (dx > 0.0 && dy < 0.0) {
    return angle + kFullTurn;
  }
  return angle;  // first quadrant; NaN stays NaN
}

}  // namespace kalmor
