#include <cstdint>
#include <string>

#include "dxf/layers.h"
#include "dxf/line_records.h"
#include "dxf/polyline_records.h"
#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "kalmor/errors.h"
#include "page/translators.h"

// The frame works in page units whose y already points up the drawing: values are scaled but
// not flipped. Sums and products are taken in 64 bits so that absurd label widths cannot
// overflow; every division truncates toward zero as the integer zone grid requires.

namespace kalmor {
namespace {

// A frame setting of the page (a flag or a line width), asked for where it is used.
using PageSetting = int32_t (DboPage::*)(DboState&) const;

struct Point {
  int64_t x;
  int64_t y;
};

struct Frame {
  PageContext& page;
  int64_t W;
  int64_t H;
  int64_t hLW;  // width of the left and right label strips
  int64_t vLW;  // height of the top and bottom label strips

  double D(int64_t v) const { return static_cast<double>(v) * page.s; }
  int32_t Read(PageSetting setting) const { return (page.page.*setting)(page.state); }

  DxfPoint At(Point p) const { return {D(p.x), D(p.y)}; }

  void Border(LineWidthT width, Point a, Point b, Point c, Point d) const {
    DxfRectangle(page.out, layer::kTitle, width, {At(a), At(b), At(c), At(d)});
  }

  void Segment(LineWidthT width, Point a, Point b) const {
    DxfSegment(page.out, layer::kTitle, width, At(a), At(b));
  }

  // Corners in the order the record holds them; the solid writer takes its last two corners
  // the other way round, so they are handed over exchanged.
  void Mark(Point first, Point second, Point third, Point fourth) const {
    DxfSolid(page.out, layer::kTitle, D(first.x), D(first.y), D(second.x), D(second.y), D(fourth.x),
             D(fourth.y), D(third.x), D(third.y));
  }

