#pragma once

// The pins of a placed part: block pins (markers on the block's edge, names inside) and symbol
// pins (the pin line with dot, clock, no-connect mark, name and number). Everything goes on
// "PARTS", the pins' display-property text included.

#include "kalmor/dbo.h"
#include "page/page_context.h"

namespace kalmor {

// `rect` is the instance's placed rectangle in flipped page units (top above bottom).
void DrawBlockPins(const PageContext& page, const DboPartInst& inst, const CRect& rect,
                   bool namesVisible);
void DrawSymbolPins(const PageContext& page, const DboPartInst& inst, const CRect& rect,
                    bool namesVisible, bool numbersVisible);

}  // namespace kalmor
