#include "render/xml_text.h"

#include "kalmor/host_text.h"

namespace kalmor {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool AllowedInXml(char32_t code) {
  return code == 0x09 || (code >= 0x20 && code != 0xFFFE && code != 0xFFFF);
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const auto [code, length] = DecodeUtf8(text);
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
