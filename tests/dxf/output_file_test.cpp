#include "dxf/output_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "dxf/skeleton.h"
#include "support/paths.h"

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

TEST(OutputFile, FailuresNameThePathAndTheReason) {
  TempDir dir;
  const std::string missing = (dir / "no such dir" / "x.dxf").string();
  try {
    OutputFile file(missing);
    FAIL() << "opened " << missing;
  } catch (const FileError& e) {
    EXPECT_EQ(e.path(), missing);
    EXPECT_EQ(std::string(e.what()), "cannot write " + missing + ": No such file or directory");
    EXPECT_EQ(std::make_pair(e.errorNumber(), e.kind()),
              std::make_pair(ENOENT, ErrorKind::kOutputFile));
  }
  EXPECT_FALSE(std::filesystem::exists(dir / "no such dir"));

  OutputFile full("/dev/full");
  DxfWriteEnd(full);
  EXPECT_THROW(full.Flush(), FileError);
  try {
    full.Close();
    FAIL() << "closing /dev/full reported nothing";
  } catch (const FileError& e) {
    EXPECT_EQ(std::string(e.what()), "cannot write /dev/full: No space left on device");
    EXPECT_EQ(e.errorNumber(), ENOSPC);
  }
  EXPECT_FALSE(full.is_open());
  EXPECT_THROW(full.Write("x"), FileError);
}

TEST(OutputFile, AFileBeingWrittenIsRefusedAndKept) {
  TempDir dir;
  const auto path = dir / "held.dxf";
  OutputFile first(path.string());
  first.Write("first\r\n");
  first.Flush();
  try {
    OutputFile second(path.string());
    FAIL() << "a second writer got the file";
  } catch (const FileError& e) {
    EXPECT_EQ(e.reason(), "held by another process");
    EXPECT_EQ(e.errorNumber(), EWOULDBLOCK);
  }
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

  OutputFile b((dir / "b.dxf").string());
  b.Write("B");
  b = std::move(moved);  // b.dxf is finished, b now writes a.dxf
  EXPECT_EQ(ReadFileBytes(dir / "b.dxf"), "B");
  b.Write(" A3");
  b.Close();
  EXPECT_EQ(ReadFileBytes(dir / "a.dxf"), "A1 A2 A3");
}

}  // namespace
}  // namespace kalmor
