// The kalmor command run as a process, on design documents and KiCad schematics, and the names
// of pages it refuses to write.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/files.h"
#include "cli/run_kalmor.h"
#include "cli/unusable_names.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Args = std::vector<std::string>;

class KalmorCliTest : public CommandTest {
 protected:
  std::string Hierarchy() { return Write("board.json", HierarchyDocument()); }
};

// tests/golden/NAME holds the pages of examples/NAME.json, and tests/golden/kicad-NAME those of
// KiCad's demo NAME.kicad_sch (scripts/regen-golden).
TEST_F(KalmorCliTest, ExamplesAndDemosMatchTheGoldenFiles) {
  int examples = 0;
  int demos = 0;
  for (const auto& golden : fs::directory_iterator(SourceDir() / "tests" / "golden")) {
    const std::string name = golden.path().filename().string();
    if (!golden.is_directory()) {
      continue;
    }
    SCOPED_TRACE(name);
    fs::path design = SourceDir() / "examples" / (name + ".json");
    if (name.starts_with("kicad-")) {
      for (const auto& entry : fs::recursive_directory_iterator("/usr/share/kicad/demos")) {
        if (entry.path().filename() == name.substr(6) + ".kicad_sch") {
          design = entry.path();
        }
      }
      ASSERT_EQ(design.extension(), ".kicad_sch") << "scripts/setup installs kicad-demos";
      ++demos;
    } else {
      ++examples;
    }
    fs::create_directory(temp / name);
    const CommandResult result =
        RunKalmor({"export", design.string(), "-o", In(name + "/" + design.stem().string())});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("KALMOR V1.15 COMPLETE: "));
    EXPECT_EQ(result.err, "");
    ASSERT_EQ(FileNames(temp / name), FileNames(golden.path()));
    for (const std::string& file : FileNames(golden.path())) {
      EXPECT_TRUE(ReadFileBytes(temp / name / file) == ReadFileBytes(golden.path() / file))
          << file << " differs from its golden file";
    }
  }
  int designs = 0;  // every example has its golden pages
  for (const auto& entry : fs::directory_iterator(SourceDir() / "examples")) {
    designs += entry.path().extension() == ".json";
  }
  EXPECT_EQ(std::make_pair(examples, demos), std::make_pair(designs, 2));
}

TEST_F(KalmorCliTest, ExportWritesBesideTheDesignOrIntoAFolder) {
  const std::string design = Hierarchy();
  fs::create_directory(temp / "folder");
  for (const auto& [output, stem] : {std::pair<Args, std::string>{{}, In("board")},
                                     {{"-o", In("folder")}, In("folder/board")},
                                     {{"-o", In("folder/x.DXF")}, In("folder/x")}}) {
    Args arguments{"export", design};
    arguments.insert(arguments.end(), output.begin(), output.end());
    const CommandResult result = RunKalmor(arguments);
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "KALMOR V1.15 COMPLETE: H has been output to " + stem +
                              "_<SchematicName>_<PageName>.dxf\n");
    for (const char* page : {"_SUB_S1.dxf", "_LEAF_L1.dxf", "_ROOT_R2.dxf", "_Sub_S1.dxf"}) {
      EXPECT_TRUE(fs::exists(stem + page)) << stem + page;
    }
  }
}

