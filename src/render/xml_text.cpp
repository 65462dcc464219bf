#include "render/xml_text.h"

#include <cstdint>

namespace kalmor {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the well-formed UTF-8 sequence at the start of `s`, or 0 when it is not one.
std::size_t SequenceLength(std::string_view s, char32_t& code) {
  const auto byte = [&s](std::size_t i) { return static_cast<std::uint8_t>(s[i]); };
  const std::uint8_t lead = byte(0);
  std::size_t length = 0;
  std::uint8_t low = 0x80;   // the allowed range of the second byte excludes overlong forms,
  std::uint8_t high = 0xBF;  // surrogates and code points past U+10FFFF
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    code = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    code = lead & 0x0F;
    low = lead == 0xE0 ? 0xA0 : 0x80;
    high = lead == 0xED ? 0x9F : 0xBF;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    code = lead & 0x07;
    low = lead == 0xF0 ? 0x90 : 0x80;
    high = lead == 0xF4 ? 0x8F : 0xBF;
  } else {
    return 0;
  }
  if (s.size() < length || byte(1) < low || byte(1) > high) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) {
      return 0;
    }
    code = (code << 6) | (byte(i) & 0x3F);
  }
  return length;
}

bool AllowedInXml(char32_t code) {
  return code == 0x09 || (code >= 0x20 && code != 0xFFFE && code != 0xFFFF);
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    char32_t code = 0;
    const std::size_t length = SequenceLength(text, code);
    if (length == 0 || !AllowedInXml(code)) {
      out += kReplacement;  // one replacement per rejected byte or character
      text.remove_prefix(length == 0 ? 1 : length);
      continue;
    }
    switch (code) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&apos;";
        break;
      default:
        out.append(text.substr(0, length));
    }
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace kalmor
