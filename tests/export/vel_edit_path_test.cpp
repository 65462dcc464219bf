#include "export/vel_edit_path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/paths.h"

namespace kalmor {
namespace {

TEST(VelEditPathTest, SplitsByWindowsRules) {
  struct Case {
    const char* path;
    const char* drive;
    const char* dir;
    const char* title;
    const char* extension;
    const char* directory;
    const char* fileName;
  };
  const Case cases[] = {
      {"C:\\work\\board.dxf", "C:", "\\work\\", "board", ".dxf", "C:\\work\\", "board.dxf"},
      {"C:/work/sub/board.dxf", "C:", "/work/sub/", "board", ".dxf", "C:/work/sub/\\", "board.dxf"},
      {"D:\\mixed/dirs\\b", "D:", "\\mixed/dirs\\", "b", "", "D:\\mixed/dirs\\", "b"},
      {"board.dxf", "", "", "board", ".dxf", "", "board.dxf"},
      {"C:board.dxf", "C:", "", "board", ".dxf", "C:\\", "board.dxf"},
      {"C:\\work.dxf\\board", "C:", "\\work.dxf\\", "board", "", "C:\\work.dxf\\", "board"},
      {"board.dxf.bak", "", "", "board.dxf", ".bak", "", "board.dxf.bak"},
      {".hidden", "", "", "", ".hidden", "", ".hidden"},
      {"out/", "", "out/", "", "", "out/\\", ""},
      {"/abs/path.txt", "", "/abs/", "path", ".txt", "/abs/\\", "path.txt"},
      {"", "", "", "", "", "", ""},
  };
  for (const Case& c : cases) {
    const CVelEditPath path(c.path);
    SCOPED_TRACE(c.path);
    EXPECT_EQ(path.GetPath(), c.path);
    EXPECT_EQ(path.GetDrive(), c.drive);
    EXPECT_EQ(path.GetDir(), c.dir);
    EXPECT_EQ(path.GetFileTitle(), c.title);
    EXPECT_EQ(path.GetExtension(), c.extension);
    EXPECT_EQ(path.GetDirectory(), c.directory);
    EXPECT_EQ(path.GetFileName(), c.fileName);
  }
  EXPECT_EQ(CVelEditPath(nullptr).GetPath(), "");
}

TEST(VelEditPathTest, ComponentsAreCutToTheirBuffers) {
  const std::string longTitle(300, 't');
  const CVelEditPath path(("C:\\d\\" + longTitle + ".ext").c_str());
  EXPECT_EQ(path.GetFileTitle(), std::string(255, 't'));
  EXPECT_EQ(path.GetExtension(), ".ext");
  // The rejoined name stops at the longest path.
  EXPECT_EQ(path.GetFileName().size(), 259u);
}

TEST(VelEditPathTest, SettersReplaceOneComponent) {
  struct Case {
    void (CVelEditPath::*set)(const char*);
    const char* argument;
    const char* result;
  };
  const Case cases[] = {
      {&CVelEditPath::SetDrive, "D:", "D:\\work\\board.dxf"},
      {&CVelEditPath::SetDrive, "E", "E:\\work\\board.dxf"},
      {&CVelEditPath::SetDrive, "", "\\work\\board.dxf"},
      {&CVelEditPath::SetDrive, nullptr, "C:\\work\\board.dxf"},
      {&CVelEditPath::SetDir, "\\other", "C:\\other\\board.dxf"},
      {&CVelEditPath::SetDir, "/unix/", "C:/unix/board.dxf"},
      {&CVelEditPath::SetDir, "", "C:board.dxf"},
      {&CVelEditPath::SetFileTitle, "panel", "C:\\work\\panel.dxf"},
      {&CVelEditPath::SetExtension, "svg", "C:\\work\\board.svg"},
      {&CVelEditPath::SetExtension, ".svg", "C:\\work\\board.svg"},
      {&CVelEditPath::SetExtension, "", "C:\\work\\board"},
      {&CVelEditPath::SetFileName, "X:\\elsewhere\\panel.txt", "C:\\work\\panel.txt"},
      {&CVelEditPath::SetFileName, "noext", "C:\\work\\noext"},
      {&CVelEditPath::SetDirectory, "D:\\out", "D:\\out\\board.dxf"},
      {&CVelEditPath::SetDirectory, "D:\\out\\", "D:\\out\\board.dxf"},
      {&CVelEditPath::SetDirectory, "\\out", "\\out\\board.dxf"},
      {&CVelEditPath::SetDirectory, "D:", "D:\\board.dxf"},
  };
  for (const Case& c : cases) {
    CVelEditPath path("C:\\work\\board.dxf");
    (path.*c.set)(c.argument);
    EXPECT_EQ(path.GetPath(), c.result) << (c.argument ? c.argument : "(null)");
  }
  CVelEditPath path("C:\\work\\board.dxf");
  path.SetPath(nullptr);
  EXPECT_EQ(path.GetPath(), "");
}

TEST(VelEditPathTest, MakePathRejoinsWithReplacements) {
  EXPECT_EQ(CVelEditPath::MakePath("C:\\a\\b.c", nullptr, nullptr, nullptr, nullptr), "C:\\a\\b.c");
  EXPECT_EQ(CVelEditPath::MakePath("C:\\a\\b.c", "Z", "x/y", "t", "e"), "Z:x/y\\t.e");
  EXPECT_EQ(CVelEditPath::MakePath(nullptr, nullptr, "dir", "t", nullptr), "dir\\t");
}

TEST(VelEditPathTest, FullPathsAndComparison) {
  CVelEditPath windows("c:\\work\\.\\sub\\..\\board.dxf");
  EXPECT_TRUE(windows.MakeFullPath());
  EXPECT_EQ(windows.GetPath(), "c:\\work\\board.dxf");

  CVelEditPath local("a/../b.dxf");
  EXPECT_TRUE(local.MakeFullPath());
  EXPECT_EQ(local.GetPath(), (std::filesystem::current_path() / "b.dxf").string());

  CVelEditPath tooLong(("C:\\" + std::string(300, 'x')).c_str());
  EXPECT_FALSE(tooLong.MakeFullPath());
  EXPECT_EQ(tooLong.GetPath(), "");

  const CVelEditPath held("C:\\Work\\Board.DXF");
  EXPECT_EQ(held.ComparePath("c:/work/sub/../board.dxf"), 0);
  EXPECT_LT(held.ComparePath("C:\\Work\\A.dxf"), 0);
  EXPECT_GT(held.ComparePath("C:\\Work\\C.dxf"), 0);
}

TEST(VelEditPathTest, ExistsAndReadOnlyAskTheFileSystem) {
  const test::TempDir temp;
  const std::filesystem::path file = temp / "f.dxf";
  EXPECT_FALSE(CVelEditPath(file.c_str()).Exists());
  EXPECT_FALSE(CVelEditPath(file.c_str()).IsReadOnly());

  std::ofstream(file) << "x";
  EXPECT_TRUE(CVelEditPath(file.c_str()).Exists());
  EXPECT_FALSE(CVelEditPath(file.c_str()).IsReadOnly());

  ::chmod(file.c_str(), 0444);
  EXPECT_TRUE(CVelEditPath(file.c_str()).IsReadOnly());
}

}  // namespace
}  // namespace kalmor
