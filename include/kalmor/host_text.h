#pragma once

// Texts as the host database hands them to the export, and the UTF-8 they are made from.
//
// A host text is a single-byte Windows-1252 string, the code page a release-12 drawing is read
// in when it names none. A character the code page lacks is written as the escape \U+XXXX: four
// upper-case hex digits of its UTF-16 code unit, so that a character beyond U+FFFF becomes the
// escapes of its two surrogates ("😀" is \U+D83D\U+DE00). Drawing readers decode these escapes;
// those that work in UTF-16, as CAD programs do, join the pair into the one character.
//
// Every host converts a text with HostTextFromUtf8 where the text enters its design (property
// names and values, pin names and numbers, net names, comment texts). Names that only make file
// names and messages (design, schematic, page) stay as they are.

#include <cstddef>
#include <string>
#include <string_view>

#include "kalmor/api.h"

namespace kalmor {

// One character at the start of a text, and how many bytes it takes there.
struct TextCharacter {
  char32_t code = 0;
  std::size_t length = 0;
};

// The UTF-8 character at the start of `text`; length 0 when the text is empty or starts with a
// byte that begins no well-formed character (no overlong form, no surrogate, nothing past
// U+10FFFF).
KALMOR_API TextCharacter DecodeUtf8(std::string_view text);

// The host text of a UTF-8 text. A byte that is not part of a UTF-8 character is taken to be a
// Windows-1252 byte already and kept as it is.
KALMOR_API std::string HostTextFromUtf8(std::string_view utf8);

// The character at the start of a host text: an escape (a pair of surrogate escapes counts as
// one character), or a byte read in Windows-1252, whose five unused bytes stand for the control
// characters of the same number. Length 0 only for an empty text. A lone surrogate escape is
// that surrogate.
KALMOR_API TextCharacter DecodeHostText(std::string_view text);

// The number of characters in a host text.
KALMOR_API std::size_t HostTextLength(std::string_view text);

// The UTF-8 of a host text; a lone surrogate becomes U+FFFD.
KALMOR_API std::string Utf8FromHostText(std::string_view text);

}  // namespace kalmor
