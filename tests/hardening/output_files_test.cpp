// What sits at an output path: links are not followed and named pipes and sockets are refused,
// while devices are written; a design export holds every page file until it reports completion,
// and still completes when the process runs short of descriptors.

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "dxf/output_file.h"
#include "hardening/export_in_memory.h"
#include "kalmor/export.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/paths.h"

namespace kalmor::testing {
namespace {

namespace fs = std::filesystem;

// Makes a Unix socket bound at `path`, left open while the test runs.
int BindSocket(const std::string& path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  return fd;
}

TEST(OutputTargetTest, LinksPipesAndSocketsAreRefusedDevicesWritten) {
  const TempDir temp;
  const std::string victim = (temp / "victim").string();
  struct Case {
    std::string name;
    std::function<std::string()> make;  // makes the target, gives its path
    std::string reason;                 // empty: written
  };
  const std::vector<Case> cases = {
      {"link to a missing file",
       [&] {
         fs::create_symlink(victim, temp / "dangling.dxf");
         return (temp / "dangling.dxf").string();
       },
       "it is a symbolic link, and links are not followed"},
      {"link to an existing file",
       [&] {
         std::ofstream(temp / "kept") << "kept";
         fs::create_symlink(temp / "kept", temp / "link.dxf");
         return (temp / "link.dxf").string();
       },
       "it is a symbolic link, and links are not followed"},
      {"named pipe with no reader",
       [&] {
         mkfifo((temp / "fifo.dxf").c_str(), 0600);
         return (temp / "fifo.dxf").string();
       },
       "it is a named pipe, not a file"},
      {"socket",
       [&] {
         BindSocket((temp / "socket.dxf").string());
         return (temp / "socket.dxf").string();
       },
       "it is a socket, not a file"},
      {"device", [] { return std::string("/dev/null"); }, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = c.make();
    try {
      OutputFile file(path);
      file.Write("page");
      file.Close();
      EXPECT_EQ(c.reason, "") << "written";
    } catch (const FileError& error) {
      EXPECT_EQ(error.reason(), c.reason);
      EXPECT_EQ(error.path(), path);
    }
  }
  EXPECT_FALSE(fs::exists(victim));
  EXPECT_EQ(ReadFileBytes(temp / "kept"), "kept");
}

TEST(OutputTargetTest, ANulInThePathKeepsTheReasonInTheMessage) {
  const FileError error(std::string("out/a\0b.dxf", 11), "the name holds a NUL character");
  EXPECT_EQ(std::string(error.what()),
            "cannot write out/a\\x00b.dxf: the name holds a NUL character");
}

std::unique_ptr<model::Design> PagesNamed(int count) {
  std::string pages;
  for (int i = 0; i < count; ++i) {
    pages += (i == 0 ? "" : ", ") + std::string(R"({"name": "P)") + std::to_string(i) + "\"}";
  }
  return model::ReadDesignDocument(
      R"({"kalmor_design": 1, "name": "B", "schematics": [{"name": "S", "pages": [)" + pages +
          "]}]}",
      "pages.json");
}

// Tries, when the completion message comes, to take the lock of every page file announced.
class LockProbe final : public UserInterface {
 public:
  void MessageBox(std::string_view, std::string_view, unsigned) override {
    for (const std::string& file : files_) {
      const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
      const bool taken = fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0;
      lockable_ += taken ? 1 : 0;
      if (fd >= 0) {
        close(fd);
      }
    }
    ++messages_;
  }
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings&) override { return {}; }
  bool AppendToSessionLog(std::string_view) override { return false; }
  bool WantsExportProgress() const override { return true; }
  void ShowExportProgress(const ExportProgress& progress) override {
    files_.push_back(progress.fileName);
  }

  std::vector<std::string> files_;
  int lockable_ = 0;
  int messages_ = 0;
};

TEST(HeldPagesTest, EveryPageFileIsLockedUntilTheCompletionMessage) {
  const auto design = PagesNamed(5);
  const TempDir temp;
  LockProbe probe;
  const ScopedUserInterface scoped(probe);
  DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1);
  EXPECT_EQ(probe.messages_, 1);
  EXPECT_EQ(probe.files_.size(), 5u);
  EXPECT_EQ(probe.lockable_, 0) << "a page file was free before its completion was reported";
}

// Open descriptors are limited to a few more than the test uses while the object lives.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t spare) {
    getrlimit(RLIMIT_NOFILE, &previous_);
    int highest = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
      highest = std::max(highest, std::stoi(entry.path().filename().string()));
    }
    rlimit limit = previous_;
    limit.rlim_cur = static_cast<rlim_t>(highest) + 1 + spare;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &previous_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit previous_{};
};

TEST(HeldPagesTest, MorePagesThanDescriptorsAreAllWritten) {
  const auto design = PagesNamed(40);
  const std::vector<std::string> expected = ExportPagesInMemory(*design);
  const TempDir temp;
  {
    const DescriptorLimit limit(8);
    DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1);
  }
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(ReadFileBytes(temp / ("b_S_P" + std::to_string(i) + ".dxf")), expected[i]) << i;
  }
}

}  // namespace
}  // namespace kalmor::testing
