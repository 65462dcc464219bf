#include "dxf/text_records.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "dxf/detail/piece.h"
#include "kalmor/host_text.h"

namespace kalmor {

using dxf_detail::WritePiece;

namespace {

// Longest text value a record carries, in bytes.
constexpr std::size_t kMaxValueBytes = 250;
// Between a host anchor and the text's base line, in drawing units.
constexpr double kBaseLineGap = 0.03;

// The longest start of a text that fits in a value and ends on a whole character, so that no
// escape is cut in two.
std::string_view ValuePart(std::string_view text) {
  if (text.size() <= kMaxValueBytes) {
    return text;
  }
  std::size_t end = 0;
  while (end < text.size()) {
    const std::size_t next = end + DecodeHostText(text.substr(end)).length;
    if (next > kMaxValueBytes) {
      break;
    }
    end = next;
  }
  return text.substr(0, end);
}

// Text up to the first line break, at most one value long.
std::string_view SingleLine(std::string_view text) {
  text = ValuePart(text);
  return text.substr(0, text.find_first_of("\r\n"));
}

// Where the character that starts at `at` ends: after one byte, or after a whole escape.
std::size_t NextCharacter(std::string_view text, std::size_t at) {
  return at + DecodeHostText(text.substr(at)).length;
}

// A backslash that is a character of its own, not the start of an escape.
bool IsMark(std::string_view text, std::size_t at) {
  return at < text.size() && text[at] == '\\' && NextCharacter(text, at) == at + 1;
}

void WriteTextPlacement(ByteSink& out, std::string_view layer, double x, double y, double height) {
  WritePiece<" 0\nTEXT\n 8\n%s\n">(out, layer);
  WritePiece<" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 40\n%8.4f\n">(out, x, y, height);
}

void WriteAngle(ByteSink& out, double angle) {
  if (angle != 0.0) {
    WritePiece<" 50\n%8.4f\n">(out, angle);
  }
}

void WriteValue(ByteSink& out, std::string_view value) {
  WritePiece<" 1\n%s\n">(out, value);
}

double Scaled(int64_t host, double scale) {
  return static_cast<double>(host) * scale;
}

}  // namespace

double DxfTextHeight(int32_t fontHeight, double scale) {
  // A text's height is 100 * scale * sin(|height| / 175): for small fonts close to 100/175 of the
  // scaled height. The magnitude is taken in 64 bits so the most negative height stays valid.
  const double magnitude = static_cast<double>(std::llabs(int64_t{fontHeight}));
  return 100.0 * scale * std::sin(magnitude * 0.005714285714285714);
}

void DxfText(ByteSink& out, std::string_view layer, std::string text, const LogFont& font,
             RotationT rotation, double scale, int32_t x, int32_t y) {
  const double h = DxfTextHeight(font.HeightOrDefault(), scale);
  double px = Scaled(x, scale);
  double py = Scaled(y, scale);
  double angle = 0.0;
  switch (rotation) {
    case 1:
      angle = 90.0;
      px = px + h + kBaseLineGap;
      break;
    case 2:
      angle = 180.0;
      py = py + h + kBaseLineGap;
      break;
    case 3:
      angle = 270.0;
      px = px - h - kBaseLineGap;
      break;
    default:  // 0 and every unknown code
      py = py - h - kBaseLineGap;
      break;
  }
  WriteTextPlacement(out, layer, px, py, h);
  WriteAngle(out, angle);
  WriteValue(out, SingleLine(text));
}

void DxfTextAt(ByteSink& out, std::string_view layer, double angle, std::string text, double x,
               double y, double height) {
  WriteTextPlacement(out, layer, x, y, height);
  // Angle and value go out as one piece here, up to 268 bytes with a full-length text.
  if (angle != 0.0) {
    WritePiece<" 50\n%8.4f\n 1\n%s\n">(out, angle, SingleLine(text));
  } else {
    WriteValue(out, SingleLine(text));
  }
}

void DxfTextBox(ByteSink& out, std::string_view layer, std::string text, const LogFont& font,
                RotationT rotation, double scale, int32_t x1, int32_t x2, int32_t y1, int32_t y2) {
  // CR LF counts as two breaks and so leaves an empty line between them.
  std::replace(text.begin(), text.end(), '\n', '\r');
  const auto breaks = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\r'));

  const double h = DxfTextHeight(font.HeightOrDefault(), scale);
  const int64_t left = std::min(x1, x2);
  const int64_t right = std::max(x1, x2);
  const int64_t top = std::min(y1, y2);
  const int64_t bottom = std::max(y1, y2);
  // The extent across the lines is signed for codes 0 and 1 but not for 2 and 3, and unknown
  // codes differ from 0 by their start: the box's placement is defined per code, not by symmetry.
  double angle = 0.0;
  double extent = 0.0;
  double x = 0.0;
  double y = 0.0;
  switch (rotation) {
    case 0:
      extent = Scaled(int64_t{y2} - y1, scale);
      x = Scaled(x1, scale);
      y = Scaled(y1, scale) - h - kBaseLineGap;
      break;
    case 1:
      angle = 90.0;
      extent = Scaled(int64_t{x2} - x1, scale);
      x = Scaled(left, scale) + h + kBaseLineGap;
      y = Scaled(top, scale);
      break;
    case 2:
      angle = 180.0;
      extent = Scaled(std::llabs(int64_t{y2} - y1), scale);
      x = Scaled(right, scale);
      y = Scaled(top, scale) + h + kBaseLineGap;
      break;
    case 3:
      angle = 270.0;
      extent = Scaled(std::llabs(int64_t{x2} - x1), scale);
      x = Scaled(right, scale) - h - kBaseLineGap;
      y = Scaled(bottom, scale);
      break;
    default:
      extent = Scaled(int64_t{y2} - y1, scale);
      x = Scaled(x1, scale);
      y = Scaled(y1, scale) - h - kBaseLineGap;
      if (breaks > 0) {
        y -= extent / static_cast<double>(breaks + 1) * static_cast<double>(breaks);
      }
      break;
  }

  if (breaks == 0) {
    WriteTextPlacement(out, layer, x, y, h);
    WriteAngle(out, angle);
    WriteValue(out, ValuePart(text));
    return;
  }

  const double pitch = extent / static_cast<double>(breaks + 1);
  text.push_back('\r');
  const std::string_view all(text);
  std::size_t start = 0;
  for (std::size_t i = all.find('\r'); i != std::string_view::npos; i = all.find('\r', start)) {
    const std::string_view line = ValuePart(all.substr(start, i - start));
    WriteTextPlacement(out, layer, x, y, h);
    WriteAngle(out, angle);
    if (line.empty()) {
      WritePiece<" 1\n \n">(out);
    } else {
      WriteValue(out, line);
    }
    start = i + 1;
    switch (rotation) {
      case 1:
        x += pitch;
        break;
      case 3:
        x -= pitch;
        break;
      default:
        y += pitch;
        break;
    }
  }
}

std::string OverlineToDxf(const std::string& text) {
  // A backslash marks the character before it; a run of marked characters becomes one run
  // between overscore toggles. The first character cannot be a mark. The backslash of an escape
  // is part of its character, never a mark. Positions are byte offsets of whole characters.
  const std::string_view all(text);
  std::string result;
  result.reserve(text.size() + 8);
  std::size_t copyStart = 0;
  std::size_t previous = 0;  // the character before `at`
  for (std::size_t at = all.empty() ? 0 : NextCharacter(all, 0); at < all.size();) {
    if (!IsMark(all, at)) {
      previous = at;
      at = NextCharacter(all, at);
      continue;
    }
    // After "A\\" the copy start can pass the marked character; nothing is copied then.
    if (copyStart < previous) {
      result.append(all.substr(copyStart, previous - copyStart));
    }
    result += "%%o";
    result.append(all.substr(previous, at - previous));
    std::size_t mark = at;
    for (;;) {
      const std::size_t between = NextCharacter(all, mark);
      if (between >= all.size()) {
        break;
      }
      const std::size_t following = NextCharacter(all, between);
      if (!IsMark(all, following)) {
        break;
      }
      result.append(all.substr(between, following - between));
      mark = following;
    }
    result += "%%o";
    copyStart = NextCharacter(all, mark);
    previous = mark;
    at = copyStart;
  }
  if (copyStart < all.size()) {
    result.append(all.substr(copyStart));
  }
  return result;
}

int32_t VisibleTextLength(const std::string& text) {
  int64_t visible = 0;
  for (std::size_t at = 0; at < text.size(); at = NextCharacter(text, at)) {
    visible += IsMark(text, at) ? 0 : 1;
  }
  return static_cast<int32_t>(visible);
}

}  // namespace kalmor
