#include "page/pins.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "dxf/layers.h"
#include "dxf/line_records.h"
#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "kalmor/host_text.h"
#include "page/display_props.h"
#include "page/instance_placement.h"

namespace kalmor {
namespace {

// Pin text: 5 units high, centred on the pin by half that, 4 units per character when a text
// must end at a given point.
constexpr double kTextHeight = 0.05;  // times 100 units
constexpr double kTextHalfHeight = 2.5;
constexpr double kCharWidth = 100 * 0.04;

// An offset in the frame of a pin entering its body from the left: x points into the body.
struct Offset {
  double along;
  double across;
};

// The four directions a pin can enter its body through, and how the left-entering frame turns
// for each: the right mirrors it, the top and bottom turn it a quarter.
enum class Edge { kLeft, kRight, kTop, kBottom };

struct PagePoint {
  double x;
  double y;
};

PagePoint Turned(Edge edge, PagePoint at, Offset o) {
  switch (edge) {
    case Edge::kLeft:
      return {at.x + o.along, at.y + o.across};
    case Edge::kRight:
      return {at.x - o.along, at.y + o.across};
    case Edge::kTop:
      return {at.x + o.across, at.y - o.along};
    case Edge::kBottom:
      break;
  }
  return {at.x - o.across, at.y + o.along};
}

void Line(const PageContext& page, PagePoint a, PagePoint b) {
  DxfLine(page.out, layer::kParts, a.x * page.s, a.y * page.s, b.x * page.s, b.y * page.s);
}

void Text(const PageContext& page, double angle, const std::string& text, PagePoint at) {
  DxfTextAt(page.out, layer::kParts, angle, text, at.x * page.s, at.y * page.s,
            100 * page.s * kTextHeight);
}

// Two strokes crossing at `at`, reaching `half` units to each side.
void CrossMark(const PageContext& page, PagePoint at, double half) {
  Line(page, {at.x - half, at.y + half}, {at.x + half, at.y - half});
  Line(page, {at.x + half, at.y + half}, {at.x - half, at.y - half});
}

// Pin properties follow the page's pin-to-pin scale factor in their location and font.
void DrawPinDisplayProps(const PageContext& page, const DboPortInst& pin, const CRect& rect) {
  const double factor = page.pinToPinScaleFactor;
  WriteDisplayPropTexts(
      page, pin.NewDisplayPropsIter(page.state), layer::kParts, factor,
      [&](const DboDisplayProp& prop) {
        const CPoint location = prop.GetLocation(page.state);
        return CPoint{TruncateToInt(location.x * factor + rect.left),
                      TruncateToInt(rect.top - location.y * factor)};
      },
      [&](const DboDisplayProp& prop, std::string& text) {
        return GetDisplayPropText(prop, page.occurrence, text);
      });
}

// The pin's name or number: through the page's occurrence when there is one (empty when any
// step of the way is missing), else the pin's own.
std::string PinString(const PageContext& page, const DboPortInst& pin, int32_t propId) {
  std::string value;
  if (page.occurrence == nullptr) {
    if (propId == dbo_prop::kPinName) {
      pin.GetPinName(value, page.state);
    } else {
      pin.GetPinNumber(value, page.state);
    }
    return value;
  }
  const DboPartInst* owner = pin.GetOwner(page.state);
  const DboInstOccurrence* inst =
      owner != nullptr ? page.occurrence->GetInstOccurrence(owner, page.state) : nullptr;
  const DboPortOccurrence* port =
      inst != nullptr ? inst->GetPortOccurrence(&pin, page.state) : nullptr;
  if (port != nullptr) {
    port->GetPropStringById(propId, value, page.state);
  }
  return value;
}

// ---- block pins

using Quad = std::array<Offset, 4>;

// Block markers in the left-edge frame: they start at the pin and reach 10 units inward.
constexpr Quad kDiamond{{{0, 0}, {5, -5}, {10, 0}, {5, 5}}};
constexpr Quad kBackHalf{{{0, -5}, {0, 5}, {5, 5}, {5, -5}}};
constexpr Quad kFrontHalf{{{5, 5}, {5, -5}, {10, -5}, {10, 5}}};
constexpr Quad kSquare{{{0, -5}, {0, 5}, {10, 5}, {10, -5}}};

void Solid(const PageContext& page, Edge edge, PagePoint pin, const Quad& quad) {
  std::array<PagePoint, 4> c;
  for (std::size_t i = 0; i < c.size(); ++i) {
    c[i] = Turned(edge, pin, quad[i]);
  }
  const double s = page.s;
  DxfSolid(page.out, layer::kParts, c[0].x * s, c[0].y * s, c[1].x * s, c[1].y * s, c[2].x * s,
           c[2].y * s, c[3].x * s, c[3].y * s);
}

// The solids of a marker kind, in the order they are written; none for kind 3 and for
// anything outside 0..7.
std::span<const Quad* const> MarkerOf(int32_t kind) {
  static constexpr const Quad* kPointingIn[] = {&kBackHalf, &kDiamond};
  static constexpr const Quad* kDiamondOnly[] = {&kDiamond};
  static constexpr const Quad* kPointingOut[] = {&kDiamond, &kFrontHalf};
  static constexpr const Quad* kSquareOnly[] = {&kSquare};
  switch (kind) {
    case 0:
      return kPointingIn;
    case 1:
      return kDiamondOnly;
    case 2:
      return kPointingOut;
    case 4:
    case 5:
    case 6:
    case 7:
      return kSquareOnly;
    default:
      return {};
  }
}

// Where a block pin's name starts on each edge: 15 units inside the block, ending there when the
// text runs toward the pin.
PagePoint BlockNameAnchor(Edge edge, PagePoint pin, int32_t visible) {
  switch (edge) {
    case Edge::kLeft:
      return {pin.x + 15, pin.y - kTextHalfHeight};
    case Edge::kRight:
      return {pin.x - 15 - kCharWidth * visible, pin.y - kTextHalfHeight};
    case Edge::kTop:
      return {pin.x + kTextHalfHeight, pin.y - 15 - kCharWidth * visible};
    case Edge::kBottom:
      break;
  }
  return {pin.x + kTextHalfHeight, pin.y + 15};
}

// ---- symbol pins

struct SymbolPin {
  Edge edge;        // the side of the body the pin enters through
  PagePoint start;  // outer end
  PagePoint end;    // on the body, with the y of the start for horizontal pins
};

// Horizontal pins take their y from the start point, vertical ones from the end point. A
// zero-length pin is drawn as one entering from the left.
SymbolPin OrientPin(CPoint start, CPoint end, int32_t pageHeight) {
  const PagePoint s{static_cast<double>(start.x), static_cast<double>(pageHeight) - start.y};
  const double endY = static_cast<double>(pageHeight) - end.y;
  if (start.x > end.x) {
    return {Edge::kRight, s, {static_cast<double>(end.x), s.y}};
  }
  if (start.x == end.x && start.y < end.y) {
    return {Edge::kTop, s, {static_cast<double>(end.x), endY}};
  }
  if (start.x == end.x && start.y > end.y) {
    return {Edge::kBottom, s, {static_cast<double>(end.x), endY}};
  }
  return {Edge::kLeft, s, {static_cast<double>(end.x), s.y}};
}

// The name 9 units inside the body, the number outside it beside the pin line.
void PinTexts(const PageContext& page, const SymbolPin& pin, const std::string& name,
              const std::string& number, bool namesVisible, bool numbersVisible) {
  const PagePoint e = pin.end;
  const double nameChars =
      pin.edge == Edge::kTop ? static_cast<double>(HostTextLength(name)) : VisibleTextLength(name);
  const double numberChars = static_cast<double>(HostTextLength(number));
  PagePoint nameAt{};
  PagePoint numberAt{};
  switch (pin.edge) {
    case Edge::kLeft:
      nameAt = {e.x + 9, e.y - kTextHalfHeight};
      numberAt = {e.x - 6 - kCharWidth * numberChars, e.y + 3};
      break;
    case Edge::kRight:
      nameAt = {e.x - 9 - kCharWidth * nameChars, e.y - kTextHalfHeight};
      numberAt = {e.x + 6, e.y + 3};
      break;
    case Edge::kTop:
      // Counts the overbar marks too, unlike the other edges.
      nameAt = {e.x + kTextHalfHeight, e.y - 9 - kCharWidth * nameChars};
      numberAt = {e.x - 3, e.y + 6};
      break;
    case Edge::kBottom:
      nameAt = {e.x + kTextHalfHeight, e.y + 9};
      numberAt = {e.x - 3, e.y - 12};
      break;
  }
  const double angle = pin.edge == Edge::kLeft || pin.edge == Edge::kRight ? 0.0 : 90.0;
  if (namesVisible) {
    Text(page, angle, OverlineToDxf(name), nameAt);
  }
  if (numbersVisible) {
    Text(page, angle, number, numberAt);
  }
}

void DrawBlockPin(const PageContext& page, const DboPortInst& pin, const CRect& rect,
                  bool namesVisible) {
  const CPoint start = pin.GetStartPoint(page.state);
  DrawPinDisplayProps(page, pin, rect);
  const std::string name = PinString(page, pin, dbo_prop::kPinName);
  const bool noConnect = pin.GetIsNoConnect(page.state) != 0;
  const std::span<const Quad* const> marker = MarkerOf(pin.GetBlockPinKind(page.state));
  if (marker.empty()) {
    return;
  }
  const PagePoint at{static_cast<double>(start.x), static_cast<double>(page.H) - start.y};
  // Each edge is tested on its own, so a pin on a corner gets a marker for both edges. Each
  // edge's name follows its marker; the no-connect mark comes last.
  const bool onEdge[] = {at.x <= rect.left, at.x >= rect.right, at.y >= rect.top,
                         at.y <= rect.bottom};
  const Edge edges[] = {Edge::kLeft, Edge::kRight, Edge::kTop, Edge::kBottom};
  for (std::size_t i = 0; i < 4; ++i) {
    if (!onEdge[i]) {
      continue;
    }
    for (const Quad* part : marker) {
      Solid(page, edges[i], at, *part);
    }
    if (namesVisible) {
      const double angle = edges[i] == Edge::kLeft || edges[i] == Edge::kRight ? 0.0 : 90.0;
      Text(page, angle, OverlineToDxf(name),
           BlockNameAnchor(edges[i], at, VisibleTextLength(name)));
    }
  }
  if (noConnect) {
    CrossMark(page, at, 5);
  }
}

void DrawSymbolPin(const PageContext& page, const DboPortInst& pin, const CRect& rect,
                   bool namesVisible, bool numbersVisible) {
  const CPoint start = pin.GetStartPoint(page.state);
  const CPoint end = pin.GetEndPoint(page.state);
  if (pin.GetIsVisible(page.state) == 0) {
    return;
  }
  DrawPinDisplayProps(page, pin, rect);
  const std::string name = PinString(page, pin, dbo_prop::kPinName);
  const std::string number = PinString(page, pin, dbo_prop::kPinNumber);
  const SymbolPin oriented = OrientPin(start, end, page.H);

  // The bubble sits between the line and the body: the line stops a diameter short.
  PagePoint lineEnd = oriented.end;
  if (pin.GetIsDot(page.state) != 0) {
    const PagePoint centre = Turned(oriented.edge, oriented.end, {-3, 0});
    DxfCircle(page.out, layer::kParts, centre.x * page.s, centre.y * page.s, 3.0 * page.s);
    lineEnd = Turned(oriented.edge, oriented.end, {-6, 0});
  }
  Line(page, oriented.start, lineEnd);
  if (pin.GetIsClock(page.state) != 0) {
    const PagePoint tip = Turned(oriented.edge, oriented.end, {6, 0});
    Line(page, Turned(oriented.edge, oriented.end, {0, 6}), tip);
    Line(page, tip, Turned(oriented.edge, oriented.end, {0, -6}));
  }
  if (pin.GetIsNoConnect(page.state) != 0) {
    CrossMark(page, oriented.start, 2.5);
  }
  PinTexts(page, oriented, name, number, namesVisible, numbersVisible);
}

}  // namespace

void DrawBlockPins(const PageContext& page, const DboPartInst& inst, const CRect& rect,
                   bool namesVisible) {
  ForEachDbo(inst.NewPinsIter(0, 0, page.state), &DboPartInstPinsIter::NextPin, page.state,
             [&](const DboPortInst& pin) { DrawBlockPin(page, pin, rect, namesVisible); });
}

void DrawSymbolPins(const PageContext& page, const DboPartInst& inst, const CRect& rect,
                    bool namesVisible, bool numbersVisible) {
  ForEachDbo(inst.NewPinsIter(0, 0, page.state), &DboPartInstPinsIter::NextPin, page.state,
             [&](const DboPortInst& pin) {
               DrawSymbolPin(page, pin, rect, namesVisible, numbersVisible);
             });
}

}  // namespace kalmor
