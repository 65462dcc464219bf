#pragma once

// Walking the model's stored lists one object at a time, as the host iterators hand them out.

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

#include "kalmor/dbo.h"

namespace kalmor::model::detail {

template <typename T>
const T* AddressOf(const T& item) {
  return &item;
}
template <typename T>
const T* AddressOf(T* const& item) {
  return item;
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

// Hands out a list's items one per call, as every host iterator of kalmor/dbo.h does. Each
// iterator interface names its one operation differently (NextWire, NextPin, Next...); this one
// adapter defines them all, and the one its interface declares overrides it. The others are
// plain functions that nothing calls, and so are never compiled.
template <typename Interface, typename Item>
class ListIter final : public Interface, public Recycled<ListIter<Interface, Item>> {
 public:
  explicit ListIter(std::span<const Item> items) : items_(items) {}

  const DboInstOccurrence* NextOccurrence(DboState&) { return items_.Next(); }
  const DboView* NextView(DboState&) { return items_.Next(); }
  const DboPage* NextPage(DboState&) { return items_.Next(); }
  const DboDisplayProp* NextProp(DboState&) { return items_.Next(); }
  const DboTitleBlock* NextTitleBlock(DboState&) { return items_.Next(); }
  const DboPartInst* NextPartInst(DboState&) { return items_.Next(); }
  const DboWire* NextWire(DboState&) { return items_.Next(); }
  const DboGlobal* NextGlobal(DboState&) { return items_.Next(); }
  const DboPort* NextPort(DboState&) { return items_.Next(); }
  const DboOffPageConnector* NextOffPageConnector(DboState&) { return items_.Next(); }
  const DboBusEntry* NextBusEntry(DboState&) { return items_.Next(); }
  const DboGraphicInstance* NextCommentGraphic(DboState&) { return items_.Next(); }
  const DboPortInst* NextPin(DboState&) { return items_.Next(); }
  const DboAlias* NextAlias(DboState&) { return items_.Next(); }
  // A symbol vector's members also say in the status that they have come to an end.
  const DboBaseObject* NextVector(DboState& state) {
    const DboBaseObject* next = items_.Next();
    if (next == nullptr && std::is_same_v<Interface, DboSymbolVectorVectorsIter>) {
      state.SetFailed();
    }
    return next;
  }
  bool NextJunction(CPoint& point, DboState&) { return Take(point); }
  DboState Next(CPoint& point) { return Take(point) ? DboState() : DboState(DboState::kFailed); }

 private:
  bool Take(CPoint& point) {
    const CPoint* next = items_.Next();
    if (next != nullptr) {
      point = *next;
    }
    return next != nullptr;
  }

  Sequence<Item> items_;
};

// A new iterator of `Interface` over `items`.
template <typename Interface, typename Item>
std::unique_ptr<Interface> NewListIter(std::span<const Item> items) {
  return std::make_unique<ListIter<Interface, Item>>(items);
}

}  // namespace kalmor::model::detail
