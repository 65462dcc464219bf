#pragma once

// Where the objects of an in-memory design live. A design holds millions of small objects and
// texts that are made while it is read and all freed together with it, so they are carved out of
// large blocks of one Arena (no bookkeeping per object, few page faults), and the model's lists
// and texts are eight-byte handles into it (List, Text) rather than the standard containers,
// which take three to four times that and a heap block each.
//
// Whatever makes a design makes it within an Arena::Scope of that design's arena; lists and texts
// take their memory from the arena of the innermost scope. Nothing in the arena is destroyed one
// by one: what lives there holds only handles, pointers and values.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kalmor::model::detail {

class Arena {
 public:
  Arena() = default;
  ~Arena();
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  // `size` bytes aligned to `align` (at most 16); throws std::bad_alloc.
  void* Allocate(std::size_t size, std::size_t align) {
    auto at = (reinterpret_cast<std::uintptr_t>(next_) + align - 1) & ~(align - 1);
    if (next_ == nullptr || at + size > reinterpret_cast<std::uintptr_t>(end_)) {
      at = reinterpret_cast<std::uintptr_t>(NewBlock(size + align));
      at = (at + align - 1) & ~(align - 1);
    }
    next_ = reinterpret_cast<char*>(at + size);
    return reinterpret_cast<void*>(at);
  }
  template <typename T, typename... Args>
  T* New(Args&&... args) {
    return new (Allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
  }

  // The arena of the innermost scope on this thread; the scope must exist.
  static Arena& Current();

  class Scope {
   public:
    explicit Scope(Arena& arena);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Arena* outer_;
  };

 private:
  void* NewBlock(std::size_t least);

  struct Block {
    void* memory;
    std::size_t size;
  };
  std::vector<Block> blocks_;
  std::size_t allocated_ = 0;
  char* next_ = nullptr;
  char* end_ = nullptr;
};

// An object made in the current arena.
template <typename T, typename... Args>
T* New(Args&&... args) {
  return Arena::Current().New<T>(std::forward<Args>(args)...);
}

// An immutable text in eight bytes: up to seven bytes are held in the handle itself, a longer
// text in the arena (its length, then its bytes). Most names and values of a design are short.
class Text {
 public:
  Text() = default;
  Text(std::string_view text) { Assign(text); }  // NOLINT: a text converts like a string
  Text& operator=(std::string_view text) {
    Assign(text);
    return *this;
  }

  std::string_view view() const {
    if ((raw_[kTag] & 1) != 0) {
      return {raw_ + kInlineAt, static_cast<std::size_t>(raw_[kTag] >> 1)};
    }
    const char* stored = nullptr;
    std::memcpy(&stored, raw_, sizeof stored);
    if (stored == nullptr) {
      return {};
    }
    uint32_t size = 0;
    std::memcpy(&size, stored, sizeof size);
    return {stored + sizeof size, size};
  }
  operator std::string_view() const { return view(); }  // NOLINT: read as a string view
  bool empty() const { return view().empty(); }
  std::size_t size() const { return view().size(); }
  std::string str() const { return std::string(view()); }

  friend bool operator==(const Text& a, const Text& b) { return a.view() == b.view(); }
  friend bool operator==(const Text& a, std::string_view b) { return a.view() == b; }

 private:
  // The handle is a pointer to the stored text (aligned, so its lowest bit is clear), or an
  // inline text: its bytes, and in the byte that holds the pointer's lowest bits its length
  // shifted up past a set lowest bit.
  static constexpr std::size_t kTag = std::endian::native == std::endian::little ? 0 : 7;
  static constexpr std::size_t kInlineAt = kTag == 0 ? 1 : 0;
  static constexpr std::size_t kMostInline = 7;

  void Assign(std::string_view text);

  alignas(8) char raw_[8] = {};
};
static_assert(sizeof(Text) == 8);

// A list of objects in eight bytes: a pointer to its elements in the arena, preceded there by
// its size and capacity. Growing it past its capacity moves it (the old place is left unused),
// so a reader that knows a list's length reserves it first. Copies are not made by accident:
// a list is moved, or copied with Copy().
template <typename T>
class List {
 public:
  List() = default;
  List(List&& other) noexcept : items_(std::exchange(other.items_, nullptr)) {}
  List& operator=(List&& other) noexcept {
    items_ = std::exchange(other.items_, nullptr);
    return *this;
  }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  // Moves the elements of `items` into a list of exactly their number.
  List(std::vector<T>&& items) { Adopt(std::move(items)); }  // NOLINT: as a vector converts
  List& operator=(std::vector<T>&& items) {
    Adopt(std::move(items));
    return *this;
  }

  std::size_t size() const { return items_ != nullptr ? header()->size : 0; }
  bool empty() const { return size() == 0; }
  T* data() { return items_; }
  const T* data() const { return items_; }
  T* begin() { return items_; }
  T* end() { return items_ + size(); }
  const T* begin() const { return items_; }
  const T* end() const { return items_ + size(); }
  T& operator[](std::size_t i) { return items_[i]; }
  const T& operator[](std::size_t i) const { return items_[i]; }
  const T& at(std::size_t i) const {
    if (i >= size()) {
      throw std::out_of_range("no such item in the list");
    }
    return items_[i];
  }
  T& front() { return items_[0]; }
  const T& front() const { return items_[0]; }
  T& back() { return items_[size() - 1]; }
  const T& back() const { return items_[size() - 1]; }
  operator std::span<const T>() const { return {items_, size()}; }  // NOLINT

  void reserve(std::size_t capacity) {
    if (capacity > (items_ != nullptr ? header()->capacity : 0)) {
      Move(capacity);
    }
  }
  template <typename... Args>
  T& emplace_back(Args&&... args) {
    const std::size_t count = size();
    if (items_ == nullptr || count == header()->capacity) {
      Move(count < 4 ? 4 : count * 2);
    }
    T* item = new (items_ + count) T(std::forward<Args>(args)...);
    header()->size = static_cast<uint32_t>(count + 1);
    return *item;
  }
  void push_back(T&& item) { emplace_back(std::move(item)); }
  void push_back(const T& item) { emplace_back(item); }
  void clear() {
    if (items_ != nullptr) {
      header()->size = 0;
    }
  }
  List Copy() const {
    List copy;
    copy.reserve(size());
    for (const T& item : *this) {
      copy.emplace_back(item);
    }
    return copy;
  }

 private:
  static_assert(alignof(T) <= 8, "the elements follow an eight-byte header");
  struct Header {
    uint32_t size;
    uint32_t capacity;
  };
  Header* header() const { return reinterpret_cast<Header*>(items_) - 1; }

  void Move(std::size_t capacity) {
    void* memory = Arena::Current().Allocate(sizeof(Header) + capacity * sizeof(T), 8);
    auto* header = static_cast<Header*>(memory);
    const std::size_t count = size();
    header->size = static_cast<uint32_t>(count);
    header->capacity = static_cast<uint32_t>(capacity);
    T* items = reinterpret_cast<T*>(header + 1);
    for (std::size_t i = 0; i < count; ++i) {
      new (items + i) T(std::move(items_[i]));
    }
    items_ = items;
  }
  void Adopt(std::vector<T>&& items) {
    items_ = nullptr;
    if (!items.empty()) {
      Move(items.size());
      for (T& item : items) {
        emplace_back(std::move(item));
      }
    }
    items.clear();
  }

  T* items_ = nullptr;
};

}  // namespace kalmor::model::detail
