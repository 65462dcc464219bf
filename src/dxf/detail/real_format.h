#pragma once

// Real numbers as the file writes them: fixed point with four decimals, right-aligned in a field
// of at least eight characters, rounded exactly (ties to even) from the binary value.

#include <cstddef>

namespace kalmor::dxf_detail {

// The widest real: a sign, the 309 integer digits of the largest double, the point and four
// decimals.
inline constexpr std::size_t kMaxRealChars = 1 + 309 + 1 + 4;

// Writes `value` at `out` (room for kMaxRealChars) and returns the end. NaN and infinity read
// "nan", "-nan", "inf" and "-inf", padded like any other value.
char* AppendReal(char* out, double value);

}  // namespace kalmor::dxf_detail
