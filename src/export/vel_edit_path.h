#pragma once

// A path taken apart by Windows rules on every platform: the host hands over paths such as
// C:\work\board.dxf, and the pieces must come out the same wherever the export runs. A drive is
// a letter and a colon; `/` and `\` both end a directory; an extension starts at the last dot of
// the final component.

#include <string>

namespace kalmor {

class CVelEditPath {
 public:
  CVelEditPath() = default;
  explicit CVelEditPath(const char* path);
  virtual ~CVelEditPath() = default;

  // A null argument empties the path.
  void SetPath(const char* path);
  const std::string& GetPath() const { return path_; }

  std::string GetDrive() const;
  std::string GetDir() const;
  // Drive and directory, ending in a backslash unless empty.
  std::string GetDirectory() const;
  std::string GetFileTitle() const;
  std::string GetFileName() const;
  std::string GetExtension() const;

  // Each replaces one component; a null argument keeps it.
  void SetDrive(const char* drive);
  void SetDir(const char* dir);
  void SetFileTitle(const char* title);
  void SetExtension(const char* extension);
  // Takes title and extension from `name`, keeping drive and directory.
  void SetFileName(const char* name);
  // Takes drive and directory from `directory` (an absent drive clears the held one), keeping
  // title and extension.
  void SetDirectory(const char* directory);

  // Splits `path` and rejoins it with every non-null argument in place of its component.
  static std::string MakePath(const char* path, const char* drive, const char* dir,
                              const char* title, const char* extension);

  // Replaces the path by its absolute form; false when that is empty (the path was too long).
  bool MakeFullPath();
  // Case-blind comparison of the absolute forms: 0 for the same path, negative when `path`
  // sorts before the held one.
  int ComparePath(const char* path) const;
  bool Exists() const;
  bool IsReadOnly() const;

 private:
  std::string path_;
};

namespace export_detail {

// The four components of a path, each cut to the 255 bytes of its buffer (the drive to 2).
struct SplitPath {
  std::string drive;
  std::string dir;
  std::string title;
  std::string extension;
};

SplitPath SplitWindowsPath(const std::string& path);
// Rejoins components, adding ':' after the drive letter, '\' after a directory that lacks a
// separator and '.' before an extension that lacks one; cut to 259 bytes.
std::string JoinWindowsPath(const SplitPath& parts);
// The absolute form of a path; empty when it would exceed 259 bytes.
std::string FullPath(const std::string& path);
// Byte comparison that ignores ASCII letter case; bytes of multibyte characters compare as they
// are.
int CompareNoCase(const std::string& a, const std::string& b);

}  // namespace export_detail

}  // namespace kalmor
