#pragma once

// The page of export_bench: wires in a grid, the same in the design document the command exports
// and in the records the snprintf baseline writes.

#include <cstdint>
#include <string>
#include <utility>

namespace kalmor::bench {

inline constexpr int32_t kPinToPin = 100;
inline constexpr int32_t kPageHeight = 85000;
inline constexpr int32_t kPageWidth = 110000;

struct Wire {
  std::pair<int32_t, int32_t> start, end;
};

inline Wire WireAt(int64_t i) {
  const auto x = static_cast<int32_t>((i % 1000) * 10);
  const auto y = static_cast<int32_t>((i / 1000) * 10 % 85000);
  return {{x, y}, {x + 10, y}};
}

// The design document of one schematic S with one page P of `count` wires and nothing else.
inline std::string WirePageDocument(int64_t count) {
  std::string json = R"({"kalmor_design": 1, "name": "BENCH", "schematics": [{"name": "S",
    "pages": [{"name": "P", "pin_to_pin": )" +
                     std::to_string(kPinToPin) + R"(, "width": )" + std::to_string(kPageWidth) +
                     R"(, "height": )" + std::to_string(kPageHeight) + R"(, "wires": [)";
  json.reserve(static_cast<std::size_t>(count) * 45);
  for (int64_t i = 0; i < count; ++i) {
    const Wire wire = WireAt(i);
    json += i == 0 ? "\n" : ",\n";
    json += R"({"start": [)" + std::to_string(wire.start.first) + ", " +
            std::to_string(wire.start.second) + R"(], "end": [)" + std::to_string(wire.end.first) +
            ", " + std::to_string(wire.end.second) + "]}";
  }
  json += "]}]}]}";
  return json;
}

}  // namespace kalmor::bench
