#pragma once

// What the page walk computes once and every translator of the page uses: the output, the
// status, the page, its occurrence, and the mapping from page units to drawing units.

#include <cstdint>

#include "dxf/byte_sink.h"
#include "kalmor/dbo.h"

namespace kalmor {

struct PageContext {
  ByteSink& out;
  DboState& state;
  const DboPage& page;
  const DboInstOccurrence* occurrence;  // null when the page is exported on its own

  int32_t pinToPin = 0;
  double s = 0.0;                    // drawing units per page unit
  int32_t H = 0;                     // page height, truncated to pin-to-pin tenths
  int32_t W = 0;                     // page width, likewise
  double pinToPinScaleFactor = 1.0;  // read after the frame

  // The page mapping: x to the right, y flipped upward.
  double X(int32_t x) const { return x * s; }
  double Y(int32_t y) const { return (H - y) * s; }
};

}  // namespace kalmor
