#pragma once

// The texts around a page's entities: the header section, the opening of the entities section,
// and the closing of both with the end-of-file record. Each is one write.

#include <string_view>

#include "dxf/byte_sink.h"

namespace kalmor {

void DxfWriteHeader(ByteSink& out);        // the HEADER section; DxfWriteEntitiesOpen follows
void DxfWriteEntitiesOpen(ByteSink& out);  // " 0\nSECTION\n 2\nENTITIES\n"
void DxfWriteEnd(ByteSink& out);           // ENTITIES closes, EOF

// The last bytes of every page file, line ends included: a file that ends so is complete.
inline constexpr std::string_view kDxfFileEnd = " 0\r\nENDSEC\r\n 0\r\nEOF\r\n";

}  // namespace kalmor
