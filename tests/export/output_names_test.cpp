#include "export/output_names.h"

#include <gtest/gtest.h>

#include <string>

#include "export/vel_edit_path.h"
#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor {
namespace {

// Paths are taken apart by Windows rules on every platform: `\` and `/` end a directory, and the
// extension is what follows the last dot of the final component.
TEST(OutputNamesTest, StemDropsOnlyAFinalDxfExtension) {
  const struct {
    const char* path;
    const char* extension;
    const char* stem;
  } cases[] = {
      {"C:\\work\\board.dxf", ".dxf", "C:\\work\\board"},
      {"C:/work/sub/board.DXF", ".DXF", "C:/work/sub/board"},
      {"board.Dxf", ".Dxf", "board"},
      {"C:\\work\\board", "", "C:\\work\\board"},
      {"C:\\work\\board.txt", ".txt", "C:\\work\\board.txt"},
      {"C:\\work.dxf\\board", "", "C:\\work.dxf\\board"},
      {"out.dxf/board", "", "out.dxf/board"},
      {"board.dxf.bak", ".bak", "board.dxf.bak"},
      {".dxf", ".dxf", ""},
      {"out/", "", "out/"},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CVelEditPath(c.path).GetExtension(), c.extension) << c.path;
    EXPECT_EQ(MakeOutputStem(c.path), c.stem) << c.path;
  }
  // A component longer than its buffer is cut, as the platform's path functions cut it.
  const CVelEditPath path(("C:\\d\\" + std::string(300, 't') + ".ext").c_str());
  EXPECT_EQ(path.GetFileTitle(), std::string(255, 't'));
  EXPECT_EQ(path.GetExtension(), ".ext");
}

TEST(OutputNamesTest, PageFileNamesTakeNamesAsGiven) {
  const auto design = model::ReadDesignDocument(
      R"({"kalmor_design": 1, "name": "B", "schematics": [
            {"name": "FINE", "pages": [{"name": "Page 1.a"}]}]})",
      "names.json");
  const DboPage& page = *design->FindPage("FINE", "Page 1.a");
  EXPECT_EQ(MakePageFileName("C:\\work\\board", "FINE", page), "C:\\work\\board_FINE_Page 1.a.dxf");
  EXPECT_EQ(MakePageFileName("", "S", page), "_S_Page 1.a.dxf");
}

}  // namespace
}  // namespace kalmor
