#pragma once

// The fast cursor over a design document: simdjson's on-demand parser, which validates the text
// (UTF-8, strings, structure) at gigabytes per second and parses each value where it is read.
// It offers what TapeReader offers, for the same reading code, but complains about nothing: at
// the first thing it does not read exactly as the careful reader would (a bad value, an escaped
// member name, a number beyond 64 bits, text that is not UTF-8), it throws LeftToCarefulReader
// and the careful reader reads the document again, with its exact messages.

#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kalmor/types.h"
#include "model/json_tape.h"
#include "model/record_fields.h"

namespace kalmor::model::detail {

struct LeftToCarefulReader {};

class OnDemandReader {
 public:
  // Reads `document`, which must outlive the reader, from its root.
  explicit OnDemandReader(simdjson::ondemand::document& document) : document_(document) {}

  static constexpr bool kComplains = false;

  Token::Kind PeekKind();
  void Skip() {}  // what is not read is passed over
  [[noreturn]] static void Fail(const std::string& message);
  [[noreturn]] static void FailAt(std::string_view key, const std::string& message);
  [[noreturn]] static void Expected(std::string_view what);
  [[noreturn]] static void ExpectedInteger(std::string_view what) { Expected(what); }
  bool PeekInteger();

  template <typename Reader, typename Target>
  void Record(Fields<Reader, Target> fields, Reader& reader, Target& target);
  // An array of objects read one by one into `items`, counted first so that the vector is
  // made once at its size: for a long list, growing it would touch twice the memory.
  template <typename T, typename Read>
  void ListInto(std::vector<T>& items, Read&& read) {
    simdjson::ondemand::array array = Array();
    std::size_t count = 0;
    Check(array.count_elements().get(count));
    items.reserve(items.size() + count);
    for (auto item : array) {
      Check(std::move(item).get(value_));
      read(items.emplace_back());
    }
  }
  // The same for the outermost lists (schematics, pages), whose elements hold nearly the whole
  // document: counting them would pass over it once more; they are few, and grow cheaply.
  template <typename T, typename Read>
  void GrowingListInto(std::vector<T>& items, Read&& read) {
    List([&](std::size_t) { read(items.emplace_back()); });
    items.shrink_to_fit();
  }
  template <typename Entry>
  void Map(Entry&& entry);
  template <typename Element>
  void List(Element&& element);
  // Only the root object's members are read out of turn.
  template <typename Read>
  bool ReadMemberFirst(std::string_view key, Read&& read);
  // Throws unless the whole text has been read.
  void Finish();

  std::optional<int64_t> Integer();
  int32_t Int32() { return Int32Within(INT32_MIN, INT32_MAX, {}); }
  int32_t Int32AtLeast(int32_t least, std::string_view) {
    return Int32Within(least, INT32_MAX, {});
  }
  int32_t Int32Within(int32_t least, int32_t most, std::string_view);
  int32_t Coordinate();
  uint8_t Byte() { return static_cast<uint8_t>(Int32Within(0, 255, {})); }
  bool Boolean();
  double NumberWithin(double least, double most, std::string_view);
  // The string at the cursor, valid until the document is read again from its start.
  std::string_view StringView();
  CPoint Point();
  CRect Rect();
  void Points(std::vector<CPoint>& points);

 private:
  [[noreturn]] static void Miss() { throw LeftToCarefulReader{}; }
  static void Check(simdjson::error_code error) {
    if (error != simdjson::SUCCESS) [[unlikely]] {
      Miss();
    }
  }
  simdjson::ondemand::object Object();
  simdjson::ondemand::array Array();
  // A member name as it stands in the text; one with an escape is left to the careful reader.
  static std::string_view PlainKey(const simdjson::ondemand::field& field);
  // Reads `count` integers of an array of exactly that many.
  template <std::size_t N>
  void Coordinates(int32_t (&values)[N]);

  simdjson::ondemand::document& document_;
  simdjson::ondemand::value value_;  // the value at the cursor, below the root
  bool atRoot_ = true;
};

template <typename Reader, typename Target>
void OnDemandReader::Record(Fields<Reader, Target> fields, Reader& reader, Target& target) {
  simdjson::ondemand::object object = Object();
  uint64_t given = 0;
  for (auto member : object) {
    simdjson::ondemand::field field;
    Check(std::move(member).get(field));
    const std::size_t index = FieldIndex(fields, PlainKey(field));
    if (index == fields.size() || (given & FieldBit(index)) != 0) {
      Miss();
    }
    given |= FieldBit(index);
    value_ = field.value();
    fields[index].read(reader, target);
  }
  if (FirstMissing(fields, given) != nullptr) {
    Miss();
  }
}

template <typename Entry>
void OnDemandReader::Map(Entry&& entry) {
  simdjson::ondemand::object object = Object();
  for (auto member : object) {
    simdjson::ondemand::field field;
    Check(std::move(member).get(field));
    std::string_view key;
    Check(field.unescaped_key().get(key));
    value_ = field.value();
    entry(key);
  }
}

template <typename Element>
void OnDemandReader::List(Element&& element) {
  simdjson::ondemand::array array = Array();
  std::size_t index = 0;
  for (auto item : array) {
    Check(std::move(item).get(value_));
    element(index++);
  }
}

template <typename Read>
bool OnDemandReader::ReadMemberFirst(std::string_view key, Read&& read) {
  if (!atRoot_) {
    Miss();
  }
  const simdjson::error_code error = document_.find_field_unordered(key).get(value_);
  if (error == simdjson::NO_SUCH_FIELD) {
    document_.rewind();
    return false;
  }
  Check(error);
  atRoot_ = false;
  read();
  atRoot_ = true;
  document_.rewind();
  return true;
}

}  // namespace kalmor::model::detail
