#include "model/text_reader.h"

#include <charconv>
#include <cstring>

#include "model/tape_reader.h"

namespace kalmor::model::detail {
namespace {

// The digits at `at`, if any: where they end.
const char* SkipDigits(const char* at) {
  while (IsAsciiDigit(*at)) {
    ++at;
  }
  return at;
}

// The end of the JSON number at `at` (grammar checked), or null when there is none; `real`
// tells whether it has a fraction or an exponent.
const char* NumberEnd(const char* at, bool& real) {
  at += *at == '-' ? 1 : 0;
  if (*at == '0') {
    ++at;
  } else if (IsAsciiDigit(*at)) {
    at = SkipDigits(at);
  } else {
    return nullptr;
  }
  real = false;
  if (*at == '.') {
    real = true;
    if (!IsAsciiDigit(*++at)) {
      return nullptr;
    }
    at = SkipDigits(at);
  }
  if (*at == 'e' || *at == 'E') {
    real = true;
    ++at;
    at += *at == '+' || *at == '-' ? 1 : 0;
    if (!IsAsciiDigit(*at)) {
      return nullptr;
    }
    at = SkipDigits(at);
  }
  return at;
}

// Whether a number written as `token`, which no double holds, is too small rather than too
// large: whether its leading digit stands below the units.
bool BelowOne(std::string_view token) {
  const std::size_t mark = token.find_first_of("eE");
  const std::string_view digits = token.substr(0, mark);
  int64_t exponent = 0;
  if (mark != std::string_view::npos) {
    std::string_view written = token.substr(mark + 1);
    const bool negative = written.front() == '-';
    written.remove_prefix(written.front() == '+' || negative ? 1 : 0);
    // An exponent beyond this many digits decides alone.
    if (written.size() > 15) {
      return negative;
    }
    std::from_chars(written.data(), written.data() + written.size(), exponent);
    exponent = negative ? -exponent : exponent;
  }
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t lead = digits.find_first_of("123456789");
  if (lead == std::string_view::npos) {
    return true;
  }
  const auto place = static_cast<int64_t>(point) - static_cast<int64_t>(lead) -
                     (lead < point ? 1 : 0);  // the power of ten of the leading digit
  return place + exponent < 0;
}

// The four hex digits at `at` ("\u" already taken), or -1.
int32_t Hex4(const char* at) {
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(at, at + 4, value, 16);
  return error == std::errc{} && end == at + 4 ? static_cast<int32_t>(value) : -1;
}

}  // namespace

void TextReader::Fail(const std::string&) {
  Miss();
}

void TextReader::FailAt(std::string_view, const std::string&) {
  Miss();
}

void TextReader::Expected(std::string_view) {
  Miss();
}

Token::Kind TextReader::PeekKind() {
  switch (Next()) {
    case '{':
      return Token::Kind::kObject;
    case '[':
      return Token::Kind::kArray;
    case '"':
      return Token::Kind::kString;
    case 't':
    case 'f':
      return Token::Kind::kBoolean;
    case 'n':
      return Token::Kind::kNull;
    default:
      break;
  }
  bool real = false;
  const char* end = NumberEnd(at_, real);
  if (end == nullptr) {
    Miss();
  }
  // An integer too long for ReadInteger is left to the careful reader, which says what it is.
  if (!real && end - at_ > (*at_ == '-' ? 19 : 18)) {
    Miss();
  }
  return real ? Token::Kind::kReal : Token::Kind::kInteger;
}

bool TextReader::PeekInteger() {
  return PeekKind() == Token::Kind::kInteger;
}

void TextReader::Finish() {
  if (Next() != '\0' || at_ != end_) {
    Miss();
  }
}

std::string_view TextReader::DecodeString(const char* start, std::string& scratch) {
  if (*at_ != '\\') {
    Miss();  // a control character, or the end of the text
  }
  // The text is UTF-8 (checked before reading); only the escapes need decoding.
  scratch.assign(start, at_);
  for (;;) {
    const auto c = static_cast<unsigned char>(*at_);
    if (c == '"') {
      ++at_;
      return scratch;
    }
    if (c < 0x20) {
      Miss();
    }
    if (c != '\\') {
      scratch += static_cast<char>(c);
      ++at_;
      continue;
    }
    const char escaped = at_[1];
    at_ += 2;
    switch (escaped) {
      case '"':
      case '\\':
      case '/':
        scratch += escaped;
        break;
      case 'b':
        scratch += '\b';
        break;
      case 'f':
        scratch += '\f';
        break;
      case 'n':
        scratch += '\n';
        break;
      case 'r':
        scratch += '\r';
        break;
      case 't':
        scratch += '\t';
        break;
      case 'u': {
        int32_t code = Hex4(at_);
        at_ += 4;
        if (code >= 0xDC00 && code <= 0xDFFF) {
          Miss();  // a low surrogate alone
        }
        if (code >= 0xD800 && code <= 0xDBFF) {
          const int32_t low = at_[0] == '\\' && at_[1] == 'u' ? Hex4(at_ + 2) : -1;
          if (low < 0xDC00 || low > 0xDFFF) {
            Miss();
          }
          at_ += 6;
          code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        if (code < 0) {
          Miss();
        }
        AppendUtf8(scratch, static_cast<uint32_t>(code));
        break;
      }
      default:
        Miss();
    }
  }
}

std::optional<int64_t> TextReader::Integer() {
  return ReadInteger();
}

bool TextReader::Boolean() {
  Next();
  if (std::memcmp(at_, "true", 4) == 0) {
    at_ += 4;
    return true;
  }
  if (std::memcmp(at_, "false", 5) == 0) {
    at_ += 5;
    return false;
  }
  Miss();
}

double TextReader::NumberWithin(double least, double most, std::string_view) {
  // As the careful reader: a number written as an integer is that integer ("-0" is 0), any
  // other the nearest double.
  Next();
  bool real = false;
  const char* end = NumberEnd(at_, real);
  if (end == nullptr) {
    Miss();
  }
  double value = 0.0;
  if (real) {
    const auto [stop, error] = std::from_chars(at_, end, value);
    if (error == std::errc::result_out_of_range &&
        BelowOne(std::string_view(at_, static_cast<std::size_t>(end - at_)))) {
      value = *at_ == '-' ? -0.0 : 0.0;  // as the nearest double, zero
    } else if (error != std::errc{} || stop != end) {
      Miss();
    }
  } else if (int64_t integer = 0; std::from_chars(at_, end, integer).ec == std::errc{}) {
    value = static_cast<double>(integer);
  } else if (uint64_t large = 0; std::from_chars(at_, end, large).ec == std::errc{}) {
    value = static_cast<double>(large);
  } else {
    Miss();
  }
  if (!(value >= least && value <= most)) {
    Miss();
  }
  at_ = end;
  return value;
}

void TextReader::Points(detail::List<CPoint>& points) {
  ListInto(points, [&](CPoint& point) { point = Point(); });
}

}  // namespace kalmor::model::detail
