#pragma once

// Sums of text sizes are formed in 64 bits and brought back to the 32-bit range at the end.

#include <algorithm>
#include <cstdint>
#include <limits>

namespace kalmor::text_detail {

inline int32_t SaturateToInt32(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max()));
}

}  // namespace kalmor::text_detail
