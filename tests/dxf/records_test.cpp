#include <gtest/gtest.h>

#include <string>

#include "dxf/line_records.h"
#include "dxf/polyline_records.h"
#include "dxf/skeleton.h"
#include "dxf/text_records.h"
#include "dxf_test_sinks.h"

namespace kalmor {
namespace {

using test::GroupValues;

std::string Repeat(const std::string& s, int n) {
  std::string all;
  while (n-- > 0)
    all += s;
  return all;
}

TEST(Records, EmptyPageLineCircleAndSolid) {
  MemorySink out;
  DxfWriteHeader(out);
  DxfWriteEntitiesOpen(out);
  DxfWriteEnd(out);
  EXPECT_EQ(out.bytes(),
            " 0\r\nSECTION\r\n 2\r\nHEADER\r\n 9\r\n$ACADVER\r\n 1\r\nAC1009\r\n 0\r\nENDSEC\r\n"
            " 0\r\nSECTION\r\n 2\r\nENTITIES\r\n 0\r\nENDSEC\r\n 0\r\nEOF\r\n");
  out.clear();
  DxfLine(out, "TITLE", 1.5, -0.0, 1.5, -0.0);  // zero length, negative zero kept
  DxfCircle(out, "PARTS", 123456.5, 0.00004, -0.25);
  // Corners in outline order A, B, C, D: D is written third and C fourth.
  DxfSolid(out, "PARTS", 1, 2, 3, 4, 5, 6, 7, 8);
  EXPECT_EQ(
      out.bytes(),
      " 0\r\nLINE\r\n 8\r\nTITLE\r\n 10\r\n  1.5000\r\n 20\r\n -0.0000\r\n 30\r\n0.0\r\n"
      " 11\r\n  1.5000\r\n 21\r\n -0.0000\r\n 31\r\n0.0\r\n"
      " 0\r\nCIRCLE\r\n 8\r\nPARTS\r\n 10\r\n123456.5000\r\n 20\r\n  0.0000\r\n 30\r\n0.0\r\n"
      " 40\r\n -0.2500\r\n"
      " 0\r\nSOLID\r\n 8\r\nPARTS\r\n 10\r\n  1.0000\r\n 20\r\n  2.0000\r\n 30\r\n0.0\r\n"
      " 11\r\n  3.0000\r\n 21\r\n  4.0000\r\n 31\r\n0.0\r\n 12\r\n  7.0000\r\n 22\r\n  8.0000\r\n"
      " 32\r\n0.0\r\n 13\r\n  5.0000\r\n 23\r\n  6.0000\r\n 33\r\n0.0\r\n");
}

TEST(Records, LayerValuesOfAnyLength) {
  // Past the stack buffer a layer still comes out whole; a line feed in it ends its line with
  // CR LF and a NUL ends it.
  MemorySink out;
  const std::string longLayer(3000, 'L');
  DxfSeqEnd(out, longLayer);
  DxfSeqEnd(out, std::string("A\nB\0C", 5));
  EXPECT_EQ(out.bytes(),
            " 0\r\nSEQEND\r\n 8\r\n" + longLayer + "\r\n 0\r\nSEQEND\r\n 8\r\nA\r\nB\r\n");
}

TEST(Records, PolylinesVerticesAndDot) {
  MemorySink out;
  DxfPolylineBegin(out, "WIRE", 0);
  DxfClosedPolylineBegin(out, "WIRE", 5);
  DxfVertex(out, "WIRE", -1.25, 100000);
  DxfBulgeVertex(out, "WIRE", 0.5, 0.25, -0.41421356);
  DxfDot(out, "WIRE", 2.0, 3.0, 0.5);
  EXPECT_EQ(out.bytes(),
            " 0\r\nPOLYLINE\r\n 8\r\nWIRE\r\n 66\r\n1\r\n 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n"
            " 0\r\nPOLYLINE\r\n 8\r\nWIRE\r\n 66\r\n1\r\n 70\r\n1\r\n"
            " 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n 40\r\n  0.1000\r\n 41\r\n  0.1000\r\n"
            " 0\r\nVERTEX\r\n 8\r\nWIRE\r\n 10\r\n -1.2500\r\n 20\r\n100000.0000\r\n 30\r\n0.0\r\n"
            " 0\r\nVERTEX\r\n 8\r\nWIRE\r\n 10\r\n  0.5000\r\n 20\r\n  0.2500\r\n 30\r\n0.0\r\n"
            " 42\r\n -0.4142\r\n"
            " 0\r\nPOLYLINE\r\n 8\r\nWIRE\r\n 66\r\n1\r\n 70\r\n1\r\n"
            " 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n 40\r\n  0.5000\r\n 41\r\n  0.5000\r\n"
            " 0\r\nVERTEX\r\n 8\r\nWIRE\r\n 10\r\n  1.7500\r\n 20\r\n  3.0000\r\n 30\r\n0.0\r\n"
            " 42\r\n1.0\r\n"
            " 0\r\nVERTEX\r\n 8\r\nWIRE\r\n 10\r\n  2.2500\r\n 20\r\n  3.0000\r\n 30\r\n0.0\r\n"
            " 42\r\n1.0\r\n 0\r\nSEQEND\r\n 8\r\nWIRE\r\n");
}

TEST(Records, EllipseVerticesAndBulges) {
  MemorySink circle;
  DxfEllipseVertices(circle, "C", 10, 20, 1, 1);
  EXPECT_EQ(GroupValues(circle.bytes(), " 10"),
            " 11.0000| 10.9239| 10.7071| 10.3827| 10.0000|  9.6173|  9.2929|  9.0761|"
            "  9.0000|  9.0761|  9.2929|  9.6173| 10.0000| 10.3827| 10.7071| 10.9239|");
  EXPECT_EQ(GroupValues(circle.bytes(), " 20"),
            " 20.0000| 20.3827| 20.7071| 20.9239| 21.0000| 20.9239| 20.7071| 20.3827|"
            " 20.0000| 19.6173| 19.2929| 19.0761| 19.0000| 19.0761| 19.2929| 19.6173|");
  EXPECT_EQ(GroupValues(circle.bytes(), " 42"), Repeat("  0.0985|", 16));

  MemorySink flat;  // an axis ratio of 10 is already a polygon
  DxfEllipseVertices(flat, "C", 0, 0, 1, 0.1);
  EXPECT_EQ(GroupValues(flat.bytes(), " 42"), Repeat("  0.0000|", 16));
  MemorySink wide;  // in between, the ends of the long axis bulge most
  DxfEllipseVertices(wide, "C", 0, 0, 2, 1);
  EXPECT_EQ(GroupValues(wide.bytes(), " 42"),
            Repeat("  0.1284|  0.1134|  0.0836|  0.0687|  0.0687|  0.0836|  0.1134|  0.1284|", 2));
}

TEST(Records, VectorAngleUsesTheTruncatedTurns) {
  EXPECT_EQ(VectorAngle(0, 0), 1.570796);
  EXPECT_EQ(VectorAngle(0, 3), 1.570796);
  EXPECT_EQ(VectorAngle(0, -3), 4.712388);
  EXPECT_EQ(VectorAngle(-1, 0), 3.141592);
  EXPECT_EQ(VectorAngle(2, 0), 0.0);
  // One diagonal per quadrant; the truncated turns show in the seventh decimal.
  EXPECT_NEAR(VectorAngle(1, 1), 0.7853982, 1e-7);
  EXPECT_NEAR(VectorAngle(-1, 1), 2.3561938, 1e-7);
  EXPECT_NEAR(VectorAngle(-1, -1), 3.9269902, 1e-7);
  EXPECT_NEAR(VectorAngle(1, -1), 5.4977858, 1e-7);
}

}  // namespace
}  // namespace kalmor
