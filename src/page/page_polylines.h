#pragma once

// Polylines through mapped page points: the plain segments of wires, bus entries and comment
// lines, and the rectangles of comment boxes and bitmap outlines.

#include <string_view>

#include "dxf/polyline_records.h"
#include "kalmor/types.h"
#include "page/page_context.h"

namespace kalmor::page_detail {

// An open two-vertex polyline from `a` to `b`.
inline void WriteSegment(PageContext& page, std::string_view layer, LineWidthT width, CPoint a,
                         CPoint b) {
  DxfSegment(page.out, layer, width, {page.X(a.x), page.Y(a.y)}, {page.X(b.x), page.Y(b.y)});
}

// A closed polyline through (left, top), (right, top), (right, bottom), (left, bottom).
inline void WriteRectangle(PageContext& page, std::string_view layer, LineWidthT width,
                           const CRect& rect) {
  const double left = page.X(rect.left);
  const double right = page.X(rect.right);
  const double top = page.Y(rect.top);
  const double bottom = page.Y(rect.bottom);
  DxfRectangle(page.out, layer, width,
               {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}});
}

}  // namespace kalmor::page_detail
