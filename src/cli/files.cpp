#include "cli/files.h"

#include <sys/stat.h>

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

void WriteWholeFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Close();
}

}  // namespace kalmor::cli
