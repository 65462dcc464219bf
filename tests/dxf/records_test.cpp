// The records of a DXF page, byte for byte: lines, circles, solids, polylines and texts, and the
// formatting of their real numbers.

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"
#include "dxf/detail/real_format.h"
#include "dxf/line_records.h"
#include "dxf/polyline_records.h"
#include "dxf/skeleton.h"
#include "dxf/text_records.h"

namespace kalmor {
namespace {

// The values of one group code (" 10", " 42", ...) in written order, each followed by '|'.
std::string GroupValues(std::string_view bytes, std::string_view code) {
  std::string values;
  std::vector<std::string_view> lines;
  for (std::size_t end; (end = bytes.find("\r\n")) != std::string_view::npos;) {
    lines.push_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 2);
  }
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    if (lines[i] == code) {
      values.append(lines[i + 1]).push_back('|');
    }
  }
  return values;
}

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

LogFont Font(int32_t height) {
  LogFont font;
  font.lfHeight = height;
  return font;
}

TEST(TextRecords, TextAtHostAnchorFollowsRotation) {
  // The height depends on the font height's magnitude only.
  EXPECT_EQ(DxfTextHeight(10, 0.01), DxfTextHeight(-10, 0.01));
  EXPECT_NEAR(DxfTextHeight(INT32_MIN, 1.0), 100.0 * std::sin(2147483648.0 / 175.0), 1e-9);
  MemorySink whole;
  DxfText(whole, "PARTTEXT", "U1", Font(-10), 1, 0.01, 100, 200);
  EXPECT_EQ(whole.bytes(),
            " 0\r\nTEXT\r\n 8\r\nPARTTEXT\r\n 10\r\n  1.0871\r\n 20\r\n  2.0000\r\n 30\r\n0.0\r\n"
            " 40\r\n  0.0571\r\n 50\r\n 90.0000\r\n 1\r\nU1\r\n");

  // Anchor (1, 2) in drawing units; the base line sits h + 0.03 = 0.0871 off it.
  const struct {
    RotationT rotation;
    const char *x, *y, *angle;
  } cases[] = {
      {0, "  1.0000|", "  1.9129|", ""},          {1, "  1.0871|", "  2.0000|", " 90.0000|"},
      {2, "  1.0000|", "  2.0871|", "180.0000|"}, {3, "  0.9129|", "  2.0000|", "270.0000|"},
      {7, "  1.0000|", "  1.9129|", ""},          {-1, "  1.0000|", "  1.9129|", ""},
  };
  for (const auto& c : cases) {
    MemorySink out;
    DxfText(out, "PARTTEXT", "U1", Font(10), c.rotation, 0.01, 100, 200);
    EXPECT_EQ(GroupValues(out.bytes(), " 10"), c.x) << "rotation " << c.rotation;
    EXPECT_EQ(GroupValues(out.bytes(), " 20"), c.y) << "rotation " << c.rotation;
    EXPECT_EQ(GroupValues(out.bytes(), " 50"), c.angle) << "rotation " << c.rotation;
  }

  // A font height of 0 asks for the default height.
  MemorySink zero, nine;
  for (MemorySink* out : {&zero, &nine}) {
    const LogFont font = Font(out == &zero ? 0 : -9);
    DxfText(*out, "PARTTEXT", "U1", font, 0, 0.01, 100, 200);
    DxfTextBox(*out, "PARTTEXT", "A\nB", font, 0, 0.01, 100, 300, 400, 1000);
  }
  EXPECT_EQ(zero.bytes(), nine.bytes());
}

TEST(TextRecords, SingleLineValuesStopAtTheFirstBreakAndAt250) {
  const std::string longText(300, 'x');
  const std::string first250 = longText.substr(0, 250) + "|";
  const struct {
    std::string text, value;
  } cases[] = {
      {longText, first250},
      {"A\nB", "A|"},
      {"A\rB", "A|"},
      {"\nB", "|"},
      {std::string(249, 'y') + "z\nB", std::string(249, 'y') + "z|"},
      // An escape that would not fit whole is left out.
      {std::string(243, 'y') + "\\U+03A9z", std::string(243, 'y') + "\\U+03A9|"},
      {std::string(244, 'y') + "\\U+03A9", std::string(244, 'y') + "|"},
  };
  for (const auto& c : cases) {
    MemorySink text;
    DxfText(text, "WIRETEXT", c.text, Font(-9), 0, 1.0, 0, 0);
    EXPECT_EQ(GroupValues(text.bytes(), " 1"), c.value) << c.text;
    MemorySink at;
    DxfTextAt(at, "WIRETEXT", 45.0, c.text, 0, 0, 1);
    EXPECT_EQ(GroupValues(at.bytes(), " 1"), c.value) << c.text;
  }
}

