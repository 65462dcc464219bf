// The command's policies around its files: the page file names it refuses before writing
// anything, outputs that are inputs, inputs that are not files, a closed standard output, a file
// name given on standard input, and messages that stay short whatever the names in a design.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/run_kalmor.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using Args = std::vector<std::string>;

using CommandPoliciesTest = CommandTest;

TEST_F(CommandPoliciesTest, FileNamesAreRefusedBeforeAnythingIsWritten) {
  const std::string longName(250, 'n');
  struct Case {
    std::vector<Args> schematics;
    Args options;
    std::string message;  // one of the lines on standard error
  };
  const std::vector<Case> cases = {
      {{{"A_B", "C"}, {"A", "B_C"}},
       {},
       "schematic \"A\", page \"B_C\": would be written to the same file as schematic \"A_B\", "
       "page \"C\", "},
      {{{"A_B", "C"}, {"A", "B_C"}}, {"--raw-names"}, "would be written to the same file as"},
      {{{"S", "P1", longName}},
       {},
       "schematic \"S\", page \"" + std::string(30, 'n') + "..." + std::string(30, 'n') +
           "\": its file name would be 258 bytes long"},
      {{{"S", "P1", "sub/" + longName + longName}},
       {"--raw-names"},
       "its file name would be 504 bytes long, and the file system takes 255"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    fs::remove_all(temp / "out");
    fs::create_directories(temp / "out" / "o_S_sub");
    Args arguments = {"export", Write("o.json", PagesDocument(c.schematics)), "-o", In("out")};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(c.message));
    EXPECT_THAT(result.err, HasSubstr("kalmor: nothing written"));
    EXPECT_EQ(std::distance(fs::directory_iterator(temp / "out"), {}), 1) << "a file was written";
  }
}

TEST_F(CommandPoliciesTest, AnOutputThatIsAnInputIsRefused) {
  const Args page = {"page", In("d.json"), "--schematic", "S", "--page", "P", "-o"};
  const std::pair<std::string, Args> cases[] = {
      // the input, and the command
      {"d.json", {"-o", In("d.json")}},
      {"d.json", {"-o", In("hard.json")}},
      {"x_S_P.dxf", {"export", In("x_S_P.dxf"), "-o", In("x.dxf")}},
      {"r.dxf", {"render", In("r.dxf"), "-o", In("r.dxf")}},
  };
  for (const auto& [input, command] : cases) {
    fs::remove(temp / "hard.json");
    Write("d.json", PagesDocument({{"S", "P"}}));
    fs::create_hard_link(temp / "d.json", temp / "hard.json");
    Write("x_S_P.dxf", PagesDocument({{"S", "P"}}));
    Write("r.dxf", " 0\nSECTION\n 2\nENTITIES\n 0\nENDSEC\n 0\nEOF\n");
    const std::string before = ReadFileBytes(temp / input);
    Args arguments = command;
    if (command[0] == "-o") {
      arguments = page;
      arguments.push_back(command[1]);
    }
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 2) << input;
    EXPECT_THAT(result.err, HasSubstr(" is the input "));
    EXPECT_EQ(ReadFileBytes(temp / input), before);
  }
}

TEST_F(CommandPoliciesTest, InputsMustBeFilesOrPipesOfBoundedSize) {
  fs::create_directory(temp / "folder");
  { std::ofstream huge(temp / "huge.json"); }
  fs::resize_file(temp / "huge.json", (std::uintmax_t{2} << 30) + 1);  // sparse: takes no room
  const std::pair<std::string, std::string> cases[] = {
      {"/dev/zero", "cannot read /dev/zero: it is a device; only files and pipes are read"},
      {In("folder"), "cannot read " + In("folder") + ": it is a directory"},
      {In("huge.json"), "cannot read " + In("huge.json") + ": it is larger than the 2 GiB"},
  };
  for (const auto& [path, message] : cases) {
    for (const std::string command : {"check", "render"}) {
      SCOPED_TRACE(command + " " + path);
      const Args arguments =
          command == "check" ? Args{"check", path} : Args{"render", path, "-o", In("r.svg")};
      const CommandResult result = RunKalmor(arguments);
      EXPECT_EQ(result.status, 1);
      EXPECT_THAT(result.err, HasSubstr(message));
    }
  }
  // A pipe has no size to check beforehand; it is read.
  const std::string pipeCommand = "cat " + Write("p.json", PagesDocument({{"S", "P"}})) + " | " +
                                  KALMOR_CLI_PATH + " check /dev/stdin >/dev/null";
  EXPECT_EQ(std::system(pipeCommand.c_str()), 0);
}

TEST_F(CommandPoliciesTest, PageWithStandardOutputClosedOrItsFileNameOnStandardInput) {
  const Args page = {
      "page", Write("d.json", PagesDocument({{"S", "P"}})), "--schematic", "S", "--page", "P"};
  const auto run = [&](const std::string& output, const CommandSetting& setting) {
    Args arguments = page;
    if (!output.empty()) {
      arguments.insert(arguments.end(), {"-o", In(output)});
    }
    return RunKalmor(arguments, setting);
  };
  ASSERT_EQ(run("shown.dxf", {}).status, 0);
  // The file must not take the closed descriptor 1 and receive the completion message.
  EXPECT_EQ(run("closed.dxf", {.input = "", .closedOutput = true}).status, 0);
  EXPECT_EQ(ReadFileBytes(temp / "closed.dxf"), ReadFileBytes(temp / "shown.dxf"));
  EXPECT_EQ(run("", {.input = In("named") + "\n", .closedOutput = false}).status, 0);
  EXPECT_EQ(ReadFileBytes(temp / "named.dxf"), ReadFileBytes(temp / "shown.dxf"));
  for (const std::string input : {"", "\n"}) {
    const CommandResult none = run("", {.input = input, .closedOutput = false});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err,
              "kalmor: no output file: give -o FILE, or the file name on standard input\n");
  }
}

TEST_F(CommandPoliciesTest, MessagesStayShortWhateverTheNames) {
  std::vector<Args> many;
  for (int i = 0; i < 30; ++i) {
    many.push_back({"SCHEMATIC" + std::to_string(i), "P"});
  }
  const std::string nul = Write("nul.json", PagesDocument({{"A\\u0000B", "P"}}));
  const std::string longName(100000, 'x');
  const std::string longPage = Write("page.json", PagesDocument({{"S", longName}}));
  fs::create_directory(temp / "out");
  const std::pair<Args, std::string> cases[] = {
      // the command, and a part of its message
      {{"page", Write("many.json", PagesDocument(many)), "--schematic", "NONE", "--page", "P", "-o",
        In("x.dxf")},
       "\"SCHEMATIC11\" and 18 more)\n"},
      {{"page", longPage, "--schematic", "S", "--page", longName + "y", "-o", In("x.dxf")},
       "has no page \"xxx"},
      {{"export", Write("long.json", PagesDocument({{"S", "P"}}, "", longName)), "-o", In("out")},
       "COMPLETE: xxx"},
      {{"page", nul, "--schematic", "NONE", "--page", "P", "-o", In("x.dxf")},
       "(it has: \"A\\x00B\")\n"},
  };
  for (const auto& [arguments, message] : cases) {
    const CommandResult result = RunKalmor(arguments);
    EXPECT_THAT(result.out + result.err, HasSubstr(message));
    EXPECT_LT(result.out.size() + result.err.size(), 400u) << message;
  }
}

}  // namespace
}  // namespace kalmor::test
