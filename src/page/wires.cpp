#include <cmath>
#include <memory>
#include <string>

#include "dxf/layers.h"
#include "dxf/polyline_records.h"
#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "page/display_props.h"
#include "page/page_polylines.h"
#include "page/translators.h"

namespace kalmor {
namespace {

// Thin wires (type 20) carry no width; buses and every other kind are drawn one unit wide.
void WriteWireLine(PageContext& page, const DboWire& wire) {
  const CPoint start = wire.GetStartPoint(page.state);
  const CPoint end = wire.GetEndPoint(page.state);
  const LineWidthT width = wire.GetObjectType(page.state) == dbo_type::kWire ? 0 : 1;
  page_detail::WriteSegment(page, layer::kWire, width, start, end);
}

// Every display property of a wire is written, whatever its display type; its location is a
// page point.
void WriteWireProps(PageContext& page, const DboWire& wire) {
  ForEachDbo(wire.NewDisplayPropsIter(page.state), &DboDisplayPropsIter::NextProp, page.state,
             [&](const DboDisplayProp& prop) {
               const CPoint at = prop.GetLocation(page.state);
               std::string value = ReadDisplayPropValue(prop, page.occurrence, page.state);
               LogFont font;
               prop.GetFont(0, font, page.state);
               const RotationT rotation = prop.GetRotation(page.state);
               DxfText(page.out, layer::kWireText, std::move(value), font, rotation, page.s, at.x,
                       page.H - at.y);
             });
}

void WriteJunctions(PageContext& page, const DboWire& wire) {
  std::unique_ptr<DboWireJunctionsIter> junctions = wire.NewJunctionsIter(page.state);
  if (junctions == nullptr) {
    return;
  }
  CPoint at;
  while (junctions->NextJunction(at, page.state)) {
    DxfDot(page.out, layer::kWire, page.X(at.x), page.Y(at.y), 2 * page.s);
  }
}

// An alias sits 3 page units off its location, on the side its rotation turns the text to.
struct AliasPlacement {
  CPoint at;
  double angle;
};

AliasPlacement PlaceAlias(CPoint location, RotationT rotation) {
  switch (rotation) {
    case 1:
      return {{location.x - 3, location.y}, 90.0};
    case 2:
      return {{location.x, location.y + 3}, 180.0};
    case 3:
      return {{location.x + 3, location.y}, 270.0};
    default:  // 0, and codes the host should not give, read upright
      return {{location.x, location.y - 3}, 0.0};
  }
}

void WriteAlias(PageContext& page, const DboAlias& alias) {
  const CPoint location = alias.GetLocation(page.state);
  const AliasPlacement place = PlaceAlias(location, alias.GetRotation(page.state));
  std::string name;
  alias.GetName(name, page.state);
  LogFont font;
  alias.GetFont(font, page.state);
  // Divided by 175 here, not multiplied by its reciprocal as the text writer does: the last
  // bit of the sine can differ, and alias heights follow their own rule.
  const double height =
      100.0 * page.s * std::sin(std::fabs(static_cast<double>(font.HeightOrDefault())) / 175.0);
  DxfTextAt(page.out, layer::kWireText, place.angle, std::move(name), page.X(place.at.x),
            page.Y(place.at.y), height);
}

void WriteWire(PageContext& page, const DboWire& wire) {
  WriteWireLine(page, wire);
  WriteWireProps(page, wire);
  WriteJunctions(page, wire);
  ForEachDbo(wire.NewAliasesIter(page.state), &DboWireAliasesIter::NextAlias, page.state,
             [&](const DboAlias& alias) { WriteAlias(page, alias); });
}

}  // namespace

void TranslateWires(PageContext& page) {
  ForEachDbo(page.page.NewWiresIter(1, page.state), &DboPageWiresIter::NextWire, page.state,
             [&](const DboWire& wire) { WriteWire(page, wire); });
}

}  // namespace kalmor
