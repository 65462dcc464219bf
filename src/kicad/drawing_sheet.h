#pragma once

// KiCad's default drawing sheet: a frame 10 mm in from the paper's edges with zone labels in a
// 2 mm strip, and the title block in its lower right corner. The design's page frame has the
// same shape, so the page's origin is put at the frame's inner top left corner.

#include <string_view>
#include <vector>

#include "kicad/sheet_file.h"
#include "model/page_objects.h"

namespace kalmor::kicad::detail {

struct PageFrame {
  int32_t width = 0;  // the outer frame, page units
  int32_t height = 0;
  int32_t origin = 0;  // where the page's (0, 0) is on the paper, in units from its top left
  model::detail::Border border;
};

PageFrame FrameFor(const Paper& paper);

// A text of the title block: its text, with ${...} variables, and where it stands.
struct TitleBlockText {
  std::string_view text;
  double right;   // mm left of the frame's right edge
  double bottom;  // mm above the frame's bottom edge
  double size;    // mm
  bool bold;
  bool italic;
};

// The texts of KiCad's default title block, in drawing order.
const std::vector<TitleBlockText>& TitleBlockTexts();

// Where a title block text is anchored, in page units from the title block's top left corner;
// the texts are justified left and centred on their anchor's height.
Vec TitleBlockAnchor(const TitleBlockText& text);

// The lines of the title block, in page units from its top left corner, and its size.
struct TitleBlockDrawing {
  model::detail::GraphicList lines;
  int32_t width = 0;
  int32_t height = 0;
};
TitleBlockDrawing TitleBlockLines();

// The title block's top left corner on the page.
CPoint TitleBlockCorner(const PageFrame& frame);

}  // namespace kalmor::kicad::detail
