#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/run_kalmor.h"
#include "support/paths.h"

namespace kalmor::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Two schematics: ROOT holds a block placed twice that shows SUB, and some objects to count.
constexpr char kHierarchy[] = R"({
  "kalmor_design": 1,
  "name": "BOARD",
  "root": "ROOT",
  "symbols": { "BOX": { "bbox": [0, 0, 100, 100], "vectors": [] } },
  "schematics": [
    { "name": "ROOT", "pages": [
      { "name": "PAGE1",
        "parts": [ { "id": "BLK1", "kind": "block", "schematic": "SUB", "symbol": "BOX" },
                   { "id": "BLK2", "kind": "block", "schematic": "SUB", "symbol": "BOX",
                     "location": [300, 0] } ],
        "wires": [ { "start": [0, 0], "end": [100, 0] } ],
        "bus_entries": [ { "entry": [0, 0], "end": [10, 10] } ] },
      { "name": "PAGE2" } ] },
    { "name": "SUB", "pages": [
      { "name": "S1", "graphics": [ { "type": "line", "start": [0, 0], "end": [50, 50] } ] } ] }
  ]
})";

// One schematic whose page names are given.
std::string WithPages(const std::vector<std::string>& pageNames) {
  std::string pages;
  for (const std::string& name : pageNames) {
    pages += (pages.empty() ? "" : ", ") + std::string(R"({ "name": ")") + name + "\" }";
  }
  return R"({ "kalmor_design": 1, "name": "BOARD", "schematics": [ { "name": "S", "pages": [ )" +
         pages + " ] } ] }";
}

class KalmorCliTest : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(temp / name, std::ios::binary) << text;
    return (temp / name).string();
  }

  // The names of the files in `dir`, sorted.
  static std::vector<std::string> Files(const fs::path& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TempDir temp;
};

TEST_F(KalmorCliTest, ExamplesMatchTheGoldenFiles) {
  const fs::path examples = SourceDir() / "examples";
  const fs::path golden = SourceDir() / "tests" / "golden";
  int designs = 0;
  for (const auto& entry : fs::directory_iterator(examples)) {
    if (entry.path().extension() != ".json") {
      continue;
    }
    ++designs;
    const std::string name = entry.path().stem().string();
    SCOPED_TRACE(name);
    const fs::path expected = golden / name;
    ASSERT_TRUE(fs::is_directory(expected)) << "no golden files: run scripts/regen-golden";
    const fs::path out = temp / name;
    fs::create_directory(out);

    const CommandResult result =
        RunKalmor({"export", entry.path().string(), "-o", (out / (name + ".dxf")).string()});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("KALMOR V1.15 COMPLETE: "));
    EXPECT_EQ(result.err, "");

    ASSERT_EQ(Files(out), Files(expected));
    for (const std::string& file : Files(expected)) {
      EXPECT_TRUE(ReadFileBytes(out / file) == ReadFileBytes(expected / file))
          << file << " differs from its golden file";
    }
  }
  EXPECT_GT(designs, 0);
}

TEST_F(KalmorCliTest, ExportNamesFilesAfterTheOutputPath) {
  const std::string design = Write("board.json", kHierarchy);
  fs::create_directory(temp / "folder");
  struct Case {
    std::vector<std::string> output;  // the -o argument, if any
    fs::path where;
    std::string stem;
  };
  const Case cases[] = {
      {{}, temp.path(), "board"},
      {{"-o", (temp / "folder" / "x.DXF").string()}, temp / "folder", "x"},
      {{"-o", (temp / "folder").string()}, temp / "folder", "board"},
      {{"-o", (temp / "folder" / "y.txt").string()}, temp / "folder", "y.txt"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.stem);
    std::vector<std::string> arguments{"export", design};
    arguments.insert(arguments.end(), c.output.begin(), c.output.end());
    const CommandResult result = RunKalmor(arguments);
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string stem = (c.where / c.stem).string();
    EXPECT_EQ(result.out, "KALMOR V1.15 COMPLETE: BOARD has been output to " + stem +
                              "_<SchematicName>_<PageName>.dxf\n");
    for (const char* page : {"_SUB_S1.dxf", "_ROOT_PAGE1.dxf", "_ROOT_PAGE2.dxf"}) {
      EXPECT_TRUE(fs::exists(stem + page)) << stem + page;
    }
    fs::remove_all(temp / "folder");
    fs::create_directory(temp / "folder");
  }
}

