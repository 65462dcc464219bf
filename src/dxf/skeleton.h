#pragma once

// The texts around a page's entities: the header section, the opening of the entities section,
// and the closing of both with the end-of-file record. Each is one write.

#include "dxf/byte_sink.h"

namespace kalmor {

void DxfWriteHeader(ByteSink& out);        // the HEADER section; DxfWriteEntitiesOpen follows
void DxfWriteEntitiesOpen(ByteSink& out);  // " 0\nSECTION\n 2\nENTITIES\n"
void DxfWriteEnd(ByteSink& out);           // ENTITIES closes, EOF

}  // namespace kalmor