TEST_F(KalmorCliTest, UsageErrorsExitTwoAndWriteNothing) {
  const std::string d = Hierarchy();
  for (const Args& arguments : std::vector<Args>{
           {},
           {"frobnicate"},
           {"export"},
           {"export", d, "--bogus"},
           {"page", d, "--page", "R1"},
           {"render", "x.dxf"},
           {"page", d, "--schematic", "NOPE", "--page", "R1", "-o", In("x.dxf")},
           {"page", d, "--schematic", "ROOT", "--page", "NOPE", "-o", In("x.dxf")},
           {"page", d, "--schematic", "SUB", "--page", "S1", "--occurrence", "/NOPE"},
           {"page", d, "--schematic", "ROOT", "--page", "R1", "--occurrence", "/BLK1"},
           {"export", Write("g.html", HierarchyDocument()), "--html"}}) {  // the gallery is g.html
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << ::testing::PrintToString(arguments);
  }
  EXPECT_THAT(FileNames(temp.path()), ElementsAre("board.json", "g.html"));

  const CommandResult version = RunKalmor({"--version"});
  EXPECT_EQ(std::tie(version.status, version.out),
            std::make_tuple(0, std::string("kalmor 1.15.0\n")));
  for (const auto& [command, mentioned] : {std::pair{"export", "--raw-names"},
                                           {"page", "--occurrence"},
                                           {"check", "DESIGN"},
                                           {"render", "--output"}}) {
    const CommandResult help = RunKalmor({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_THAT(help.out, HasSubstr(mentioned)) << command;
  }
}

// A property's text is measured while the design loads; a symbol's text when its page is
// written, so its font is looked for before the first page file is opened.
TEST_F(KalmorCliTest, NoUsableFontExitsFourAndWritesNothing) {
  const std::string noFonts = Write("no-fonts.conf", "<?xml version=\"1.0\"?><fontconfig/>\n");
  const std::string property = Write("property.json", R"({ "kalmor_design": 1, "name": "B",
    "schematics": [ { "name": "S", "pages": [ { "name": "P", "wires": [ { "start": [0, 0],
      "end": [10, 0], "properties": [ { "name": "Net", "value": "N1" } ] } ] } ] } ] })");
  const std::string symbol = Write("symbol.json", R"({ "kalmor_design": 1, "name": "B",
    "symbols": { "T": { "vectors": [ { "type": "text", "rect": [0, 0, 9, 9], "text": "T" } ] } },
    "schematics": [ { "name": "S", "pages": [ { "name": "PLAIN" },
      { "name": "P", "parts": [ { "id": "U1", "symbol": "T" } ] } ] } ] })");
  ASSERT_EQ(::setenv("FONTCONFIG_FILE", noFonts.c_str(), 1), 0);
  for (const std::string& design : {property, symbol}) {
    for (const Args& arguments : {Args{"export", design}, Args{"page", design, "--schematic", "S",
                                                               "--page", "P", "-o", In("p.dxf")}}) {
      const CommandResult result = RunKalmor(arguments);
      EXPECT_EQ(result.status, 4) << ::testing::PrintToString(arguments);
      EXPECT_THAT(result.err, HasSubstr("no font file found"));
    }
  }
  ::unsetenv("FONTCONFIG_FILE");
  EXPECT_THAT(FileNames(temp.path()), ElementsAre("no-fonts.conf", "property.json", "symbol.json"));
}

TEST_F(KalmorCliTest, UnusableNamesAreRefusedUnlessTakenRaw) {
  const CommandResult refused = RunKalmor(
      {"export", Write("refused.json", PagesDocument({{"S", "OK", "../up", "a\\\\b", "", "."}}))});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.err,
            "kalmor: schematic \"S\", page \"../up\": the page name holds a '/'\n"
            "kalmor: schematic \"S\", page \"a\\b\": the page name holds a '\\'\n"
            "kalmor: schematic \"S\", page \"\": the page name is empty\n"
            "kalmor: schematic \"S\", page \".\": the page name is \".\"\n"
            "kalmor: nothing written; --raw-names takes the names as they are\n");
  EXPECT_THAT(FileNames(temp.path()), ElementsAre("refused.json"));

  const std::string raw = Write("raw.json", PagesDocument({{"S", "a\\\\b", "tab\\there"}}));
  EXPECT_EQ(RunKalmor({"export", raw, "--raw-names"}).status, 0);
  EXPECT_TRUE(fs::exists(temp / "raw_S_a\\b.dxf"));
  EXPECT_TRUE(fs::exists(temp / "raw_S_tab\there.dxf"));
}

