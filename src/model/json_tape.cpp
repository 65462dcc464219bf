#include "model/json_tape.h"

#include <charconv>
#include <cstring>
#include <unordered_map>

#include <nlohmann/json.hpp>

#include "kalmor/host_text.h"
#include "model/document_fault.h"

namespace kalmor::model::detail {

using Json = nlohmann::json;

namespace {

// A byte of a string that is not part of a UTF-8 character, and where it belongs: in which
// string or member name of the text (counting from 0 in text order) and at which byte of its
// value.
struct ForeignByte {
  std::size_t string;
  std::size_t at;
  char byte;
};

// The length of the well-formed UTF-8 character at the start of `s`, or 0 when there is none;
// plain ASCII, most of any document, is told apart without the call.
std::size_t Utf8CharLength(std::string_view s) {
  return static_cast<unsigned char>(s.front()) < 0x80 ? 1 : DecodeUtf8(s).length;
}

// The bytes of the decoded value that the escape at the start of `s` ("\n", "\u00e9", a
// surrogate pair) stands for, and its length in the text.
std::pair<std::size_t, std::size_t> EscapeLengths(std::string_view s) {
  if (s.size() < 6 || s[1] != 'u') {
    return {1, 2};
  }
  uint32_t code = 0;
  std::from_chars(s.data() + 2, s.data() + 6, code, 16);
  if (code >= 0xD800 && code < 0xDC00 && s.substr(6, 2) == "\\u") {
    return {4, 12};
  }
  return {code < 0x80 ? 1 : code < 0x800 ? 2 : 3, 6};
}

// The host's names and texts are bytes in whatever code page it uses; JSON readers accept only
// UTF-8. Every string byte that is not part of a UTF-8 character is listed in `foreign` and
// replaced by '?' (one byte for one, so that offsets in errors stay right) in the text the
// parser reads; the tape then puts the bytes back. Bytes outside strings are left for the
// parser to refuse.
std::string_view ReadableText(std::string_view text, std::string& copy,
                              std::vector<ForeignByte>& foreign) {
  bool inString = false;
  std::size_t string = 0;
  std::size_t decoded = 0;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (!inString) {
      inString = c == '"';
      decoded = 0;
      ++i;
    } else if (c == '"') {
      inString = false;
      ++string;
      ++i;
    } else if (c == '\\') {
      const auto [bytes, length] = EscapeLengths(text.substr(i));
      decoded += bytes;
      i += length;
    } else if (const std::size_t length = Utf8CharLength(text.substr(i)); length != 0) {
      decoded += length;
      i += length;
    } else {
      if (copy.empty()) {
        copy = text;
      }
      foreign.push_back({string, decoded, c});
      copy[i] = '?';
      ++decoded;
      ++i;
    }
  }
  return foreign.empty() ? text : std::string_view(copy);
}

}  // namespace

class TapeBuilder final : public nlohmann::json_sax<Json> {
 public:
  TapeBuilder(JsonTape& tape, SyntaxError& error, const std::vector<ForeignByte>& foreign)
      : tape_(tape), error_(error), foreign_(foreign) {}

