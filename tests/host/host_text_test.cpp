#include "kalmor/host_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kalmor {
namespace {

// The character a text starts with, and its length there.
struct CharacterCase {
  const char* text;
  char32_t code;
  std::size_t length;
};

TEST(HostText, FromUtf8) {
  const struct {
    const char* utf8;
    const char* host;
  } cases[] = {
      {"", ""},
      {"R1 <10k> & \\n", "R1 <10k> & \\n"},
      {"100µF ±5% 25°C",
       "100\xB5"
       "F \xB1"
       "5% 25\xB0"
       "C"},
      {"protégées Straße €5 Œ‰",
       "prot\xE9g\xE9"
       "es Stra\xDF"
       "e \x80"
       "5 \x8C\x89"},
      {"10KΩ", "10K\\U+03A9"},
      {"中文", "\\U+4E2D\\U+6587"},
      {"😀!", "\\U+D83D\\U+DE00!"},
      {"\xC2\x81", "\\U+0081"},  // a control character the code page does not have
      // Bytes that are not UTF-8 are the code page's already.
      {"Stra\xDF"
       "e \xC3\xA9\xE9",
       "Stra\xDF"
       "e \xE9\xE9"},
      {"\xF0\x9F\x98", "\xF0\x9F\x98"},
      {"\xED\xA0\xBD", "\xED\xA0\xBD"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(HostTextFromUtf8(c.utf8), c.host) << c.utf8;
  }
  for (const char* utf8 : {"100µF ±5% 25°C", "protégées Straße €5 Œ‰", "10KΩ 中 😀", "\xC2\x81"}) {
    EXPECT_EQ(Utf8FromHostText(HostTextFromUtf8(utf8)), utf8) << utf8;
  }
}

TEST(HostText, CharactersOfAHostText) {
  const CharacterCase cases[] = {
      {"", 0, 0},
      {"\x80x", 0x20AC, 1},
      {"\x81", 0x81, 1},  // unused in the code page
      {"\xFF", 0xFF, 1},
      {"\\U+03A9x", 0x3A9, 7},
      {"\\U+03a9", 0x3A9, 7},
      {"\\U+D83D\\U+DE00", 0x1F600, 14},
      {"\\U+D83Dx", 0xD83D, 7},  // lone surrogates stay what they are
      {"\\U+DE00\\U+D83D", 0xDE00, 7},
      {"\\U+D83D\\U+0041", 0xD83D, 7},
      {"\\U+03G9", '\\', 1},  // not escapes
      {"\\U+03A", '\\', 1},
      {"\\u+03A9", '\\', 1},
      {"\\U+-3A9", '\\', 1},
  };
  for (const auto& c : cases) {
    const TextCharacter found = DecodeHostText(c.text);
    EXPECT_EQ(found.code, c.code) << c.text;
    EXPECT_EQ(found.length, c.length) << c.text;
  }
  EXPECT_EQ(HostTextLength("a\\U+D83D\\U+DE00\xB5\\U+03A"), 9u);  // the last six are not one
  EXPECT_EQ(Utf8FromHostText("\\U+DE00 \\U+D83D"), "\xEF\xBF\xBD \xEF\xBF\xBD");
}

TEST(HostText, DecodeUtf8) {
  const CharacterCase cases[] = {
      {"", 0, 0},
      {"A", 'A', 1},
      {"\xC3\xA9", 0xE9, 2},
      {"\xE2\x82\xAC", 0x20AC, 3},
      {"\xF0\x9F\x98\x80", 0x1F600, 4},
      {"\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
      {"\xC3", 0, 0},              // cut short
      {"\xC3(", 0, 0},             // no continuation
      {"\x80", 0, 0},              // a continuation alone
      {"\xC0\xAF", 0, 0},          // overlong
      {"\xE0\x80\xAF", 0, 0},      // overlong
      {"\xED\xA0\x80", 0, 0},      // a surrogate
      {"\xF4\x90\x80\x80", 0, 0},  // past U+10FFFF
      {"\xFF", 0, 0},
  };
  for (const auto& c : cases) {
    const TextCharacter found = DecodeUtf8(c.text);
    EXPECT_EQ(found.code, c.code) << ::testing::PrintToString(std::string(c.text));
    EXPECT_EQ(found.length, c.length) << ::testing::PrintToString(std::string(c.text));
  }
}

}  // namespace
}  // namespace kalmor
