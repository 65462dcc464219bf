// An export interrupted in the middle of a page: the cut page file is removed, the pages
// completed before it stay and are named, and the status tells which signal ended it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "cli/run_kalmor.h"
#include "dxf/skeleton.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;

// P2 is a polygon of a million points, some 65 MB of DXF: long enough to be caught writing.
std::string ThreePagesWithALongOne() {
  std::string points;
  points.reserve(20'000'000);
  for (int i = 0; i < 1'000'000; ++i) {
    points +=
        (i == 0 ? "[" : ", [") + std::to_string(i % 5000) + ", " + std::to_string(i % 7) + "]";
  }
  return R"({"kalmor_design": 1, "name": "B", "schematics": [{"name": "S", "pages": [
      {"name": "P1"}, {"name": "P2", "graphics": [{"type": "polyline", "points": [)" +
         points + R"(]}]}, {"name": "P3"}]}]})";
}

bool EndsComplete(const fs::path& path) {
  const std::string bytes = ReadFileBytes(path);
  return bytes.size() >= kDxfFileEnd.size() &&
         bytes.compare(bytes.size() - kDxfFileEnd.size(), kDxfFileEnd.size(), kDxfFileEnd) == 0;
}

TEST(InterruptionTest, TheCutPageIsRemovedAndTheCompletedOnesNamed) {
  const TempDir temp;
  std::ofstream(temp / "b.json") << ThreePagesWithALongOne();
  const fs::path out = temp / "out";
  for (const auto& [signal, status] : {std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}}) {
    SCOPED_TRACE(status);
    fs::remove_all(out);
    fs::create_directory(out);
    KalmorProcess export_({"export", (temp / "b.json").string(), "-o", out.string()},
                          {.input = "", .closedOutput = false, .defaultSignals = true});
    // Stopped once the long page is begun, so that it is caught before its end.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::error_code error;
    while (fs::file_size(out / "b_S_P2.dxf", error) == 0 || error) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the long page never began";
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(export_.pid(), SIGSTOP);
    if (EndsComplete(out / "b_S_P2.dxf")) {
      GTEST_SKIP() << "the long page was written before it could be interrupted";
    }
    kill(export_.pid(), signal);
    kill(export_.pid(), SIGCONT);
    const CommandResult result = export_.Wait();

    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.err, "kalmor: interrupted while writing " + (out / "b_S_P2.dxf").string() +
                              ", which was removed; page 1 of 3 was completed (" +
                              (out / "b_S_P1.dxf").string() + ")\n");
    EXPECT_TRUE(EndsComplete(out / "b_S_P1.dxf"));
    EXPECT_FALSE(fs::exists(out / "b_S_P2.dxf"));
    EXPECT_FALSE(fs::exists(out / "b_S_P3.dxf"));
  }
}

}  // namespace
}  // namespace kalmor::test
