#include "kalmor/version.h"

#define KALMOR_STRINGIZE_(x) #x
#define KALMOR_STRINGIZE(x) KALMOR_STRINGIZE_(x)

namespace kalmor {

const char* LibraryVersion() noexcept {
  return KALMOR_STRINGIZE(KALMOR_VERSION_MAJOR) "." KALMOR_STRINGIZE(
      KALMOR_VERSION_MINOR) "." KALMOR_STRINGIZE(KALMOR_VERSION_PATCH);
}

}  // namespace kalmor
