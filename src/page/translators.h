#pragma once

// One translator per collection of a page, called by the page walk in this order.

#include "page/page_context.h"

namespace kalmor {

void TranslateFrame(PageContext& page);              // frame.cpp
void TranslateTitleBlocks(PageContext& page);        // title_blocks.cpp
void TranslatePartInsts(PageContext& page);          // part_instances.cpp (pins in pins.cpp)
void TranslateWires(PageContext& page);              // wires.cpp
void TranslateGlobals(PageContext& page);            // connectors.cpp
void TranslatePorts(PageContext& page);              // connectors.cpp
void TranslateOffPageConnectors(PageContext& page);  // connectors.cpp
void TranslateBusEntries(PageContext& page);         // bus_entries.cpp
void TranslateCommentGraphics(PageContext& page);    // comment_graphics.cpp

}  // namespace kalmor
