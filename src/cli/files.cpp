#include "cli/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/commands.h"
#include "cli/terminal_ui.h"
#include "dxf/output_file.h"

namespace kalmor::cli {
namespace {

std::string KindOf(mode_t mode) {
  if (S_ISDIR(mode)) {
    return "a directory";
  }
  if (S_ISCHR(mode) || S_ISBLK(mode)) {
    return "a device";
  }
  if (S_ISSOCK(mode)) {
    return "a socket";
  }
  return "not a regular file";
}

std::string LargestInputText() {
  return std::to_string(kLargestInput >> 30) + " GiB";
}

}  // namespace

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

InputFile::InputFile(std::string path) : path_(std::move(path)) {
  const auto fail = [this](const std::string& reason) {
    if (fd_ >= 0) {
      ::close(fd_);
    }
    throw InputError("cannot read " + Shortened(path_, kLongestPathShown) + ": " + reason);
  };
  fd_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) {
    fail(std::strerror(errno));
  }
  struct stat info {};
  if (::fstat(fd_, &info) != 0) {
    fail(std::strerror(errno));
  }
  identity_ = {info.st_dev, info.st_ino};
  if (!S_ISREG(info.st_mode) && !S_ISFIFO(info.st_mode)) {
    fail("it is " + KindOf(info.st_mode) + "; only files and pipes are read");
  }
  if (S_ISREG(info.st_mode) && static_cast<std::uint64_t>(info.st_size) > kLargestInput) {
    fail("it is larger than the " + LargestInputText() + " read at most");
  }
}

InputFile::~InputFile() {
  if (fd_ >= 0) {
    ::close(fd_);
  }
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t n = ::read(fd_, buffer, size);
    if (n >= 0) {
      read_ += static_cast<std::uint64_t>(n);
      if (read_ > kLargestInput) {
        throw InputError("cannot read " + Shortened(path_, kLongestPathShown) +
                         ": it holds more than the " + LargestInputText() + " read at most");
      }
      return static_cast<std::size_t>(n);
    }
    if (errno != EINTR) {
      throw InputError("cannot read " + Shortened(path_, kLongestPathShown) + ": " +
                       std::strerror(errno));
    }
  }
}

std::string InputFile::ReadAll() {
  std::string bytes;
  struct stat info {};
  if (::fstat(fd_, &info) == 0 && S_ISREG(info.st_mode)) {
    bytes.reserve(static_cast<std::size_t>(info.st_size));
  }
  char buffer[1 << 16];
  while (const std::size_t got = Read(buffer, sizeof buffer)) {
    bytes.append(buffer, got);
  }
  return bytes;
}

void WriteWholeFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Close();
}

}  // namespace kalmor::cli