TEST_F(KalmorCliTest, UsageErrorsExitTwo) {
  const std::string design = Write("board.json", kHierarchy);
  const std::vector<std::vector<std::string>> cases = {
      {},
      {"frobnicate"},
      {"export"},
      {"export", design, "--bogus"},
      {"page", design, "--page", "PAGE1"},
      {"page", design, "--schematic", "ROOT"},
      {"render", "x.dxf"},
      {"page", design, "--schematic", "NOPE", "--page", "PAGE1", "-o", "x.dxf"},
      {"page", design, "--schematic", "ROOT", "--page", "NOPE", "-o", "x.dxf"},
      {"page", design, "--schematic", "SUB", "--page", "S1", "--occurrence", "/NOPE"},
      {"page", design, "--schematic", "ROOT", "--page", "PAGE1", "--occurrence", "/BLK1"},
  };
  for (const auto& arguments : cases) {
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << ::testing::PrintToString(arguments);
  }
  EXPECT_THAT(Files(temp.path()), ElementsAre("board.json"));
}

TEST_F(KalmorCliTest, HelpAndVersion) {
  const CommandResult version = RunKalmor({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, "kalmor 1.15\n");

  const std::vector<std::pair<std::string, std::string>> helps = {{"", "export"},
                                                                  {"export", "--raw-names"},
                                                                  {"page", "--occurrence"},
                                                                  {"check", "DESIGN"},
                                                                  {"render", "--output"}};
  for (const auto& [command, mentioned] : helps) {
    std::vector<std::string> arguments;
    if (!command.empty()) {
      arguments.push_back(command);
    }
    arguments.push_back("--help");
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_THAT(result.out, HasSubstr(mentioned)) << command;
  }
}

TEST_F(KalmorCliTest, InvalidDocumentExitsOneAndWritesNothing) {
  const std::string broken = Write("broken.json", R"({ "kalmor_design": 1, "name": )");
  const std::string unknownField =
      Write("typo.json", R"({ "kalmor_design": 1, "name": "B", "schematix": [] })");
  const std::string missing = (temp / "missing.json").string();
  for (const std::string& design : {broken, unknownField, missing}) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"export", design},
          {"page", design, "--schematic", "S", "--page", "P", "-o", (temp / "p.dxf").string()},
          {"check", design}}) {
      const CommandResult result = RunKalmor(arguments);
      EXPECT_EQ(result.status, 1) << ::testing::PrintToString(arguments);
      EXPECT_THAT(result.err, HasSubstr(fs::path(design).filename().string()));
      EXPECT_EQ(result.out, "");
    }
  }
  EXPECT_THAT(Files(temp.path()), ElementsAre("broken.json", "typo.json"));
}

TEST_F(KalmorCliTest, UnwritableOutputExitsThree) {
  const std::string design = Write("board.json", kHierarchy);
  const fs::path missing = temp / "missing";
  const CommandResult exported =
      RunKalmor({"export", design, "-o", (missing / "board.dxf").string()});
  EXPECT_EQ(exported.status, 3);
  EXPECT_EQ(exported.err, "kalmor: cannot write " + (missing / "board_SUB_S1.dxf").string() +
                              ": No such file or directory\n");
  EXPECT_EQ(exported.out, "");

  const CommandResult page = RunKalmor({"page", design, "--schematic", "ROOT", "--page", "PAGE1",
                                        "-o", (missing / "p.dxf").string()});
  EXPECT_EQ(page.status, 3);
  EXPECT_THAT(page.err, HasSubstr((missing / "p.dxf").string()));
  EXPECT_FALSE(fs::exists(missing));

  // A device that is always full fails the first write that reaches it.
  const CommandResult full =
      RunKalmor({"page", design, "--schematic", "ROOT", "--page", "PAGE1", "-o", "/dev/full"});
  EXPECT_EQ(full.status, 3);
  EXPECT_EQ(full.err, "kalmor: cannot write /dev/full: No space left on device\n");
  EXPECT_EQ(full.out, "");
}

TEST_F(KalmorCliTest, UnusableNamesAreRefusedUnlessTakenRaw) {
  const std::string refused = Write("refused.json", WithPages({"OK", "../up", "a\\\\b", "", "."}));
  const CommandResult result = RunKalmor({"export", refused});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "kalmor: schematic \"S\", page \"../up\": the page name holds a '/'\n"
            "kalmor: schematic \"S\", page \"a\\b\": the page name holds a '\\'\n"
            "kalmor: schematic \"S\", page \"\": the page name is empty\n"
            "kalmor: schematic \"S\", page \".\": the page name is \".\"\n"
            "kalmor: nothing written; --raw-names takes the names as they are\n");
  EXPECT_THAT(Files(temp.path()), ElementsAre("refused.json"));

  const std::string raw = Write("raw.json", WithPages({"a\\\\b", "tab\\there"}));
  const CommandResult taken = RunKalmor({"export", raw, "--raw-names"});
  EXPECT_EQ(taken.status, 0) << taken.err;
  EXPECT_TRUE(fs::exists(temp / "raw_S_a\\b.dxf"));
  EXPECT_TRUE(fs::exists(temp / "raw_S_tab\there.dxf"));
}

