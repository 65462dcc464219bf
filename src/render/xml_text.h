#pragma once

// Text made safe for an XML document, whatever bytes it came from.

#include <string>
#include <string_view>

namespace kalmor {

// Escapes the markup characters (& < > " ') so the result fits in character data and in
// attribute values alike. Bytes that are not valid UTF-8, and characters XML does not allow
// (controls other than tab, U+FFFE, U+FFFF), each become U+FFFD.
std::string XmlText(std::string_view text);

}  // namespace kalmor
