#include "model/design_storage.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "input/huge_pages.h"

namespace kalmor::model::detail {
namespace {

thread_local Arena* g_current = nullptr;

// Blocks start small, so that a small design stays small, and double up to the size of a huge
// page; from there on each block is a huge page or more, backed by huge pages for the first
// megabytes of a design (see input/huge_pages.h).
constexpr std::size_t kFirstBlock = std::size_t{64} << 10;

}  // namespace

Arena::~Arena() {
  for (const Block& block : blocks_) {
    std::free(block.memory);
  }
}

void* Arena::NewBlock(std::size_t least) {
  std::size_t size = std::clamp(allocated_, kFirstBlock, kHugePageBytes);
  if (least > size) {
    size = (least + kHugePageBytes - 1) / kHugePageBytes * kHugePageBytes;
  }
  const bool huge = size >= kHugePageBytes && allocated_ < kMostHugePageBytes;
  void* memory = huge ? std::aligned_alloc(kHugePageBytes, size) : std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  if (huge) {
    PreferHugePages(memory, size);
  }
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
