#pragma once

// The library's version. The macros say what a host was compiled against; LibraryVersion() says
// what it runs with.

#include "kalmor/api.h"

#define KALMOR_VERSION_MAJOR 1
#define KALMOR_VERSION_MINOR 15
#define KALMOR_VERSION_PATCH 0
// 11500 for 1.15.0, for comparisons in the preprocessor.
#define KALMOR_VERSION \
  (KALMOR_VERSION_MAJOR * 10000 + KALMOR_VERSION_MINOR * 100 + KALMOR_VERSION_PATCH)

namespace kalmor {

// "MAJOR.MINOR.PATCH" of the library loaded.
KALMOR_API const char* LibraryVersion() noexcept;

}  // namespace kalmor
