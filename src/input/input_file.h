#pragma once

// The files kalmor reads (design documents, KiCad sheets and projects, DXF files), read within
// bounds: only regular files and pipes, and no more than kLargestInput bytes, since a device such
// as /dev/zero never ends. Every failure names the file.

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace kalmor {

// The largest input read, 2 GiB: reading more would take memory without bound.
inline constexpr std::uint64_t kLargestInput = std::uint64_t{2} << 30;

// An input that cannot be read at all: what() reads "cannot read PATH: REASON", the path escaped.
class InputError : public std::runtime_error {
 public:
  InputError(std::string path, std::string reason);

  const std::string& path() const { return path_; }
  const std::string& reason() const { return reason_; }

 private:
  std::string path_;
  std::string reason_;
};

// Where a reader takes its bytes from, a buffer at a time.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Fills up to `size` bytes of `buffer`; 0 at the end. Errors leave as exceptions.
  virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

// Which file a path reaches: two paths reach the same file when these are equal.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// An input opened for reading: a regular file of at most kLargestInput bytes, or a pipe, of which
// no more than kLargestInput bytes are read. Throws InputError.
class InputFile final : public ByteSource {
 public:
  explicit InputFile(std::string path);
  ~InputFile() override;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& path() const { return path_; }
  FileIdentity identity() const { return identity_; }

  std::size_t Read(char* buffer, std::size_t size) override;
  // The rest of the file, in a string with room for `spare` bytes more.
  std::string ReadAll(std::size_t spare = 0);

 private:
  std::string path_;
  int fd_ = -1;
  FileIdentity identity_;
  std::uint64_t read_ = 0;
};

// The whole file at `path`, read as InputFile reads it.
std::string ReadInputFile(const std::string& path, std::size_t spare = 0);

}  // namespace kalmor
