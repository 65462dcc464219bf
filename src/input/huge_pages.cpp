#include "input/huge_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace kalmor {

void PreferHugePages(void* begin, std::size_t size) {
#ifdef MADV_HUGEPAGE
  const auto start = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = (start + kHugePageBytes - 1) & ~(kHugePageBytes - 1);
  const std::uintptr_t last = (start + size) & ~(kHugePageBytes - 1);
  if (first < last) {
    ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
  }
#else
  (void)begin;
  (void)size;
#endif
}

}  // namespace kalmor
