#pragma once

// Typed, checked reading of a JsonTape, keeping the JSON pointer of the value being read so
// that every complaint names where it is.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kalmor/types.h"
#include "model/design_storage.h"
#include "model/document_fault.h"
#include "model/json_tape.h"
#include "model/record_fields.h"

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

  // Every complaint says what and where.
  static constexpr bool kComplains = true;

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
  // The same where an integer belongs: a real is said to be one.
  [[noreturn]] void ExpectedInteger(std::string_view what) const;
  // Whether the value at the cursor is an integer, of any size.
  bool PeekInteger() const;

  // An object whose members are `fields`, each read into `target` by its own function. A name
  // that is not a field, a field given twice and a missing required field are refused.
  template <typename Reader, typename Target>
  void Record(Fields<Reader, Target> fields, Reader& reader, Target& target);
  // An array of objects read one by one into `items`, made at its size.
  template <typename T, typename Read>
  void ListInto(detail::List<T>& items, Read&& read) {
    items.reserve(items.size() + ListSize());
    List([&](std::size_t) { read(items.emplace_back()); });
  }
  // An object whose member names are free (a map): `entry(key)` reads each value.
  template <typename Entry>
  void Map(Entry&& entry);
  // An array: `element(index)` reads each element.
  template <typename Element>
  void List(Element&& element);
  // Reads member `key` of the object at the cursor out of turn, before the others, when it has
  // one; the cursor stays where it is.
  template <typename Read>
  bool ReadMemberFirst(std::string_view key, Read&& read);

  // The integer at the cursor when it is one of 64 bits (consumed), else nothing (not).
  std::optional<int64_t> Integer();
  int32_t Int32();
  int32_t Int32AtLeast(int32_t least, std::string_view what);
  int32_t Int32Within(int32_t least, int32_t most, std::string_view what);
  int32_t Coordinate();  // within kCoordinateLimit
  uint8_t Byte();
  bool Boolean();
  double NumberWithin(double least, double most, std::string_view what);
  // The string at the cursor, valid as long as the tape.
  std::string_view StringView();
  CPoint Point();
  CRect Rect();
  void Points(detail::List<CPoint>& points);

 private:
  std::size_t ListSize() const;
  // Where the value of member `key` of the object at the cursor is, or 0 when it has none.
  std::size_t FindMember(std::string_view key) const;

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

template <typename Reader, typename Target>
void TapeReader::Record(Fields<Reader, Target> fields, Reader& reader, Target& target) {
  EnterObject();
  uint64_t given = 0;
  while (PeekKind() != Token::Kind::kEnd) {
    const std::size_t index = FieldIndex(fields, TakeKey());
    if (index == fields.size()) {
      Fail("unknown field");
    }
    if ((given & FieldBit(index)) != 0) {
      Fail("field given twice");
    }
    given |= FieldBit(index);
    fields[index].read(reader, target);
    path_.pop_back();
  }
  if (const auto* missing = FirstMissing(fields, given)) {
    FailAt(missing->name, "required, but missing");
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
bool TapeReader::ReadMemberFirst(std::string_view key, Read&& read) {
  const std::size_t at = FindMember(key);
  if (at == 0) {
    return false;
  }
  const std::size_t back = at_;
  at_ = at;
  path_.push_back(Step{.key = key});
  read();
  path_.pop_back();
  at_ = back;
  return true;
}

}  // namespace kalmor::model::detail
