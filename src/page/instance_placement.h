#pragma once

// Where a placed instance (title block, part, global, port, off-page connector) lands on the
// page: its symbol's box turned, moved and flipped into page units, and the drawing of its
// symbol there.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "dxf/text_records.h"
#include "host/dbo_reading.h"
#include "kalmor/dbo.h"
#include "page/display_props.h"
#include "page/page_context.h"

namespace kalmor {

// Truncates toward zero into 32 bits; values beyond the range stick at its ends.
int32_t TruncateToInt(double value);

// Host coordinates are 32-bit: sums and differences formed wider wrap back into 32 bits as the
// host's own arithmetic does, so that extreme coordinates give a defined result.
inline int32_t Wrap32(int64_t value) {
  return static_cast<int32_t>(value);
}

// The placed rectangle in flipped page units: for quarter turns 1 and 3 only right and bottom
// are exchanged (left and top stay), then the box moves by the location, then top and bottom
// become pageHeight - value. Its left and top are the reference corner of the instance's text.
CRect PlaceInstanceBox(CRect box, RotationT rotation, CPoint location, int32_t pageHeight);

struct InstancePlacement {
  const DboGraphicObject* symbol = nullptr;  // the defining graphic object; may be null
  CRect rect;                                // placed, flipped
  CPoint location;
  RotationT rotation = 0;
  int32_t mirror = 0;
};

// Reads the instance's placement and places its symbol's box on a page of height `pageHeight`.
InstancePlacement PlaceGraphicInstance(const DboGraphicInstance& instance, int32_t pageHeight,
                                       DboState& state);

// Draws every vector of `symbol` at `placement` on `layer`, its coordinates first multiplied by
// `sizeFactor`.
void DrawSymbolVectors(const PageContext& page, std::string_view layer,
                       const DboGraphicObject* symbol, const InstancePlacement& placement,
                       double sizeFactor);

// One TEXT on `layer` for each display property that `props` yields and `textOf(prop, text)`
// accepts (returning true): the text at `anchorOf(prop)`, in the property's font with height and
// width scaled by `fontFactor`.
template <typename AnchorOf, typename TextOf>
void WriteDisplayPropTexts(const PageContext& page, std::unique_ptr<DboDisplayPropsIter> props,
                           std::string_view layer, double fontFactor, AnchorOf&& anchorOf,
                           TextOf&& textOf) {
  ForEachDbo(props, &DboDisplayPropsIter::NextProp, page.state, [&](const DboDisplayProp& prop) {
    std::string text;
    if (!textOf(prop, text)) {
      return;
    }
    const CPoint anchor = anchorOf(prop);
    LogFont font;
    prop.GetFont(1, font, page.state);
    DxfText(page.out, layer, std::move(text), ScaledFont(font, fontFactor),
            prop.GetRotation(page.state), page.s, anchor.x, anchor.y);
  });
}

}  // namespace kalmor
