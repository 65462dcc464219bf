#include "text/vel_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "support/fixed_metrics.h"
#include "text/text_extent.h"
#include "text/vel_gdi_cache.h"

namespace kalmor {
namespace {

using test::FixedMetrics;

LogFont Font(int32_t height, int32_t escapement = 0, const char* face = "Arial") {
  LogFont font;
  font.lfHeight = height;
  font.lfEscapement = escapement;
  font.SetFaceName(face);
  return font;
}

CVelText Shape(const std::string& text, const LogFont& font, CPoint anchor = {}) {
  return CVelText(text, anchor, font);
}

TEST(TextFont, NormalisationAndCacheIdentity) {
  LogFont font = Font(9, 900);
  font.lfWidth = 6;
  font.lfQuality = 5;
  LogFont expected = Font(-9);
  expected.lfOutPrecision = 7;
  expected.lfClipPrecision = 2;
  expected.lfQuality = 1;
  const LogFont normal = NormaliseTextFont(font);
  EXPECT_EQ(std::memcmp(&expected, &normal, sizeof expected), 0);

  FixedMetrics fixed;
  ScopedFontMetrics scope(fixed);
  EXPECT_EQ(ApplicationGdiCache().GetLogFont(0, ApplicationGdiCache().Lookup(normal)).lfWidth, 5)
      << "a width of 0 becomes the average character width";

  CVelGdiCache cache;
  LogFont family = expected, fullFace = expected;
  family.lfPitchAndFamily = 0x22;                                     // the 28th byte
  std::memset(fullFace.lfFaceName, 'F', sizeof fullFace.lfFaceName);  // no terminator
  for (const LogFont& f : {expected, NormaliseTextFont(Font(-9, 0, "arial")), family, fullFace}) {
    const int32_t index = cache.Lookup(f);
    EXPECT_EQ(index, cache.Count() - 1) << "a new entry at the end";
    EXPECT_EQ(cache.Lookup(f), index) << "found again";
  }
  EXPECT_THROW(cache.GetLogFont(0, cache.Count()), std::out_of_range);
  EXPECT_THROW(cache.GetLogFont(1, 0), std::out_of_range);
}

// Fixed metrics: line height 12, descent 3, 7 units per character.
TEST(TextMeasure, LinesAnglesAndEvenSizes) {
  struct Case {
    const char* text;
    int32_t escapement;
    CRect expected;
  };
  const Case cases[] = {
      {"", 0, {10, 20, 10, 30}},            // one empty line: 12 - 3 = 9, made even
      {"abc", 0, {10, 20, 32, 30}},         // 21 wide, made even
      {"ab\r\nabcd", 0, {10, 20, 38, 42}},  // two lines; the line feed takes no room
      {"a\rb\rc", 0, {10, 20, 18, 54}},     // 36 - 3 = 33 high, made even
      {"a\nbc", 0, {10, 20, 32, 30}},       // a line feed alone breaks nothing
      {"abcd", 900, {10, -8, 20, 20}},     {"abcd", 1800, {-18, 11, 10, 21}},
      {"abcd", 2700, {1, 20, 11, 48}},     {"abcd", 450, {0, 0, 0, 0}},
      {"abcd", -900, {0, 0, 0, 0}},
  };
  FixedMetrics fixed;
  ScopedFontMetrics scope(fixed);
  for (const Case& c : cases) {
    EXPECT_EQ(Shape(c.text, Font(-9, c.escapement), {10, 20}).GetBoundingRect(), c.expected)
        << '"' << c.text << "\" at " << c.escapement;
  }
  EXPECT_EQ(MeasureTextExtent("10k\r22k", Font(-9, 900)), (CRect{0, 0, 22, 22}));

  fixed.metrics.height = 30000;  // sizes beyond 32 bits saturate
  EXPECT_EQ(Shape(std::string(100000, '\r'), Font(-9)).GetBoundingRect().bottom, INT32_MAX);
}

TEST(TextMeasure, WithoutMetricsALineIsAsHighAsItsFont) {
  FixedMetrics fixed;
  ScopedFontMetrics scope(fixed);
  fixed.readable = false;
  EXPECT_EQ(Shape("a\rb", Font(9)).GetBoundingRect(), (CRect{0, 0, 8, 18}));
  EXPECT_EQ(Shape("a\rb", Font(0)).GetBoundingRect(), (CRect{0, 0, 8, 18}))
      << "a height of 0 is the default height, 9";
}

}  // namespace
}  // namespace kalmor
