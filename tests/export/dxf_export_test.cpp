#include "export/dxf_export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "dxf/output_file.h"
#include "export/fake_design.h"
#include "support/paths.h"

namespace kalmor {
namespace {

using ::kalmor::testing::FakeDesign;
using ::kalmor::testing::FakeSchematic;
using ::kalmor::testing::ReadFileBytes;
using ::kalmor::testing::TempDir;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The whole file of a page with nothing on it.
constexpr char kEmptyPageFile[] =
    " 0\r\nSECTION\r\n 2\r\nHEADER\r\n 9\r\n$ACADVER\r\n 1\r\nAC1009\r\n 0\r\nENDSEC\r\n"
    " 0\r\nSECTION\r\n 2\r\nENTITIES\r\n"
    " 0\r\nENDSEC\r\n 0\r\nEOF\r\n";

class RecordingUserInterface final : public UserInterface {
 public:
  struct Message {
    std::string caption;
    std::string text;
    unsigned style;
    std::string watchedBytes;  // the watched file as it stood while the message was up
    bool watchedHeld;          // whether another writer was refused the watched file then
  };

  void MessageBox(std::string_view caption, std::string_view text, unsigned style) override {
    Message message{std::string(caption), std::string(text), style, {}, false};
    if (!watched.empty()) {
      message.watchedBytes = ReadFileBytes(watched);
      try {
        OutputFile second(watched.string());
      } catch (const FileError&) {
        message.watchedHeld = true;
      }
    }
    messages.push_back(message);
  }
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings& settings) override {
    dialogs.push_back(settings);
    return answer;
  }
  bool AppendToSessionLog(std::string_view) override { return false; }
  bool WantsExportProgress() const override { return wantProgress; }
  void ShowExportProgress(const ExportProgress& shown) override { progress.push_back(shown); }

  std::vector<Message> messages;
  std::vector<SaveFileDialogSettings> dialogs;
  std::optional<std::string> answer;
  std::filesystem::path watched;
  bool wantProgress = false;
  std::vector<ExportProgress> progress;
};

class DxfExportTest : public ::testing::Test {
 protected:
  void TearDown() override { g_inDesignExport = 0; }

