#pragma once

// A design of many schematics, each of one page: the design that makes an export write as many
// files as it has schematics.

#include <cstdint>
#include <string>

namespace kalmor::bench {

// `count` schematics, S0 to S(count-1), of one page each, with a wire so that each page draws
// something. Every page is drawn alike, so every file the export writes holds the same bytes.
inline std::string ManySchematics(int64_t count) {
  std::string json = R"({"kalmor_design": 1, "name": "MANY", "schematics": [)";
  for (int64_t i = 0; i < count; ++i) {
    json += i == 0 ? "\n" : ",\n";
    json += R"({"name": "S)" + std::to_string(i) +
            R"(", "pages": [{"name": "1", "wires": [{"start": [0, 0], "end": [100, 0]}]}]})";
  }
  return json + "]}";
}

}  // namespace kalmor::bench
