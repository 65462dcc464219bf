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

  const Token& operator[](std::size_t index) const { return tokens_[index]; }
  std::size_t size() const { return tokens_.size(); }
  std::string_view Text(const Token& token) const {
    return std::string_view(strings_).substr(token.offset, token.size);
  }

 private:
  friend class TapeBuilder;
  std::vector<Token> tokens_;
  std::string strings_;
};

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