TEST(TextRecords, TextAtWritesTheAngleUnlessItIsExactlyZero) {
  const std::string head = " 0\r\nTEXT\r\n 8\r\nPARTTEXT\r\n";
  const std::string atOrigin =
      " 10\r\n  0.0000\r\n 20\r\n  0.0000\r\n 30\r\n0.0\r\n 40\r\n  1.0000\r\n";
  MemorySink out;
  DxfTextAt(out, "PARTTEXT", 90.0, std::string(300, 'x'), 1.0, -2.0, 0.125);
  DxfTextAt(out, "PARTTEXT", -0.0, "T", 0, 0, 1);
  DxfTextAt(out, "PARTTEXT", 1e-9, "T", 0, 0, 1);
  EXPECT_EQ(out.bytes(),
            head + " 10\r\n  1.0000\r\n 20\r\n -2.0000\r\n 30\r\n0.0\r\n 40\r\n  0.1250\r\n" +
                " 50\r\n 90.0000\r\n 1\r\n" + std::string(250, 'x') + "\r\n" +  //
                head + atOrigin + " 1\r\nT\r\n" +                               //
                head + atOrigin + " 50\r\n  0.0000\r\n 1\r\nT\r\n");
}

TEST(TextRecords, BoxLaysOutLinesOnePitchApart) {
  // Box x 1..3, y 4..10 in drawing units, two lines. Codes 0 and 1 keep the sign of the box's
  // extent and codes 2 and 3 do not; unknown codes start one pitch per break earlier.
  const struct {
    RotationT rotation;
    int32_t x1, x2, y1, y2;
    const char *x, *y, *angle;
  } cases[] = {
      {0, 100, 300, 400, 1000, "  1.0000|  1.0000|", "  3.9129|  6.9129|", ""},
      {0, 100, 300, 1000, 400, "  1.0000|  1.0000|", "  9.9129|  6.9129|", ""},
      {1, 100, 300, 400, 1000, "  1.0871|  2.0871|", "  4.0000|  4.0000|", " 90.0000| 90.0000|"},
      {1, 300, 100, 400, 1000, "  1.0871|  0.0871|", "  4.0000|  4.0000|", " 90.0000| 90.0000|"},
      {2, 100, 300, 1000, 400, "  3.0000|  3.0000|", "  4.0871|  7.0871|", "180.0000|180.0000|"},
      {3, 300, 100, 400, 1000, "  2.9129|  1.9129|", " 10.0000| 10.0000|", "270.0000|270.0000|"},
      {7, 100, 300, 400, 1000, "  1.0000|  1.0000|", "  0.9129|  3.9129|", ""},
      {-1, 100, 300, 400, 1000, "  1.0000|  1.0000|", "  0.9129|  3.9129|", ""},
  };
  for (const auto& c : cases) {
    MemorySink out;
    DxfTextBox(out, "COMMENTS", "A\nB", Font(-10), c.rotation, 0.01, c.x1, c.x2, c.y1, c.y2);
    EXPECT_EQ(GroupValues(out.bytes(), " 10"), c.x) << "rotation " << c.rotation;
    EXPECT_EQ(GroupValues(out.bytes(), " 20"), c.y) << "rotation " << c.rotation;
    EXPECT_EQ(GroupValues(out.bytes(), " 50"), c.angle) << "rotation " << c.rotation;
    EXPECT_EQ(GroupValues(out.bytes(), " 1"), "A|B|") << "rotation " << c.rotation;
  }
  // A single line is not moved by an unknown code.
  MemorySink single;
  DxfTextBox(single, "COMMENTS", "A", Font(-10), 7, 0.01, 100, 300, 400, 1000);
  EXPECT_EQ(GroupValues(single.bytes(), " 20"), "  3.9129|");
}

