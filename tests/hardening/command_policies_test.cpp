// The command's policies around its files: which page file names it refuses before writing
// anything, outputs that are inputs, inputs that are not files, standard descriptors that are
// closed, a file size limit, a file name given on standard input, and messages that stay short
// whatever the names in a design.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/run_kalmor.h"
#include "support/paths.h"

namespace kalmor::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using Args = std::vector<std::string>;

// A design whose schematics hold the pages listed after each schematic's name.
std::string Design(const std::vector<Args>& schematics, const std::string& name = "B") {
  std::string json = R"({"kalmor_design": 1, "name": ")" + name + R"(", "schematics": [)";
  for (std::size_t s = 0; s < schematics.size(); ++s) {
    json +=
        (s == 0 ? "" : ", ") + std::string(R"({"name": ")") + schematics[s][0] + R"(", "pages": [)";
    for (std::size_t p = 1; p < schematics[s].size(); ++p) {
      json += (p == 1 ? "" : ", ") + std::string(R"({"name": ")") + schematics[s][p] + "\"}";
    }
    json += "]}";
  }
  return json + "]}";
}

class CommandPoliciesTest : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(temp / name, std::ios::binary) << text;
    return In(name);
  }
  std::string In(const std::string& name) const { return (temp / name).string(); }
  std::vector<std::string> Files(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(temp / folder)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  TempDir temp;
};

TEST_F(CommandPoliciesTest, FileNamesAreRefusedBeforeAnythingIsWritten) {
  const std::string longName(250, 'n');
  struct Case {
    std::string name;
    std::vector<Args> schematics;
    Args options;
    std::string message;  // one of the lines on standard error
  };
  const std::vector<Case> cases = {
      {"joined names collide",
       {{"A_B", "C"}, {"A", "B_C"}},
       {},
       "schematic \"A\", page \"B_C\": would be written to the same file as schematic \"A_B\", "
       "page \"C\", "},
      {"collisions are refused with raw names too",
       {{"A_B", "C"}, {"A", "B_C"}},
       {"--raw-names"},
       "would be written to the same file as"},
      {"a file name over 255 bytes",
       {{"S", "P1", longName}},
       {},
       "schematic \"S\", page \"" + std::string(30, 'n') + "..." + std::string(30, 'n') +
           "\": its file name would be 258 bytes long"},
      {"a raw name's final part over 255 bytes",
       {{"S", "P1", "sub/" + longName + longName}},
       {"--raw-names"},
       "its file name would be 504 bytes long, and the file system takes 255"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(temp / "out");
    fs::create_directories(temp / "out" / "o_S_sub");
    Args arguments = {"export", Write("o.json", Design(c.schematics)), "-o", In("out")};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(c.message));
    EXPECT_THAT(result.err, HasSubstr("kalmor: nothing written"));
    EXPECT_EQ(Files("out").size(), 1u) << "something was written";
  }
}

