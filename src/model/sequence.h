#pragma once

// Walking the model's stored lists one object at a time, as the host iterators hand them out.

#include <cstddef>
#include <memory>
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

}  // namespace kalmor::model::detail
