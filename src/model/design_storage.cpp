#include "model/design_storage.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace kalmor::model::detail {
namespace {

thread_local Arena* g_current = nullptr;

// Blocks start small, so that a small design stays small, and double up to two megabytes.
// They are left in ordinary pages. A huge page faults in at once, but it needs two free
// megabytes in one piece, and on a virtual machine whose host takes back what its guest leaves
// free, such pieces are often the ones taken back: filling them then waits on the host, a
// tenth of a second more for a 50 MB document in about one load of three. Ordinary pages cost
// a steady 0.4 ms a megabyte. (The document text, read before, still asks for huge pages.)
constexpr std::size_t kFirstBlock = std::size_t{64} << 10;
constexpr std::size_t kLargestBlock = std::size_t{2} << 20;

}  // namespace

Arena::~Arena() {
  for (const Block& block : blocks_) {
    std::free(block.memory);
  }
}

void* Arena::NewBlock(std::size_t least) {
  const std::size_t size = std::max(std::clamp(allocated_, kFirstBlock, kLargestBlock), least);
  void* memory = std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
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
