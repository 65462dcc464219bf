#include "export/output_names.h"

#include <gtest/gtest.h>

#include <string>

#include "export/fake_design.h"

namespace kalmor {
namespace {

TEST(OutputNamesTest, StemDropsOnlyAFinalDxfExtension) {
  struct Case {
    const char* path;
    const char* stem;
  };
  const Case cases[] = {
      {"C:\\work\\board.dxf", "C:\\work\\board"},
      {"C:\\work\\board.DXF", "C:\\work\\board"},
      {"C:\\work\\board.Dxf", "C:\\work\\board"},
      {"C:\\work\\board", "C:\\work\\board"},
      {"C:\\work\\board.txt", "C:\\work\\board.txt"},
      {"C:\\work.dxf\\board", "C:\\work.dxf\\board"},
      {"board.dxf.bak", "board.dxf.bak"},
      {"out/board.dxf", "out/board"},
      {".dxf", ""},
      {"", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(MakeOutputStem(c.path), c.stem) << c.path;
  }
}

TEST(OutputNamesTest, PageFileNameJoinsNamesAsGiven) {
  const testing::FakePage page("Page 1.a");
  EXPECT_EQ(MakePageFileName("C:\\work\\board", "SCHEMATIC1", page),
            "C:\\work\\board_SCHEMATIC1_Page 1.a.dxf");
  EXPECT_EQ(MakePageFileName("", "S", page), "_S_Page 1.a.dxf");
}

TEST(OutputNamesTest, UnusableNames) {
  for (const char* usable : {"PAGE1", "Page 1", "a.b", "...", "Ω-sheet", "x:y"}) {
    EXPECT_FALSE(UnusableNameReason(usable).has_value()) << usable;
  }
  const std::string withNul("a\0b", 3);
  for (const std::string& unusable :
       {std::string(""), std::string("."), std::string(".."), std::string("a/b"),
        std::string("a\\b"), std::string("tab\there"), std::string("line\n"),
        std::string("del\x7f"), withNul}) {
    EXPECT_TRUE(UnusableNameReason(unusable).has_value()) << unusable;
  }
}

TEST(OutputNamesTest, FindsUnusableNamesOfExportedPagesOnly) {
  testing::FakeDesign design("BOARD");
  testing::FakeSchematic& fine = design.AddSchematic("FINE");
  fine.AddPage("PAGE1");
  fine.AddPage("../up");
  testing::FakeSchematic& slashed = design.AddSchematic("A/B");
  slashed.AddPage("");
  // Met twice by name: its pages are not exported, so not checked either.
  design.AddSchematic("FINE").AddPage("..");

  const std::vector<UnusableName> found = FindUnusableNames(design);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].schematicName, "FINE");
  EXPECT_EQ(found[0].pageName, "../up");
  EXPECT_EQ(found[0].reason, "the page name holds a '/'");
  EXPECT_EQ(found[1].reason, "the schematic name holds a '/'");
  EXPECT_EQ(found[2].reason, "the page name is empty");
}

}  // namespace
}  // namespace kalmor
