#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "page/translators.h"
#include "support/entity_lines.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using Lines = std::vector<std::string>;

Lines Graphics(const std::string& graphics) {
  test::PageFixture page(test::OnePageDesign(R"("graphics": [)" + graphics + "]"));
  TranslateCommentGraphics(page.context());
  return test::EntityLines(page.bytes());
}

// A polyline on `layer`: its header, a vertex per "10=x 20=y", and its end. `width` is printed as
// in the file, "" for none.
Lines Polyline(const std::string& layer, bool closed, const std::string& width,
               const Lines& vertices) {
  Lines lines = {"POLYLINE " + layer + " 66=1" + (closed ? " 70=1" : "") + " 10=0.0 20=0.0" +
                 (width.empty() ? "" : " 40=" + width + " 41=" + width)};
  for (const std::string& vertex : vertices) {
    lines.push_back("VERTEX " + layer + " " + vertex);
  }
  lines.push_back("SEQEND " + layer);
  return lines;
}

TEST(CommentGraphics, EachKindInOrderAndUnknownKindsSkipped) {
  const Lines corners = {"10=1.0000 20=6.5000", "10=3.0000 20=6.5000", "10=3.0000 20=4.5000",
                         "10=1.0000 20=4.5000"};
  const Lines points = {"10=0.0000 20=8.5000", "10=1.0000 20=8.5000", "10=1.0000 20=7.5000"};
  // About the centre (1.0, 7.5) of the box [0, 0, 200, 200]: east is page (200, 100), north is
  // page (100, 0). A quarter turn, then the same arc the long way round.
  const std::string arc = R"({"type": "arc", "rect": [0, 0, 200, 200], )";
  const struct {
    std::string graphic;
    Lines records;
  } cases[] = {
      {R"({"type": 54}, {"type": "box", "rect": [100, 200, 300, 400], "width": 2}, {"type": 63})",
       Polyline("COMMENTS", true, "0.0400", corners)},
      {R"({"type": "line", "start": [100, 200], "end": [300, 400]})",
       Polyline("COMMENTS", false, "", {corners[0], corners[2]})},
      {R"({"type": "bitmap", "rect": [100, 200, 300, 400]})",
       Polyline("BITMAPS", true, "", corners)},
      {arc + R"("start": [200, 100], "end": [100, 0]})",
       Polyline("COMMENTS", false, "", {"10=2.0000 20=7.5000 42=0.4142", "10=1.0000 20=8.5000"})},
      {arc + R"("start": [100, 0], "end": [200, 100], "width": 1})",
       Polyline("COMMENTS", false, "0.0200",
                {"10=1.0000 20=8.5000 42=2.4142", "10=2.0000 20=7.5000"})},
      {R"({"type": "polygon", "width": 1, "points": [[0, 0], [100, 0], [100, 100]]})",
       Polyline("COMMENTS", true, "0.0200", points)},
      {R"({"type": "polyline", "width": 1, "points": [[0, 0], [100, 0], [100, 100]]})",
       Polyline("COMMENTS", false, "0.0200", points)},
      {R"({"type": "polygon", "points": []})", Polyline("COMMENTS", true, "", {})},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Graphics(c.graphic), c.records) << c.graphic;
  }
}

TEST(CommentGraphics, EllipseTakesAbsoluteRadiiWhicheverWayItsBoxRuns) {
  const Lines forward =
      Graphics(R"({"type": "ellipse", "width": 1, "rect": [100, 200, 500, 400]})");
  ASSERT_EQ(forward.size(), 18u);
  EXPECT_EQ(forward[0], "POLYLINE COMMENTS 66=1 70=1 10=0.0 20=0.0 40=0.0200 41=0.0200");
  EXPECT_EQ(forward[1], "VERTEX COMMENTS 10=5.0000 20=5.5000 42=0.1284");  // the long axis' end
  EXPECT_EQ(forward[5], "VERTEX COMMENTS 10=3.0000 20=6.5000 42=0.0687");  // the short one's
  EXPECT_EQ(Graphics(R"({"type": "ellipse", "width": 1, "rect": [500, 400, 100, 200]})"), forward);
}

TEST(CommentGraphics, CommentTextIsLaidOutInItsFlippedBox) {
  // The box [100, 200, 300, 260] flips to x 100..300, y 650..590; font height 12 gives 0.0685.
  const struct {
    int rotation;
    const char* text;
    Lines records;
  } cases[] = {
      {0, "NOTE", {"TEXT COMMENTS 10=1.0000 20=6.4015 40=0.0685 1=NOTE"}},
      {1, "NOTE", {"TEXT COMMENTS 10=1.0985 20=5.9000 40=0.0685 50=90.0000 1=NOTE"}},
      {2, "NOTE", {"TEXT COMMENTS 10=3.0000 20=5.9985 40=0.0685 50=180.0000 1=NOTE"}},
      {3, "NOTE", {"TEXT COMMENTS 10=2.9015 20=6.5000 40=0.0685 50=270.0000 1=NOTE"}},
      {0,
       R"(A\nB)",
       {"TEXT COMMENTS 10=1.0000 20=6.4015 40=0.0685 1=A",
        "TEXT COMMENTS 10=1.0000 20=6.1015 40=0.0685 1=B"}},
      {1,
       R"(A\nB)",
       {"TEXT COMMENTS 10=1.0985 20=5.9000 40=0.0685 50=90.0000 1=A",
        "TEXT COMMENTS 10=2.0985 20=5.9000 40=0.0685 50=90.0000 1=B"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Graphics(R"({"type": "text", "rect": [100, 200, 300, 260], "text": ")" +
                       std::string(c.text) + R"(", "font": {"height": -12}, "rotation": )" +
                       std::to_string(c.rotation) + "}"),
              c.records)
        << "rotation " << c.rotation << ", " << c.text;
  }
}

}  // namespace
}  // namespace kalmor
