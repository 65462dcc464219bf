#include <string>

#include <gtest/gtest.h>

#include "dxf/polyline_records.h"
#include "page/records.h"
#include "page/translators.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using namespace testing::records;
using testing::Crlf;
using testing::OnePageDesign;
using testing::PageFixture;

std::string GraphicsBytes(const std::string& graphics) {
  PageFixture page(OnePageDesign(R"("graphics": [)" + graphics + "]"));
  TranslateCommentGraphics(page.context());
  return page.bytes();
}

TEST(CommentGraphics, BoxLineAndBitmapInOrderAndUnknownKindsSkipped) {
  const auto corners = [](std::string_view layer) {
    return Vertex(layer, "  1.0000", "  6.5000") + Vertex(layer, "  3.0000", "  6.5000") +
           Vertex(layer, "  3.0000", "  4.5000") + Vertex(layer, "  1.0000", "  4.5000");
  };
  EXPECT_EQ(
      GraphicsBytes(R"({"type": 54}, {"type": "box", "rect": [100, 200, 300, 400], "width": 2},
      {"type": "line", "start": [100, 200], "end": [300, 400]}, {"type": 63},
      {"type": "bitmap", "rect": [100, 200, 300, 400]})"),
      Crlf(Polyline("COMMENTS", "  0.0400", true) + corners("COMMENTS") + SeqEnd("COMMENTS") +
           Polyline("COMMENTS") + Vertex("COMMENTS", "  1.0000", "  6.5000") +
           Vertex("COMMENTS", "  3.0000", "  4.5000") + SeqEnd("COMMENTS") +
           Polyline("BITMAPS", "", true) + corners("BITMAPS") + SeqEnd("BITMAPS")));
}

TEST(CommentGraphics, ArcBulgesCounterClockwiseFromStartToEnd) {
  // About the centre (1.0, 7.5) of the box [0, 0, 200, 200]: east is page (200, 100), north
  // is page (100, 0). A quarter turn, then the same arc the long way round.
  const std::string arc = R"({"type": "arc", "rect": [0, 0, 200, 200], )";
  EXPECT_EQ(GraphicsBytes(arc + R"("start": [200, 100], "end": [100, 0]})"),
            Crlf(Polyline("COMMENTS") + Vertex("COMMENTS", "  2.0000", "  7.5000", "  0.4142") +
                 Vertex("COMMENTS", "  1.0000", "  8.5000") + SeqEnd("COMMENTS")));
  EXPECT_EQ(GraphicsBytes(arc + R"("start": [100, 0], "end": [200, 100], "width": 1})"),
            Crlf(Polyline("COMMENTS", "  0.0200") +
                 Vertex("COMMENTS", "  1.0000", "  8.5000", "  2.4142") +
                 Vertex("COMMENTS", "  2.0000", "  7.5000") + SeqEnd("COMMENTS")));
}

TEST(CommentGraphics, EllipseTakesAbsoluteRadiiWhicheverWayItsBoxRuns) {
  MemorySink expected;
  DxfClosedPolylineBegin(expected, "COMMENTS", 1);
  DxfEllipseVertices(expected, "COMMENTS", 3.0, 5.5, 2.0, 1.0);
  DxfSeqEnd(expected, "COMMENTS");
  for (const char* rect : {"[100, 200, 500, 400]", "[500, 400, 100, 200]"}) {
    EXPECT_EQ(
        GraphicsBytes(R"({"type": "ellipse", "width": 1, "rect": )" + std::string(rect) + "}"),
        expected.bytes())
        << rect;
  }
}

TEST(CommentGraphics, PolygonClosesPolylineStaysOpenAndNoPointsLeaveThemEmpty) {
  const std::string points = R"("points": [[0, 0], [100, 0], [100, 100]], "width": 1})";
  const std::string vertices = Vertex("COMMENTS", "  0.0000", "  8.5000") +
                               Vertex("COMMENTS", "  1.0000", "  8.5000") +
                               Vertex("COMMENTS", "  1.0000", "  7.5000") + SeqEnd("COMMENTS");
  EXPECT_EQ(GraphicsBytes(R"({"type": "polygon", )" + points),
            Crlf(Polyline("COMMENTS", "  0.0200", true) + vertices));
  EXPECT_EQ(GraphicsBytes(R"({"type": "polyline", )" + points),
            Crlf(Polyline("COMMENTS", "  0.0200") + vertices));
  EXPECT_EQ(GraphicsBytes(R"({"type": "polygon", "points": []})"),
            Crlf(Polyline("COMMENTS", "", true) + SeqEnd("COMMENTS")));
}

TEST(CommentGraphics, CommentTextIsLaidOutInItsFlippedBox) {
  // The box [100, 200, 300, 260] flips to x 100..300, y 650..590; font height 12 gives 0.0685.
  struct Case {
    int rotation;
    const char* text;
    std::string expected;
  };
  const Case cases[] = {
      {0, "NOTE", Text("COMMENTS", "  1.0000", "  6.4015", "  0.0685", "", "NOTE")},
      {1, "NOTE", Text("COMMENTS", "  1.0985", "  5.9000", "  0.0685", " 90.0000", "NOTE")},
      {2, "NOTE", Text("COMMENTS", "  3.0000", "  5.9985", "  0.0685", "180.0000", "NOTE")},
      {3, "NOTE", Text("COMMENTS", "  2.9015", "  6.5000", "  0.0685", "270.0000", "NOTE")},
      {0, R"(A\nB)",
       Text("COMMENTS", "  1.0000", "  6.4015", "  0.0685", "", "A") +
           Text("COMMENTS", "  1.0000", "  6.1015", "  0.0685", "", "B")},
      {1, R"(A\nB)",
       Text("COMMENTS", "  1.0985", "  5.9000", "  0.0685", " 90.0000", "A") +
           Text("COMMENTS", "  2.0985", "  5.9000", "  0.0685", " 90.0000", "B")},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(GraphicsBytes(R"({"type": "text", "rect": [100, 200, 300, 260], "text": ")" +
                            std::string(c.text) + R"(", "font": {"height": -12}, "rotation": )" +
                            std::to_string(c.rotation) + "}"),
              Crlf(c.expected))
        << "rotation " << c.rotation << ", " << c.text;
  }
}

}  // namespace
}  // namespace kalmor