TEST_F(KalmorCliTest, PageWritesWhatExportWrites) {
  const std::string design = Hierarchy();
  ASSERT_EQ(RunKalmor({"export", design}).status, 0);
  for (const Args& page : {Args{"ROOT", "R1", "board_ROOT_R1.dxf"},
                           Args{"SUB", "S1", "board_SUB_S1.dxf", "--occurrence", "/BLK1"}}) {
    Args arguments{"page", design, "--schematic", page[0], "--page", page[1], "-o", In("p.dxf")};
    arguments.insert(arguments.end(), page.begin() + 3, page.end());
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "KALMOR V1.15 COMPLETE: " + page[1] + "  output to  " + In("p.dxf") + "\n");
    EXPECT_TRUE(ReadFileBytes(In("p.dxf")) == ReadFileBytes(In(page[2]))) << page[1];
  }

  ASSERT_EQ(RunKalmor({"page", design, "--schematic", "ROOT", "--page", "R2", "-o", In("bare.dxf"),
                       "--no-frame", "--no-title-blocks"})
                .status,
            0);
  EXPECT_LT(ReadFileBytes(In("bare.dxf")).size(), ReadFileBytes(In("board_ROOT_R2.dxf")).size());
}

TEST_F(KalmorCliTest, CheckCountsObjectsPerPage) {
  const CommandResult result = RunKalmor({"check", Hierarchy()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("design H: 5 schematics, 7 pages\n"
                                     "schematic OTHER: 1 page\n"
                                     "  page O1: 0 title blocks, 0 parts, 0 wires, 0 globals, "
                                     "0 ports, 0 off-page connectors, 0 bus entries, 0 graphics\n"
                                     "schematic ROOT: 2 pages\n"
                                     "  page R1: 0 title blocks, 2 parts, 1 wire, 0 globals, "
                                     "0 ports, 0 off-page connectors, 1 bus entry, 0 graphics\n"));
  EXPECT_THAT(result.out, HasSubstr("  page S1: 1 title block, 1 part, 1 wire, 0 globals, 1 port, "
                                    "0 off-page connectors, 0 bus entries, 0 graphics\n"));

  const CommandResult noted = RunKalmor({"check", Write("n.json", PagesDocument({{"S", "a/b"}}))});
  EXPECT_THAT(noted.out, HasSubstr("note: export refuses schematic \"S\", page \"a/b\": the page "
                                   "name holds a '/' (--raw-names takes it)\n"));
}

TEST_F(KalmorCliTest, RenderDrawsOurFilesAndRefusesOthers) {
  const std::string design = Hierarchy();
  ASSERT_EQ(RunKalmor({"export", design, "--html"}).status, 0);
  EXPECT_THAT(ReadFileBytes(In("board.html")), HasSubstr("board_SUB_S1.svg"));
  const CommandResult rendered = RunKalmor({"render", In("board_SUB_S1.dxf"), "-o", In("r.svg")});
  EXPECT_EQ(rendered.status, 0) << rendered.err;
  EXPECT_THAT(ReadFileBytes(In("r.svg")), HasSubstr("<svg"));
  // --html drew each page beside its file, as render does.
  EXPECT_TRUE(ReadFileBytes(In("r.svg")) == ReadFileBytes(In("board_SUB_S1.svg")));
  EXPECT_TRUE(fs::exists(In("board_ROOT_R2.svg")));

  const CommandResult bad = RunKalmor({"render", Write("bad.dxf", "junk\n"), "-o", In("b.svg")});
  EXPECT_EQ(bad.status, 1);
  EXPECT_THAT(bad.err, HasSubstr("kalmor: " + In("bad.dxf") + ":1: "));
  EXPECT_EQ(RunKalmor({"render", In("none.dxf"), "-o", In("b.svg")}).status, 1);
  EXPECT_EQ(RunKalmor({"render", In("board_SUB_S1.dxf"), "-o", In("no/b.svg")}).status, 3);
  EXPECT_FALSE(fs::exists(In("b.svg")));
}

// script(1) gives the command a terminal, on which the progress line shows.
TEST_F(KalmorCliTest, ProgressLineShowsOnATerminalOnly) {
  if (!fs::exists("/usr/bin/script")) {
    GTEST_SKIP() << "script(1) is not installed";
  }
  const std::string design = Hierarchy();
  const std::string shell = "/usr/bin/script -qec '" + std::string(KALMOR_CLI_PATH) + " export " +
                            design + "' " + In("typescript") + " >/dev/null 2>&1 </dev/null";
  ASSERT_EQ(std::system(shell.c_str()), 0);
  const std::string screen = ReadFileBytes(In("typescript"));
  EXPECT_THAT(screen, HasSubstr("\rpage 1 of 7: SUB / S1\x1b[K"));
  EXPECT_THAT(screen, HasSubstr("\rpage 7 of 7: Sub / S1\x1b[K"));
  EXPECT_THAT(screen, HasSubstr("\r\x1b[KKALMOR V1.15 COMPLETE: "));  // cleared first

  EXPECT_EQ(RunKalmor({"export", design}).err, "");
}

// The outputs are looked up only where their folder holds their name: a link or a second name
// of the input among them must still be found, and the first one in order named.
TEST(RefuseSameFilesTest, FindsTheInputUnderAnyNameInAnyFolder) {
  const TempDir temp;
  const std::string input = (temp / "in.json").string();
  std::ofstream(input) << "{}";
  fs::create_directories(temp / "a");
  fs::create_directories(temp / "b");
  std::ofstream(temp / "a/other.dxf") << "other";
  fs::create_hard_link(input, temp / "a/hard.dxf");
  fs::create_symlink(input, temp / "b/link.dxf");
  const FileIdentity identity = *cli::IdentityOf(input);
  const auto at = [&](const std::string& name) { return (temp / name).string(); };

  const struct {
    std::vector<std::string> outputs;
    std::string refused;  // empty when none is the input
  } cases[] = {
      {{at("a/new.dxf"), at("b/new.dxf"), at("a/other.dxf")}, ""},
      {{at("a/new.dxf"), at("a/other.dxf"), at("a/hard.dxf")}, at("a/hard.dxf")},
      {{at("a/new.dxf"), at("b/link.dxf"), at("a/hard.dxf")}, at("b/link.dxf")},
      {{at("a/new.dxf"), at("a/../in.json")}, at("a/../in.json")},
      {{at("missing/x.dxf"), input}, input},
  };
  for (const auto& c : cases) {
    if (c.refused.empty()) {
      EXPECT_NO_THROW(cli::RefuseSameFiles(c.outputs, identity, input));
      continue;
    }
    try {
      cli::RefuseSameFiles(c.outputs, identity, input);
      ADD_FAILURE() << c.refused << " was not refused";
    } catch (const cli::UsageError& error) {
      EXPECT_THAT(error.what(), HasSubstr("the output " + c.refused + " is the input"));
    }
  }
}

// KiCad schematics given to the commands other than export, and what a bad or newer file does
// to the exit status, the messages and the files.

std::string Newer() {
  return (SourceDir() / "tests/kicad/data/newer/newer.kicad_sch").string();
}

TEST(KiCadCli, CheckAndPageTakeKiCadSchematics) {
  const CommandResult check = RunKalmor({"check", Newer()});
  ASSERT_EQ(check.status, 0) << check.err;
  EXPECT_THAT(check.out, StartsWith("design newer: 2 schematics, 2 pages\n"
                                    "schematic newer: 1 page\n"
                                    "  page 1: 1 title block, 5 parts, 3 wires, 2 globals,"));

  const TempDir temp;
  const std::string page = (temp / "b.dxf").string();
  const CommandResult written = RunKalmor({"page", Newer(), "--schematic", "channel", "--page", "2",
                                           "--occurrence", "/CH_B", "-o", page});
  ASSERT_EQ(written.status, 0) << written.err;
  const std::string bytes = ReadFileBytes(page);
  EXPECT_THAT(bytes, HasSubstr("\r\nC201\r\n"));
  EXPECT_THAT(bytes, HasSubstr("\r\nSheet: /CH_B/\r\n"));
  EXPECT_THAT(bytes, ::testing::Not(HasSubstr("C101")));
}

// The reader's test has the messages of every kind of bad file; any of them stops the command.
TEST(KiCadCli, ABadFileStopsEverythingWithItsPlace) {
  const TempDir temp;
  const fs::path design = temp / "bad.kicad_sch";
  std::ofstream(design, std::ios::binary)
      << "(kicad_sch (version 20211014) (sheet (at 0 0) (size 10 10) (property \"Sheetname\" "
         "\"A\" (id 0)) (property \"Sheetfile\" \"gone.kicad_sch\" (id 1))))";
  const fs::path out = temp / "out";
  fs::create_directories(out);
  for (const char* command : {"export", "convert"}) {
    const CommandResult result =
        RunKalmor({command, design.string(), "-o", (out / "d.json").string()});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.err, StartsWith("kalmor: " + design.string() +
                                       ":1:94: cannot read the sheet file \"gone.kicad_sch\": "));
    EXPECT_TRUE(fs::is_empty(out)) << command;
  }
}

