#pragma once

// Turns one schematic page into the entity records of its DXF file.

#include <string>

#include "dxf/byte_sink.h"
#include "kalmor/dbo.h"
#include "page/page_context.h"

namespace kalmor {

// The page's mapping, computed as the walk computes it (the pin-to-pin scale factor is read
// later, after the frame).
PageContext OpenPageContext(ByteSink& out, DboState& state, const DboPage& page,
                            const DboInstOccurrence* occurrence);

// Writes every entity of `page` to `out` (the entities section is already open). Returns
// `status` set to OK, whatever happened on the way.
DboState& PageTranslator(DboState& status, const DboPage& page, const DboInstOccurrence* occurrence,
                         int frame, int titleBlocks, ByteSink& out, std::string unused);

}  // namespace kalmor
