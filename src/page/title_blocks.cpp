#include <memory>
#include <string>

#include "dxf/layers.h"
#include "host/dbo_reading.h"
#include "page/display_props.h"
#include "page/instance_placement.h"
#include "page/translators.h"

namespace kalmor {
namespace {

void TranslateTitleBlock(const PageContext& page, const DboTitleBlock& block) {
  const double factor = page.pinToPinScaleFactor;
  const InstancePlacement placement = PlaceGraphicInstance(block, page.H, page.state);
  WriteDisplayPropTexts(
      page, block.NewDisplayPropsIter(page.state), layer::kTitle, factor,
      [&](const DboDisplayProp& prop) {
        return ScaledDisplayPropAnchor(prop, placement.rect.left, placement.rect.top,
                                       placement.location.x, placement.location.y, factor);
      },
      [&](const DboDisplayProp& prop, std::string& text) {
        text = ReadDisplayPropValue(prop, page.occurrence, page.state);
        return true;
      });
  DrawSymbolVectors(page, layer::kTitle, placement.symbol, placement, factor);
}

}  // namespace

// Title blocks follow the page's pin-to-pin scale factor: their property locations, fonts and
// graphics are all scaled by it. Everything goes on "TITLE".
void TranslateTitleBlocks(PageContext& page) {
  ForEachDbo(page.page.NewTitleBlocksIter(page.state), &DboPageTitleBlocksIter::NextTitleBlock,
             page.state, [&](const DboTitleBlock& block) { TranslateTitleBlock(page, block); });
}

}  // namespace kalmor