TEST(TextRecords, BoxLineValues) {
  const std::string longLine(300, 'x');
  const struct {
    std::string text, values;
  } cases[] = {
      {longLine, longLine.substr(0, 250) + "|"},
      {"A\r\nB", "A| |B|"},  // CR LF is two breaks, the empty line is a blank
      {"A\n\n", "A| | |"},
      {"\n" + longLine, " |" + longLine.substr(0, 250) + "|"},
      {longLine.substr(0, 240) + "\\U+D83D\\U+DE00", longLine.substr(0, 240) + "|"},
  };
  for (const auto& c : cases) {
    MemorySink out;
    DxfTextBox(out, "COMMENTS", c.text, Font(-10), 0, 0.01, 0, 0, 0, 300);
    EXPECT_EQ(GroupValues(out.bytes(), " 1"), c.values) << c.text;
  }
  // An empty line is a blank; an empty single line is an empty value.
  MemorySink out;
  DxfTextBox(out, "COMMENTS", "\n", Font(-10), 0, 0.01, 0, 0, 0, 300);
  DxfTextBox(out, "COMMENTS", "", Font(-10), 0, 0.01, 0, 0, 0, 300);
  EXPECT_EQ(GroupValues(out.bytes(), " 1"), " | ||");
  EXPECT_EQ(out.bytes().substr(out.bytes().size() - 8), "\r\n 1\r\n\r\n");
}

TEST(TextRecords, OverlineNotation) {
  const struct {
    const char* text;
    const char* dxf;
    int32_t visible;
  } cases[] = {
      {"", "", 0},
      {"RESET", "RESET", 5},
      {"R\\E\\S\\E\\T\\", "%%oRESET%%o", 5},
      {"AB\\C", "A%%oB%%oC", 3},
      {"\\A", "\\A", 1},  // the first character cannot be a mark
      {"A\\B\\CD\\", "%%oAB%%oC%%oD%%o", 4},
      {"A\\\\B", "%%oA%%o%%o\\%%oB", 2},
      {"EN\\", "E%%oN%%o", 2},
      // An escape is one character, and its backslash no mark.
      {"A\\U+03A9", "A\\U+03A9", 2},
      {"\\U+03A9\\", "%%o\\U+03A9%%o", 1},
      {"A\\\\U+D83D\\U+DE00\\", "%%oA\\U+D83D\\U+DE00%%o", 2},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(OverlineToDxf(c.text), c.dxf) << c.text;
    EXPECT_EQ(VisibleTextLength(c.text), c.visible) << c.text;
  }
}

std::string Ours(double value) {
  char buffer[dxf_detail::kMaxRealChars];
  return std::string(buffer, dxf_detail::AppendReal(buffer, value));
}

std::string CLibrary(double value) {
  char buffer[400];
  const int n = std::snprintf(buffer, sizeof buffer, "%8.4f", value);
  return std::string(buffer, static_cast<std::size_t>(n));
}

// Counts the values of a sweep (and their negatives) formatted unlike the C library's own
// "%8.4f", reporting the first few.
class Sweep {
 public:
  ~Sweep() { EXPECT_EQ(mismatches_, 0u); }
  void Check(double value) {
    for (const double v : {value, -value}) {
      char ours[dxf_detail::kMaxRealChars];
      char theirs[400];
      const auto n = static_cast<std::size_t>(std::snprintf(theirs, sizeof theirs, "%8.4f", v));
      const char* end = dxf_detail::AppendReal(ours, v);
      ++checked_;
      if ((static_cast<std::size_t>(end - ours) != n || std::memcmp(ours, theirs, n) != 0) &&
          ++mismatches_ <= 10) {
        ADD_FAILURE() << v << ": '" << Ours(v) << "' instead of '" << CLibrary(v) << "'";
      }
    }
  }
  // k / 10000 as the nearest double and its neighbours, and the rounding point half a
  // ten-thousandth above it with its neighbours.
  void CheckAround(int64_t k) {
    for (const double v :
         {static_cast<double>(k) / 10000.0, (static_cast<double>(k) + 0.5) / 10000.0}) {
      Check(v);
      Check(std::nextafter(v, 0.0));
      Check(std::nextafter(v, 1e300));
    }
  }
  std::size_t checked() const { return checked_; }

