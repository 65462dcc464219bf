#include <memory>
#include <string>

#include "dxf/layers.h"
#include "page/display_props.h"
#include "page/instance_placement.h"
#include "page/translators.h"

namespace kalmor {

// Title blocks follow the page's pin-to-pin scale factor: their property locations, fonts and
// graphics are all scaled by it. Everything goes on "TITLE".
void TranslateTitleBlocks(PageContext& page) {
  const std::unique_ptr<DboPageTitleBlocksIter> blocks = page.page.NewTitleBlocksIter(page.state);
  if (blocks == nullptr) {
    return;
  }
  const double factor = page.pinToPinScaleFactor;
  while (const DboTitleBlock* block = blocks->NextTitleBlock(page.state)) {
    const InstancePlacement placement = PlaceGraphicInstance(*block, page.H, page.state);
    WriteDisplayPropTexts(
        page, block->NewDisplayPropsIter(page.state), layer::kTitle, factor,
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
}

}  // namespace kalmor
