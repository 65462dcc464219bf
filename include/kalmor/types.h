#pragma once

// The plain value types that cross the host boundary: page points, rectangles and the
// logical-font record, laid out as the host hands them over.

#include <cstdint>
#include <cstring>

namespace kalmor {

// A host page point: x to the right, y downward.
struct CPoint {
  int32_t x = 0;
  int32_t y = 0;
  friend bool operator==(const CPoint&, const CPoint&) = default;
};

struct CRect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
  friend bool operator==(const CRect&, const CRect&) = default;
};

using LineWidthT = int32_t;
using RotationT = int32_t;
using DisplayTypeT = int32_t;
using DboDesignOccurrenceId = uint32_t;

// The logical-font record: 60 bytes, the first 28 of them the numeric fields, then the face.
struct LogFont {
  static constexpr int32_t kDefaultHeight = -9;

  int32_t lfHeight = kDefaultHeight;
  int32_t lfWidth = 0;
  int32_t lfEscapement = 0;
  int32_t lfOrientation = 0;
  int32_t lfWeight = 400;
  uint8_t lfItalic = 0;
  uint8_t lfUnderline = 0;
  uint8_t lfStrikeOut = 0;
  uint8_t lfCharSet = 0;
  uint8_t lfOutPrecision = 0;
  uint8_t lfClipPrecision = 0;
  uint8_t lfQuality = 0;
  uint8_t lfPitchAndFamily = 0;
  char lfFaceName[32] = "Arial";

  // The height texts take in this font: a height of 0 asks for the default height.
  int32_t HeightOrDefault() const { return lfHeight != 0 ? lfHeight : kDefaultHeight; }

  // Copies at most 31 bytes of the face and terminates it.
  void SetFaceName(const char* face) {
    std::memset(lfFaceName, 0, sizeof lfFaceName);
    std::strncpy(lfFaceName, face, sizeof lfFaceName - 1);
  }
};
static_assert(sizeof(LogFont) == 60, "the logical-font record is 60 bytes");

}  // namespace kalmor
