#include "input/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "input/huge_pages.h"
#include "input/shown_text.h"

namespace kalmor {
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

InputError::InputError(std::string path, std::string reason)
    : std::runtime_error("cannot read " + Escaped(path) + ": " + reason),
      path_(std::move(path)),
      reason_(std::move(reason)) {}

InputFile::InputFile(std::string path) : path_(std::move(path)) {
  const auto fail = [this](std::string reason) {
    if (fd_ >= 0) {
      ::close(fd_);
    }
    throw InputError(path_, std::move(reason));
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
        throw InputError(path_, "it holds more than the " + LargestInputText() + " read at most");
      }
      return static_cast<std::size_t>(n);
    }
    if (errno != EINTR) {
      throw InputError(path_, std::strerror(errno));
    }
  }
}

std::string InputFile::ReadAll(std::size_t spare) {
  std::string bytes;
  struct stat info {};
  if (::fstat(fd_, &info) == 0 && S_ISREG(info.st_mode)) {
    bytes.reserve(static_cast<std::size_t>(info.st_size) + spare);
    PreferHugePages(bytes.data(), std::min(bytes.capacity(), kMostHugePageBytes));
  }
  char buffer[1 << 16];
  while (const std::size_t got = Read(buffer, sizeof buffer)) {
    bytes.append(buffer, got);
  }
  return bytes;
}

std::string ReadInputFile(const std::string& path, std::size_t spare) {
  return InputFile(path).ReadAll(spare);
}

}  // namespace kalmor
