#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"
#include "page/symbol_graphics.h"
#include "support/entity_lines.h"
#include "support/fixed_metrics.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using test::EntityLines;
using Lines = std::vector<std::string>;

// Renders each vector of one symbol (held by the page's only global) into the box
// (100, 200, 200, 100) at page scale 0.01, geometry on "TITLE".
class SymbolGraphics : public ::testing::Test {
 protected:
  Lines Render(std::string_view vector, RotationT rotation = 0, int32_t mirror = 0,
               double symbolScale = 1.0) {
    test::PageFixture fixture(
        test::OnePageDesign(R"("globals": [{"symbol": {"bbox": [0, 0, 10, 10], "vectors": [)" +
                            std::string(vector) + "]}}]"));
    DboState state;
    const auto globals = fixture.context().page.NewGlobalsIter(state);
    const DboGlobal* global = globals->NextGlobal(state);
    const auto vectors = global->GetDefiningGraphicObject(state)->NewVectorsIter(0, state);
    MemorySink out;
    while (const DboBaseObject* object = vectors->NextVector(state)) {
      SymbolGraphicsRenderer(out, "TITLE", object, state, 0.01, 100, 200, 200, 100, rotation,
                             mirror, symbolScale);
    }
    return EntityLines(out.bytes());
  }
};

const std::string kOpen = "POLYLINE TITLE 66=1 10=0.0 20=0.0";
const std::string kClosed = "POLYLINE TITLE 66=1 70=1 10=0.0 20=0.0";
const std::string kEnd = "SEQEND TITLE";

std::string Vertex(std::string_view xy) {
  return "VERTEX TITLE " + std::string(xy);
}

struct KindCase {
  const char* vector;
  Lines records;
};

TEST_F(SymbolGraphics, DrawsEachKindAtTheUnturnedPlacement) {
  const KindCase cases[] = {
      {R"({"type": "line", "start": [0, 0], "end": [10, 0], "width": 5})",
       {"POLYLINE TITLE 66=1 10=0.0 20=0.0 40=0.1000 41=0.1000", Vertex("10=1.0000 20=2.0000"),
        Vertex("10=1.1000 20=2.0000"), kEnd}},
      {R"({"type": "box", "rect": [0, 0, 10, 20]})",
       {kClosed, Vertex("10=1.0000 20=2.0000"), Vertex("10=1.1000 20=2.0000"),
        Vertex("10=1.1000 20=1.8000"), Vertex("10=1.0000 20=1.8000"), kEnd}},
      {R"({"type": "arc", "rect": [0, 0, 20, 20], "start": [20, 10], "end": [10, 0]})",
       {kOpen, Vertex("10=1.2000 20=1.9000 42=0.4142"), Vertex("10=1.1000 20=2.0000"), kEnd}},
      // Three quarters one way are written as the quarter the other way, from either end.
      {R"({"type": "arc", "rect": [0, 0, 20, 20], "start": [20, 10], "end": [10, 20]})",
       {kOpen, Vertex("10=1.2000 20=1.9000 42=-0.4142"), Vertex("10=1.1000 20=1.8000"), kEnd}},
      {R"({"type": "arc", "rect": [0, 0, 20, 20], "start": [10, 20], "end": [20, 10]})",
       {kOpen, Vertex("10=1.1000 20=1.8000 42=0.4142"), Vertex("10=1.2000 20=1.9000"), kEnd}},
      {R"({"type": "polygon", "points": [[0, 0], [10, 0], [10, 10]]})",
       {kClosed, Vertex("10=1.0000 20=2.0000"), Vertex("10=1.1000 20=2.0000"),
        Vertex("10=1.1000 20=1.9000"), kEnd}},
      {R"({"type": "polyline", "points": [[0, 0], [10, 0], [10, 10]]})",
       {kOpen, Vertex("10=1.0000 20=2.0000"), Vertex("10=1.1000 20=2.0000"),
        Vertex("10=1.1000 20=1.9000"), kEnd}},
      {R"({"type": "bitmap", "rect": [0, 0, 10, 10]})",
       {kClosed, Vertex("10=1.0000 20=2.0000"), Vertex("10=1.1000 20=2.0000"),
        Vertex("10=1.1000 20=1.9000"), Vertex("10=1.0000 20=1.9000"), kEnd}},
      // Only member polylines, moved by the location and without their width.
      {R"({"type": "vector", "location": [5, 5], "members": [
           {"type": "line", "start": [0, 0], "end": [10, 0]},
           {"type": "polyline", "points": [[0, 0], [10, 0]], "width": 3},
           {"type": "arc", "rect": [0, 0, 20, 20], "start": [20, 10], "end": [10, 0]}]})",
       {kOpen, Vertex("10=1.0500 20=1.9500"), Vertex("10=1.1500 20=1.9500"), kEnd}},
      // By type code alone: drawn from the host's zero answers, and so at the origin.
      {R"({"type": 40})",
       {kClosed, Vertex("10=1.0000 20=2.0000"), Vertex("10=1.0000 20=2.0000"),
        Vertex("10=1.0000 20=2.0000"), Vertex("10=1.0000 20=2.0000"), kEnd}},
      {R"({"type": 44})", {kClosed, kEnd}},
      {R"({"type": 45})", {kOpen, kEnd}},
      {R"({"type": 48})", {}},
      {R"({"type": 99})", {}},
  };
  for (const KindCase& c : cases) {
    EXPECT_EQ(Render(c.vector), c.records) << c.vector;
  }
}

