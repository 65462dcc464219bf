#include <memory>
#include <string>

#include "dxf/layers.h"
#include "host/dbo_reading.h"
#include "page/display_props.h"
#include "page/instance_placement.h"
#include "page/translators.h"

namespace kalmor {
namespace {

// Globals, ports and off-page connectors are drawn alike: their plain property values (never
// per occurrence) on "PARTTEXT", their symbol unscaled on "PARTS".
void TranslateConnector(const PageContext& page, const DboGraphicInstance& connector) {
  const InstancePlacement placement = PlaceGraphicInstance(connector, page.H, page.state);
  WriteDisplayPropTexts(
      page, connector.NewDisplayPropsIter(page.state), layer::kPartText, 1.0,
      [&](const DboDisplayProp& prop) { return DisplayPropAnchor(prop, placement.rect); },
      [&](const DboDisplayProp& prop, std::string& text) {
        text = ReadDisplayPropValue(prop, nullptr, page.state);
        return true;
      });
  DrawSymbolVectors(page, layer::kParts, placement.symbol, placement, 1.0);
}

}  // namespace

void TranslateGlobals(PageContext& page) {
  ForEachDbo(page.page.NewGlobalsIter(page.state), &DboPageGlobalsIter::NextGlobal, page.state,
             [&](const DboGlobal& global) { TranslateConnector(page, global); });
}

void TranslatePorts(PageContext& page) {
  ForEachDbo(page.page.NewPortsIter(1, page.state), &DboPagePortsIter::NextPort, page.state,
             [&](const DboPort& port) { TranslateConnector(page, port); });
}

void TranslateOffPageConnectors(PageContext& page) {
  ForEachDbo(page.page.NewOffPageConnectorsIter(1, page.state),
             &DboPageOffPageConnectorsIter::NextOffPageConnector, page.state,
             [&](const DboOffPageConnector& connector) { TranslateConnector(page, connector); });
}

}  // namespace kalmor
