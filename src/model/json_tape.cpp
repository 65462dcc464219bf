#include "model/json_tape.h"

#include <charconv>

#include <nlohmann/json.hpp>

namespace kalmor::model::detail {

using Json = nlohmann::json;

class TapeBuilder final : public nlohmann::json_sax<Json> {
 public:
  TapeBuilder(JsonTape& tape, SyntaxError& error) : tape_(tape), error_(error) {}

  bool null() override { return Scalar(Token::Kind::kNull); }
  bool boolean(bool value) override {
    Token& token = Push(Token::Kind::kBoolean);
    token.boolean = value;
    return true;
  }
  bool number_integer(number_integer_t value) override {
    Push(Token::Kind::kInteger).integer = value;
    return true;
  }
  bool number_unsigned(number_unsigned_t value) override {
    if (value <= static_cast<uint64_t>(INT64_MAX)) {
      Push(Token::Kind::kInteger).integer = static_cast<int64_t>(value);
    } else {
      Push(Token::Kind::kUnsigned).unsignedInteger = value;
    }
    return true;
  }
  bool number_float(number_float_t value, const string_t& /*text*/) override {
    Push(Token::Kind::kReal).real = value;
    return true;
  }
  bool string(string_t& value) override {
    PushString(Token::Kind::kString, value);
    return true;
  }
  bool binary(binary_t& /*value*/) override { return false; }  // never produced from text
  bool key(string_t& value) override {
    open_.back().key = tape_.tokens_.size();
    ++open_.back().keys;
    PushString(Token::Kind::kKey, value);
    return true;
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
      error_.message = "the number " + lastToken + " is too large to hold";
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

  Token& Push(Token::Kind kind) {
    if (!open_.empty()) {
      Level& parent = open_.back();
      if (tape_.tokens_[parent.token].kind == Token::Kind::kArray || kind != Token::Kind::kKey) {
        ++parent.count;
      }
    }
    Token& token = tape_.tokens_.emplace_back();
    token.kind = kind;
    return token;
  }
  bool Scalar(Token::Kind kind) {
    Push(kind);
    return true;
  }
  void PushString(Token::Kind kind, const std::string& value) {
    Token& token = Push(kind);
    token.offset = tape_.strings_.size();
    token.size = static_cast<uint32_t>(value.size());
    tape_.strings_.append(value);
  }
  bool Open(Token::Kind kind) {
    const std::size_t index = tape_.tokens_.size();
    Push(kind);
    open_.push_back({index, 0, 0, 0});
    return true;
  }
  bool Close() {
    const Level open = open_.back();
    open_.pop_back();
    Token& begin = tape_.tokens_[open.token];
    begin.size = open.count;
    begin.end = tape_.tokens_.size();
    tape_.tokens_.emplace_back().kind = Token::Kind::kEnd;
    return true;
  }

  // The pointer of the innermost value being read when the parser gave up.
  std::string OpenPointer() const {
    std::string pointer;
    for (std::size_t level = 0; level < open_.size(); ++level) {
      const Level& open = open_[level];
      // An open container below this one has been counted already; a scalar has not.
      const bool inner = level + 1 < open_.size();
      if (tape_.tokens_[open.token].kind == Token::Kind::kArray) {
        pointer += '/' + std::to_string(inner ? open.count - 1 : open.count);
      } else if (inner || open.keys > open.count) {
        AppendPointerKey(pointer, tape_.Text(tape_.tokens_[open.key]));
      }
    }
    return pointer;
  }

  JsonTape& tape_;
  SyntaxError& error_;
  std::vector<Level> open_;
};

bool JsonTape::Parse(std::string_view text, SyntaxError& error) {
  tokens_.clear();
  strings_.clear();
  // A token per eight bytes of text covers typical documents without regrowing.
  tokens_.reserve(text.size() / 8 + 16);
  TapeBuilder builder(*this, error);
  const bool ok = Json::sax_parse(text.begin(), text.end(), &builder);
  if (!ok) {
    tokens_ = {};
    strings_ = {};
  } else {
    tokens_.shrink_to_fit();
  }
  return ok;
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
          AppendCodePoint(out, ReadUnicodeEscape());
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
  static void AppendCodePoint(std::string& out, uint32_t code) {
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
