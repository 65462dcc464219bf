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
  DxfPolylineBegin(page.out, layer, width);
  DxfVertex(page.out, layer, page.X(a.x), page.Y(a.y));
  DxfVertex(page.out, layer, page.X(b.x), page.Y(b.y));
  DxfSeqEnd(page.out, layer);
}

// A closed polyline through (left, top), (right, top), (right, bottom), (left, bottom).
inline void WriteRectangle(PageContext& page, std::string_view layer, LineWidthT width,
                           const CRect& rect) {
  DxfClosedPolylineBegin(page.out, layer, width);
  DxfVertex(page.out, layer, page.X(rect.left), page.Y(rect.top));
  DxfVertex(page.out, layer, page.X(rect.right), page.Y(rect.top));
  DxfVertex(page.out, layer, page.X(rect.right), page.Y(rect.bottom));
  DxfVertex(page.out, layer, page.X(rect.left), page.Y(rect.bottom));
  DxfSeqEnd(page.out, layer);
}

}  // namespace kalmor::page_detail
