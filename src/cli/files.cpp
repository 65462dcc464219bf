#include "cli/files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "cli/commands.h"
#include "cli/terminal_ui.h"
#include "dxf/output_file.h"

namespace kalmor::cli {

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    return std::nullopt;
  }
  return FileIdentity{info.st_dev, info.st_ino};
}

void RefuseSameFile(const std::string& output, const FileIdentity& input,
                    const std::string& inputPath) {
  if (IdentityOf(output) == input) {
    throw UsageError("the output " + Shortened(output, kLongestPathShown) + " is the input " +
                     Shortened(inputPath, kLongestPathShown) + "; nothing written");
  }
}

namespace {

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const {
    return std::hash<std::string_view>{}(name);
  }
};

std::string FoldedCase(std::string_view name) {
  std::string folded(name);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return folded;
}

// The names a folder holds, for finding which output names may reach a given file.
struct FolderListing {
  std::unordered_set<std::string, NameHash, std::equal_to<>> names;
  // The links, in lower case: on a file system that ignores case, a name spelled differently
  // reaches them too.
  std::unordered_set<std::string> foldedLinks;
  // An entry has the file's inode number: on a file system that ignores case, a name equal to
  // it only after folding beyond ASCII would reach the file itself, so every name is looked up.
  bool holdsFile = false;
  bool unknownKinds = false;  // the system did not say which entries are links

  bool MayReach(std::string_view name) const {
    return unknownKinds || holdsFile || names.contains(name) ||
           (!foldedLinks.empty() && foldedLinks.contains(FoldedCase(name)));
  }
};

// What `folder` holds, or nothing when it cannot be listed.
std::optional<FolderListing> ListFolder(const std::string& folder, const FileIdentity& file) {
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) {
    return std::nullopt;
  }
  FolderListing listing;
  errno = 0;
  while (const dirent* entry = ::readdir(dir)) {
    listing.names.emplace(entry->d_name);
    listing.unknownKinds = listing.unknownKinds || entry->d_type == DT_UNKNOWN;
    listing.holdsFile = listing.holdsFile || entry->d_ino == file.inode;
    if (entry->d_type == DT_LNK) {
      listing.foldedLinks.insert(FoldedCase(entry->d_name));
    }
  }
  const bool complete = errno == 0;
  ::closedir(dir);
  if (!complete) {
    return std::nullopt;
  }
  return listing;
}

}  // namespace

void RefuseSameFiles(const std::vector<std::string>& outputs, const FileIdentity& input,
                     const std::string& inputPath) {
  // A path reaches a file only through an entry of its folder, link or not, named as the path
  // names it (but for case, on some file systems); the outputs of one export share a folder or
  // a few.
  std::vector<bool> lookUp(outputs.size(), false);
  std::unordered_map<std::string_view, std::vector<std::size_t>> byFolder;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const std::string_view path = outputs[i];
    const std::size_t slash = path.rfind('/');
    if (path.find('\0') != std::string_view::npos || slash + 1 == path.size()) {
      lookUp[i] = true;  // not a plain name in a folder: looked up as it is
    } else {
      byFolder[slash == std::string_view::npos ? "." : path.substr(0, slash + 1)].push_back(i);
    }
  }
  for (const auto& [folder, indices] : byFolder) {
    const auto listing = ListFolder(std::string(folder), input);
    for (const std::size_t i : indices) {
      const std::string_view name =
          std::string_view(outputs[i]).substr(folder == "." ? 0 : folder.size());
      lookUp[i] = !listing || listing->MayReach(name);
    }
  }
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    if (lookUp[i]) {
      RefuseSameFile(outputs[i], input, inputPath);
    }
  }
}

void WriteWholeFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Close();
}

}  // namespace kalmor::cli
