#include "kicad/image_size.h"

#include <cstdint>
#include <string>

namespace kalmor::kicad::detail {
namespace {

constexpr double kDefaultPixelsPerInch = 300;
constexpr double kMillimetresPerInch = 25.4;
// An image's size and resolution come before its pixels; this much of it is enough to find them.
constexpr std::size_t kHeaderBytes = 1 << 16;

int Sextet(char c) {
  if (c >= 'A' && c <= 'Z') {
    return c - 'A';
  }
  if (c >= 'a' && c <= 'z') {
    return c - 'a' + 26;
  }
  if (c >= '0' && c <= '9') {
    return c - '0' + 52;
  }
  if (c == '+') {
    return 62;
  }
  if (c == '/') {
    return 63;
  }
  return -1;
}

// The first bytes of base64 data; characters outside the alphabet (line breaks) are skipped.
std::string DecodedHead(std::string_view base64) {
  std::string bytes;
  uint32_t bits = 0;
  int count = 0;
  for (const char c : base64) {
    const int value = Sextet(c);
    if (value < 0) {
      continue;
    }
    bits = (bits << 6) | static_cast<uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<char>((bits >> count) & 0xFF));
      if (bytes.size() == kHeaderBytes) {
        break;
      }
    }
  }
  return bytes;
}

uint32_t BigEndian(const std::string& bytes, std::size_t at, int size) {
  uint32_t value = 0;
  for (int i = 0; i < size; ++i) {
    value = (value << 8) | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
  }
  return value;
}

ImageSize Printed(double width, double height, double pixelsPerInch) {
  return {width / pixelsPerInch * kMillimetresPerInch,
          height / pixelsPerInch * kMillimetresPerInch};
}

std::optional<ImageSize> PngSize(const std::string& bytes) {
  if (bytes.size() < 24 || bytes.compare(12, 4, "IHDR") != 0) {
    return std::nullopt;
  }
  const double width = BigEndian(bytes, 16, 4);
  const double height = BigEndian(bytes, 20, 4);
  double ppi = kDefaultPixelsPerInch;
  for (std::size_t at = 8; at + 8 <= bytes.size();) {
    const uint32_t length = BigEndian(bytes, at, 4);
    const std::string_view type(bytes.data() + at + 4, 4);
    if (type == "IDAT" || length > bytes.size()) {
      break;
    }
    if (type == "pHYs" && length >= 9 && at + 17 <= bytes.size() && bytes[at + 16] == 1) {
      const double perMetre = BigEndian(bytes, at + 8, 4);
      if (perMetre > 0) {
        ppi = perMetre * kMillimetresPerInch / 1000;
      }
    }
    at += 12 + static_cast<std::size_t>(length);
  }
  return Printed(width, height, ppi);
}

std::optional<ImageSize> JpegSize(const std::string& bytes) {
  double ppi = kDefaultPixelsPerInch;
  for (std::size_t at = 2; at + 4 <= bytes.size();) {
    if (static_cast<unsigned char>(bytes[at]) != 0xFF) {
      return std::nullopt;
    }
    const auto marker = static_cast<unsigned char>(bytes[at + 1]);
    const uint32_t length = BigEndian(bytes, at + 2, 2);
    if (marker == 0xE0 && at + 16 <= bytes.size() && bytes.compare(at + 4, 4, "JFIF") == 0) {
      const auto units = static_cast<unsigned char>(bytes[at + 11]);
      const double density = BigEndian(bytes, at + 12, 2);
      if (density > 0 && (units == 1 || units == 2)) {
        ppi = units == 1 ? density : density * 2.54;
      }
    }
    const bool frame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame && at + 9 <= bytes.size()) {
      return Printed(BigEndian(bytes, at + 7, 2), BigEndian(bytes, at + 5, 2), ppi);
    }
    at += 2 + length;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ImageSize> ImageSizeOf(std::string_view base64) {
  const std::string bytes = DecodedHead(base64);
  if (bytes.size() >= 8 && bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0) {
    return PngSize(bytes);
  }
  if (bytes.size() >= 4 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
      static_cast<unsigned char>(bytes[1]) == 0xD8) {
    return JpegSize(bytes);
  }
  return std::nullopt;
}

}  // namespace kalmor::kicad::detail
