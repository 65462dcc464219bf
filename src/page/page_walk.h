#pragma once

// Turns one schematic page into the entity records of its DXF file.

#include <string>

#include "dxf/byte_sink.h"
#include "host/dbo.h"

namespace kalmor {

// Writes every entity of `page` to `out` (the entities section is already open). Returns
// `status` set to OK, whatever happened on the way.
DboState& PageTranslator(DboState& status, const DboPage& page,
                         const DboInstOccurrence* occurrence, int frame, int titleBlocks,
                         ByteSink& out, std::string unused);

}  // namespace kalmor
