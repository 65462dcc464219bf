#include "model/tape_reader.h"

#include <cmath>
#include <limits>

namespace kalmor::model::detail {

void TapeReader::Skip() {
  const Token token = Peek();
  at_ = token.kind == Token::Kind::kObject || token.kind == Token::Kind::kArray ? token.end + 1
                                                                                : at_ + 1;
}

std::string TapeReader::Pointer() const {
  std::string pointer;
  for (const Step& step : path_) {
    if (step.isIndex) {
      pointer += '/' + std::to_string(step.index);
    } else {
      AppendPointerKey(pointer, step.key);
    }
  }
  return pointer;
}

std::string TapeReader::PointerTo(std::string_view key) const {
  std::string pointer = Pointer();
  AppendPointerKey(pointer, key);
  return pointer;
}

void TapeReader::Fail(std::string message) const {
  throw DocumentFault{Pointer(), std::move(message)};
}

void TapeReader::FailAt(std::string_view key, std::string message) const {
  throw DocumentFault{PointerTo(key), std::move(message)};
}

void TapeReader::Expected(std::string_view what) const {
  Fail("expected " + std::string(what) + ", got " + Describe(Peek()));
}

void TapeReader::ExpectedInteger(std::string_view what) const {
  if (PeekKind() == Token::Kind::kReal && !PeekInteger() && std::isfinite(Peek().real)) {
    Fail("expected " + std::string(what) + ", got " + Describe(Peek()) + " (a real number)");
  }
  Expected(what);
}

bool TapeReader::PeekInteger() const {
  switch (PeekKind()) {
    case Token::Kind::kInteger:
    case Token::Kind::kUnsigned:
      return true;
    case Token::Kind::kReal:
      // An integer too large even for 64 bits is held as a real; it is still an integer.
      return tape_.NumberText(at_).find_first_of(".eE") == std::string_view::npos;
    default:
      return false;
  }
}

std::string TapeReader::Describe(const Token& token) const {
  switch (token.kind) {
    case Token::Kind::kObject:
      return "an object";
    case Token::Kind::kArray:
      if (token.size == 0) {
        return "an empty array";
      }
      return token.size == 1 ? "an array of 1 value"
                             : "an array of " + std::to_string(token.size) + " values";
    case Token::Kind::kString:
      return "a string";
    case Token::Kind::kInteger:
      return std::to_string(token.integer);
    case Token::Kind::kUnsigned:
      return std::to_string(token.unsignedInteger);
    case Token::Kind::kReal:
      if (!std::isfinite(token.real)) {
        return "a number too large to hold";
      }
      return std::string(tape_.NumberText(at_));  // as written
    case Token::Kind::kBoolean:
      return token.boolean ? "true" : "false";
    case Token::Kind::kNull:
      return "null";
    case Token::Kind::kKey:
    case Token::Kind::kEnd:
      break;
  }
  return "nothing";
}

void TapeReader::EnterObject() {
  if (PeekKind() != Token::Kind::kObject) {
    Expected("an object");
  }
  ++at_;
}

std::string_view TapeReader::TakeKey() {
  const std::string_view key = tape_.Text(Peek());
  ++at_;
  path_.push_back(Step{.key = key});
  return key;
}

std::size_t TapeReader::ListSize() const {
  if (PeekKind() != Token::Kind::kArray) {
    Expected("an array");
  }
  return Peek().size;
}

std::size_t TapeReader::FindMember(std::string_view key) const {
  if (PeekKind() != Token::Kind::kObject) {
    return 0;
  }
  std::size_t at = at_ + 1;
  while (tape_.kind(at) == Token::Kind::kKey) {
    if (tape_.Text(tape_[at]) == key) {
      return at + 1;
    }
    const Token value = tape_[at + 1];
    at = value.kind == Token::Kind::kObject || value.kind == Token::Kind::kArray ? value.end + 1
                                                                                 : at + 2;
  }
  return 0;
}

int32_t TapeReader::Int32() {
  const Token token = Peek();
  if (token.kind == Token::Kind::kInteger && token.integer >= INT32_MIN &&
      token.integer <= INT32_MAX) {
    ++at_;
    return static_cast<int32_t>(token.integer);
  }
  ExpectedInteger(PeekInteger() ? "an integer of 32 bits (-2147483648 to 2147483647)"
                                : "an integer");
}

int32_t TapeReader::Int32AtLeast(int32_t least, std::string_view what) {
  return Int32Within(least, INT32_MAX, what);
}

int32_t TapeReader::Int32Within(int32_t least, int32_t most, std::string_view what) {
  const Token token = Peek();
  if ((token.kind == Token::Kind::kInteger && (token.integer < least || token.integer > most)) ||
      (token.kind == Token::Kind::kUnsigned && most < INT32_MAX) ||
      (token.kind == Token::Kind::kReal && PeekInteger())) {
    ExpectedInteger(what);
  }
  return Int32();
}

int32_t TapeReader::Coordinate() {
  static const std::string kWhat = "a coordinate from " + std::to_string(-kCoordinateLimit) +
                                   " to " + std::to_string(kCoordinateLimit);
  return Int32Within(-kCoordinateLimit, kCoordinateLimit, kWhat);
}

uint8_t TapeReader::Byte() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kInteger || token.integer < 0 || token.integer > 255) {
    ExpectedInteger("an integer from 0 to 255");
  }
  ++at_;
  return static_cast<uint8_t>(token.integer);
}

bool TapeReader::Boolean() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kBoolean) {
    Expected("true or false");
  }
  ++at_;
  return token.boolean;
}

double TapeReader::NumberWithin(double least, double most, std::string_view what) {
  const Token token = Peek();
  double value = 0.0;
  switch (token.kind) {
    case Token::Kind::kInteger:
      value = static_cast<double>(token.integer);
      break;
    case Token::Kind::kUnsigned:
      value = static_cast<double>(token.unsignedInteger);
      break;
    case Token::Kind::kReal:
      value = token.real;
      break;
    default:
      Expected("a number");
  }
  if (!(value >= least && value <= most)) {
    if (token.kind != Token::Kind::kReal) {
      Expected(what);
    }
    // A real is quoted as the double it reads as.
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    Fail("expected " + std::string(what) + ", got " + text);
  }
  ++at_;
  return value;
}

std::string_view TapeReader::StringView() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kString) {
    Expected("a string");
  }
  ++at_;
  return tape_.Text(token);
}

std::optional<int64_t> TapeReader::Integer() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kInteger) {
    return std::nullopt;
  }
  ++at_;
  return token.integer;
}

CPoint TapeReader::Point() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kArray || token.size != 2) {
    Expected("[x, y] of two integers");
  }
  CPoint point;
  List([&](std::size_t index) { (index == 0 ? point.x : point.y) = Coordinate(); });
  return point;
}

CRect TapeReader::Rect() {
  const Token token = Peek();
  if (token.kind != Token::Kind::kArray || token.size != 4) {
    Expected("[left, top, right, bottom] of four integers");
  }
  int32_t values[4] = {};
  List([&](std::size_t index) { values[index] = Coordinate(); });
  return {values[0], values[1], values[2], values[3]};
}

void TapeReader::Points(detail::List<CPoint>& points) {
  ListInto(points, [&](CPoint& point) { point = Point(); });
}

}  // namespace kalmor::model::detail