 private:
  std::size_t checked_ = 0;
  std::size_t mismatches_ = 0;
};

// The sanitizer build runs every sweep, thinned.
#if defined(__SANITIZE_ADDRESS__)
constexpr int64_t kThinning = 16;
#else
constexpr int64_t kThinning = 1;
#endif

TEST(RealFormat, FieldsOfNotableValues) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    double value;
    const char* expected;
  } cases[] = {
      // clang-format off
      {1.5, "  1.5000"}, {-123.25, "-123.2500"}, {12345.678, "12345.6780"}, {0.0, "  0.0000"},
      {-0.0, " -0.0000"}, {-1e-300, " -0.0000"}, {4.9e-324, "  0.0000"},
      {100000.0, "100000.0000"}, {99999.99996, "100000.0000"}, {1e17, "100000000000000000.0000"},
      {0.03125, "  0.0312"}, {0.09375, "  0.0938"}, {-2.71875, " -2.7188"},  // ties to even
      {nan, "     nan"}, {-nan, "    -nan"}, {inf, "     inf"}, {-inf, "    -inf"},
      // clang-format on
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Ours(c.value), c.expected) << "value " << c.value;
  }
  const std::string widest = Ours(-DBL_MAX);
  EXPECT_EQ(widest.size(), dxf_detail::kMaxRealChars);
  EXPECT_EQ(widest, CLibrary(-DBL_MAX));
}

// Every kind of double the writer can meet, against the C library's own "%8.4f".
TEST(RealFormat, MatchesTheCLibraryOnVariedValues) {
  std::mt19937_64 random(20240611);
  Sweep sweep;
  const auto check = [&](double value) { sweep.Check(value); };
  for (int i = 0; i < 60000; ++i) {  // random bit patterns: every exponent, denormals, NaNs
    const uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    check(value);
  }
  std::uniform_int_distribution<int64_t> digits(1, 999999999);
  for (int exponent = -21; exponent <= 11; ++exponent) {  // random decimals at every magnitude
    for (int i = 0; i < 1500; ++i) {
      check(static_cast<double>(digits(random)) * std::pow(10.0, exponent));
    }
  }
  for (int64_t k = 0; k < 20000; ++k) {  // around the rounding points of the fourth decimal
    const double boundary =
        (static_cast<double>(k) + 0.5) / 10000.0 + static_cast<double>(k % 7) * 1e3;
    check(boundary);
    check(std::nextafter(boundary, 0.0));
    check(std::nextafter(boundary, 1e300));
    check(static_cast<double>(digits(random)) * 1e8);  // integers up to 1e17
  }
  for (int m = 1; m <= 24; ++m) {  // exact binary ties: odd k / 2^m, times powers of ten
    for (int64_t k = 1; k < 1500; k += 2) {
      for (int64_t scaled = k, n = 0; n <= 6; ++n, scaled *= 10) {
        check(std::ldexp(static_cast<double>(scaled), -m));
      }
    }
  }
  EXPECT_GT(sweep.checked(), 300000u);
}

// Every value of the form k / 10000 for |k| < 10^9, one ulp either side of it and of the
// rounding point above it: all of them up to 2^20, then a dense sample, with every exact tie
// (an odd multiple of 1/32) below 10^5.
TEST(RealFormat, MatchesTheCLibraryAtEveryTenThousandth) {
  Sweep sweep;
  for (int64_t k = 0; k < (int64_t{1} << 20); k += kThinning) {
    sweep.CheckAround(k);
  }
  std::mt19937_64 random(977);
  const int64_t step = 1000 * kThinning;
  for (int64_t base = int64_t{1} << 20; base < 1'000'000'000; base += step) {
    sweep.CheckAround(base + static_cast<int64_t>(random() % static_cast<uint64_t>(step)));
  }
  for (int64_t m = 1; m < 3'200'000; m += 2 * kThinning) {
    sweep.Check(static_cast<double>(m) / 32.0);
  }
  EXPECT_GT(sweep.checked(), 24'000'000u / kThinning);
}

}  // namespace
}  // namespace kalmor
