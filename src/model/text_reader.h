#pragma once

// The fast cursor over a design document: it reads the text straight, in one pass, building the
// design as it goes, with no index or tree beside the text. It offers what TapeReader offers, for
// the same reading code, but complains about nothing: at the first thing it does not read exactly
// as the careful reader would (a bad value, an escaped member name, a number beyond 64 bits, text
// that is not UTF-8, anything that is not JSON), it throws LeftToCarefulReader and the careful
// reader reads the document again, with its exact messages.
//
// JSON parsers that are as fast (simdjson) first index every token of the whole text, an index
// larger than the text itself; reading without one keeps a load within a few times the size of
// its document.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kalmor/types.h"
#include "model/design_storage.h"
#include "model/json_tape.h"
#include "model/record_fields.h"
#include "model/tape_reader.h"

namespace kalmor::model::detail {

struct LeftToCarefulReader {};

class TextReader {
 public:
  // Reads `text`, whose byte past the end must be readable and zero (it stops every scan).
  explicit TextReader(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  static constexpr bool kComplains = false;

  Token::Kind PeekKind();
  [[noreturn]] static void Fail(const std::string& message);
  [[noreturn]] static void FailAt(std::string_view key, const std::string& message);
  [[noreturn]] static void Expected(std::string_view what);
  [[noreturn]] static void ExpectedInteger(std::string_view what) { Expected(what); }
  bool PeekInteger();

  template <typename Reader, typename Target>
  void Record(Fields<Reader, Target> fields, Reader& reader, Target& target);
  // An array of objects read one by one into `items`. Its length is known only at its end, so
  // the objects are read into a vector first and then moved into a list of exactly their number.
  template <typename T, typename Read>
  void ListInto(detail::List<T>& items, Read&& read) {
    std::vector<T> read_items;
    List([&](std::size_t) { read(read_items.emplace_back()); });
    items.reserve(items.size() + read_items.size());
    for (T& item : read_items) {
      items.emplace_back(std::move(item));
    }
  }
  template <typename Entry>
  void Map(Entry&& entry);
  template <typename Element>
  void List(Element&& element);
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
  // The string at the cursor, valid until the next string is read.
  std::string_view StringView();
  CPoint Point();
  CRect Rect();
  void Points(detail::List<CPoint>& points);

 private:
  [[noreturn]] static void Miss() { throw LeftToCarefulReader{}; }
  // The next byte that is not white space, which the cursor is then at.
  char Next();
  // Takes `c` as the next byte past white space; misses when it is another.
  void Expect(char c) {
    if (Next() != c) [[unlikely]] {
      Miss();
    }
    ++at_;
  }
  // Past an opening '{' or '[': true while there is another member or element; takes the comma
  // between them and the closing `close`.
  bool More(char close, bool first);
  // A member name as it stands in the text; one with an escape is left to the careful reader.
  std::string_view PlainKey();
  // The string at the cursor with its escapes decoded into `scratch` when it has any.
  std::string_view ReadString(std::string& scratch);
  // The string from `start` on, the cursor where its plain run stopped, decoded into `scratch`.
  std::string_view DecodeString(const char* start, std::string& scratch);
  // The integer at the cursor, of at most 18 digits; misses on anything else (a real, a
  // larger integer).
  int64_t ReadInteger();
  // "[a, b, ...]" of N coordinates.
  template <std::size_t N>
  void Coordinates(int32_t (&values)[N]);

  const char* at_;
  const char* end_;
  std::string scratch_;                 // decoded strings
  std::deque<std::string> keyScratch_;  // decoded map keys, by depth of the map
  std::size_t mapDepth_ = 0;
};

template <typename Reader, typename Target>
void TextReader::Record(Fields<Reader, Target> fields, Reader& reader, Target& target) {
  Expect('{');
  uint64_t given = 0;
  for (bool first = true; More('}', first); first = false) {
    const std::size_t index = FieldIndex(fields, PlainKey());
    if (index == fields.size() || (given & FieldBit(index)) != 0) {
      Miss();
    }
    given |= FieldBit(index);
    Expect(':');
    fields[index].read(reader, target);
  }
  if (FirstMissing(fields, given) != nullptr) {
    Miss();
  }
}

template <typename Entry>
void TextReader::Map(Entry&& entry) {
  Expect('{');
  if (keyScratch_.size() == mapDepth_) {
    keyScratch_.emplace_back();
  }
  ++mapDepth_;
  for (bool first = true; More('}', first); first = false) {
    const std::string_view key = ReadString(keyScratch_[mapDepth_ - 1]);
    Expect(':');
    entry(key);
  }
  --mapDepth_;
}

template <typename Element>
void TextReader::List(Element&& element) {
  Expect('[');
  std::size_t index = 0;
  for (bool first = true; More(']', first); first = false) {
    element(index++);
  }
}

// The reader's innermost steps, inline where the document reader calls them.

inline bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

// The first byte at or past `at` that ends a run of plain string bytes: a quote, a backslash or a
// control character (such as the zero past the text).
inline const char* PlainEnd(const char* at) {
  while (*at != '"' && *at != '\\' && static_cast<unsigned char>(*at) >= 0x20) {
    ++at;
  }
  return at;
}

inline char TextReader::Next() {
  while (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t') {
    ++at_;
  }
  return *at_;
}

inline bool TextReader::More(char close, bool first) {
  const char c = Next();
  if (c == close) {
    ++at_;
    return false;
  }
  if (first) {
    return true;
  }
  if (c != ',') {
    Miss();
  }
  ++at_;
  return true;
}

inline std::string_view TextReader::PlainKey() {
  if (Next() != '"') {
    Miss();
  }
  const char* start = ++at_;
  at_ = PlainEnd(start);
  if (*at_ != '"') {
    Miss();  // an escape, a control character, or the end of the text
  }
  return {start, static_cast<std::size_t>(at_++ - start)};
}

inline std::string_view TextReader::ReadString(std::string& scratch) {
  if (Next() != '"') {
    Miss();
  }
  const char* start = ++at_;
  at_ = PlainEnd(start);
  if (*at_ == '"') {
    return {start, static_cast<std::size_t>(at_++ - start)};
  }
  return DecodeString(start, scratch);
}

inline std::string_view TextReader::StringView() {
  return ReadString(scratch_);
}

inline int64_t TextReader::ReadInteger() {
  Next();
  const bool negative = *at_ == '-';
  const char* digits = at_ + (negative ? 1 : 0);
  constexpr int kMostDigits = 18;  // no overflow of 64 bits
  int64_t magnitude = 0;
  const char* end = digits;
  if (*end == '0') {
    ++end;
  } else {
    // Digits past the most are not added up: the check below leaves such a number to the
    // careful reader.
    for (; IsAsciiDigit(*end) && end - digits < kMostDigits; ++end) {
      magnitude = magnitude * 10 + (*end - '0');
    }
  }
  if (end == digits || IsAsciiDigit(*end) || *end == '.' || *end == 'e' || *end == 'E') {
    Miss();
  }
  at_ = end;
  return negative ? -magnitude : magnitude;
}

inline int32_t TextReader::Int32Within(int32_t least, int32_t most, std::string_view) {
  const int64_t value = ReadInteger();
  if (value < least || value > most) {
    Miss();
  }
  return static_cast<int32_t>(value);
}

inline int32_t TextReader::Coordinate() {
  return Int32Within(-kCoordinateLimit, kCoordinateLimit, {});
}

template <std::size_t N>
inline void TextReader::Coordinates(int32_t (&values)[N]) {
  Expect('[');
  for (std::size_t i = 0; i < N; ++i) {
    values[i] = Coordinate();
    Expect(i + 1 < N ? ',' : ']');
  }
}

inline CPoint TextReader::Point() {
  int32_t values[2];
  Coordinates(values);
  return {values[0], values[1]};
}

inline CRect TextReader::Rect() {
  int32_t values[4];
  Coordinates(values);
  return {values[0], values[1], values[2], values[3]};
}

}  // namespace kalmor::model::detail
