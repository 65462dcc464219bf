// What the browser test of the gallery cannot reach: sizes at the edges of their units, and
// hierarchies too deep to export in a test.

#include "gallery/gallery.h"

#include <gtest/gtest.h>

#include <string>

namespace kalmor::gallery {
namespace {

Page PageOf(std::string schematic, std::uintmax_t bytes, std::size_t shownThrough = kNone) {
  Page page;
  page.schematic = std::move(schematic);
  page.name = "P";
  page.dxfFile = page.schematic + ".dxf";
  page.svgFile = page.schematic + ".svg";
  page.dxfBytes = bytes;
  page.shownThrough = shownThrough;
  return page;
}

TEST(GalleryHtml, FileSizesRoundWithinTheirUnit) {
  const struct {
    std::uintmax_t bytes;
    const char* shown;
  } cases[] = {
      // clang-format off
      {0, "0 bytes"}, {1, "1 byte"}, {999, "999 bytes"}, {1000, "1.0 kB"}, {17341, "17.3 kB"},
      {999949, "999.9 kB"}, {999950, "1.0 MB"}, {66'000'000, "66.0 MB"},
      {1'234'567'890'123, "1.2 TB"}, {999'950'000'000'000'000, "999950.0 TB"},
      // clang-format on
  };
  for (const auto& c : cases) {
    Gallery gallery;
    gallery.pages.push_back(PageOf("S", c.bytes));
    const std::string shown = "</a> <span class=\"muted\">" + std::string(c.shown) + "</span>";
    EXPECT_NE(WriteGalleryHtml(gallery).find(shown), std::string::npos) << c.bytes;
  }
}

TEST(GalleryHtml, DeepBlocksShowTheEndOfTheirPathSoThePageGrowsLinearly) {
  // Whole paths would make this page some 30 MB; each block takes a few hundred bytes.
  constexpr std::size_t kDepth = 3000;
  Gallery gallery;
  gallery.rootSchematic = "TOP";
  for (std::size_t i = 0; i < kDepth; ++i) {
    const std::string schematic = "S" + std::to_string(i);
    gallery.blocks.push_back({"B" + std::to_string(i), i == 0 ? kNone : i - 1, schematic});
    gallery.pages.push_back(PageOf(schematic, 1, i));
  }
  const std::string html = WriteGalleryHtml(gallery);
  EXPECT_LT(html.size(), kDepth * 2000);
  EXPECT_NE(html.find("placed at <bdi>/B0/B1/B2</bdi>"), std::string::npos);
  EXPECT_NE(html.find("placed at <bdi>/…/B2997/B2998/B2999</bdi>"), std::string::npos);
}

}  // namespace
}  // namespace kalmor::gallery
