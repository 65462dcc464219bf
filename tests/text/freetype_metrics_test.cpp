#include "text/freetype_metrics.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/paths.h"
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
  const CRect r = CVelText(text, {0, 0}, font, CVelText::kStyleText, CVelText::kFormatCalcRect)
                      .GetBoundingRect();
  return r.right - r.left;
}

TEST(SystemFonts, FacesResolveToMetricCompatibleFilesOrTheDefaultSans) {
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
  };
  for (const Case& c : cases) {
    const FontFile file = ResolveFontFile(Font(c.face, -9, c.weight, c.italic));
    EXPECT_EQ(std::filesystem::path(file.path).filename(), c.file) << c.face << ' ' << c.weight;
  }
  const std::string sans = ResolveFontFile(Font("sans-serif")).path;
  EXPECT_EQ(ResolveFontFile(Font("No Such Face 4711")).path, sans);
  EXPECT_EQ(ResolveFontFile(Font("")).path, sans);
  EXPECT_GT(Width("abc", Font("No Such Face 4711")), 0);
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
    EXPECT_TRUE(m.trueType);
  }
  EXPECT_EQ(source.GetTextExtent(Font("Arial", -9), "abc").cx,
            source.GetTextExtent(Font("Arial", -9), "abc").cx);
  EXPECT_EQ(resolved, 3) << "a face is resolved once per size";
  TextMetrics none;
  EXPECT_FALSE(source.GetTextMetrics(Font("Arial", 0), none));

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

  // UTF-8, and bytes that start no UTF-8 sequence as Windows Latin-1.
  const LogFont arial = Font("Arial");
  EXPECT_EQ(source.GetTextExtent(arial, "\xC3\xA9").cx, source.GetTextExtent(arial, "\xE9").cx);
  EXPECT_EQ(source.GetTextExtent(arial, "\xE2\x82\xAC").cx, source.GetTextExtent(arial, "\x80").cx);
  EXPECT_LT(source.GetTextExtent(arial, "\xC3\xA9").cx, source.GetTextExtent(arial, "\xC3\xE9").cx);
}

TEST(SystemFonts, UnloadableFontFilesAreClearErrors) {
  const testing::TempDir dir;
  std::ofstream(dir / "notes.ttf") << "not a font\n";
  const std::pair<std::string, std::string> cases[] = {
      {(dir / "missing.ttf").string(), "cannot open resource"},
      {(dir / "notes.ttf").string(), "unknown file format"},
  };
  for (const auto& [path, reason] : cases) {
    FreeTypeFontMetrics source([&](const LogFont&) { return FontFile{path}; });
    ScopedFontMetrics scope(source);
    try {
      CVelText("x", {}, Font("Arial"), CVelText::kStyleText, CVelText::kFormatCalcRect);
      ADD_FAILURE() << "no error for " << path;
    } catch (const EnvironmentError& error) {
      EXPECT_NE(std::string(error.what()).find(path + "\" (face 0): " + reason), std::string::npos)
          << error.what();
    }
  }
}

}  // namespace
}  // namespace kalmor
