// A disk that fills up in the middle of a page: the export stops with an error that names the
// file, and the part of the page written before the failure stays on disk, as it was written.
// The file size limit of the process stands in for the full disk: a write beyond it fails
// (EFBIG) as a write to a full disk does (ENOSPC), after the bytes that still fit.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/run_kalmor.h"
#include "hardening/export_in_memory.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

constexpr rlim_t kDiskBytes = 100000;

// Files written by this process and by the processes it starts stop growing at `bytes` while
// the object lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &previous_);
    rlimit limit = previous_;
    limit.rlim_cur = bytes;
    // Beyond the limit the system would stop the process; ignored, the write fails instead.
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &previous_);
    std::signal(SIGXFSZ, previousHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit previous_{};
  void (*previousHandler_)(int) = SIG_DFL;
};

// Three pages; the second, a polygon of many points, is larger than the disk has room for.
std::string ThreePages() {
  std::string points;
  for (int i = 0; i < 5000; ++i) {
    points += (i == 0 ? "[" : ", [") + std::to_string(i) + ", " + std::to_string(i % 7) + "]";
  }
  return R"({"kalmor_design": 1, "name": "BOARD", "schematics": [{"name": "S", "pages": [
      {"name": "P1", "wires": [{"start": [0, 0], "end": [100, 0]}]},
      {"name": "P2", "graphics": [{"type": "polyline", "points": [)" +
         points + R"(]}]},
      {"name": "P3"}]}]})";
}

TEST(WriteFailureTest, ExportExitsThreeNamingTheFileAndLeavesWhatWasWritten) {
  const std::vector<std::string> whole =
      ExportPagesInMemory(*model::ReadDesignDocument(ThreePages(), "board.json"));
  ASSERT_GT(whole.at(1).size(), kDiskBytes);
  const TempDir temp;
  std::ofstream(temp / "board.json") << ThreePages();
  const fs::path out = temp / "out";
  fs::create_directory(out);
  CommandResult result;
  {
    const FileSizeLimit disk(kDiskBytes);
    // The command, not its parent, turns the signal of the limit into a write error.
    result = RunKalmor({"export", (temp / "board.json").string(), "-o", out.string()},
                       {.input = "", .closedOutput = false, .defaultSignals = true});
  }
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err,
            "kalmor: cannot write " + (out / "board_S_P2.dxf").string() + ": File too large\n");
  // The first page is whole, the second is cut where the disk was full, the third was never
  // begun.
  EXPECT_THAT(FileNames(out), ElementsAre("board_S_P1.dxf", "board_S_P2.dxf"));
  EXPECT_EQ(ReadFileBytes(out / "board_S_P1.dxf"), whole[0]);
  EXPECT_EQ(ReadFileBytes(out / "board_S_P2.dxf"), whole[1].substr(0, kDiskBytes));
}

}  // namespace
}  // namespace kalmor::test
