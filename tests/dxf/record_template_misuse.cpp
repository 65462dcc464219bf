// Compiled by the tests, never built: each MISUSE of a record template must stop the compiler
// with its own complaint, and the file with none must compile.

#include "dxf/byte_sink.h"
#include "dxf/detail/piece.h"

namespace kalmor::dxf_detail {

void Misuse(ByteSink& out) {
  WritePiece<" 0\nLINE\n 8\n%s\n 10\n%8.4f\n">(out, std::string_view("WIRE"), 1.0);
#if MISUSE == 1  // a value missing
  WritePiece<" 10\n%8.4f\n 20\n%8.4f\n">(out, 1.0);
#elif MISUSE == 2  // a real where a string goes
  WritePiece<" 8\n%s\n">(out, 1.0);
#elif MISUSE == 3  // a value that is neither
  WritePiece<" 70\n%s\n">(out, 1);
#elif MISUSE == 4  // a directive the writer does not format
  WritePiece<" 70\n%6d\n">(out, 1.0);
#endif
}

}  // namespace kalmor::dxf_detail