TEST_F(SymbolGraphics, QuarterTurnExchangesEllipseRadii) {
  // 20 wide and 10 high in the symbol: turned, 0.05 along x and 0.1 along y.
  const Lines lines = Render(R"({"type": "ellipse", "rect": [0, 0, 20, 10]})", 1);
  ASSERT_EQ(lines.size(), 18u);
  EXPECT_EQ(lines[1], Vertex("10=1.1000 20=1.1000 42=0.0687"));
  EXPECT_EQ(lines[5], Vertex("10=1.0500 20=1.2000 42=0.1284"));
}

TEST_F(SymbolGraphics, MirrorReversesArcsOnlyWhenNotQuarterTurned) {
  const char* arc = R"({"type": "arc", "rect": [0, 0, 20, 20], "start": [20, 10], "end": [10, 0]})";
  EXPECT_EQ(Render(arc, 0, 1), (Lines{kOpen, Vertex("10=1.9000 20=2.0000 42=0.4142"),
                                      Vertex("10=1.8000 20=1.9000"), kEnd}));
  EXPECT_EQ(Render(arc, 1, 1), (Lines{kOpen, Vertex("10=1.1000 20=1.8000 42=-0.4142"),
                                      Vertex("10=1.0000 20=1.9000"), kEnd}));
}

TEST_F(SymbolGraphics, SymbolScaleTruncatesCoordinatesAndWidthTowardZero) {
  EXPECT_EQ(
      Render(R"({"type": "line", "start": [-15, -3], "end": [15, 3], "width": 5})", 0, 0, 0.5),
      (Lines{"POLYLINE TITLE 66=1 10=0.0 20=0.0 40=0.0400 41=0.0400", Vertex("10=0.9300 20=2.0100"),
             Vertex("10=1.0700 20=1.9900"), kEnd}));
}

TEST_F(SymbolGraphics, CommentTextGoesToPartTextLaidOutInItsMeasuredBox) {
  test::FixedMetrics metrics;  // lines 12 high with a descent of 2, characters 5 wide
  metrics.metrics.descent = 2;
  metrics.charWidth = 5;
  const ScopedFontMetrics installed(metrics);
  // Two lines measure 22 high (24 less the descent): the second line sits 0.11 lower.
  EXPECT_EQ(Render(R"({"type": "text", "rect": [10, 20, 60, 60], "text": "A\rB"})"),
            (Lines{"TEXT PARTTEXT 10=1.1000 20=1.7186 40=0.0514 1=A",
                   "TEXT PARTTEXT 10=1.1000 20=1.6086 40=0.0514 1=B"}));
  // A height of 0 is the default height, scaled with the symbol.
  const auto text = [](int height) {
    return R"({"type": "text", "rect": [10, 20, 60, 60], "text": "A", "font": {"height": )" +
           std::to_string(height) + "}}";
  };
  EXPECT_EQ(Render(text(0), 0, 0, 2.0), Render(text(-9), 0, 0, 2.0));
}

}  // namespace
}  // namespace kalmor
