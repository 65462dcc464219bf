#pragma once

// A JSON text turned into a flat list of tokens that the design reader walks forwards (and,
// for a few top-level fields, out of order). The text is parsed once by nlohmann's SAX parser;
// the tokens are small and the strings live in one buffer, so a large document costs a few
// times its size and no tree of nodes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalmor::model::detail {

// One token as the reader sees it, unpacked from the tape.
struct Token {
  enum class Kind : uint8_t {
    kObject,  // `size` members follow, then kEnd; `end` is the index of that kEnd
    kArray,   // `size` elements follow, then kEnd
    kEnd,
    kKey,  // a member's name; its value follows
    kString,
    kInteger,   // fits in int64_t
    kUnsigned,  // above INT64_MAX
    kReal,
    kBoolean,
    kNull,
  };
  Kind kind = Kind::kNull;
  uint32_t size = 0;  // string length, or member/element count
  union {
    int64_t integer = 0;
    uint64_t unsignedInteger;
    double real;
    uint64_t offset;  // strings: where the bytes start in the tape's buffer
    uint64_t end;     // containers
    bool boolean;
  };
};

// Where a syntax error was found and what it was.
struct SyntaxError {
  std::size_t offset = 0;  // byte of the text
  std::string pointer;     // the JSON pointer of the value being read
  std::string message;
};

class JsonTape {
 public:
  // Parses `text`; false (with `error` filled) when it is not JSON.
  bool Parse(std::string_view text, SyntaxError& error);

  Token operator[](std::size_t index) const;
  Token::Kind kind(std::size_t index) const {
    return static_cast<Token::Kind>(packed_[index] & kKindMask);
  }
  std::size_t size() const { return packed_.size(); }
  std::string_view Text(const Token& token) const {
    return std::string_view(strings_).substr(token.offset, token.size);
  }
  // A real as the text writes it ("1.0", "2e3", or an integer too large for 64 bits), for
  // complaints; `index` must be a kReal token.
  std::string_view NumberText(std::size_t index) const;

 private:
  friend class TapeBuilder;
  // Each token is one word: the kind in the low bits, a flag saying the value lives in `wide_`,
  // and a payload above them (a small integer, an index, an offset or a count).
  static constexpr uint64_t kKindMask = 0xF;
  static constexpr uint64_t kWide = 0x10;
  static constexpr int kPayloadShift = 5;

  std::vector<uint64_t> packed_;
  std::vector<uint64_t> wide_;  // numbers that do not fit a payload as their bits; a real is
                                // followed by where its text is stored
  std::string strings_;         // each string is its 32-bit length, then its bytes
};

// Appends the UTF-8 of a character (a code point below 0x110000) to `out`.
void AppendUtf8(std::string& out, uint32_t code);

// Appends `key` to `pointer` as one JSON-pointer step ("~" and "/" escaped).
void AppendPointerKey(std::string& pointer, std::string_view key);

// The byte of `text` where the value at `pointer` (or its nearest existing ancestor) begins.
// `text` must be valid JSON.
std::size_t LocatePointer(std::string_view text, std::string_view pointer);

struct LineColumn {
  std::size_t line = 1;
  std::size_t column = 1;
};
LineColumn LineColumnAt(std::string_view text, std::size_t offset);

}  // namespace kalmor::model::detail
