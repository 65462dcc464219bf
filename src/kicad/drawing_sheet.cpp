#include "kicad/drawing_sheet.h"

#include <algorithm>
#include <cmath>

#include "kicad/units.h"

namespace kalmor::kicad::detail {
namespace {

constexpr double kMarginMillimetres = 10;
constexpr double kStripMillimetres = 2;
constexpr double kZoneMillimetres = 50;
constexpr int32_t kMostZones = 99;
// The title block reaches this far left of and above the frame's lower right corner.
constexpr double kTitleBlockWidth = 110;
constexpr double kTitleBlockHeight = 34;

struct Rule {
  double x1, y1, x2, y2;  // mm left of and above the frame's lower right corner
};
constexpr Rule kRules[] = {
    {110, 34, 2, 34},   {2, 34, 2, 2},      {2, 2, 110, 2},       {110, 2, 110, 34},
    {110, 5.5, 2, 5.5}, {110, 8.5, 2, 8.5}, {110, 12.5, 2, 12.5}, {110, 18.5, 2, 18.5},
    {90, 8.5, 90, 5.5}, {26, 8.5, 26, 2},
};

int32_t Zones(double millimetres) {
  const double count = std::ceil(millimetres / kZoneMillimetres - 1e-9);
  return static_cast<int32_t>(std::clamp(count, 1.0, static_cast<double>(kMostZones)));
}

}  // namespace

PageFrame FrameFor(const Paper& paper) {
  PageFrame frame;
  const int32_t margin = ToUnits(kMarginMillimetres);
  const int32_t strip = ToUnits(kStripMillimetres);
  frame.width = ToUnits(paper.width) - 2 * margin;
  frame.height = ToUnits(paper.height) - 2 * margin;
  frame.origin = margin + strip;
  frame.border.horizontalLabelWidth = strip;
  frame.border.verticalLabelWidth = strip;
  frame.border.horizontalCount = Zones(paper.width - 2 * kMarginMillimetres);
  frame.border.verticalCount = Zones(paper.height - 2 * kMarginMillimetres);
  frame.border.horizontalLetters = false;
  frame.border.verticalLetters = true;
  // A paper too small for the zone strips gets no frame rather than a tangle of one.
  frame.border.visible = frame.width > 8 * strip && frame.height > 8 * strip;
  return frame;
}

const std::vector<TitleBlockText>& TitleBlockTexts() {
  static const std::vector<TitleBlockText> kTexts = {
      {"Date: ${ISSUE_DATE}", 87, 6.9, 1.5, false, false},
      {"Rev: ${REVISION}", 24, 6.9, 1.5, true, false},
      {"Size: ${PAPER}", 109, 6.9, 1.5, false, false},
      {"Id: ${#}/${##}", 24, 4.1, 1.5, false, false},
      {"Title: ${TITLE}", 109, 10.7, 2.0, true, true},
      {"File: ${FILENAME}", 109, 14.3, 1.5, false, false},
      {"Sheet: ${SHEETPATH}", 109, 17, 1.5, false, false},
      {"${COMPANY}", 109, 20, 1.5, true, false},
      {"${COMMENT1}", 109, 23, 1.5, false, false},
      {"${COMMENT2}", 109, 26, 1.5, false, false},
      {"${COMMENT3}", 109, 29, 1.5, false, false},
      {"${COMMENT4}", 109, 32, 1.5, false, false},
  };
  return kTexts;
}

TitleBlockDrawing TitleBlockLines() {
  TitleBlockDrawing drawing;
  const int32_t left = ToUnits(kTitleBlockWidth);
  const int32_t top = ToUnits(kTitleBlockHeight);
  for (const Rule& rule : kRules) {
    auto line = model::detail::New<model::detail::LineShape>();
    line->start = {left - ToUnits(rule.x1), top - ToUnits(rule.y1)};
    line->end = {left - ToUnits(rule.x2), top - ToUnits(rule.y2)};
    drawing.lines.push_back(std::move(line));
  }
  drawing.width = left - ToUnits(kStripMillimetres);
  drawing.height = top - ToUnits(kStripMillimetres);
  return drawing;
}

Vec TitleBlockAnchor(const TitleBlockText& text) {
  return {ToUnits(kTitleBlockWidth) - ToUnitsExact(text.right),
          ToUnits(kTitleBlockHeight) - ToUnitsExact(text.bottom)};
}

CPoint TitleBlockCorner(const PageFrame& frame) {
  const int32_t strip = frame.border.horizontalLabelWidth;
  return {frame.width - strip - ToUnits(kTitleBlockWidth),
          frame.height - strip - ToUnits(kTitleBlockHeight)};
}

}  // namespace kalmor::kicad::detail
