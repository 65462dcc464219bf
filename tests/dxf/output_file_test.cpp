#include "dxf/output_file.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "dxf/skeleton.h"
#include "support/paths.h"
#include "support/thrown.h"

// How the system's write(2) behaves for one descriptor: interrupted a number of times first, then
// taking a few bytes a call, then, after `budget` bytes, failing with `error` (0: accepting
// nothing, with no reason given).
struct WriteScript {
  int fd = -1;
  int interruptions = 0;
  std::size_t most = SIZE_MAX;
  std::size_t budget = SIZE_MAX;
  int error = 0;
  std::size_t calls = 0;
};
WriteScript g_script;

// This program's write(2) takes the place of the C library's for the file writer, which calls it
// by name: the script's descriptor gets the script, every other one the real system call.
extern "C" ssize_t write(int fd, const void* data, size_t size) {
  if (fd == g_script.fd && fd >= 0) {
    ++g_script.calls;
    if (g_script.interruptions > 0) {
      --g_script.interruptions;
      errno = EINTR;
      return -1;
    }
    if (g_script.budget == 0) {
      errno = g_script.error;
      return g_script.error == 0 ? 0 : -1;
    }
    size = std::min({size, g_script.most, g_script.budget});
    g_script.budget -= size;
  }
  return syscall(SYS_write, fd, data, size);
}

namespace kalmor {
namespace {

using test::ReadFileBytes;
using test::TempDir;

void WriteText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

TEST(OutputFile, ReplacesAnExistingFileWithCrLfBytes) {
  TempDir dir;
  const auto path = dir / "page.dxf";
  WriteText(path, std::string(100000, 'o'));
  OutputFile file(path.string());
  EXPECT_EQ(ReadFileBytes(path), "");  // emptied on open
  DxfWriteEntitiesOpen(file);
  DxfWriteEnd(file);
  file.Close();
  EXPECT_FALSE(file.is_open());
  file.Close();  // a second close does nothing
  EXPECT_EQ(ReadFileBytes(path),
            " 0\r\nSECTION\r\n 2\r\nENTITIES\r\n 0\r\nENDSEC\r\n 0\r\nEOF\r\n");
}

TEST(OutputFile, KeepsOrderAcrossBufferedAndLargeWrites) {
  TempDir dir;
  const auto path = dir / "big.dxf";
  std::string expected;
  {
    OutputFile file(path.string());
    for (const std::size_t size : {10u, 70000u, 3u, 65530u, 65536u, 1u, 200000u, 7u}) {
      const std::string piece(size, static_cast<char>('a' + expected.size() % 26));
      file.Write(piece);
      expected += piece;
    }
  }  // the destructor flushes
  EXPECT_EQ(ReadFileBytes(path), expected);
}

// A held file gives its buffer back; what is written after that still reaches the file.
TEST(OutputFile, HeldFilesTakeLaterWrites) {
  TempDir dir;
  OutputFile held((dir / "held.dxf").string());
  held.Write("before ");
  held.Hold();
  OutputFile next((dir / "next.dxf").string());  // may take the buffer given back
  next.Write("other");
  held.Write(std::string(70000, 'x'));
  held.Close();
  next.Close();
  EXPECT_EQ(ReadFileBytes(dir / "held.dxf"), "before " + std::string(70000, 'x'));
  EXPECT_EQ(ReadFileBytes(dir / "next.dxf"), "other");
}

TEST(OutputFile, WritesOnThroughInterruptionsAndShortWrites) {
  TempDir dir;
  OutputFile file((dir / "short.dxf").string());
  g_script = {.fd = file.descriptor(), .interruptions = 3, .most = 1000};
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    expected += std::to_string(i) + "\r\n";
  }
  file.Write(expected);
  file.Close();
  EXPECT_GE(g_script.calls, 3 + expected.size() / 1000) << "the write script was not used";
  g_script = {};
  EXPECT_EQ(ReadFileBytes(dir / "short.dxf"), expected);
}

// A write that fails part way keeps what it could not write, so that closing reports it again; a
// write that accepts nothing and gives no reason is a failure too, not a loop.
TEST(OutputFile, AWriteFailingPartWayIsReportedUntilClosed) {
  for (const int error : {ENOSPC, 0}) {
    TempDir dir;
    const std::string path = (dir / "cut.dxf").string();
    OutputFile file(path);
    g_script = {
        .fd = file.descriptor(), .interruptions = 1, .most = 7, .budget = 10, .error = error};
    file.Write("0123456789abcdef");
    const auto flushed = test::Thrown<FileError>([&] { file.Flush(); });
    const auto closed = test::Thrown<FileError>([&] { file.Close(); });
    g_script = {};
    ASSERT_TRUE(flushed && closed) << error;
    const int reported = error == 0 ? EIO : error;
    EXPECT_EQ(std::make_pair(flushed->errorNumber(), closed->errorNumber()),
              std::make_pair(reported, reported));
    EXPECT_EQ(closed->path(), path);
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(ReadFileBytes(path), "0123456789");
  }
}

TEST(OutputFile, FailuresNameThePathAndTheReason) {
  TempDir dir;
  const std::string missing = (dir / "no such dir" / "x.dxf").string();
  const auto e = test::Thrown<FileError>([&] { OutputFile file(missing); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->path(), missing);
  EXPECT_EQ(std::string(e->what()), "cannot write " + missing + ": No such file or directory");
  EXPECT_EQ(std::make_pair(e->errorNumber(), e->kind()),
            std::make_pair(ENOENT, ErrorKind::kOutputFile));
  EXPECT_FALSE(std::filesystem::exists(dir / "no such dir"));

  OutputFile full("/dev/full");
  DxfWriteEnd(full);
  EXPECT_THROW(full.Flush(), FileError);
  EXPECT_EQ(test::ThrownMessage<FileError>([&] { full.Close(); }),
            "cannot write /dev/full: No space left on device");
  EXPECT_FALSE(full.is_open());
  EXPECT_THROW(full.Write("x"), FileError);
}

TEST(OutputFile, AFileBeingWrittenIsRefusedAndKept) {
  TempDir dir;
  const auto path = dir / "held.dxf";
  OutputFile first(path.string());
  first.Write("first\r\n");
  first.Flush();
  const auto refused = test::Thrown<FileError>([&] { OutputFile second(path.string()); });
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->reason(), "held by another process");
  EXPECT_EQ(refused->errorNumber(), EWOULDBLOCK);
  EXPECT_EQ(ReadFileBytes(path), "first\r\n");
  first.Close();
  OutputFile third(path.string());  // free again once closed
  EXPECT_EQ(ReadFileBytes(path), "");
}

TEST(OutputFile, MovesCarryTheOpenFile) {
  TempDir dir;
  OutputFile a((dir / "a.dxf").string());
  a.Write("A1 ");
  OutputFile moved(std::move(a));
  EXPECT_FALSE(a.is_open());
  EXPECT_THROW(a.Write("lost"), FileError);
  moved.Write("A2");
  EXPECT_EQ(moved.path(), (dir / "a.dxf").string());
  moved.Close();
  EXPECT_EQ(ReadFileBytes(dir / "a.dxf"), "A1 A2");
}

}  // namespace
}  // namespace kalmor
