#include "dxf/skeleton.h"

#include "dxf/detail/piece.h"

namespace kalmor {

// The file holds the HEADER and ENTITIES sections only: layers exist by being named in entities,
// and readers create them with default colour and line type.

void DxfWriteHeader(ByteSink& out) {
  dxf_detail::WritePiece<" 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1009\n 0\nENDSEC\n">(out);
}

void DxfWriteEntitiesOpen(ByteSink& out) {
  dxf_detail::WritePiece<" 0\nSECTION\n 2\nENTITIES\n">(out);
}

void DxfWriteEnd(ByteSink& out) {
  dxf_detail::WritePiece<" 0\nENDSEC\n 0\nEOF\n">(out);
}

}  // namespace kalmor
