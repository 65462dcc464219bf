#pragma once

// Text from an input as a message shows it: a name or value of any length, holding any bytes,
// gives a message of a line that reads whole as a C string (a NUL would cut it short) and cannot
// move a terminal's cursor.

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "input/character_start.h"

namespace kalmor {

// `text` with every control character (below 0x20, and 0x7F) written as \xNN.
inline std::string Escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      out += escape;
    } else {
      out += c;
    }
  }
  return out;
}

// `text` escaped, whole when it is at most 64 bytes long, else its first 61 bytes (cut at a
// character boundary) and "...".
inline std::string Abbreviated(std::string_view text) {
  constexpr std::size_t kLongest = 64;
  if (text.size() <= kLongest) {
    return Escaped(text);
  }
  return Escaped(text.substr(0, CharacterStart(text, kLongest - 3))) + "...";
}

// A name or value as a complaint quotes it: abbreviated, in double quotes.
inline std::string Quoted(std::string_view text) {
  return "\"" + Abbreviated(text) + "\"";
}

}  // namespace kalmor
