// The baseline of export_bench: a small program that writes the wire records of the benchmark's
// page and nothing else, each piece formatted with snprintf (CR LF line ends in its templates)
// and written with one fwrite, the way such a writer is most simply made.
//
//   wires_snprintf_baseline COUNT FILE

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "wire_page.h"

namespace {

template <typename... Args>
void Piece(std::FILE* out, const char* format, Args... args) {
  char buffer[300];
  const int n = std::snprintf(buffer, sizeof buffer, format, args...);
  std::fwrite(buffer, 1, static_cast<std::size_t>(n), out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: wires_snprintf_baseline COUNT FILE\n");
    return 2;
  }
  const long count = std::strtol(argv[1], nullptr, 10);
  std::FILE* out = std::fopen(argv[2], "wb");
  if (out == nullptr) {
    std::perror(argv[2]);
    return 1;
  }
  // The page mapping: pin-to-pin 100, so 0.01 drawing units per page unit.
  const double s = kalmor::bench::kPinToPin * 0.0001;
  const int h = static_cast<int>(kalmor::bench::kPageHeight / (kalmor::bench::kPinToPin * 0.1));
  for (long i = 0; i < count; ++i) {
    const kalmor::bench::Wire wire = kalmor::bench::WireAt(i);
    Piece(out, " 0\r\nPOLYLINE\r\n 8\r\n%s\r\n 66\r\n1\r\n", "WIRE");
    Piece(out, " 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n");
    for (const auto& [x, y] : {wire.start, wire.end}) {
      Piece(out, " 0\r\nVERTEX\r\n 8\r\n%s\r\n", "WIRE");
      Piece(out, " 10\r\n%8.4f\r\n 20\r\n%8.4f\r\n 30\r\n0.0\r\n", x * s, (h - y) * s);
    }
    Piece(out, " 0\r\nSEQEND\r\n 8\r\n%s\r\n", "WIRE");
  }
  return std::fclose(out) == 0 ? 0 : 1;
}
