#include "export/vel_edit_path.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kalmor {
namespace export_detail {
namespace {

constexpr std::size_t kComponentMax = 255;
constexpr std::size_t kPathMax = 259;

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

std::string Cut(std::string_view text, std::size_t max) {
  return std::string(text.substr(0, std::min(text.size(), max)));
}

bool HasDrive(const std::string& path) {
  return path.size() >= 2 && path[1] == ':';
}

// Resolves "." and ".." and joins with backslashes, as the host's absolute-path service does;
// ".." never climbs above the root.
std::string NormalizeWindowsAbsolute(const std::string& root, std::string_view rest) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (start <= rest.size()) {
    std::size_t end = start;
    while (end < rest.size() && !IsSeparator(rest[end])) {
      ++end;
    }
    std::string_view part = rest.substr(start, end - start);
    if (part == "..") {
      if (!parts.empty()) {
        parts.pop_back();
      }
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    start = end + 1;
  }
  std::string full = root;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) {
      full += '\\';
    }
    full += parts[i];
  }
  if (!parts.empty() && !rest.empty() && IsSeparator(rest.back())) {
    full += '\\';
  }
  return full;
}

}  // namespace

SplitPath SplitWindowsPath(const std::string& path) {
  SplitPath parts;
  std::string_view rest = path;
  if (HasDrive(path)) {
    parts.drive = path.substr(0, 2);
    rest.remove_prefix(2);
  }
  // Bytes are taken one at a time: names are UTF-8 here, whose multibyte characters never
  // contain a separator or a dot byte.
  std::size_t titleStart = 0;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (IsSeparator(rest[i])) {
      titleStart = i + 1;
    }
  }
  parts.dir = Cut(rest.substr(0, titleStart), kComponentMax);
  std::string_view name = rest.substr(titleStart);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) {
    parts.title = Cut(name, kComponentMax);
  } else {
    parts.title = Cut(name.substr(0, dot), kComponentMax);
    parts.extension = Cut(name.substr(dot), kComponentMax);
  }
  return parts;
}

std::string JoinWindowsPath(const SplitPath& parts) {
  std::string path;
  if (!parts.drive.empty()) {
    path += parts.drive[0];
    path += ':';
  }
  if (!parts.dir.empty()) {
    path += parts.dir;
    if (!IsSeparator(parts.dir.back())) {
      path += '\\';
    }
  }
  path += parts.title;
  if (!parts.extension.empty()) {
    if (parts.extension[0] != '.') {
      path += '.';
    }
    path += parts.extension;
  }
  return Cut(path, kPathMax);
}

std::string FullPath(const std::string& path) {
  std::string full;
  if (HasDrive(path)) {
    // There are no per-drive current directories here: a drive-relative path counts from the
    // drive's root.
    full = NormalizeWindowsAbsolute(path.substr(0, 2) + '\\', std::string_view(path).substr(2));
  } else if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    full = NormalizeWindowsAbsolute("\\\\", std::string_view(path).substr(2));
  } else {
    // Without a drive the path is a local one and resolves against the current directory.
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) {
      return {};
    }
    full = absolute.lexically_normal().string();
  }
  return full.size() > kPathMax ? std::string() : full;
}

int CompareNoCase(const std::string& a, const std::string& b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const int ca = std::tolower(static_cast<unsigned char>(a[i]));
    const int cb = std::tolower(static_cast<unsigned char>(b[i]));
    if (ca != cb) {
      return ca < cb ? -1 : 1;
    }
  }
  if (a.size() == b.size()) {
    return 0;
  }
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace export_detail

namespace {

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

CVelEditPath::CVelEditPath(const char* path) : path_(OrEmpty(path)) {}

void CVelEditPath::SetPath(const char* path) {
  path_ = OrEmpty(path);
}

std::string CVelEditPath::GetDrive() const {
  return export_detail::SplitWindowsPath(path_).drive;
}

std::string CVelEditPath::GetDir() const {
  return export_detail::SplitWindowsPath(path_).dir;
}

std::string CVelEditPath::GetDirectory() const {
  const export_detail::SplitPath parts = export_detail::SplitWindowsPath(path_);
  std::string directory = export_detail::JoinWindowsPath({parts.drive, parts.dir, {}, {}});
  // Only a backslash counts as the end here: a directory ending in '/' gets one more.
  if (!directory.empty() && directory.back() != '\\') {
    directory += '\\';
  }
  return directory;
}

std::string CVelEditPath::GetFileTitle() const {
  return export_detail::SplitWindowsPath(path_).title;
}

std::string CVelEditPath::GetFileName() const {
  const export_detail::SplitPath parts = export_detail::SplitWindowsPath(path_);
  return export_detail::JoinWindowsPath({{}, {}, parts.title, parts.extension});
}

std::string CVelEditPath::GetExtension() const {
  return export_detail::SplitWindowsPath(path_).extension;
}

void CVelEditPath::SetDrive(const char* drive) {
  path_ = MakePath(path_.c_str(), drive, nullptr, nullptr, nullptr);
}

void CVelEditPath::SetDir(const char* dir) {
  path_ = MakePath(path_.c_str(), nullptr, dir, nullptr, nullptr);
}

void CVelEditPath::SetFileTitle(const char* title) {
  path_ = MakePath(path_.c_str(), nullptr, nullptr, title, nullptr);
}

void CVelEditPath::SetExtension(const char* extension) {
  path_ = MakePath(path_.c_str(), nullptr, nullptr, nullptr, extension);
}

void CVelEditPath::SetFileName(const char* name) {
  const export_detail::SplitPath parts = export_detail::SplitWindowsPath(OrEmpty(name));
  path_ = MakePath(path_.c_str(), nullptr, nullptr, parts.title.c_str(), parts.extension.c_str());
}

void CVelEditPath::SetDirectory(const char* directory) {
  std::string withSeparator = OrEmpty(directory);
  if (withSeparator.empty() || withSeparator.back() != '\\') {
    withSeparator += '\\';
  }
  const export_detail::SplitPath parts = export_detail::SplitWindowsPath(withSeparator);
  path_ = MakePath(path_.c_str(), parts.drive.c_str(), parts.dir.c_str(), nullptr, nullptr);
}

std::string CVelEditPath::MakePath(const char* path, const char* drive, const char* dir,
                                   const char* title, const char* extension) {
  export_detail::SplitPath parts = export_detail::SplitWindowsPath(OrEmpty(path));
  if (drive != nullptr) {
    parts.drive = drive;
  }
  if (dir != nullptr) {
    parts.dir = dir;
  }
  if (title != nullptr) {
    parts.title = title;
  }
  if (extension != nullptr) {
    parts.extension = extension;
  }
  return export_detail::JoinWindowsPath(parts);
}

bool CVelEditPath::MakeFullPath() {
  path_ = export_detail::FullPath(path_);
  return !path_.empty();
}

int CVelEditPath::ComparePath(const char* path) const {
  return export_detail::CompareNoCase(export_detail::FullPath(OrEmpty(path)),
                                      export_detail::FullPath(path_));
}

// The file system sees the path as it stands: a backslash is part of a name here.
bool CVelEditPath::Exists() const {
  struct stat status {};
  return ::stat(path_.c_str(), &status) == 0;
}

// Read-only is the owner lacking write permission, as the file's attribute would say.
bool CVelEditPath::IsReadOnly() const {
  struct stat status {};
  return ::stat(path_.c_str(), &status) == 0 && (status.st_mode & S_IWUSR) == 0;
}

}  // namespace kalmor
