#include "kalmor/host_text.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kalmor/errors.h"

namespace kalmor {
namespace {

constexpr const char* kCodePageName = "WINDOWS-1252";
constexpr const char* kUtf32 = std::endian::native == std::endian::little ? "UTF-32LE" : "UTF-32BE";
constexpr std::string_view kEscapeLead = "\\U+";
constexpr std::size_t kEscapeLength = 7;  // \U+XXXX
constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(char32_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

// One conversion of the system's converter, opened once per thread (a descriptor keeps state
// between calls and must not be shared).
class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == reinterpret_cast<iconv_t>(-1)) {
      throw EnvironmentError(
          std::string("the system's character converter (iconv) cannot convert ") + from + " to " +
          to + ": " + std::strerror(errno));
    }
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // Converts all of `in`; false when the converter refuses a character of it.
  bool Convert(std::string_view in, std::string& out) {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    char* source = const_cast<char*>(in.data());
    std::size_t sourceLeft = in.size();
    out.resize(in.size() * 2 + 16);
    std::size_t used = 0;
    for (;;) {
      char* target = out.data() + used;
      std::size_t targetLeft = out.size() - used;
      const std::size_t result = iconv(handle_, &source, &sourceLeft, &target, &targetLeft);
      used = out.size() - targetLeft;
      if (result != static_cast<std::size_t>(-1)) {
        out.resize(used);
        return true;
      }
      if (errno != E2BIG) {
        return false;
      }
      out.resize(out.size() * 2);
    }
  }

 private:
  iconv_t handle_;
};

// The code page's characters, read once from the system's converter rather than from a table
// of our own.
class CodePage {
 public:
  CodePage() {
    Converter decode(kUtf32, kCodePageName);
    std::string code;
    for (unsigned byte = 0; byte < characters_.size(); ++byte) {
      const char in = static_cast<char>(byte);
      if (decode.Convert(std::string_view(&in, 1), code) && code.size() == sizeof(char32_t)) {
        std::memcpy(&characters_[byte], code.data(), sizeof(char32_t));
        if (byte >= 0x80) {
          bytes_.emplace_back(characters_[byte], in);
        }
      } else {
        // The unused bytes read as the control characters of the same number.
        characters_[byte] = byte;
      }
    }
    std::sort(bytes_.begin(), bytes_.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
  }

  char32_t Character(char byte) const { return characters_[static_cast<unsigned char>(byte)]; }

  // The byte of a character the code page has.
  std::optional<char> Byte(char32_t code) const {
    if (code < 0x80) {
      return static_cast<char>(code);
    }
    const auto found = std::lower_bound(
        bytes_.begin(), bytes_.end(), code,
        [](const std::pair<char32_t, char>& entry, char32_t c) { return entry.first < c; });
    if (found != bytes_.end() && found->first == code) {
      return found->second;
    }
    return std::nullopt;
  }

 private:
  std::array<char32_t, 256> characters_{};
  std::vector<std::pair<char32_t, char>> bytes_;  // by character
};

const CodePage& Windows1252() {
  static const CodePage page;
  return page;
}

void AppendEscape(std::string& out, char32_t unit) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  out += kEscapeLead;
  for (int shift = 12; shift >= 0; shift -= 4) {
    out += kDigits[(unit >> shift) & 0xF];
  }
}

// The UTF-16 unit of the escape at the start of `text`.
std::optional<char32_t> EscapeAt(std::string_view text) {
  if (text.size() < kEscapeLength || !text.starts_with(kEscapeLead)) {
    return std::nullopt;
  }
  unsigned unit = 0;
  const char* digits = text.data() + kEscapeLead.size();
  const auto [end, error] = std::from_chars(digits, text.data() + kEscapeLength, unit, 16);
  if (error != std::errc() || end != text.data() + kEscapeLength) {
    return std::nullopt;
  }
  return static_cast<char32_t>(unit);
}

}  // namespace

// By hand: the callers need each character's length and where a malformed one starts, one
// character at a time, which a whole-buffer converter does not tell cheaply.
TextCharacter DecodeUtf8(std::string_view text) {
  if (text.empty()) {
    return {};
  }
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) {
    return {lead, 1};
  }
  std::size_t length = 0;
  char32_t code = 0;
  unsigned char low = 0x80;   // the second byte's range excludes overlong forms, surrogates and
  unsigned char high = 0xBF;  // code points past U+10FFFF
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
    return {};
  }
  if (text.size() < length || byte(1) < low || byte(1) > high) {
    return {};
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) {
      return {};
    }
    code = (code << 6) | (byte(i) & 0x3F);
  }
  return {code, length};
}

std::string HostTextFromUtf8(std::string_view utf8) {
  const CodePage& page = Windows1252();
  std::string out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    const TextCharacter c = DecodeUtf8(utf8);
    if (c.length == 0) {
      out += utf8.front();  // already a byte of the code page
      utf8.remove_prefix(1);
      continue;
    }
    if (const std::optional<char> byte = page.Byte(c.code)) {
      out += *byte;
    } else if (c.code > 0xFFFF) {
      const char32_t offset = c.code - 0x10000;
      AppendEscape(out, 0xD800 + (offset >> 10));
      AppendEscape(out, 0xDC00 + (offset & 0x3FF));
    } else {
      AppendEscape(out, c.code);
    }
    utf8.remove_prefix(c.length);
  }
  return out;
}

TextCharacter DecodeHostText(std::string_view text) {
  if (text.empty()) {
    return {};
  }
  if (const std::optional<char32_t> unit = EscapeAt(text)) {
    if (IsHighSurrogate(*unit)) {
      if (const std::optional<char32_t> low = EscapeAt(text.substr(kEscapeLength));
          low && IsLowSurrogate(*low)) {
        return {0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00), 2 * kEscapeLength};
      }
    }
    return {*unit, kEscapeLength};
  }
  return {Windows1252().Character(text.front()), 1};
}

std::size_t HostTextLength(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    text.remove_prefix(DecodeHostText(text).length);
    ++count;
  }
  return count;
}

std::string Utf8FromHostText(std::string_view text) {
  std::u32string codes;
  codes.reserve(text.size());
  while (!text.empty()) {
    const TextCharacter c = DecodeHostText(text);
    codes += IsHighSurrogate(c.code) || IsLowSurrogate(c.code) ? kReplacement : c.code;
    text.remove_prefix(c.length);
  }
  thread_local Converter toUtf8("UTF-8", kUtf32);
  std::string out;
  // Every code is a scalar value now, which the converter always takes.
  toUtf8.Convert(std::string_view(reinterpret_cast<const char*>(codes.data()),
                                  codes.size() * sizeof(char32_t)),
                 out);
  return out;
}

}  // namespace kalmor
