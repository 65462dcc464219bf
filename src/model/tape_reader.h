#pragma once

// Typed, checked reading of a JsonTape, keeping the JSON pointer of the value being read so
// that every complaint names where it is.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kalmor/types.h"
#include "model/document_fault.h"
#include "model/json_tape.h"

namespace kalmor::model::detail {

// Places and sizes on a page lie within this many units of the origin, and the pin-to-pin scale
// factor within this factor of 1:1. The page arithmetic adds up to a few of them (a placed box
// plus a location, flipped at the page height, plus a text's location and extent; symbol points
// scaled by the factor and moved by a location) in 32 bits, and these limits keep every such sum
// far inside that range; no real drawing comes near them.
inline constexpr int32_t kCoordinateLimit = 1 << 24;
inline constexpr double kScaleFactorLimit = 32.0;

class TapeReader {
 public:
  explicit TapeReader(const JsonTape& tape) : tape_(tape) { path_.reserve(32); }

  Token Peek() const { return tape_[at_]; }
  Token::Kind PeekKind() const { return tape_.kind(at_); }
  std::size_t at() const { return at_; }
  void Seek(std::size_t at) { at_ = at; }
  void Skip();

  std::string Pointer() const;
  std::string PointerTo(std::string_view key) const;
  [[noreturn]] void Fail(std::string message) const;
  [[noreturn]] void FailAt(std::string_view key, std::string message) const;
  // "expected <what>, got <what the value is>".
  [[noreturn]] void Expected(std::string_view what) const;

  // An object whose members are fields: `field(key)` reads the value and returns true, or
  // returns false for a name it does not know. A name given twice is refused, and so is an
  // object that lacks one of the `required` names.
  template <typename Field>
  void Record(std::initializer_list<std::string_view> required, Field&& field);
  template <typename Field>
  void Record(Field&& field) {
    Record({}, std::forward<Field>(field));
  }
  // An array of objects read one by one into `items`.
  template <typename T, typename Read>
  void ListInto(std::vector<T>& items, Read&& read) {
    items.reserve(items.size() + ListSize());
    List([&](std::size_t) { read(items.emplace_back()); });
  }
  // An object whose member names are free (a map): `entry(key)` reads each value.
  template <typename Entry>
  void Map(Entry&& entry);
  // An array: `element(index)` reads each element.
  template <typename Element>
  void List(Element&& element);
  // The element count of the array at the cursor (refusing anything else).
  std::size_t ListSize() const;
  // Where the value of member `key` of the object at the cursor is, or 0 when it has none.
  std::size_t FindMember(std::string_view key) const;
  // Reads the value of member `key` found at `at` out of turn; the cursor stays where it is.
  template <typename Read>
  void ReadMemberAt(std::string_view key, std::size_t at, Read&& read);

  int32_t Int32();
  int32_t Int32AtLeast(int32_t least, std::string_view what);
  int32_t Int32Within(int32_t least, int32_t most, std::string_view what);
  int32_t Coordinate();  // within kCoordinateLimit
  uint8_t Byte();
  bool Boolean();
  double NumberWithin(double least, double most, std::string_view what);
  std::string String();
  CPoint Point();
  CRect Rect();
  std::vector<CPoint> Points();

 private:
  struct Step {
    std::string_view key{};
    std::size_t index = 0;
    bool isIndex = false;
  };
  void EnterObject();
  std::string_view TakeKey();
  std::string Describe(const Token& token) const;

  const JsonTape& tape_;
  std::size_t at_ = 0;
  std::vector<Step> path_;
};

template <typename Field>
void TapeReader::Record(std::initializer_list<std::string_view> required, Field&& field) {
  EnterObject();
  // Real records have far fewer fields; past this many, every further name is unknown or
  // repeats one of these.
  std::array<std::string_view, 32> seen;
  std::size_t count = 0;
  while (PeekKind() != Token::Kind::kEnd) {
    const std::string_view key = TakeKey();
    for (std::size_t i = 0; i < count; ++i) {
      if (seen[i] == key) {
        Fail("field given twice");
      }
    }
    if (count < seen.size()) {
      seen[count++] = key;
    }
    if (!field(key)) {
      Fail("unknown field");
    }
    path_.pop_back();
  }
  for (const std::string_view name : required) {
    if (std::find(seen.begin(), seen.begin() + count, name) == seen.begin() + count) {
      FailAt(name, "required, but missing");
    }
  }
  ++at_;
}

template <typename Entry>
void TapeReader::Map(Entry&& entry) {
  EnterObject();
  while (PeekKind() != Token::Kind::kEnd) {
    entry(TakeKey());
    path_.pop_back();
  }
  ++at_;
}

template <typename Element>
void TapeReader::List(Element&& element) {
  const std::size_t size = ListSize();
  ++at_;
  path_.push_back(Step{.isIndex = true});
  for (std::size_t index = 0; index < size; ++index) {
    path_.back().index = index;
    element(index);
  }
  path_.pop_back();
  ++at_;  // the end
}

template <typename Read>
void TapeReader::ReadMemberAt(std::string_view key, std::size_t at, Read&& read) {
  const std::size_t back = at_;
  at_ = at;
  path_.push_back(Step{.key = key});
  read();
  path_.pop_back();
  at_ = back;
}

}  // namespace kalmor::model::detail