TEST(KiCadCli, NewerVersionsExportWithOneWarning) {
  const TempDir temp;
  const fs::path design = temp / "future.kicad_sch";
  std::ofstream(design) << "(kicad_sch (version 20991231) (generator \"eeschema\")\n"
                           "  (wire (pts (xy 0 0) (xy 2.54 0))))";
  const CommandResult result =
      RunKalmor({"export", design.string(), "-o", (temp / "f.dxf").string()});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "kalmor: " + design.string() +
                            ":1:21: warning: file version 20991231 is newer than this reader "
                            "knows (20250114); what it does not know is left out\n");
  EXPECT_TRUE(fs::exists(temp / "f_future_1.dxf"));
}

TEST(KiCadCli, ConvertNeedsAnOutputItCanWrite) {
  EXPECT_EQ(RunKalmor({"convert", Newer()}).status, 2);
  const CommandResult result = RunKalmor({"convert", Newer(), "-o", "/nonexistent-folder/d.json"});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("/nonexistent-folder/d.json"));
}

}  // namespace
}  // namespace kalmor::test

namespace kalmor::cli {
namespace {

using namespace std::string_literals;

using namespace std::string_literals;

constexpr char kNames[] = R"({ "kalmor_design": 1, "name": "B", "schematics": [
  { "name": "A/B", "pages": [ { "name": "" } ] },
  { "name": "FINE", "pages": [ { "name": "Page 1.a" }, { "name": "../up" } ] } ] })";

TEST(UnusableNamesTest, FoundInExportOrderWithTheirReasons) {
  const auto design = model::ReadDesignDocument(kNames, "names.json");
  const std::vector<UnusableName> found = FindUnusableNames(cli::PlanPageFiles(*design, "b"));
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].schematicName, "A/B");
  EXPECT_EQ(found[0].reason, "the schematic name holds a '/'");
  EXPECT_EQ(found[1].reason, "the page name is empty");
  EXPECT_EQ(found[2].pageName, "../up");
  EXPECT_EQ(found[2].reason, "the page name holds a '/'");
}

TEST(UnusableNamesTest, UnusableNames) {
  for (const char* usable : {"PAGE1", "Page 1", "a.b", "...", "Ω-sheet", "x:y"}) {
    EXPECT_FALSE(UnusableNameReason(usable).has_value()) << usable;
  }
  for (const std::string& unusable :
       {""s, "."s, ".."s, "a/b"s, "a\\b"s, "tab\there"s, "del\x7f"s, "nul\0"s, "\x1b[2J"s}) {
    EXPECT_TRUE(UnusableNameReason(unusable).has_value()) << unusable;
  }
}

}  // namespace
}  // namespace kalmor::cli
