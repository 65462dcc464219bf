#include "dxf/line_records.h"

#include "dxf/detail/piece.h"

namespace kalmor {

using dxf_detail::WritePiece;

void DxfLine(ByteSink& out, std::string_view layer, double x1, double y1, double x2, double y2) {
  WritePiece<
      " 0\nLINE\n 8\n%s\n 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 11\n%8.4f\n 21\n%8.4f\n 31\n0.0\n">(
      out, layer, x1, y1, x2, y2);
}

void DxfCircle(ByteSink& out, std::string_view layer, double cx, double cy, double radius) {
  WritePiece<" 0\nCIRCLE\n 8\n%s\n 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 40\n%8.4f\n">(out, layer, cx,
                                                                                   cy, radius);
}

void DxfSolid(ByteSink& out, std::string_view layer, double ax, double ay, double bx, double by,
              double cx, double cy, double dx, double dy) {
  WritePiece<" 0\nSOLID\n 8\n%s\n">(out, layer);
  WritePiece<" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n">(out, ax, ay);
  WritePiece<" 11\n%8.4f\n 21\n%8.4f\n 31\n0.0\n">(out, bx, by);
  // A SOLID fills its corners zig-zag (first, second, fourth, third), so the outline's D comes
  // third and C fourth.
  WritePiece<" 12\n%8.4f\n 22\n%8.4f\n 32\n0.0\n">(out, dx, dy);
  WritePiece<" 13\n%8.4f\n 23\n%8.4f\n 33\n0.0\n">(out, cx, cy);
}

}  // namespace kalmor
