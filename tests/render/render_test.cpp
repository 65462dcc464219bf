// The DXF reader and the SVG renderer behind `kalmor render`.

#include "render/dxf_reader.h"
#include "render/svg_render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "render/bulge_arc.h"
#include "render/svg_writer.h"
#include "render/xml_text.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor {
namespace {

// Lines 1 to 14 of a page; the first entity record starts on line 15.
constexpr std::string_view kPageOpening =
    " 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1009\n 0\nENDSEC\n 0\nSECTION\n 2\nENTITIES\n";

std::string DxfPage(std::string_view entities) {
  return std::string(kPageOpening) + std::string(entities) + " 0\nENDSEC\n 0\nEOF\n";
}

// tests/render/data/bad_pages.json: each case is a whole "text", or the "entities" of a page, and
// the error names the line and the record.
TEST(DxfReader, RefusesWithTheLineAndTheRecord) {
  const nlohmann::json cases = nlohmann::json::parse(
      test::ReadFileBytes(test::SourceDir() / "tests/render/data/bad_pages.json"));
  ASSERT_GT(cases.size(), 20u);
  for (const nlohmann::json& c : cases) {
    SCOPED_TRACE(c["what"].get<std::string>());
    const std::string dxf = c.contains("text") ? c["text"].get<std::string>()
                                               : DxfPage(c["entities"].get<std::string>());
    const auto e = test::Thrown<DxfReadError>([&] { ReadDxf(dxf, "t.dxf"); });
    ASSERT_TRUE(e) << "read without an error";
    const std::size_t line = c["line"];
    EXPECT_EQ(e->what(), "t.dxf:" + std::to_string(line) + ": " + c["says"].get<std::string>());
    EXPECT_EQ(std::make_pair(e->line(), e->record()),
              std::make_pair(line, c["record"].get<std::string>()));
  }
}

std::string SmallPage() {
  return test::ReadFileBytes(test::SourceDir() / "tests/render/data/small_page.dxf");
}

TEST(DxfReader, ReadsLfAndCrLfPagesAlike) {
  const std::string crlf = SmallPage();
  std::string lf;
  for (const char c : crlf) {
    if (c != '\r') {
      lf += c;
    }
  }
  ASSERT_EQ(crlf.size() - lf.size(),
            static_cast<std::size_t>(std::count(lf.begin(), lf.end(), '\n')));
  EXPECT_EQ(RenderDxfToSvg(lf, "p.dxf"), RenderDxfToSvg(crlf, "p.dxf"));
}

// Cut anywhere before its EOF record, a page is refused, never read in part or crashed on.
TEST(DxfReader, RefusesEveryTruncationOfAPage) {
  const std::string page = SmallPage();
  const std::size_t whole = ReadDxf(page, "p.dxf").entities.size();
  ASSERT_EQ(page.substr(page.size() - 5), "EOF\r\n");
  for (std::size_t size = 0; size < page.size(); ++size) {
    const std::string_view prefix = std::string_view(page).substr(0, size);
    if (size >= page.size() - 2) {
      EXPECT_EQ(ReadDxf(prefix, "p.dxf").entities.size(), whole) << size;
    } else {
      EXPECT_THROW(ReadDxf(prefix, "p.dxf"), DxfReadError) << size;
    }
  }
}

struct ArcCase {
  const char* what;
  DrawingPoint from, to;
  double bulge;
  DrawingPoint centre;
  double radius, sweep;
  DrawingPoint low, high;  // the arc's extent
};

TEST(BulgeArc, CentreRadiusSweepAndExtentFollowTheBulge) {
  const double pi = std::numbers::pi;
  const ArcCase cases[] = {
      {"half, ccw", {-1, 0}, {1, 0}, 1, {0, 0}, 1, pi, {-1, -1}, {1, 0}},
      {"half, cw", {-1, 0}, {1, 0}, -1, {0, 0}, 1, -pi, {-1, 0}, {1, 1}},
      {"quarter", {1, 0}, {0, 1}, std::tan(pi / 8), {0, 0}, 1, pi / 2, {0, 0}, {1, 1}},
      // clang-format off
      {"three quarters, cw", {1, 0}, {0, 1}, -std::tan(3 * pi / 8), {0, 0}, 1, -1.5 * pi,
       {-1, -1}, {1, 1}},
      // clang-format on
      {"shallow", {0, 0}, {2, 0}, 0.5, {1, 0.75}, 1.25, 4 * std::atan(0.5), {0, -0.5}, {2, 0}},
  };
  for (const ArcCase& c : cases) {
    SCOPED_TRACE(c.what);
    const auto arc = ArcFromBulge(c.from, c.to, c.bulge);
    ASSERT_TRUE(arc.has_value());
    EXPECT_NEAR(arc->centre.x, c.centre.x, 1e-9);
    EXPECT_NEAR(arc->centre.y, c.centre.y, 1e-9);
    EXPECT_NEAR(arc->radius, c.radius, 1e-9);
    EXPECT_NEAR(arc->sweep, c.sweep, 1e-9);
    DrawingPoint low = c.from;
    DrawingPoint high = c.from;
    ExtendByArc(*arc, low, high);
    EXPECT_NEAR(low.x, c.low.x, 1e-9);
    EXPECT_NEAR(low.y, c.low.y, 1e-9);
    EXPECT_NEAR(high.x, c.high.x, 1e-9);
    EXPECT_NEAR(high.y, c.high.y, 1e-9);
  }
  EXPECT_FALSE(ArcFromBulge({0, 0}, {1, 0}, 0).has_value());
  EXPECT_FALSE(ArcFromBulge({1, 1}, {1, 1}, 1).has_value());
}

TEST(SvgRender, ViewBoxHoldsArcsAndTheLegend) {
  // A half circle of radius 10 below its chord, and a legend of seven rows at the right.
  const std::string svg = RenderDxfToSvg(
      DxfPage(" 0\nPOLYLINE\n 8\nCOMMENTS\n 66\n1\n"
              " 0\nVERTEX\n 8\nCOMMENTS\n 10\n0\n 20\n0\n 42\n1\n"
              " 0\nVERTEX\n 8\nCOMMENTS\n 10\n20\n 20\n0\n 0\nSEQEND\n 8\nCOMMENTS\n"),
      "extent.dxf");
  EXPECT_NE(svg.find(R"(viewBox="-80 -80 2740 1160")"), std::string::npos) << svg;
  EXPECT_NE(svg.find(R"(stroke-width="1.7125")"), std::string::npos) << svg;
  EXPECT_NE(svg.find(">COMMENTS (1)</text>"), std::string::npos);
  // A negative width, which a design may give, is drawn at its magnitude.
  const std::string wide = RenderDxfToSvg(
      DxfPage(" 0\nPOLYLINE\n 8\nCOMMENTS\n 66\n1\n 40\n-0.5\n 41\n-0.5\n"
              " 0\nVERTEX\n 8\nCOMMENTS\n 10\n0\n 20\n0\n"
              " 0\nVERTEX\n 8\nCOMMENTS\n 10\n20\n 20\n0\n 0\nSEQEND\n 8\nCOMMENTS\n"),
      "wide.dxf");
  EXPECT_NE(wide.find(R"(stroke-width="50")"), std::string::npos) << wide;
  EXPECT_NE(svg.find(">WIRE (0)</text>"), std::string::npos);

  const std::string empty = RenderDxfToSvg(DxfPage(""), "empty.dxf");
  EXPECT_EQ(empty.find("data-layer="), std::string::npos);
  EXPECT_NE(empty.find(R"(viewBox="-4 -104 252 148")"), std::string::npos) << empty;
}

TEST(SvgRender, MakesAnyTextSafeXml) {
  const std::pair<std::string, std::string> cases[] = {
      {"a&b<c>\"d'e", "a&amp;b&lt;c&gt;&quot;d&apos;e"},
      {"\xce\xa9\xe2\x82\xac\xf0\x9d\x84\x9e", "\xce\xa9\xe2\x82\xac\xf0\x9d\x84\x9e"},
      {"\xb5", "\xEF\xBF\xBD"},                                                  // a Latin-1 byte
      {"\xe2\x82x", "\xEF\xBF\xBD\xEF\xBF\xBDx"},                                // cut short
      {"\xc0\xaf", "\xEF\xBF\xBD\xEF\xBF\xBD"},                                  // overlong
      {"\xed\xa0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},                  // surrogate
      {"\xf4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},  // past U+10FFFF
      {std::string("a\x01\tb\0", 5), "a\xEF\xBF\xBD\tb\xEF\xBF\xBD"},  // controls, tab kept
      {"\xef\xbf\xbe", "\xEF\xBF\xBD"},                                // U+FFFE
  };
  for (const auto& [text, xml] : cases) {
    EXPECT_EQ(XmlText(text), xml) << text;
  }
}

TEST(SvgRender, NumbersHaveAtMostFourDecimalsAndNoNegativeZero) {
  const std::pair<double, const char*> cases[] = {{1.5, "1.5"},        {100, "100"},
                                                  {-0.0, "0"},         {-0.00004, "0"},
                                                  {0.00005, "0.0001"}, {12345.678, "12345.678"},
                                                  {-2.25, "-2.25"}};
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(SvgNumber(value), text) << value;
  }
}

// The picture of a small page of every layer and record kind, byte for byte. After a deliberate
// change of the picture, rewrite it with:
//   KALMOR_UPDATE_GOLDEN=1 build/tests/render_test --gtest_filter='*Golden*'
TEST(SvgRender, SmallPageMatchesItsGoldenPicture) {
  const auto data = test::SourceDir() / "tests/render/data";
  const std::string svg =
      RenderDxfToSvg(test::ReadFileBytes(data / "small_page.dxf"), "small_page.dxf");
  if (const char* update = std::getenv("KALMOR_UPDATE_GOLDEN"); update && *update == '1') {
    std::ofstream(data / "small_page.svg", std::ios::binary) << svg;
    GTEST_SKIP() << "rewrote " << (data / "small_page.svg");
  }
  EXPECT_EQ(svg, test::ReadFileBytes(data / "small_page.svg"));
}

}  // namespace
}  // namespace kalmor
