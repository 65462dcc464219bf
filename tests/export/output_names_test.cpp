#include "export/output_names.h"

#include <gtest/gtest.h>

#include <string>

#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor {
namespace {

using namespace std::string_literals;

TEST(OutputNamesTest, StemDropsOnlyAFinalDxfExtension) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:\\work\\board.dxf", "C:\\work\\board"},
      {"C:\\work\\board.DXF", "C:\\work\\board"},
      {"C:\\work\\board.Dxf", "C:\\work\\board"},
      {"C:\\work\\board", "C:\\work\\board"},
      {"C:\\work\\board.txt", "C:\\work\\board.txt"},
      {"C:\\work.dxf\\board", "C:\\work.dxf\\board"},
      {"board.dxf.bak", "board.dxf.bak"},
      {"out/board.dxf", "out/board"},
      {"", ""},
  };
  for (const auto& [path, stem] : cases) {
    EXPECT_EQ(MakeOutputStem(path), stem) << path;
  }
}

constexpr char kNames[] = R"({ "kalmor_design": 1, "name": "B", "schematics": [
  { "name": "A/B", "pages": [ { "name": "" } ] },
  { "name": "FINE", "pages": [ { "name": "Page 1.a" }, { "name": "../up" } ] } ] })";

TEST(OutputNamesTest, PageFileNamesAndTheNamesThatCannotBeUsed) {
  const auto design = model::ReadDesignDocument(kNames, "names.json");
  EXPECT_EQ(MakePageFileName("C:\\work\\board", "FINE", *design->FindPage("FINE", "Page 1.a")),
            "C:\\work\\board_FINE_Page 1.a.dxf");
  EXPECT_EQ(MakePageFileName("", "S", *design->FindPage("FINE", "Page 1.a")), "_S_Page 1.a.dxf");

  const std::vector<UnusableName> found = FindUnusableNames(*design);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].schematicName, "A/B");
  EXPECT_EQ(found[0].reason, "the schematic name holds a '/'");
  EXPECT_EQ(found[1].reason, "the page name is empty");
  EXPECT_EQ(found[2].pageName, "../up");
  EXPECT_EQ(found[2].reason, "the page name holds a '/'");
}

TEST(OutputNamesTest, UnusableNames) {
  for (const char* usable : {"PAGE1", "Page 1", "a.b", "...", "Ω-sheet", "x:y"}) {
    EXPECT_FALSE(UnusableNameReason(usable).has_value()) << usable;
  }
  for (const std::string& unusable :
       {""s, "."s, ".."s, "a/b"s, "a\\b"s, "tab\there"s, "del\x7f"s, "nul\0"s, "\x1b[2J"s}) {
    EXPECT_TRUE(UnusableNameReason(unusable).has_value()) << unusable;
  }
}

}  // namespace
}  // namespace kalmor
