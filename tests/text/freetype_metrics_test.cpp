#include "text/freetype_metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/paths.h"
#include "support/thrown.h"
#include "text/vel_text.h"

namespace kalmor {
namespace {

LogFont Font(const char* face, int32_t height = -20, int32_t weight = 400, bool italic = false) {
  LogFont font;
  font.SetFaceName(face);
  font.lfHeight = height;
  font.lfWeight = weight;
  font.lfItalic = italic ? 1 : 0;
  return font;
}

// Through the text shape, with the process's own source.
int32_t Width(const std::string& text, const LogFont& font) {
  const CRect r = CVelText(text, {0, 0}, font).GetBoundingRect();
  return r.right - r.left;
}

TEST(SystemFonts, FacesResolveToMetricCompatibleFilesOrLiberationSans) {
  struct Case {
    const char* face;
    int32_t weight;
    bool italic;
    const char* file;
  };
  const Case cases[] = {
      {"Arial", 0, false, "LiberationSans-Regular.ttf"},
      {"Arial", 700, true, "LiberationSans-BoldItalic.ttf"},
      {"Times New Roman", 700, false, "LiberationSerif-Bold.ttf"},
      {"Courier New", 400, true, "LiberationMono-Italic.ttf"},
      {"Tahoma", 0, false, "LiberationSans-Regular.ttf"},
      {"MS SANS SERIF", 700, false, "LiberationSans-Bold.ttf"},
      {"Segoe UI", 0, false, "LiberationSans-Regular.ttf"},
      {"Arial Narrow", 0, false, "LiberationSansNarrow-Regular.ttf"},
      {"MS Serif", 0, false, "LiberationSerif-Regular.ttf"},
      {"courier", 0, false, "LiberationMono-Regular.ttf"},
      {"DejaVu Sans", 0, false, "DejaVuSans.ttf"},  // installed: its own metrics
      {"Wingdings", 0, false, "LiberationSans-Regular.ttf"},
      {"Verdana", 0, false, "LiberationSans-Regular.ttf"},
      {"No Such Face 4711", 0, false, "LiberationSans-Regular.ttf"},
      {"", 0, false, "LiberationSans-Regular.ttf"},
  };
  for (const Case& c : cases) {
    const FontFile file = ResolveFontFile(Font(c.face, -9, c.weight, c.italic));
    EXPECT_EQ(std::filesystem::path(file.path).filename(), c.file) << c.face << ' ' << c.weight;
  }
}

TEST(SystemFonts, MeasuredSizesArePlausible) {
  int resolved = 0;
  FreeTypeFontMetrics source([&](const LogFont& font) {
    ++resolved;
    return ResolveFontFile(font);
  });
  for (const int32_t height : {-9, -20, -90}) {
    TextMetrics m;
    ASSERT_TRUE(source.GetTextMetrics(Font("Arial", height), m));
    EXPECT_TRUE(m.height >= -height && m.height <= -height * 3 / 2 + 1) << height;
    EXPECT_TRUE(m.descent > 0 && m.descent < m.height / 3) << height;
    EXPECT_TRUE(m.averageCharWidth > -height / 4 && m.averageCharWidth < -height) << height;
  }
  EXPECT_EQ(resolved, 1) << "a face is resolved once, whatever its size";
  TextMetrics none;
  EXPECT_FALSE(source.GetTextMetrics(Font("Arial", 0), none));

  // Past the largest size FreeType sets up, sizes keep growing.
  TextMetrics largest, twice;
  ASSERT_TRUE(source.GetTextMetrics(Font("Arial", -65535), largest));
  ASSERT_TRUE(source.GetTextMetrics(Font("Arial", -131070), twice));
  EXPECT_NEAR(twice.height, 2 * largest.height, 1);
  EXPECT_NEAR(source.GetTextExtent(Font("Arial", -131070), "iW").cx,
              2 * source.GetTextExtent(Font("Arial", -65535), "iW").cx, 2);

  std::string text;
  for (const char c : std::string("Widths grow")) {
    text += c;
    EXPECT_LT(Width(text.substr(0, text.size() - 1), Font("Arial")), Width(text, Font("Arial")));
  }
  EXPECT_LT(Width("iiii", Font("Arial")), Width("MMMM", Font("Arial")));
  EXPECT_EQ(Width("iiii", Font("Courier New")), Width("MMMM", Font("Courier New")));
  EXPECT_EQ(source.GetTextExtent(Font("Courier New"), "MMMMM").cx, 60) << "whole 12-pixel advances";
  EXPECT_LT(Width("Hello", Font("Arial")), Width("Hello", Font("Arial", -20, 700)));
  EXPECT_EQ(Width("AB\r\nC", Font("Arial")), Width("AB", Font("Arial")));

  // Host texts: an escape measures as the character it stands for, a surrogate pair as one
  // (an emoji and a CJK character are both the missing glyph in Liberation Sans).
  const auto cx = [&](const char* text) { return source.GetTextExtent(Font("Arial"), text).cx; };
  EXPECT_EQ(cx("\\U+00E9"), cx("\xE9"));
  EXPECT_EQ(cx("\\U+20AC"), cx("\x80"));
  EXPECT_EQ(cx("\\U+D83D\\U+DE00"), cx("\\U+4E2D"));
  EXPECT_EQ(cx("\\U+D83D\\U+D83D"), 2 * cx("\\U+4E2D")) << "lone surrogates";
}

TEST(SystemFonts, UnloadableFontFilesAreClearErrors) {
  const test::TempDir dir;
  std::ofstream(dir / "notes.ttf") << "not a font\n";
  const std::pair<std::string, std::string> cases[] = {
      {(dir / "missing.ttf").string(), "cannot open resource"},
      {(dir / "notes.ttf").string(), "unknown file format"},
  };
  for (const auto& [path, reason] : cases) {
    FreeTypeFontMetrics source([&](const LogFont&) { return FontFile{path}; });
    ScopedFontMetrics scope(source);
    EXPECT_THAT(test::ThrownMessage<EnvironmentError>([] { CVelText("x", {}, Font("Arial")); }),
                ::testing::HasSubstr(path + "\" (face 0): " + reason));
  }
}

}  // namespace
}  // namespace kalmor
