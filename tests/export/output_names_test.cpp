#include "export/output_names.h"

#include <gtest/gtest.h>

#include <string>

#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor {
namespace {

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
  { "name": "FINE", "pages": [ { "name": "Page 1.a" } ] } ] })";

TEST(OutputNamesTest, PageFileNamesTakeNamesAsGiven) {
  const auto design = model::ReadDesignDocument(kNames, "names.json");
  EXPECT_EQ(MakePageFileName("C:\\work\\board", "FINE", *design->FindPage("FINE", "Page 1.a")),
            "C:\\work\\board_FINE_Page 1.a.dxf");
  EXPECT_EQ(MakePageFileName("", "S", *design->FindPage("FINE", "Page 1.a")), "_S_Page 1.a.dxf");
}

}  // namespace
}  // namespace kalmor