TEST_F(CommandPoliciesTest, AnOutputThatIsAnInputIsRefused) {
  const std::string design = Design({{"S", "P"}});
  const std::string dxf = " 0\nSECTION\n 2\nENTITIES\n 0\nENDSEC\n 0\nEOF\n";
  struct Case {
    std::string name;
    std::string input;  // the file that must stay as it is
    Args arguments;
  };
  const std::vector<Case> cases = {
      {"page over its design",
       "d.json",
       {"page", In("d.json"), "--schematic", "S", "--page", "P", "-o", In("d.json")}},
      {"page over a hard link to its design",
       "d.json",
       {"page", In("d.json"), "--schematic", "S", "--page", "P", "-o", In("hard.json")}},
      {"export whose page file is the design",
       "x_S_P.dxf",
       {"export", In("x_S_P.dxf"), "-o", In("x.dxf")}},
      {"render over its input", "r.dxf", {"render", In("r.dxf"), "-o", In("r.dxf")}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove(temp / "hard.json");
    Write("d.json", design);
    fs::create_hard_link(temp / "d.json", temp / "hard.json");
    Write("x_S_P.dxf", design);
    Write("r.dxf", dxf);
    const std::string before = ReadFileBytes(temp / c.input);
    const CommandResult result = RunKalmor(c.arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr(" is the input "));
    EXPECT_EQ(ReadFileBytes(temp / c.input), before);
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
  const std::string pipeCommand = "cat " + Write("p.json", Design({{"S", "P"}})) + " | " +
                                  KALMOR_CLI_PATH + " check /dev/stdin >/dev/null";
  EXPECT_EQ(std::system(pipeCommand.c_str()), 0);
}

TEST_F(CommandPoliciesTest, WithStandardOutputClosedTheMessageStaysOutOfTheFile) {
  const std::string design = Write("d.json", Design({{"S", "P"}}));
  const Args page = {"page", design, "--schematic", "S", "--page", "P", "-o"};
  Args toShown = page;
  toShown.push_back(In("shown.dxf"));
  Args toClosed = page;
  toClosed.push_back(In("closed.dxf"));
  ASSERT_EQ(RunKalmor(toShown).status, 0);
  EXPECT_EQ(RunKalmor(toClosed, {.input = "", .closedOutput = true}).status, 0);
  EXPECT_EQ(ReadFileBytes(temp / "closed.dxf"), ReadFileBytes(temp / "shown.dxf"));
}

TEST_F(CommandPoliciesTest, AFileSizeLimitIsAWriteErrorThatNamesTheFile) {
  std::string points;
  for (int i = 0; i < 3000; ++i) {
    points += (i == 0 ? "[" : ", [") + std::to_string(i) + ", 0]";
  }
  const std::string design =
      Write("big.json", R"({"kalmor_design": 1, "name": "B", "schematics": [{"name": "S", "pages": [
        {"name": "P", "graphics": [{"type": "polyline", "points": [)" +
                            points + "]}]}]}]}");
  rlimit previous{};
  getrlimit(RLIMIT_FSIZE, &previous);
  rlimit limit = previous;
  limit.rlim_cur = 50000;
  setrlimit(RLIMIT_FSIZE, &limit);
  const CommandResult result =
      RunKalmor({"page", design, "--schematic", "S", "--page", "P", "-o", In("p.dxf")},
                {.input = "", .closedOutput = false, .defaultSignals = true});
  setrlimit(RLIMIT_FSIZE, &previous);
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err, "kalmor: cannot write " + In("p.dxf") + ": File too large\n");
}

TEST_F(CommandPoliciesTest, PageTakesItsFileNameFromStandardInput) {
  const std::string design = Write("d.json", Design({{"S", "P"}}));
  const Args page = {"page", design, "--schematic", "S", "--page", "P"};
  const CommandResult named = RunKalmor(page, {.input = In("named") + "\n", .closedOutput = false});
  EXPECT_EQ(named.status, 0) << named.err;
  EXPECT_TRUE(fs::exists(temp / "named.dxf"));  // the default extension is added
  for (const std::string input : {"", "\n"}) {
    const CommandResult none = RunKalmor(page, {.input = input, .closedOutput = false});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err,
              "kalmor: no output file: give -o FILE, or the file name on standard input\n");
  }
}

TEST_F(CommandPoliciesTest, MessagesStayShortWhateverTheNames) {
  constexpr std::size_t kShort = 400;
  std::vector<Args> many;
  for (int i = 0; i < 30; ++i) {
    many.push_back({"SCHEMATIC" + std::to_string(i), "P"});
  }
  const std::string longName(100000, 'x');
  const std::string manyDesign = Write("many.json", Design(many));
  const std::string longDesign = Write("long.json", Design({{"S", "P"}}, longName));
  const std::string longPage = Write("page.json", Design({{"S", longName}}));

  const CommandResult wrongSchematic =
      RunKalmor({"page", manyDesign, "--schematic", "NONE", "--page", "P", "-o", In("x.dxf")});
  EXPECT_EQ(wrongSchematic.status, 2);
  EXPECT_THAT(wrongSchematic.err, HasSubstr("\"SCHEMATIC11\" and 18 more)\n"));

  const CommandResult wrongPage = RunKalmor(
      {"page", longPage, "--schematic", "S", "--page", longName + "y", "-o", In("x.dxf")});
  EXPECT_EQ(wrongPage.status, 2);
  EXPECT_THAT(wrongPage.err, HasSubstr("xxx...xxx"));

  fs::create_directory(temp / "out");
  const CommandResult exported = RunKalmor({"export", longDesign, "-o", In("out")});
  EXPECT_EQ(exported.status, 0) << exported.err;
  EXPECT_THAT(exported.out, HasSubstr("xxx...xxx"));

  for (const CommandResult* result : {&wrongSchematic, &wrongPage, &exported}) {
    EXPECT_LT(result->out.size() + result->err.size(), kShort);
  }
}

}  // namespace
}  // namespace kalmor::testing
