#pragma once

// Large blocks that a read or a design fills at once (a document's text, a design's arena) ask
// the system to back them with huge pages: a page fault per two megabytes rather than per four
// kilobytes.
//
// Only the first kMostHugePageBytes of each. A huge page needs two free megabytes in one piece,
// a system keeps only so many of those at hand, and on a virtual machine whose host takes back
// what its guest leaves free, the rest are the ones taken back: filling them waits on the host,
// 0.9 ms a megabyte against a steady 0.4 ms for ordinary pages (a 50 MB document loaded a tenth
// of a second slower in about one run of three).

#include <cstddef>

namespace kalmor {

inline constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;
inline constexpr std::size_t kMostHugePageBytes = std::size_t{16} << 20;

// Asks for huge pages under the whole huge pages within [begin, begin + size). A hint only:
// without it, ordinary pages.
void PreferHugePages(void* begin, std::size_t size);

}  // namespace kalmor
