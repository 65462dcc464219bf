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
