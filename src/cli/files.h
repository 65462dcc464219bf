#pragma once

// The command's input and output files: inputs are read within a bound and only from regular
// files and pipes; outputs are refused when they are an input; errors name the file.

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "render/svg_render.h"

namespace kalmor::cli {

// The largest input read, 2 GiB: a design document or DXF file beyond it is refused, since
// reading it would take memory without bound (a device such as /dev/zero never ends).
inline constexpr std::uint64_t kLargestInput = std::uint64_t{2} << 30;

// Which file a path reaches: two paths reach the same file when these are equal.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// The file a path reaches through any links, if it exists.
std::optional<FileIdentity> IdentityOf(const std::string& path);

// Throws UsageError when `output` reaches the file `input` (at `inputPath`): writing it would
// destroy what is being read.
void RefuseSameFile(const std::string& output, const FileIdentity& input,
                    const std::string& inputPath);

// An input opened for reading: a regular file of at most kLargestInput bytes, or a pipe, of
// which no more than kLargestInput bytes are read. Throws InputError naming the file.
class InputFile final : public DxfByteSource {
 public:
  explicit InputFile(std::string path);
  ~InputFile() override;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& path() const { return path_; }
  FileIdentity identity() const { return identity_; }

  std::size_t Read(char* buffer, std::size_t size) override;  // 0 at the end
  std::string ReadAll();

 private:
  std::string path_;
  int fd_ = -1;
  FileIdentity identity_;
  std::uint64_t read_ = 0;
};

// Creates or replaces `path`; throws FileError when it cannot.
void WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace kalmor::cli
