// What sits at an output path: links are not followed, named pipes and sockets are refused,
// devices are written. A design export, which holds every page file until it reports completion,
// still completes when the process runs short of descriptors.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "dxf/output_file.h"
#include "hardening/export_in_memory.h"
#include "kalmor/export.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;

TEST(OutputTargetTest, LinksPipesAndSocketsAreRefusedDevicesWritten) {
  const TempDir temp;
  std::ofstream(temp / "kept") << "kept";
  fs::create_symlink(temp / "victim", temp / "dangling");
  fs::create_symlink(temp / "kept", temp / "link");
  mkfifo((temp / "fifo").c_str(), 0600);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (temp / "socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

  const std::string link = "it is a symbolic link, and links are not followed";
  const std::pair<std::string, std::string> cases[] = {
      {(temp / "dangling").string(), link},
      {(temp / "link").string(), link},
      {(temp / "fifo").string(), "it is a named pipe, not a file"},
      {(temp / "socket").string(), "it is a socket, not a file"},
      {"/dev/null", ""},
  };
  for (const auto& [path, reason] : cases) {
    try {
      OutputFile file(path);
      file.Write("page");
      file.Close();
      EXPECT_EQ(reason, "") << path << " was written";
    } catch (const FileError& error) {
      EXPECT_EQ(error.reason(), reason) << path;
    }
  }
  close(listener);
  EXPECT_FALSE(fs::exists(temp / "victim"));
  EXPECT_EQ(ReadFileBytes(temp / "kept"), "kept");
}

TEST(OutputTargetTest, ANulInThePathKeepsTheReasonInTheMessage) {
  const FileError error(std::string("a\0b.dxf", 7), "the name holds a NUL character");
  EXPECT_EQ(std::string(error.what()), "cannot write a\\x00b.dxf: the name holds a NUL character");
}

TEST(HeldPagesTest, MorePagesThanDescriptorsAreAllWritten) {
  std::vector<std::string> pages = {"S"};
  for (int i = 0; i < 40; ++i) {
    pages.push_back("P" + std::to_string(i));
  }
  const auto design = model::ReadDesignDocument(PagesDocument({pages}), "pages.json");
  const std::vector<std::string> expected = ExportPagesInMemory(*design);
  const TempDir temp;
  rlimit previous{};
  getrlimit(RLIMIT_NOFILE, &previous);
  int highest = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    highest = std::max(highest, std::stoi(entry.path().filename().string()));
  }
  rlimit few = previous;
  few.rlim_cur = static_cast<rlim_t>(highest) + 8;
  setrlimit(RLIMIT_NOFILE, &few);
  DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1);
  setrlimit(RLIMIT_NOFILE, &previous);
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(ReadFileBytes(temp / ("b_S_P" + std::to_string(i) + ".dxf")), expected[i]) << i;
  }
}

}  // namespace
}  // namespace kalmor::test
