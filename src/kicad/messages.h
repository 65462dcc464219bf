#pragma once

// Names and texts as the reader's messages quote them: control characters (a NUL above all,
// which would cut the message short) written as \xNN, and long texts cut after a few dozen bytes.

#include <cstdio>
#include <string>
#include <string_view>

namespace kalmor::kicad::detail {

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

// Quoted, at most 40 bytes of it.
inline std::string Described(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::size_t cut = text.size() <= kLongest ? text.size() : kLongest;
  while (cut > 0 && cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) {
    --cut;  // not inside a character
  }
  return "\"" + Escaped(text.substr(0, cut)) + (cut < text.size() ? "...\"" : "\"");
}

}  // namespace kalmor::kicad::detail