TEST_F(KalmorCliTest, PageWritesWhatExportWritesAndReports) {
  const std::string design = Write("board.json", kHierarchy);
  ASSERT_EQ(RunKalmor({"export", design}).status, 0);

  struct Case {
    std::string schematic, page, occurrence, exported;
  };
  for (const Case& c : {Case{"ROOT", "PAGE1", "", "board_ROOT_PAGE1.dxf"},
                        Case{"SUB", "S1", "/BLK1", "board_SUB_S1.dxf"}}) {
    const fs::path target = temp / ("page_" + c.page + ".dxf");
    std::vector<std::string> arguments{"page",   design, "--schematic", c.schematic,
                                       "--page", c.page, "-o",          target.string()};
    if (!c.occurrence.empty()) {
      arguments.insert(arguments.end(), {"--occurrence", c.occurrence});
    }
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "KALMOR V1.15 COMPLETE: " + c.page + "  output to  " + target.string() + "\n");
    EXPECT_TRUE(ReadFileBytes(target) == ReadFileBytes(temp / c.exported)) << c.page;
  }

  const CommandResult bare =
      RunKalmor({"page", design, "--schematic", "ROOT", "--page", "PAGE2", "-o",
                 (temp / "bare.dxf").string(), "--no-frame", "--no-title-blocks"});
  EXPECT_EQ(bare.status, 0);
  EXPECT_LT(ReadFileBytes(temp / "bare.dxf").size(),
            ReadFileBytes(temp / "board_ROOT_PAGE2.dxf").size());
}

TEST_F(KalmorCliTest, PageWithoutOutputAndNoTerminalWritesNothing) {
  const std::string design = Write("board.json", kHierarchy);
  const CommandResult result =
      RunKalmor({"page", design, "--schematic", "ROOT", "--page", "PAGE1"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "kalmor: no file chosen; nothing written\n");
  EXPECT_THAT(Files(temp.path()), ElementsAre("board.json"));
}

TEST_F(KalmorCliTest, CheckCountsObjectsPerPage) {
  const std::string design = Write("board.json", kHierarchy);
  const CommandResult result = RunKalmor({"check", design});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "design BOARD: 2 schematics, 3 pages\n"
            "schematic ROOT: 2 pages\n"
            "  page PAGE1: 0 title blocks, 2 parts, 1 wire, 0 globals, 0 ports, "
            "0 off-page connectors, 1 bus entry, 0 graphics\n"
            "  page PAGE2: 0 title blocks, 0 parts, 0 wires, 0 globals, 0 ports, "
            "0 off-page connectors, 0 bus entries, 0 graphics\n"
            "schematic SUB: 1 page\n"
            "  page S1: 0 title blocks, 0 parts, 0 wires, 0 globals, 0 ports, "
            "0 off-page connectors, 0 bus entries, 1 graphic\n");

  const CommandResult noted = RunKalmor({"check", Write("n.json", WithPages({"a/b"}))});
  EXPECT_EQ(noted.status, 0);
  EXPECT_THAT(noted.out, HasSubstr("note: export refuses schematic \"S\", page \"a/b\": the page "
                                   "name holds a '/' (--raw-names takes it)\n"));
}

// `script` gives the command a terminal, so that the progress line shows.
TEST_F(KalmorCliTest, ProgressLineShowsOnATerminalOnly) {
  if (!fs::exists("/usr/bin/script")) {
    GTEST_SKIP() << "script(1) is not installed";
  }
  const std::string design = Write("board.json", kHierarchy);
  const std::string log = (temp / "typescript").string();
  const std::string command = std::string(KALMOR_CLI_PATH) + " export " + design;
  const std::string shell =
      "/usr/bin/script -qec '" + command + "' " + log + " > /dev/null 2>&1 < /dev/null";
  ASSERT_EQ(std::system(shell.c_str()), 0);
  const std::string screen = ReadFileBytes(log);
  EXPECT_THAT(screen, HasSubstr("\rpage 1 of 3: SUB / S1\x1b[K"));
  EXPECT_THAT(screen, HasSubstr("\rpage 3 of 3: ROOT / PAGE2\x1b[K"));
  // Cleared before the final message.
  EXPECT_THAT(screen, HasSubstr("\r\x1b[KKALMOR V1.15 COMPLETE: "));

  // Without a terminal the progress stays away.
  EXPECT_EQ(RunKalmor({"export", design}).err, "");
}

}  // namespace
}  // namespace kalmor::testing
