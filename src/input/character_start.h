#pragma once

// Cutting UTF-8 text between characters, never inside one.

#include <cstddef>
#include <string_view>

namespace kalmor {

// Where the character holding byte `at` of `text` begins: continuation bytes are stepped back
// over. `at` as it is when 0 or at or past the end, so `text.substr(0, CharacterStart(text, n))`
// is at most n bytes and ends on a character boundary.
inline std::size_t CharacterStart(std::string_view text, std::size_t at) {
  while (at > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) {
    --at;
  }
  return at;
}

}  // namespace kalmor
