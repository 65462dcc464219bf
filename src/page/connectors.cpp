#include <memory>
#include <string>

#include "dxf/layers.h"
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

template <typename Iter, typename Next>
void TranslateConnectors(const PageContext& page, std::unique_ptr<Iter> iter, Next next) {
  if (iter == nullptr) {
    return;
  }
  while (const auto* connector = ((*iter).*next)(page.state)) {
    TranslateConnector(page, *connector);
  }
}

}  // namespace

void TranslateGlobals(PageContext& page) {
  TranslateConnectors(page, page.page.NewGlobalsIter(page.state), &DboPageGlobalsIter::NextGlobal);
}

void TranslatePorts(PageContext& page) {
  TranslateConnectors(page, page.page.NewPortsIter(1, page.state), &DboPagePortsIter::NextPort);
}

void TranslateOffPageConnectors(PageContext& page) {
  TranslateConnectors(page, page.page.NewOffPageConnectorsIter(1, page.state),
                      &DboPageOffPageConnectorsIter::NextOffPageConnector);
}

}  // namespace kalmor
