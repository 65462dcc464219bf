// The export entry points, the walk of a design's pages and the names of the files they write.

#include "kalmor/export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "dxf/output_file.h"
#include "export/output_names.h"
#include "export/vel_edit_path.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"
#include "support/recording_ui.h"
#include "support/thrown.h"

namespace kalmor {
namespace {

namespace fs = std::filesystem;
using ::kalmor::test::ReadFileBytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The whole file of a page with nothing on it.
constexpr char kEmptyPageFile[] =
    " 0\r\nSECTION\r\n 2\r\nHEADER\r\n 9\r\n$ACADVER\r\n 1\r\nAC1009\r\n 0\r\nENDSEC\r\n"
    " 0\r\nSECTION\r\n 2\r\nENTITIES\r\n"
    " 0\r\nENDSEC\r\n 0\r\nEOF\r\n";

// One schematic S whose pages, named as given, hold nothing and hide their border.
std::unique_ptr<model::Design> EmptyPages(std::vector<std::string> names) {
  names.insert(names.begin(), "S");
  return model::ReadDesignDocument(
      test::PagesDocument({names}, R"("border": {"visible": false})", "BOARD"), "empty.json");
}

class DxfExportTest : public ::testing::Test {
 protected:
  void TearDown() override { g_inDesignExport = 0; }

  std::vector<std::string> Files() const { return test::FileNames(temp.path()); }
  std::string In(const std::string& name) const { return (temp / name).string(); }

  test::TempDir temp;
  test::RecordingUserInterface ui;
  ScopedUserInterface scoped{ui};
};

TEST(DesignWalkTest, HierarchyFirstThenTheOtherViewsEachNameOnce) {
  const auto design = model::ReadDesignDocument(test::HierarchyDocument(), "hierarchy.json");
  std::vector<std::string> visits;
  DboState state;
  VisitDesignPages(
      *design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string& schematic) {
        std::string name;
        page.GetName(name, state);
        const auto id = occurrence ? occurrence->GetDesignOccurrenceId() : 0;
        visits.push_back(schematic + "/" + name + "@" + std::to_string(id));
      });
  // BLK1 is occurrence 2, BLK1/BLK9 occurrence 4.
  EXPECT_THAT(visits, ElementsAre("SUB/S1@2", "SUB/S2@2", "LEAF/L1@4", "OTHER/O1@0", "ROOT/R1@0",
                                  "ROOT/R2@0", "Sub/S1@0"));
}

// Schematics met again after the list of names has grown many times over are still skipped:
// TOP places each of B0..B299 twice, and every schematic is also met again among the views.
TEST(DesignWalkTest, ManySchematicsPlacedTwiceAreEachVisitedOnce) {
  constexpr int kPlaced = 300;
  std::string parts;
  std::string schematics;
  for (int i = 0; i < kPlaced; ++i) {
    for (const char* copy : {"A", "B"}) {
      parts += std::string(parts.empty() ? "" : ",") + R"({"id": ")" + copy + std::to_string(i) +
               R"(", "kind": "block", "schematic": "B)" + std::to_string(i) + R"(", "symbol": {}})";
    }
    schematics += R"(, {"name": "B)" + std::to_string(i) + R"(", "pages": [{"name": "1"}]})";
  }
  const auto design = model::ReadDesignDocument(
      R"({"kalmor_design": 1, "name": "MANY", "schematics": [{"name": "TOP", "pages": [{"name": )"
      R"("1", "parts": [)" +
          parts + "]}]}" + schematics + "]}",
      "many.json");
  std::vector<std::string> visits;
  DboState state;
  VisitDesignPages(*design, state, [&](auto&&, auto&&, const std::string& schematic) {
    visits.push_back(schematic);
  });
  std::vector<std::string> expected;
  for (int i = 0; i < kPlaced; ++i) {
    expected.push_back("B" + std::to_string(i));
  }
  expected.push_back("TOP");
  EXPECT_EQ(visits, expected);
}

// A host that answers with no iterators at all: nothing to visit, and no crash.
TEST(DesignWalkTest, MissingIteratorsAreEmpty) {
  struct NoIterators final : DboDesign {
    int32_t GetObjectType(DboState&) const override { return 0; }
    void GetName(std::string& name, DboState&) const override { name = "BARE"; }
    std::unique_ptr<DboLibViewsIter> NewViewsIter(int32_t, DboState&) const override {
      return nullptr;
    }
    std::unique_ptr<DboDesignOccurrencesIter> NewOccurrencesIter(DboState&) const override {
      return nullptr;
    }
  } design;
  int visits = 0;
  DboState state;
  VisitDesignPages(design, state, [&](auto&&...) { ++visits; });
  EXPECT_EQ(visits, 0);
}

