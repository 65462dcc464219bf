#pragma once

// The outlines KiCad draws for global, hierarchical and directive (net class) labels, and where
// their texts go, in page units from the label's anchor.

#include <string_view>
#include <vector>

#include "kicad/sheet_file.h"

namespace kalmor::kicad::detail {

// Which way a label's text runs from its anchor: KiCad's label angles 0, 90, 180 and 270.
enum class Spin : uint8_t { kRight, kUp, kLeft, kBottom };
Spin SpinOf(double angle);

struct LabelOutline {
  struct Point {
    double x = 0;
    double y = 0;
  };
  struct Circle {
    Point centre;
    double radius = 0;
  };
  std::vector<std::vector<Point>> polygons;   // closed outlines
  std::vector<std::vector<Point>> polylines;  // open strokes
  std::vector<Circle> circles;
  // The text: anchored here, read left to right or upward, centred on the anchor's height.
  Point text;
  bool vertical = false;
  HJustify justify = HJustify::kLeft;
};

// `size` is the label's text height and `textWidth` its drawn width, in page units.
LabelOutline GlobalLabelOutline(std::string_view shape, Spin spin, double size, double textWidth);
LabelOutline HierarchicalLabelOutline(std::string_view shape, Spin spin, double size);
// A net class flag: a stem of `length` units from the anchor, ending in its shape.
LabelOutline DirectiveLabelOutline(std::string_view shape, double angle, double size,
                                   double length);

}  // namespace kalmor::kicad::detail
