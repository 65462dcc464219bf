// The kalmor command given KiCad schematics: the commands other than export, and
// what a bad or newer file does to the exit status, the messages and the files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/run_kalmor.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

TEST(KiCadCli, BadFilesStopEverythingWithTheirPlace) {
  const TempDir temp;
  struct Case {
    std::string text;
    std::string message;
  };
  const Case cases[] = {
      {"(kicad_sch (version 20211014)\n  (symbol (lib_id \"x\") (at 1 2",
       ":2:31: the file ends inside the list (at ...) opened at 2:24\n"},
      {"EESchema Schematic File Version 4\n", ":1:1: a schematic of KiCad 5 or older; "},
      {"(kicad_sch (version 20211014) (sheet (at 0 0) (size 10 10) (property \"Sheetname\" "
       "\"A\" (id 0)) (property \"Sheetfile\" \"gone.kicad_sch\" (id 1))))",
       ":1:94: cannot read the sheet file \"gone.kicad_sch\": "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const fs::path design = temp / "bad.kicad_sch";
    std::ofstream(design, std::ios::binary) << c.text;
    const fs::path out = temp / "out";
    fs::create_directories(out);
    for (const char* command : {"export", "convert"}) {
      const CommandResult result =
          RunKalmor({command, design.string(), "-o", (out / "d.json").string()});
      EXPECT_EQ(result.status, 1);
      EXPECT_THAT(result.err, StartsWith("kalmor: " + design.string() + c.message));
      EXPECT_TRUE(fs::is_empty(out));
    }
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
