#pragma once

// Walking the model's stored lists one object at a time, as the host iterators hand them out.

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace kalmor::model::detail {

template <typename T>
const T* AddressOf(const T& item) {
  return &item;
}
template <typename T>
const T* AddressOf(const std::unique_ptr<T>& item) {
  return item.get();
}

// The next item of a list on each call, then null.
template <typename T>
class Sequence {
 public:
  Sequence() = default;
  explicit Sequence(std::span<const T> items) : items_(items) {}

  auto Next() {
    using Pointer = decltype(AddressOf(items_.front()));
    return index_ < items_.size() ? AddressOf(items_[index_++]) : Pointer{};
  }

 private:
  std::span<const T> items_;
  std::size_t index_ = 0;
};

// The page walk makes an iterator for every object it draws and frees it at once. An iterator
// class that derives from Recycled<itself> keeps the few it freed last for the next ones, which
// spares the allocator most of the work.
template <typename T>
class Recycled {
 public:
  static void* operator new(std::size_t size) {
    Shelf& shelf = TheShelf();
    if (size == sizeof(T) && shelf.count > 0) {
      return shelf.slots[--shelf.count];
    }
    return ::operator new(size);
  }
  static void operator delete(void* object, std::size_t size) {
    Shelf& shelf = TheShelf();
    if (size == sizeof(T) && shelf.count < Shelf::kSlots) {
      shelf.slots[shelf.count++] = object;
      return;
    }
    ::operator delete(object);
  }

 private:
  struct Shelf {
    static constexpr std::size_t kSlots = 8;
    void* slots[kSlots] = {};
    std::size_t count = 0;
    ~Shelf() {
      while (count > 0) {
        ::operator delete(slots[--count]);
      }
    }
  };
  static Shelf& TheShelf() {
    thread_local Shelf shelf;
    return shelf;
  }
};

}  // namespace kalmor::model::detail