TEST_F(DxfExportTest, NullDesignDoesNothingAndNoSchematicsStillReports) {
  DesignToDXF(nullptr, In("board.dxf"), 0, 1, 1);
  EXPECT_THAT(ui.messages, IsEmpty());

  const auto none =
      model::ReadDesignDocument(R"({"kalmor_design":1,"name":"B","schematics":[]})", "none.json");
  DesignToDXF(none.get(), In("b.txt"), 0, 1, 1);
  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_EQ(ui.messages[0].caption, "KALMOR V1.15 COMPLETE");
  EXPECT_EQ(ui.messages[0].style, 0u);
  EXPECT_EQ(ui.messages[0].text,
            "B has been output to " + In("b.txt") + "_<SchematicName>_<PageName>.dxf");
  EXPECT_EQ(g_inDesignExport, 0);
  EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(DxfExportTest, DesignWritesEveryPageAnnouncedAndReportsOnce) {
  const auto design = EmptyPages({"PAGE1", "PAGE2"});
  DesignToDXF(design.get(), In("board.dxf"), 0, 1, 1);
  // The unused argument changes nothing.
  DesignToDXF(design.get(), In("other.dxf"), -99, 1, 1);

  EXPECT_THAT(Files(), ElementsAre("board_S_PAGE1.dxf", "board_S_PAGE2.dxf", "other_S_PAGE1.dxf",
                                   "other_S_PAGE2.dxf"));
  for (const std::string& name : Files()) {
    EXPECT_EQ(ReadFileBytes(temp / name), kEmptyPageFile) << name;
  }
  ASSERT_EQ(ui.messages.size(), 2u);
  // Every page file is whole and held until the completion message has been shown.
  EXPECT_EQ(ui.messages[0].bytes, std::vector<std::string>(2, kEmptyPageFile));
  EXPECT_EQ(ui.messages[0].held, 2);
  EXPECT_EQ(ui.messages[0].text,
            "BOARD has been output to " + In("board") + "_<SchematicName>_<PageName>.dxf");
  ASSERT_EQ(ui.progress.size(), 4u);
  const ExportProgress& second = ui.progress[1];
  EXPECT_EQ(std::tie(second.index, second.count, second.schematicName, second.pageName),
            std::make_tuple(2, 2, std::string("S"), std::string("PAGE2")));
  EXPECT_EQ(second.fileName, In("board_S_PAGE2.dxf"));
}

TEST_F(DxfExportTest, MissingDirectoryEndsTheExportAndLeavesTheFlagSet) {
  const auto design = EmptyPages({"P1", "P2"});
  const auto error =
      test::Thrown<FileError>([&] { DesignToDXF(design.get(), In("missing/board.dxf"), 0, 1, 1); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->path(), In("missing/board_S_P1.dxf"));
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_EQ(g_inDesignExport, 1);

  // Until a design export completes, a page written by name reports nothing.
  PageToDXF(design->FindPage("S", "P2"), nullptr, In("p2.dxf"), 0, 1, 1);
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_EQ(ReadFileBytes(In("p2.dxf")), kEmptyPageFile);
}

TEST_F(DxfExportTest, EmptyNameAsksTheUser) {
  const auto design = EmptyPages({"PAGE1"});
  const DboPage* page = design->FindPage("S", "PAGE1");

  PageToDXF(page, nullptr, "", 0, 1, 1);  // cancelled
  ASSERT_EQ(ui.dialogs.size(), 1u);
  EXPECT_EQ(ui.dialogs[0].defaultExtension, "dxf");
  EXPECT_EQ(ui.dialogs[0].initialFileName, "*.dxf");
  EXPECT_EQ(ui.dialogs[0].flags, 0u);
  EXPECT_EQ(ui.dialogs[0].filter, "DXF Files (*.dxf)||");
  EXPECT_THAT(Files(), IsEmpty());

  ui.answer = In("chosen.dxf");
  PageToDXF(page, nullptr, "", 0, 1, 1);
  EXPECT_EQ(ReadFileBytes(In("chosen.dxf")), kEmptyPageFile);
  EXPECT_THAT(ui.messages, IsEmpty());
}

TEST_F(DxfExportTest, NamedFileIsReplacedAndReportedWhileHeldComplete) {
  const auto design = EmptyPages({"PAGE1"});
  std::ofstream(temp / "board.dxf") << std::string(4096, 'x');
  ui.watched = In("board.dxf");

  PageToDXF(design->FindPage("S", "PAGE1"), nullptr, In("board.dxf"), 0, 1, 1);

  EXPECT_THAT(ui.dialogs, IsEmpty());
  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_EQ(ui.messages[0].caption, "KALMOR V1.15 COMPLETE");
  EXPECT_EQ(ui.messages[0].text, "PAGE1  output to  " + In("board.dxf"));
  EXPECT_EQ(ui.messages[0].bytes, std::vector<std::string>{kEmptyPageFile});
  EXPECT_EQ(ui.messages[0].held, 1);
  EXPECT_EQ(ReadFileBytes(In("board.dxf")), kEmptyPageFile);
}

TEST_F(DxfExportTest, NullPageAndNulInTheNameAreRefused) {
  const auto design = EmptyPages({"P"});
  EXPECT_THROW(PageToDXF(nullptr, nullptr, In("x.dxf"), 0, 1, 1), std::invalid_argument);
  EXPECT_THROW(
      PageToDXF(design->FindPage("S", "P"), nullptr, In("x") + std::string("\0.dxf", 5), 0, 1, 1),
      FileError);
  EXPECT_THAT(Files(), IsEmpty());
}

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
