#include "model/on_demand_reader.h"

#include <cstring>

#include "model/tape_reader.h"

namespace kalmor::model::detail {

using simdjson::ondemand::json_type;
using simdjson::ondemand::number_type;

namespace {

// Integers and points are most of a document. The commonest of them, an integer of a few
// digits and a point [x, y] of two, are read here straight from the text in JSON's grammar;
// anything else is read by simdjson. A value read here is not consumed: the parser passes over
// it when it moves on.

bool IsSpace(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

const char* SkipSpace(const char* at) {
  while (IsSpace(*at)) {
    ++at;
  }
  return at;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// An integer of at most nine digits written at `at`: where it ends, or null when there is none
// (a fraction, an exponent, a leading zero, more digits). The text is followed by padding, so
// the scan always stops.
const char* SmallInteger(const char* at, int32_t& value) {
  constexpr int kMostDigits = 9;
  const bool negative = *at == '-';
  at += negative ? 1 : 0;
  if (!IsDigit(*at)) {
    return nullptr;
  }
  int32_t magnitude = *at++ - '0';
  if (magnitude == 0 && IsDigit(*at)) {
    return nullptr;
  }
  for (int digits = 1; magnitude != 0 && IsDigit(*at); ++at) {
    if (++digits > kMostDigits) {
      return nullptr;
    }
    magnitude = magnitude * 10 + (*at - '0');
  }
  if (*at == '.' || *at == 'e' || *at == 'E') {
    return nullptr;
  }
  value = negative ? -magnitude : magnitude;
  return at;
}

// The array of `N` small integers written at `at` ("[1, 2]"); false when it is anything else.
template <std::size_t N>
bool SmallIntegers(const char* at, int32_t (&values)[N]) {
  if (*at != '[') {
    return false;
  }
  for (std::size_t i = 0; i < N; ++i) {
    at = SmallInteger(SkipSpace(at + 1), values[i]);
    if (at == nullptr) {
      return false;
    }
    at = SkipSpace(at);
    if (*at != (i + 1 < N ? ',' : ']')) {
      return false;
    }
  }
  return true;
}

bool IsCoordinate(int32_t value) {
  return value >= -kCoordinateLimit && value <= kCoordinateLimit;
}

}  // namespace

void OnDemandReader::Fail(const std::string&) {
  Miss();
}

void OnDemandReader::FailAt(std::string_view, const std::string&) {
  Miss();
}

void OnDemandReader::Expected(std::string_view) {
  Miss();
}

Token::Kind OnDemandReader::PeekKind() {
  json_type type;
  Check((atRoot_ ? document_.type() : value_.type()).get(type));
  switch (type) {
    case json_type::object:
      return Token::Kind::kObject;
    case json_type::array:
      return Token::Kind::kArray;
    case json_type::string:
      return Token::Kind::kString;
    case json_type::boolean:
      return Token::Kind::kBoolean;
    case json_type::null:
      return Token::Kind::kNull;
    case json_type::number:
      break;
  }
  number_type number;
  Check((atRoot_ ? document_.get_number_type() : value_.get_number_type()).get(number));
  switch (number) {
    case number_type::signed_integer:
      return Token::Kind::kInteger;
    case number_type::unsigned_integer:
      return Token::Kind::kUnsigned;
    default:
      return Token::Kind::kReal;
  }
}

bool OnDemandReader::PeekInteger() {
  const Token::Kind kind = PeekKind();
  return kind == Token::Kind::kInteger || kind == Token::Kind::kUnsigned;
}

simdjson::ondemand::object OnDemandReader::Object() {
  simdjson::ondemand::object object;
  Check((atRoot_ ? document_.get_object() : value_.get_object()).get(object));
  atRoot_ = false;
  return object;
}

simdjson::ondemand::array OnDemandReader::Array() {
  if (atRoot_) {
    Miss();  // a document is an object
  }
  simdjson::ondemand::array array;
  Check(value_.get_array().get(array));
  return array;
}

void OnDemandReader::Finish() {
  // Past the root there is nothing left to read; anything else is text after the document.
  const char* trailing = nullptr;
  if (document_.current_location().get(trailing) != simdjson::OUT_OF_BOUNDS) {
    Miss();
  }
}

std::string_view OnDemandReader::PlainKey(const simdjson::ondemand::field& field) {
  // The parser has checked that every string is closed and is UTF-8 without control characters.
  const char* start = field.key().raw();
  const char* end = start;
  while (*end != '"') {
    if (*end == '\\') {
      Miss();
    }
    ++end;
  }
  return {start, static_cast<std::size_t>(end - start)};
}

std::optional<int64_t> OnDemandReader::Integer() {
  int64_t value = 0;
  if (value_.get_int64().get(value) != simdjson::SUCCESS) {
    Miss();  // the careful reader says what it is
  }
  return value;
}

int32_t OnDemandReader::Int32Within(int32_t least, int32_t most, std::string_view) {
  // The token's text runs up to the next structural character: the integer, then spaces.
  const std::string_view token = value_.raw_json_token();
  if (int32_t small = 0; const char* end = SmallInteger(token.data(), small)) {
    if (SkipSpace(end) == token.data() + token.size()) {
      if (small < least || small > most) {
        Miss();
      }
      return small;
    }
  }
  int64_t value = 0;
  Check(value_.get_int64().get(value));
  if (value < least || value > most) {
    Miss();
  }
  return static_cast<int32_t>(value);
}

int32_t OnDemandReader::Coordinate() {
  return Int32Within(-kCoordinateLimit, kCoordinateLimit, {});
}

bool OnDemandReader::Boolean() {
  bool value = false;
  Check(value_.get_bool().get(value));
  return value;
}

double OnDemandReader::NumberWithin(double least, double most, std::string_view) {
  // As the careful reader: a number written as an integer is that integer ("-0" is 0), any
  // other the nearest double.
  const std::string_view raw = value_.raw_json_token();
  double value = 0.0;
  if (raw.find_first_of(".eE") != std::string_view::npos) {
    Check(value_.get_double().get(value));
  } else if (int64_t integer = 0; value_.get_int64().get(integer) == simdjson::SUCCESS) {
    value = static_cast<double>(integer);
  } else {
    uint64_t large = 0;
    Check(value_.get_uint64().get(large));
    value = static_cast<double>(large);
  }
  if (!(value >= least && value <= most)) {
    Miss();
  }
  return value;
}

std::string_view OnDemandReader::StringView() {
  // A string without escapes is its bytes in the text, already checked by the parser; only
  // escapes need decoding (into the parser's own buffer).
  const std::string_view raw = value_.raw_json_token();
  if (raw.empty() || raw.front() != '"') {
    Miss();
  }
  std::size_t end = 1;
  while (end < raw.size() && raw[end] != '"' && raw[end] != '\\') {
    ++end;
  }
  std::string_view text;
  if (end == raw.size() || raw[end] == '\\') {
    Check(value_.get_string().get(text));
    return text;
  }
  simdjson::ondemand::raw_json_string consumed;
  Check(value_.get_raw_json_string().get(consumed));
  return raw.substr(1, end - 1);
}

template <std::size_t N>
void OnDemandReader::Coordinates(int32_t (&values)[N]) {
  std::size_t count = 0;
  List([&](std::size_t index) {
    if (index >= N) {
      Miss();
    }
    values[index] = Coordinate();
    ++count;
  });
  if (count != N) {
    Miss();
  }
}

CPoint OnDemandReader::Point() {
  int32_t values[2];
  if (SmallIntegers(value_.raw_json_token().data(), values)) {
    if (!IsCoordinate(values[0]) || !IsCoordinate(values[1])) {
      Miss();
    }
  } else {
    Coordinates(values);
  }
  return {values[0], values[1]};
}

CRect OnDemandReader::Rect() {
  int32_t values[4];
  if (SmallIntegers(value_.raw_json_token().data(), values)) {
    for (const int32_t value : values) {
      if (!IsCoordinate(value)) {
        Miss();
      }
    }
  } else {
    Coordinates(values);
  }
  return {values[0], values[1], values[2], values[3]};
}

void OnDemandReader::Points(std::vector<CPoint>& points) {
  ListInto(points, [&](CPoint& point) { point = Point(); });
}

}  // namespace kalmor::model::detail
