#include "render/svg_render.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "render/bulge_arc.h"
#include "render/svg_writer.h"
#include "render/xml_text.h"
#include "render_fixtures.h"
#include "support/paths.h"

namespace kalmor {
namespace {

using testing::DxfPage;
using testing::RenderKept;

// The drawn elements of a picture, one line each as the SVG holds them.
std::vector<std::string> Drawn(const std::string& svg) {
  std::vector<std::string> lines;
  std::istringstream in(svg);
  for (std::string line; std::getline(in, line);) {
    if (line.find(" data-layer=") != std::string::npos) {
      lines.push_back(line);
    }
  }
  return lines;
}

std::string Vertex(std::string_view layer, std::string_view x, std::string_view y,
                   std::string_view bulge = "") {
  std::string v = " 0\nVERTEX\n 8\n" + std::string(layer) + "\n 10\n" + std::string(x) + "\n 20\n" +
                  std::string(y) + "\n 30\n0.0\n";
  return bulge.empty() ? v : v + " 42\n" + std::string(bulge) + "\n";
}

std::string Polyline(std::string_view layer, std::string_view head, const std::string& vertices) {
  return " 0\nPOLYLINE\n 8\n" + std::string(layer) + "\n 66\n1\n" + std::string(head) + vertices +
         " 0\nSEQEND\n 8\n" + std::string(layer) + "\n";
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
      {"three quarters, cw",
       {1, 0},
       {0, 1},
       -std::tan(3 * pi / 8),
       {0, 0},
       1,
       -1.5 * pi,
       {-1, -1},
       {1, 1}},
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

TEST(SvgRender, DrawsGeometryWithYUpSolidsZigZagAndBulgesAsArcs) {
  const std::string dxf = DxfPage(
      " 0\nLINE\n 8\nWIRE\n 10\n1\n 20\n2\n 30\n0.0\n 11\n3\n 21\n4\n 31\n0.0\n"
      " 0\nCIRCLE\n 8\nPARTS\n 10\n5\n 20\n6\n 30\n0.0\n 40\n-0.5\n"
      " 0\nSOLID\n 8\nPARTS\n 10\n0\n 20\n0\n 11\n1\n 21\n0\n 12\n0\n 22\n1\n 13\n1\n 23\n1\n" +
      Polyline("COMMENTS", "", Vertex("COMMENTS", "0", "0") + Vertex("COMMENTS", "1", "0", "1")) +
      Polyline("COMMENTS", " 70\n1\n 40\n0.2\n 41\n0.2\n",
               Vertex("COMMENTS", "0", "0") + Vertex("COMMENTS", "1", "0") +
                   Vertex("COMMENTS", "1", "1", "-1")) +
      Polyline("COMMENTS", "",
               Vertex("COMMENTS", "3", "0", "2.4142") + Vertex("COMMENTS", "4", "0")) +
      Polyline("WIRE", " 70\n1\n 40\n0.1\n 41\n0.1\n",
               Vertex("WIRE", "1.95", "2", "1.0") + Vertex("WIRE", "2.05", "2", "1.0")) +
      Polyline("BITMAPS", " 70\n1\n", ""));
  const std::vector<std::string> expected = {
      R"(<line data-layer="WIRE" x1="100" y1="-200" x2="300" y2="-400" fill="none" stroke="#178a2a" stroke-width="1"/>)",
      R"(<circle data-layer="PARTS" cx="500" cy="-600" r="50" fill="none" stroke="#1f4fbf" stroke-width="1"/>)",
      R"(<polygon data-layer="PARTS" points="0,0 100,0 100,-100 0,-100" fill="#1f4fbf"/>)",
      // An open polyline's last bulge leads nowhere.
      R"(<path data-layer="COMMENTS" d="M 0 0 L 100 0" fill="none" stroke="#c0282d" stroke-width="1"/>)",
      R"(<path data-layer="COMMENTS" d="M 0 0 L 100 0 L 100 -100 A 70.7107 70.7107 0 0 1 0 0 Z" fill="none" stroke="#c0282d" stroke-width="20"/>)",
      R"(<path data-layer="COMMENTS" d="M 300 0 A 70.7104 70.7104 0 1 0 400 0" fill="none" stroke="#c0282d" stroke-width="1"/>)",
      // The filled dot: a disc of radius 0.1 about (2, 2).
      R"(<path data-layer="WIRE" d="M 195 -200 A 5 5 0 0 0 205 -200 A 5 5 0 0 0 195 -200 Z" fill="#178a2a" stroke="#178a2a" stroke-width="10"/>)",
      R"(<path data-layer="BITMAPS" d="" fill="none" stroke="#0a8a8a" stroke-width="1"/>)",
  };
  EXPECT_EQ(Drawn(RenderKept("geometry", dxf)), expected);
}

TEST(SvgRender, WritesTextsWithOverlinesRotationAndSafeCharacters) {
  const std::string dxf = DxfPage(
      " 0\nTEXT\n 8\nPARTS\n 10\n1\n 20\n2\n 40\n0.1\n 50\n 90.0000\n 1\nA%%oB%%oC<&>\xff\n"
      " 0\nTEXT\n 8\nWIRETEXT\n 10\n0\n 20\n0\n 40\n0.2\n 1\n %%Ox\xce\xa9 \n");
  const std::vector<std::string> expected = {
      R"svg(<text data-layer="PARTS" x="100" y="-200" font-size="14.5351" fill="#1f4fbf" )svg"
      R"svg(transform="rotate(-90 100 -200)" xml:space="preserve">)svg"
      R"svg(A<tspan text-decoration="overline">B</tspan>C&lt;&amp;&gt;)svg"
      "\xEF\xBF\xBD</text>",
      R"svg(<text data-layer="WIRETEXT" x="0" y="0" font-size="29.0703" fill="#b06000" )svg"
      R"svg(xml:space="preserve"> <tspan text-decoration="overline">x)svg"
      "\xCE\xA9 </tspan></text>",
  };
  EXPECT_EQ(Drawn(RenderKept("texts", dxf)), expected);
}

TEST(SvgRender, ViewBoxHoldsArcsAndTheLegend) {
  // A half circle of radius 10 below its chord, and a legend of seven rows at the right.
  const std::string svg = RenderKept(
      "extent",
      DxfPage(Polyline("COMMENTS", "",
                       Vertex("COMMENTS", "0", "0", "1") + Vertex("COMMENTS", "20", "0"))));
  EXPECT_NE(svg.find(R"(viewBox="-80 -80 2740 1160")"), std::string::npos) << svg;
  EXPECT_NE(svg.find(R"(stroke-width="1.7125")"), std::string::npos) << svg;
  EXPECT_NE(svg.find(">COMMENTS (1)</text>"), std::string::npos);
  EXPECT_NE(svg.find(">WIRE (0)</text>"), std::string::npos);

  const std::string empty = RenderKept("empty", DxfPage(""));
  EXPECT_TRUE(Drawn(empty).empty());
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
//   KALMOR_UPDATE_GOLDEN=1 build/tests/svg_render_test --gtest_filter='*Golden*'
TEST(SvgRender, SmallPageMatchesItsGoldenPicture) {
  const auto data = kalmor::testing::SourceDir() / "tests/render/data";
  const std::string svg =
      RenderKept("small_page", kalmor::testing::ReadFileBytes(data / "small_page.dxf"));
  if (const char* update = std::getenv("KALMOR_UPDATE_GOLDEN"); update && *update == '1') {
    std::ofstream(data / "small_page.svg", std::ios::binary) << svg;
    GTEST_SKIP() << "rewrote " << (data / "small_page.svg");
  }
  EXPECT_EQ(svg, kalmor::testing::ReadFileBytes(data / "small_page.svg"));
}

}  // namespace
}  // namespace kalmor