  std::vector<std::string> FilesInTemp() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(temp.path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TempDir temp;
  RecordingUserInterface ui;
  ScopedUserInterface scoped{ui};
};

// One visit of the design walk, as "schematic/page@occurrence id" (0: no occurrence).
std::vector<std::string> Walk(const DboDesign& design) {
  std::vector<std::string> visits;
  DboState state;
  VisitDesignPages(
      design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string& schematic) {
        std::string name;
        DboState pageState;
        page.GetName(name, pageState);
        const auto id = occurrence ? occurrence->GetDesignOccurrenceId() : 0;
        visits.push_back(schematic + "/" + name + "@" + std::to_string(id));
      });
  return visits;
}

TEST(DesignWalkTest, HierarchyFirstThenRemainingViewsEachSchematicOnce) {
  FakeDesign design("BOARD");
  FakeSchematic& root = design.AddSchematic("ROOT");
  root.AddPage("P1");
  FakeSchematic& sub = design.AddSchematic("SUB");
  sub.AddPage("S1");
  sub.AddPage("S2");
  FakeSchematic& other = design.AddSchematic("OTHER");
  other.AddPage("O1");
  design.AddOccurrence(&other, /*primitive=*/true);  // 1: a leaf, skipped whatever it shows
  design.AddOccurrence(nullptr);                     // 2: hierarchical, contents missing
  design.AddOccurrence(&sub);                        // 3: first to reach SUB
  design.AddOccurrence(&sub);                        // 4: SUB again

  EXPECT_THAT(Walk(design), ElementsAre("SUB/S1@3", "SUB/S2@3", "ROOT/P1@0", "OTHER/O1@0"));
}

TEST(DesignWalkTest, SchematicNamesCompareExactly) {
  FakeDesign design("BOARD");
  design.AddSchematic("Main").AddPage("P");
  design.AddSchematic("MAIN").AddPage("P");
  design.AddSchematic("Main").AddPage("Q");  // the same name again: skipped

  EXPECT_THAT(Walk(design), ElementsAre("Main/P@0", "MAIN/P@0"));
}

TEST(DesignWalkTest, MissingIteratorsSkipWhatTheyWouldHaveListed) {
  {
    FakeDesign design("BOARD");
    design.FailOccurrencesIter();
    design.AddSchematic("ROOT").AddPage("P1");
    EXPECT_THAT(Walk(design), ElementsAre("ROOT/P1@0"));
  }
  {
    // A schematic whose pages cannot be listed when the hierarchy reaches it still counts as
    // met, so the views walk does not try it again.
    FakeDesign design("BOARD");
    FakeSchematic& sub = design.AddSchematic("SUB");
    sub.AddPage("S1");
    sub.FailPagesIter();
    design.AddOccurrence(&sub);
    design.AddSchematic("ROOT").AddPage("P1");
    EXPECT_THAT(Walk(design), ElementsAre("ROOT/P1@0"));
  }
  {
    FakeDesign design("BOARD");
    FakeSchematic& sub = design.AddSchematic("SUB");
    sub.AddPage("S1");
    design.AddOccurrence(&sub);
    design.FailViewsIter();
    EXPECT_THAT(Walk(design), ElementsAre("SUB/S1@1"));
  }
}

TEST_F(DxfExportTest, NullDesignDoesNothing) {
  DesignToDXF(nullptr, (temp / "board.dxf").string(), 0, 1, 1);
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_EQ(g_inDesignExport, 0);
  EXPECT_THAT(FilesInTemp(), IsEmpty());
}

TEST_F(DxfExportTest, DesignWithoutSchematicsStillReports) {
  FakeDesign design("BOARD");
  DesignToDXF(&design, (temp / "board.DXF").string(), 0, 1, 1);

  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_EQ(ui.messages[0].caption, "KALMOR V1.15 COMPLETE");
  EXPECT_EQ(ui.messages[0].style, 0u);
  EXPECT_EQ(ui.messages[0].text, "BOARD has been output to " + (temp / "board").string() +
                                     "_<SchematicName>_<PageName>.dxf");
  EXPECT_EQ(g_inDesignExport, 0);
  EXPECT_THAT(FilesInTemp(), IsEmpty());
}

TEST_F(DxfExportTest, DesignWritesEveryPageAndOneMessage) {
  FakeDesign design("BOARD");
  FakeSchematic& sub = design.AddSchematic("SUB");
  sub.AddPage("PAGE1");
  design.AddOccurrence(&sub);
  FakeSchematic& root = design.AddSchematic("SCHEMATIC1");
  root.AddPage("PAGE1");
  root.AddPage("PAGE2");
  ui.wantProgress = true;

  DesignToDXF(&design, (temp / "board.dxf").string(), 0, 1, 1);

  EXPECT_THAT(FilesInTemp(), ElementsAre("board_SCHEMATIC1_PAGE1.dxf", "board_SCHEMATIC1_PAGE2.dxf",
                                         "board_SUB_PAGE1.dxf"));
  for (const std::string& name : FilesInTemp()) {
    EXPECT_EQ(ReadFileBytes(temp / name), kEmptyPageFile) << name;
  }
  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_THAT(ui.messages[0].text, ::testing::StartsWith("BOARD has been output to "));

  // Every page is announced before it is written, with the count known from the start.
  ASSERT_EQ(ui.progress.size(), 3u);
  const ExportProgress& second = ui.progress[1];
  EXPECT_EQ(second.index, 2);
  EXPECT_EQ(second.count, 3);
  EXPECT_EQ(second.schematicName, "SCHEMATIC1");
  EXPECT_EQ(second.pageName, "PAGE1");
  EXPECT_EQ(second.fileName, (temp / "board_SCHEMATIC1_PAGE1.dxf").string());
}

TEST_F(DxfExportTest, UnusedArgumentChangesNothing) {
  FakeDesign design("BOARD");
  design.AddSchematic("S").AddPage("P");
  DesignToDXF(&design, (temp / "a.dxf").string(), 0, 1, 1);
  DesignToDXF(&design, (temp / "b.dxf").string(), -123456, 1, 1);
  EXPECT_EQ(ReadFileBytes(temp / "a_S_P.dxf"), ReadFileBytes(temp / "b_S_P.dxf"));

  FakeSchematic schematic("X");
  const DboPage& page = schematic.AddPage("P");
  PageToDXF(&page, nullptr, (temp / "c.dxf").string(), 0, 1, 1);
  PageToDXF(&page, nullptr, (temp / "d.dxf").string(), 99, 1, 1);
  EXPECT_EQ(ReadFileBytes(temp / "c.dxf"), ReadFileBytes(temp / "d.dxf"));
}

TEST_F(DxfExportTest, MissingDirectoryEndsTheExportAndLeavesTheFlagSet) {
  FakeDesign design("BOARD");
  FakeSchematic& schematic = design.AddSchematic("S");
  schematic.AddPage("P1");
  schematic.AddPage("P2");
  const std::string path = (temp / "missing" / "board.dxf").string();

  try {
    DesignToDXF(&design, path, 0, 1, 1);
    FAIL() << "expected a FileError";
  } catch (const FileError& error) {
    EXPECT_EQ(error.path(), (temp / "missing" / "board_S_P1.dxf").string());
  }
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_EQ(g_inDesignExport, 1);

  // Until a design export completes, a page written by name reports nothing.
  PageToDXF(&schematic.AddPage("P3"), nullptr, (temp / "p3.dxf").string(), 0, 1, 1);
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_EQ(ReadFileBytes(temp / "p3.dxf"), kEmptyPageFile);
}

TEST_F(DxfExportTest, EmptyNameAsksAndCancelWritesNothing) {
  FakeSchematic schematic("S");
  const DboPage& page = schematic.AddPage("PAGE1");

  PageToDXF(&page, nullptr, "", 0, 1, 1);

  ASSERT_EQ(ui.dialogs.size(), 1u);
  EXPECT_EQ(ui.dialogs[0].defaultExtension, "dxf");
  EXPECT_EQ(ui.dialogs[0].initialFileName, "*.dxf");
  EXPECT_EQ(ui.dialogs[0].flags, 0u);
  EXPECT_EQ(ui.dialogs[0].filter, "DXF Files (*.dxf)||");
  EXPECT_THAT(ui.messages, IsEmpty());
  EXPECT_THAT(FilesInTemp(), IsEmpty());
}

TEST_F(DxfExportTest, ChosenFileIsWrittenWithoutMessage) {
  FakeSchematic schematic("S");
  const DboPage& page = schematic.AddPage("PAGE1");
  ui.answer = (temp / "chosen.dxf").string();

  PageToDXF(&page, nullptr, "", 0, 1, 1);

  EXPECT_EQ(ReadFileBytes(temp / "chosen.dxf"), kEmptyPageFile);
  EXPECT_THAT(ui.messages, IsEmpty());
}

TEST_F(DxfExportTest, NamedFileIsReplacedAndReportedWhileComplete) {
  FakeSchematic schematic("S");
  const DboPage& page = schematic.AddPage("PAGE1");
  const std::filesystem::path target = temp / "board.dxf";
  std::ofstream(target) << std::string(4096, 'x');
  ui.watched = target;

  PageToDXF(&page, nullptr, target.string(), 0, 1, 1);

  EXPECT_THAT(ui.dialogs, IsEmpty());
  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_EQ(ui.messages[0].caption, "KALMOR V1.15 COMPLETE");
  EXPECT_EQ(ui.messages[0].text, "PAGE1  output to  " + target.string());
  EXPECT_EQ(ui.messages[0].watchedBytes, kEmptyPageFile);
  EXPECT_TRUE(ui.messages[0].watchedHeld);
  EXPECT_EQ(ReadFileBytes(target), kEmptyPageFile);
}

TEST_F(DxfExportTest, NullPageAndNulInTheNameAreRefused) {
  EXPECT_THROW(PageToDXF(nullptr, nullptr, (temp / "x.dxf").string(), 0, 1, 1),
               std::invalid_argument);
  FakeSchematic schematic("S");
  const DboPage& page = schematic.AddPage("P");
  EXPECT_THROW(PageToDXF(&page, nullptr, (temp / "x").string() + std::string("\0.dxf", 5), 0, 1, 1),
               FileError);
  EXPECT_THAT(FilesInTemp(), IsEmpty());
}

}  // namespace
}  // namespace kalmor
