#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "dxf/byte_sink.h"
#include "dxf/text_records.h"
#include "dxf_test_sinks.h"

namespace kalmor {
namespace {

using test::GroupValues;

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

}  // namespace
}  // namespace kalmor
