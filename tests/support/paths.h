#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kalmor::test {

// The checkout's root, where examples/ and tests/ data live.
std::filesystem::path SourceDir();

// A fresh, empty directory for one test, removed with the object.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// The whole content of a file, as bytes.
std::string ReadFileBytes(const std::filesystem::path& path);

// The names of the entries of a directory, sorted.
std::vector<std::string> FileNames(const std::filesystem::path& directory);

}  // namespace kalmor::test
