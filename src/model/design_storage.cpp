#include "model/design_storage.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace kalmor::model::detail {
namespace {

thread_local Arena* g_current = nullptr;

// Blocks start small, so that a small design stays small, and double up to the size of a huge
// page; from there on each block is a huge page or more, which the system is asked to back with
// huge pages for the first kMostHugePages of a design: a fault per two megabytes rather than per
// four kilobytes.
//
// Past that, ordinary pages. A huge page needs two free megabytes in one piece, a system keeps
// only so many of those at hand, and on a virtual machine whose host takes back what its guest
// leaves free, the rest are the ones taken back: filling them waits on the host, 0.9 ms a
// megabyte against a steady 0.4 ms for ordinary pages (a 50 MB document loaded a tenth of a
// second slower in about one run of three). The document text (input/input_file.cpp) asks for
// as many.
constexpr std::size_t kFirstBlock = std::size_t{64} << 10;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kMostHugePages = std::size_t{16} << 20;

}  // namespace

Arena::~Arena() {
  for (const Block& block : blocks_) {
    std::free(block.memory);
  }
}

void* Arena::NewBlock(std::size_t least) {
  std::size_t size = std::clamp(allocated_, kFirstBlock, kHugePage);
  if (least > size) {
    size = (least + kHugePage - 1) / kHugePage * kHugePage;
  }
  const bool huge = size >= kHugePage && allocated_ < kMostHugePages;
  void* memory = huge ? std::aligned_alloc(kHugePage, size) : std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
#ifdef MADV_HUGEPAGE
  if (huge) {
    ::madvise(memory, size, MADV_HUGEPAGE);  // a hint: without it, ordinary pages
  }
#endif
  blocks_.push_back({memory, size});
  allocated_ += size;
  next_ = static_cast<char*>(memory);
  end_ = next_ + size;
  return memory;
}

Arena& Arena::Current() {
  if (g_current == nullptr) {
    throw std::logic_error("a design's objects are made outside of its arena's scope");
  }
  return *g_current;
}

Arena::Scope::Scope(Arena& arena) : outer_(g_current) {
  g_current = &arena;
}

Arena::Scope::~Scope() {
  g_current = outer_;
}

void Text::Assign(std::string_view text) {
  if (text.size() <= kMostInline) {
    std::memset(raw_, 0, sizeof raw_);
    raw_[kTag] = static_cast<char>(text.size() << 1 | 1);
    std::memcpy(raw_ + kInlineAt, text.data(), text.size());
    return;
  }
  const auto size = static_cast<uint32_t>(text.size());
  auto* stored = static_cast<char*>(Arena::Current().Allocate(sizeof size + text.size(), 8));
  std::memcpy(stored, &size, sizeof size);
  std::memcpy(stored + sizeof size, text.data(), text.size());
  std::memcpy(raw_, &stored, sizeof stored);
}

}  // namespace kalmor::model::detail