  void Label(const std::string& text, Point at) const {
    DxfTextAt(page.out, layer::kTitle, 0.0, text, D(at.x), D(at.y), D(vLW / 2));
  }
};

// Zone n as letters ("A".."Z", then "AA", "AB", ...) or numbers ("1".."8", then two digits
// from "09" on). Numbers beyond 99 run past the digits; the page is not expected to have them.
std::string ZoneLabel(int64_t n, bool letters) {
  std::string text;
  if (letters) {
    if (n - 1 < 26) {
      text += static_cast<char>(64 + n);
    } else {
      text += static_cast<char>(64 + (n - 1) / 26);
      text += static_cast<char>(65 + (n - 1) % 26);
    }
  } else if (n < 9) {
    text += static_cast<char>(48 + n);
  } else {
    text += static_cast<char>(48 + n / 10);
    text += static_cast<char>(48 + n % 10);
  }
  return text;
}

// Zone k's separator is two strokes, one in each label strip: `strokes(k, first, second)` fills
// their ends. With an even count the centre marks follow every separator, not just one.
template <typename Strokes, typename CentreMarks>
void WriteSeparators(const Frame& frame, int64_t count, PageSetting width, Strokes strokes,
                     CentreMarks centreMarks) {
  for (int64_t k = 1; k < count; ++k) {
    Point first[2];
    Point second[2];
    strokes(k, first, second);
    frame.Segment(frame.Read(width), first[0], first[1]);
    frame.Segment(frame.Read(width), second[0], second[1]);
    if (count % 2 == 0) {
      centreMarks();
    }
  }
}

// Zone k's label is written twice, at the two points `places(k, at)` fills. The style is asked
// for every label and the direction again after every label.
template <typename Places>
void WriteLabels(const Frame& frame, int64_t count, PageSetting isChar, PageSetting isAscending,
                 Places places) {
  if (count <= 0) {
    return;
  }
  int64_t n = frame.Read(isAscending) != 0 ? 1 : count;
  for (int64_t k = 0; k < count; ++k) {
    const std::string text = ZoneLabel(n, frame.Read(isChar) != 0);
    Point at[2];
    places(k, at);
    frame.Label(text, at[0]);
    frame.Label(text, at[1]);
    n += frame.Read(isAscending) != 0 ? 1 : -1;
  }
}

// Zones are cut from the page by integer division; a count of 0 has no zones to cut.
int64_t ZoneCount(const PageContext& page, int32_t count, const char* side) {
  if (count == 0) {
    throw DocumentError("page \"" + NameOf(page.page) + "\": the frame's " + side +
                        " label count is 0; it must be at least 1");
  }
  return count;
}

}  // namespace

void TranslateFrame(PageContext& page) {
  const DboPage& dbo = page.page;
  const Frame f{page, page.W, page.H, dbo.GetHorizontalLabelWidth(page.state),
                dbo.GetVerticalLabelWidth(page.state)};
  const int64_t W = f.W;
  const int64_t H = f.H;
  const int64_t hLW = f.hLW;
  const int64_t vLW = f.vLW;

  f.Border(dbo.GetOuterBorderLineWidth(page.state), {-hLW, vLW}, {W - hLW, vLW}, {W - hLW, H + vLW},
           {-hLW, H + vLW});
  f.Border(dbo.GetOuterBorderLineWidth(page.state), {0, 2 * vLW}, {W - 2 * hLW, 2 * vLW},
           {W - 2 * hLW, H}, {0, H});

  // The grid starts two strip widths in from the inner border's left and two strip heights
  // below its top, and ends on its right and bottom edges.
  const int64_t hCount = ZoneCount(page, dbo.GetHorizontalLabelCount(page.state), "horizontal");
  const int64_t vCount = ZoneCount(page, dbo.GetVerticalLabelCount(page.state), "vertical");
  const int64_t zW = (W - 4 * hLW) / hCount;
  const int64_t zH = (H - 4 * vLW) / vCount;

  const int64_t cx = 2 * hLW + (hCount / 2) * zW;
  const int64_t q = hLW / 4;
  const int64_t m = vLW / 2;
  WriteSeparators(
      f, hCount, &DboPage::GetHorizontalSeparatorLineWidth,
      [&](int64_t k, Point* bottom, Point* top) {
        const int64_t x = 2 * hLW + k * zW;
        bottom[0] = {x, 2 * vLW};
        bottom[1] = {x, vLW};
        top[0] = {x, H};
        top[1] = {x, H + vLW};
      },
      [&] {
        f.Mark({cx, 2 * vLW}, {cx - q, 2 * vLW - m}, {cx + q, 2 * vLW - m}, {cx, 2 * vLW - m});
        f.Mark({cx, H}, {cx - q, H + m}, {cx + q, H + m}, {cx, H + m});
      });
  WriteLabels(f, hCount, &DboPage::GetHorizontalLabelIsChar,
              &DboPage::GetHorizontalLabelIsAscending, [&](int64_t k, Point* at) {
                const int64_t x = 2 * hLW + zW / 2 + k * zW;
                at[0] = {x, vLW + vLW / 4};
                at[1] = {x, H + vLW / 4};
              });

  const int64_t cy = H - 2 * vLW - (vCount / 2) * zH;
  const int64_t r = vLW / 4;
  const int64_t t = hLW / 2;
  const int64_t right = W - 2 * hLW;
  WriteSeparators(
      f, vCount, &DboPage::GetVerticalSeparatorLineWidth,
      [&](int64_t k, Point* left, Point* rightStroke) {
        const int64_t y = H - 2 * vLW - k * zH;
        left[0] = {-hLW, y};
        left[1] = {0, y};
        rightStroke[0] = {right, y};
        rightStroke[1] = {W - hLW, y};
      },
      [&] {
        f.Mark({0, cy}, {-t, cy + r}, {-t, cy - r}, {-t, cy});
        f.Mark({right, cy}, {right + t, cy + r}, {right + t, cy - r}, {right + t, cy});
      });
  WriteLabels(f, vCount, &DboPage::GetVerticalLabelIsChar, &DboPage::GetVerticalLabelIsAscending,
              [&](int64_t k, Point* at) {
                const int64_t y = H - 2 * vLW - zH / 2 - k * zH;
                at[0] = {hLW / 4 - hLW, y};
                at[1] = {right + hLW / 4, y};
              });
}

}  // namespace kalmor
