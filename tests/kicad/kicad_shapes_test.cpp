// KiCad's shapes as the design's primitives, label outlines, image sizes and the drawing sheet.

#include <cmath>
#include <memory>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

#include "kicad/drawing_sheet.h"
#include "kicad/image_size.h"
#include "kicad/label_shapes.h"
#include "kicad/shape_primitives.h"
#include "model/graphics.h"

namespace kalmor::kicad::detail {
namespace {

using model::detail::ArcShape;
using model::detail::GraphicList;

// The shapes are made in a design's arena.
struct InArena {
  model::detail::Arena arena;
  model::detail::Arena::Scope scope{arena};
};

// The sweep of an arc primitive as the drawing shows it (y upward), counter-clockwise positive.
double DrawnSweep(const ArcShape& arc) {
  const double cx = (arc.rect.left + arc.rect.right) / 2.0;
  const double cy = (arc.rect.top + arc.rect.bottom) / 2.0;
  const double from = std::atan2(-(arc.start.y - cy), arc.start.x - cx);
  const double to = std::atan2(-(arc.end.y - cy), arc.end.x - cx);
  return std::remainder(to - from, 2 * std::numbers::pi) * 180 / std::numbers::pi;
}

TEST(ShapePrimitives, LongSymbolArcsComeInPiecesAndPageArcsRunCounterClockwise) {
  const InArena arena;
  struct Case {
    Vec mid;
    bool inSymbol;
    std::size_t pieces;
    double sweep;  // of each piece, as drawn
  };
  // A semicircle of radius 25.4 mm from (25.4, 0) to (-25.4, 0), through the top or the bottom
  // of the page, and a quarter circle.
  const Case cases[] = {
      {{0, -25.4}, true, 2, 90},    // over the top, clockwise on the page: two quarters
      {{0, 25.4}, true, 2, -90},    // under the bottom
      {{0, -25.4}, false, 1, 180},  // a page arc is whole, and always counter-clockwise
      {{0, 25.4}, false, 1, 180},
  };
  for (const Case& c : cases) {
    Shape arc;
    arc.kind = Shape::Kind::kArc;
    arc.points = {{25.4, 0}, c.mid, {-25.4, 0}};
    GraphicList out;
    AppendShape(arc, c.inSymbol, Frame{}, out);
    ASSERT_EQ(out.size(), c.pieces);
    for (const auto& piece : out) {
      const auto& shape = dynamic_cast<const ArcShape&>(*piece);
      EXPECT_EQ(shape.rect, (CRect{-100, -100, 100, 100}));
      EXPECT_NEAR(std::fabs(DrawnSweep(shape)), std::fabs(c.sweep), 0.5);
      if (!c.inSymbol) {
        // Counter-clockwise in the drawing: over the top from right to left, under the bottom
        // from left to right.
        EXPECT_EQ(shape.end.x < shape.start.x, c.mid.y < 0) << c.mid.y;
      }
    }
  }
  Shape quarter;
  quarter.kind = Shape::Kind::kArc;
  quarter.points = {{2.54, 0}, {1.796, -1.796}, {0, -2.54}};
  GraphicList out;
  AppendShape(quarter, true, Frame{}, out);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_NEAR(DrawnSweep(dynamic_cast<const ArcShape&>(*out[0])), 90, 0.5);
}

TEST(ShapePrimitives, KindsWidthsAndLibraryAxes) {
  const InArena arena;
  struct Case {
    Shape::Kind kind;
    std::vector<Vec> points;
    bool filled;
    double width;
    int32_t type;
    LineWidthT units;
    int32_t top;  // library y upward, page y downward
  };
  using enum Shape::Kind;
  // clang-format off
  const Case cases[] = {
      {kPolyline, {{0, 0}, {2.54, 0}}, false, 0, dbo_type::kLine, 0, 0},
      {kPolyline, {{0, 0}, {2.54, 0}, {2.54, 2.54}}, false, 0.254, dbo_type::kPolyline, 0, -10},
      {kPolyline, {{0, 0}, {2.54, 0}, {2.54, 2.54}, {0, 0}}, true, 0.381, dbo_type::kPolygon, 1,
       -10},
      {kRectangle, {{2.54, 2.54}, {0, 0}}, false, 1.016, dbo_type::kBox, 2, -10},
      // The curve rises to 0.75 mm, three quarters of its control points' height.
      {kBezier, {{0, 0}, {1, 1}, {2, 1}, {3, 0}}, false, 0, dbo_type::kPolyline, 0, -3},
  };
  // clang-format on
  for (const Case& c : cases) {
    Shape shape;
    shape.kind = c.kind;
    shape.points = c.points;
    shape.filled = c.filled;
    shape.width = c.width;
    GraphicList out;
    AppendShape(shape, true, Frame{0, 0, -1}, out);
    ASSERT_EQ(out.size(), 1u);
    DboState state;
    EXPECT_EQ(out[0]->GetObjectType(state), c.type);
    EXPECT_EQ(PrimitiveExtent(*out[0]).top, c.top);
    const auto* widened = dynamic_cast<const model::detail::PolylineShape*>(out[0]);
    if (widened != nullptr) {
      EXPECT_EQ(widened->width, c.units);
    }
  }
  EXPECT_EQ(LineWidthUnits(0.15), 0);
  EXPECT_EQ(LineWidthUnits(0.38), 0);
  EXPECT_EQ(LineWidthUnits(0.4), 1);
  EXPECT_EQ(LineWidthUnits(1.2), 2);
}

TEST(LabelShapes, OutlinesPointWhereKiCadPointsThem) {
  // An input global label of height 10 whose text (40 long) runs to the left of its anchor: a
  // point at the anchor, a box behind it 40 + 2 * 3.75 long.
  const LabelOutline left = GlobalLabelOutline("input", Spin::kLeft, 10, 40);
  ASSERT_EQ(left.polygons.size(), 1u);
  const auto& points = left.polygons[0];
  EXPECT_DOUBLE_EQ(points[0].x, 0);
  EXPECT_DOUBLE_EQ(points[0].y, 0);
  EXPECT_DOUBLE_EQ(points[2].x, -8.75 - 47.5);
  EXPECT_DOUBLE_EQ(points[2].y, -8.75);
  EXPECT_DOUBLE_EQ(left.text.x, -12.5);
  EXPECT_EQ(left.justify, HJustify::kRight);
  // Turned to run upward, the same outline stands above the anchor.
  const LabelOutline up = GlobalLabelOutline("input", Spin::kUp, 10, 40);
  EXPECT_DOUBLE_EQ(up.polygons[0][2].y, -8.75 - 47.5);
  EXPECT_TRUE(up.vertical);
  EXPECT_EQ(up.justify, HJustify::kLeft);
  // A hierarchical label: its shape two half heights long, its text beyond it.
  const LabelOutline port = HierarchicalLabelOutline("output", Spin::kRight, 10);
  EXPECT_DOUBLE_EQ(port.polygons[0][0].x, 10);
  EXPECT_DOUBLE_EQ(port.text.x, 11.5);
  EXPECT_EQ(port.justify, HJustify::kLeft);
  // A net class flag stands up from its anchor at angle 0, and lies left of it at 90.
  EXPECT_LT(DirectiveLabelOutline("round", 0, 10, 10).circles.at(0).centre.y, -9);
  EXPECT_LT(DirectiveLabelOutline("round", 90, 10, 10).circles.at(0).centre.x, -9);
  EXPECT_EQ(SpinOf(-90), Spin::kBottom);
  EXPECT_EQ(SpinOf(540), Spin::kLeft);
}

// In base64, as a schematic embeds them: a PNG of 600 x 300 pixels with no resolution, the same
// with 23622 pixels a metre, and a JPEG of 150 x 75 pixels at 150 an inch.
constexpr char kPng[] = "iVBORw0KGgoAAAANSUhEUgAAAlgAAAEsAAAAAABjcmMh";
constexpr char kPngAt600[] =
    "iVBORw0KGgoAAAANSUhEUgAAAlgAAAEsAAAAAABjcmMhAAAACXBIWXMAAFxGAABcRgFjcmMh";
constexpr char kJpeg[] = "/9j/4AAQSkZJRgABAQEAlgCWAAD/wAARCABLAJY=";

TEST(ImageSize, ReadsPixelsAndResolution) {
  struct Case {
    std::string data;
    double width;
    double height;
  };
  const Case cases[] = {
      {kPng, 50.8, 25.4},                                  // 300 pixels an inch, as KiCad takes it
      {kPngAt600, 25.4, 12.7},                             // 600 an inch, as the image says
      {"  " + std::string(kPngAt600) + "\n", 25.4, 12.7},  // blanks in the data
      {kJpeg, 25.4, 12.7},
  };
  for (const Case& c : cases) {
    const std::optional<ImageSize> size = ImageSizeOf(c.data);
    ASSERT_TRUE(size) << c.data;
    EXPECT_NEAR(size->widthMillimetres, c.width, 1e-3);  // 23622 per metre is 599.9988 an inch
    EXPECT_NEAR(size->heightMillimetres, c.height, 1e-3);
  }
  EXPECT_FALSE(ImageSizeOf("R0lGODlhIGFuZCBtb3Jl"));  // "GIF89a and more"
  EXPECT_FALSE(ImageSizeOf(""));
}

TEST(DrawingSheet, FramesKiCadsPapers) {
  const InArena arena;
  struct Case {
    Paper paper;
    int32_t width;
    int32_t height;
    int32_t across;
    int32_t down;
    bool visible;
  };
  const Case cases[] = {
      {{"A4", 297, 210}, 1091, 749, 6, 4, true},
      {{"A3", 297, 420}, 1091, 1576, 6, 8, true},  // portrait
      {{"User", 40, 30}, 79, 40, 1, 1, false},     // too small for its zone strips
  };
  for (const Case& c : cases) {
    const PageFrame frame = FrameFor(c.paper);
    EXPECT_EQ(frame.width, c.width) << c.paper.name;
    EXPECT_EQ(frame.height, c.height) << c.paper.name;
    EXPECT_EQ(frame.border.horizontalCount, c.across) << c.paper.name;
    EXPECT_EQ(frame.border.verticalCount, c.down) << c.paper.name;
    EXPECT_EQ(frame.border.visible, c.visible) << c.paper.name;
    EXPECT_EQ(frame.origin, 47);  // 12 mm: the inner frame's corner
  }
  // The title block sits in the frame's lower right corner, inside its strips.
  const PageFrame a4 = FrameFor({"A4", 297, 210});
  const CPoint corner = TitleBlockCorner(a4);
  const TitleBlockDrawing lines = TitleBlockLines();
  EXPECT_EQ(corner.x + lines.width, a4.width - 2 * a4.border.horizontalLabelWidth);
  EXPECT_EQ(corner.y + lines.height, a4.height - 2 * a4.border.verticalLabelWidth);
}

}  // namespace
}  // namespace kalmor::kicad::detail
