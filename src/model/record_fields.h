#pragma once

// The fields of a record (an object of the design document with fixed member names) as a table:
// each name with the function that reads its value into the object being made, and whether a
// record must give it. Both document readers dispatch on these tables.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kalmor::model::detail {

inline constexpr bool kRequired = true;

template <typename Reader, typename Target>
struct Field {
  std::string_view name;
  void (*read)(Reader& reader, Target& target);
  bool required = false;
};

template <typename Reader, typename Target>
using Fields = std::span<const Field<Reader, Target>>;

// Records have at most this many fields, so one bit per field says which ones were given.
inline constexpr std::size_t kMostFields = 64;

// The index of `name` in `fields`, or fields.size() when it is none of them.
template <typename Reader, typename Target>
std::size_t FieldIndex(Fields<Reader, Target> fields, std::string_view name) {
  std::size_t index = 0;
  while (index < fields.size() && fields[index].name != name) {
    ++index;
  }
  return index;
}

inline uint64_t FieldBit(std::size_t index) {
  return uint64_t{1} << index;
}

// The first required field, in table order, that `given` lacks; null when none does.
template <typename Reader, typename Target>
const Field<Reader, Target>* FirstMissing(Fields<Reader, Target> fields, uint64_t given) {
  for (std::size_t index = 0; index < fields.size(); ++index) {
    if (fields[index].required && (given & FieldBit(index)) == 0) {
      return &fields[index];
    }
  }
  return nullptr;
}

}  // namespace kalmor::model::detail