  bool null() override { return Push(Token::Kind::kNull, 0); }
  bool boolean(bool value) override { return Push(Token::Kind::kBoolean, value ? 1 : 0); }
  bool number_integer(number_integer_t value) override {
    constexpr int64_t kLimit = int64_t{1} << (63 - JsonTape::kPayloadShift);
    if (value >= -kLimit && value < kLimit) {
      return Push(Token::Kind::kInteger, static_cast<uint64_t>(value));
    }
    return PushWide(Token::Kind::kInteger, static_cast<uint64_t>(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    if (value <= static_cast<uint64_t>(INT64_MAX)) {
      return number_integer(static_cast<int64_t>(value));
    }
    return PushWide(Token::Kind::kUnsigned, value);
  }
  bool number_float(number_float_t value, const string_t& text) override {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    PushWide(Token::Kind::kReal, bits);
    tape_.wide_.push_back(Store(text));
    return true;
  }
  bool string(string_t& value) override {
    RestoreForeignBytes(value);
    return PushString(Token::Kind::kString, value);
  }
  bool binary(binary_t& /*value*/) override { return false; }  // never produced from text
  bool key(string_t& value) override {
    RestoreForeignBytes(value);
    open_.back().key = tape_.packed_.size();
    ++open_.back().keys;
    return PushKey(value);
  }
  bool start_object(std::size_t /*size*/) override { return Open(Token::Kind::kObject); }
  bool start_array(std::size_t /*size*/) override { return Open(Token::Kind::kArray); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }

  bool parse_error(std::size_t position, const std::string& lastToken,
                   const nlohmann::detail::exception& ex) override {
    // The position counts the offending byte itself.
    error_.offset = position > 0 ? position - 1 : 0;
    error_.pointer = OpenPointer();
    constexpr int kNumberOverflow = 406;
    if (ex.id == kNumberOverflow) {
      error_.message = "the number " + Abbreviated(lastToken) + " is too large to hold";
      return false;
    }
    // nlohmann's text reads "[json.exception...] parse error at line L, column C: what"; the
    // caller names the place itself.
    std::string_view what = ex.what();
    if (const std::size_t column = what.find("column "); column != std::string_view::npos) {
      if (const std::size_t colon = what.find(": ", column); colon != std::string_view::npos) {
        what.remove_prefix(colon + 2);
      }
    }
    // What the parser last read can be a whole unterminated string.
    if (const std::size_t last = what.find("; last read: "); last != std::string_view::npos) {
      error_.message = "not valid JSON: " + std::string(what.substr(0, last)) +
                       "; last read: " + Abbreviated(what.substr(last + 13));
      return false;
    }
    error_.message = "not valid JSON: " + std::string(what);
    return false;
  }

 private:
  struct Level {
    std::size_t token;
    uint32_t count;
    std::size_t key;  // the member being read, for objects
    uint32_t keys;
  };

  bool Push(Token::Kind kind, uint64_t payload, uint64_t flags = 0) {
    if (!open_.empty() && kind != Token::Kind::kKey) {
      ++open_.back().count;
    }
    tape_.packed_.push_back(static_cast<uint64_t>(kind) | flags |
                            (payload << JsonTape::kPayloadShift));
    return true;
  }
  bool PushWide(Token::Kind kind, uint64_t bits) {
    tape_.wide_.push_back(bits);
    return Push(kind, tape_.wide_.size() - 1, JsonTape::kWide);
  }
  bool PushString(Token::Kind kind, const std::string& value) { return Push(kind, Store(value)); }
  // Member names repeat throughout a document; each distinct one is stored once.
  bool PushKey(const std::string& value) {
    const auto [known, added] = keys_.try_emplace(value, 0);
    if (added) {
      known->second = Store(value);
    }
    return Push(Token::Kind::kKey, known->second);
  }
  uint64_t Store(const std::string& value) {
    const uint64_t at = tape_.strings_.size();
    const auto length = static_cast<uint32_t>(value.size());
    tape_.strings_.append(reinterpret_cast<const char*>(&length), sizeof length);
    tape_.strings_.append(value);
    return at;
  }
  // The bytes that were not UTF-8 go back into the string or member name being read.
  void RestoreForeignBytes(std::string& value) {
    for (; nextForeign_ < foreign_.size() && foreign_[nextForeign_].string == stringsRead_;
         ++nextForeign_) {
      value[foreign_[nextForeign_].at] = foreign_[nextForeign_].byte;
    }
    ++stringsRead_;
  }
  bool Open(Token::Kind kind) {
    const std::size_t index = tape_.packed_.size();
    Push(kind, 0);
    open_.push_back({index, 0, 0, 0});
    return true;
  }
  // The begin token learns where its end is; the end token holds the element count.
  bool Close() {
    const Level open = open_.back();
    open_.pop_back();
    tape_.packed_[open.token] |= tape_.packed_.size() << JsonTape::kPayloadShift;
    tape_.packed_.push_back(static_cast<uint64_t>(Token::Kind::kEnd) |
                            (uint64_t{open.count} << JsonTape::kPayloadShift));
    return true;
  }

  // The pointer of the innermost value being read when the parser gave up.
  std::string OpenPointer() const {
    std::string pointer;
    for (std::size_t level = 0; level < open_.size(); ++level) {
      const Level& open = open_[level];
      // An open container below this one has been counted already; a scalar has not.
      const bool inner = level + 1 < open_.size();
      if (tape_.kind(open.token) == Token::Kind::kArray) {
        pointer += '/' + std::to_string(inner ? open.count - 1 : open.count);
      } else if (inner || open.keys > open.count) {
        AppendPointerKey(pointer, tape_.Text(tape_[open.key]));
      }
    }
    return pointer;
  }

  JsonTape& tape_;
  SyntaxError& error_;
  std::vector<Level> open_;
  std::unordered_map<std::string, uint64_t> keys_;
  const std::vector<ForeignByte>& foreign_;
  std::size_t nextForeign_ = 0;
  std::size_t stringsRead_ = 0;  // strings and member names, in text order
};

bool JsonTape::Parse(std::string_view text, SyntaxError& error) {
  packed_.clear();
  wide_.clear();
  strings_.clear();
  // Generous room (a token per four bytes of text, strings for half of it) costs address
  // space only, and spares the copies of regrowing.
  packed_.reserve(text.size() / 4 + 16);
  strings_.reserve(text.size() / 2 + 16);
  std::string copy;
  std::vector<ForeignByte> foreign;
  const std::string_view readable = ReadableText(text, copy, foreign);
  TapeBuilder builder(*this, error, foreign);
  const bool ok = Json::sax_parse(readable.begin(), readable.end(), &builder);
  if (!ok) {
    packed_ = {};
    wide_ = {};
    strings_ = {};
  }
  return ok;
}

std::string_view JsonTape::NumberText(std::size_t index) const {
  const uint64_t stored = wide_[(packed_[index] >> kPayloadShift) + 1];
  uint32_t length = 0;
  std::memcpy(&length, strings_.data() + stored, sizeof length);
  return std::string_view(strings_).substr(stored + sizeof length, length);
}

Token JsonTape::operator[](std::size_t index) const {
  const uint64_t bits = packed_[index];
  const uint64_t payload = bits >> kPayloadShift;
  Token token;
  token.kind = static_cast<Token::Kind>(bits & kKindMask);
  switch (token.kind) {
    case Token::Kind::kObject:
    case Token::Kind::kArray:
      token.end = payload;
      token.size = static_cast<uint32_t>(packed_[payload] >> kPayloadShift);
      break;
    case Token::Kind::kEnd:
      break;
    case Token::Kind::kKey:
    case Token::Kind::kString:
      std::memcpy(&token.size, strings_.data() + payload, sizeof token.size);
      token.offset = payload + sizeof token.size;
      break;
    case Token::Kind::kInteger:
    case Token::Kind::kUnsigned:
    case Token::Kind::kReal:
      if ((bits & kWide) != 0) {
        std::memcpy(&token.unsignedInteger, &wide_[payload], sizeof token.unsignedInteger);
      } else {
        token.integer = static_cast<int64_t>(bits) >> kPayloadShift;
      }
      break;
    case Token::Kind::kBoolean:
      token.boolean = payload != 0;
      break;
    case Token::Kind::kNull:
      break;
  }
  return token;
}

void AppendPointerKey(std::string& pointer, std::string_view key) {
  pointer += '/';
  for (char c : key) {
    if (c == '~') {
      pointer += "~0";
    } else if (c == '/') {
      pointer += "~1";
    } else {
      pointer += c;
    }
  }
}

void AppendUtf8(std::string& out, uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

namespace {

// Walks a text that is known to be valid JSON without building anything.
class Skimmer {
 public:
  explicit Skimmer(std::string_view text) : text_(text) {}

  std::size_t at() const { return at_; }
  char Peek() {
    SkipSpace();
    return at_ < text_.size() ? text_[at_] : '\0';
  }
  void Take() { ++at_; }

  void SkipValue() {
    SkipSpace();
    int depth = 0;
    do {
      const char c = text_[at_];
      if (c == '"') {
        SkipString();
        continue;
      }
      if (c == '{' || c == '[') {
        ++depth;
      } else if (c == '}' || c == ']') {
        --depth;
      } else if (depth == 0) {
        while (at_ < text_.size() &&
               std::string_view(",}] \t\r\n").find(text_[at_]) == std::string_view::npos) {
          ++at_;
        }
        return;
      }
      ++at_;
    } while (depth > 0 && at_ < text_.size());
  }

  // Reads a string at the cursor, decoding its escapes.
  std::string ReadString() {
    std::string out;
    ++at_;  // opening quote
    while (at_ < text_.size() && text_[at_] != '"') {
      char c = text_[at_++];
      if (c != '\\') {
        out += c;
        continue;
      }
      c = text_[at_++];
      switch (c) {
        case 'b':
          out += '\b';
          break;
        case 'f':
          out += '\f';
          break;
        case 'n':
          out += '\n';
          break;
        case 'r':
          out += '\r';
          break;
        case 't':
          out += '\t';
          break;
        case 'u':
          AppendUtf8(out, ReadUnicodeEscape());
          break;
        default:
          out += c;
          break;
      }
    }
    ++at_;  // closing quote
    return out;
  }

 private:
  void SkipSpace() {
    while (at_ < text_.size() &&
           (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\r' || text_[at_] == '\n')) {
      ++at_;
    }
  }
  void SkipString() {
    ++at_;
    while (at_ < text_.size() && text_[at_] != '"') {
      at_ += text_[at_] == '\\' ? 2 : 1;
    }
    ++at_;
  }
  uint32_t Hex4() {
    uint32_t value = 0;
    std::from_chars(text_.data() + at_, text_.data() + at_ + 4, value, 16);
    at_ += 4;
    return value;
  }
  uint32_t ReadUnicodeEscape() {
    uint32_t code = Hex4();
    if (code >= 0xD800 && code < 0xDC00 && text_.substr(at_, 2) == "\\u") {
      at_ += 2;
      code = 0x10000 + ((code - 0xD800) << 10) + (Hex4() - 0xDC00);
    }
    return code;
  }
  std::string_view text_;
  std::size_t at_ = 0;
};

std::string UnescapePointerStep(std::string_view step) {
  std::string out;
  for (std::size_t i = 0; i < step.size(); ++i) {
    if (step[i] == '~' && i + 1 < step.size()) {
      out += step[++i] == '1' ? '/' : '~';
    } else {
      out += step[i];
    }
  }
  return out;
}

// Moves the skimmer onto the member or element named by `step` of the container at its
// cursor; false (cursor unspecified) when there is none.
bool Enter(Skimmer& skim, const std::string& step) {
  const char open = skim.Peek();
  if (open != '{' && open != '[') {
    return false;
  }
  skim.Take();
  std::size_t wanted = 0;
  if (open == '[' &&
      std::from_chars(step.data(), step.data() + step.size(), wanted).ec != std::errc{}) {
    return false;
  }
  for (std::size_t index = 0; skim.Peek() != '}' && skim.Peek() != ']'; ++index) {
    if (open == '{') {
      const std::string key = skim.ReadString();
      skim.Peek();
      skim.Take();  // the colon
      if (key == step) {
        skim.Peek();
        return true;
      }
    } else if (index == wanted) {
      skim.Peek();
      return true;
    }
    skim.SkipValue();
    if (skim.Peek() == ',') {
      skim.Take();
    }
  }
  return false;
}

}  // namespace

std::size_t LocatePointer(std::string_view text, std::string_view pointer) {
  Skimmer skim(text);
  skim.Peek();
  std::size_t found = skim.at();
  while (!pointer.empty()) {
    pointer.remove_prefix(1);  // the '/'
    const std::size_t slash = pointer.find('/');
    const std::string step = UnescapePointerStep(pointer.substr(0, slash));
    pointer = slash == std::string_view::npos ? std::string_view() : pointer.substr(slash);
    if (!Enter(skim, step)) {
      break;
    }
    found = skim.at();
  }
  return found;
}

LineColumn LineColumnAt(std::string_view text, std::size_t offset) {
  LineColumn where;
  offset = std::min(offset, text.size());
  for (std::size_t i = 0; i < offset; ++i) {
    if (text[i] == '\n') {
      ++where.line;
      where.column = 1;
    } else {
      ++where.column;
    }
  }
  return where;
}

}  // namespace kalmor::model::detail
