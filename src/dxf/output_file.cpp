#include "dxf/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace kalmor {

namespace {

constexpr std::size_t kBufferBytes = 64 * 1024;

// Writes until everything is out, through short writes and interruptions. Returns 0 or the
// error; `done` tells how far it got.
int WriteFully(int fd, const char* data, std::size_t size, std::size_t& done) {
  done = 0;
  while (done < size) {
    const ssize_t n = ::write(fd, data + done, size - done);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n == 0) {
      return EIO;  // nothing accepted and no reason given: do not spin
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

// Why `path` could not be opened for writing: the links and sockets that the open refuses on
// purpose get words of their own rather than the system's puzzling ones.
FileError OpenRefusal(const std::string& path, int error) {
  struct stat info {};
  if ((error == ELOOP || error == ENXIO) && ::lstat(path.c_str(), &info) == 0) {
    if (S_ISLNK(info.st_mode)) {
      return FileError(path, "it is a symbolic link, and links are not followed", error);
    }
    if (S_ISSOCK(info.st_mode)) {
      return FileError(path, "it is a socket, not a file", error);
    }
  }
  return FileError(path, error);
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)), buffer_(kBufferBytes) {
  // A link at the target is not followed: one planted in a shared folder would send the page
  // to any file the user can write. Opening without blocking keeps a named pipe with no reader
  // from hanging the export before it is refused below.
  const int fd =
      ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
  if (fd < 0) {
    throw OpenRefusal(path_, errno);
  }
  const auto refuse = [&](int error) {
    ::close(fd);
    throw FileError(path_, error);
  };
  // Only a regular file is locked and emptied: a device (/dev/null, /dev/full) is written as it
  // is. A named pipe would hang the export, or swallow a page while success is reported. The
  // lock comes first so that a file another export is still writing is refused before anything
  // in it is lost.
  struct stat info {};
  if (::fstat(fd, &info) != 0) {
    refuse(errno);
  }
  if (S_ISFIFO(info.st_mode)) {
    ::close(fd);
    throw FileError(path_, "it is a named pipe, not a file");
  }
  if (S_ISREG(info.st_mode)) {
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      if (errno == EWOULDBLOCK) {
        ::close(fd);
        throw FileError(path_, "held by another process", EWOULDBLOCK);
      }
      refuse(errno);
    }
    if (::ftruncate(fd, 0) != 0) {
      refuse(errno);
    }
  }
  if (const int flags = ::fcntl(fd, F_GETFL);
      flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    refuse(errno);
  }
  fd_ = fd;
}

OutputFile::~OutputFile() {
  try {
    Close();
  } catch (const FileError&) {
    // A destructor must not throw; Close() is there for callers who want to know.
  }
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : path_(std::move(other.path_)),
      fd_(std::exchange(other.fd_, -1)),
      buffer_(std::move(other.buffer_)),
      used_(std::exchange(other.used_, 0)) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
  if (this != &other) {
    try {
      Close();
    } catch (const FileError&) {
      // As in the destructor: the file being replaced reports nothing.
    }
    path_ = std::move(other.path_);
    fd_ = std::exchange(other.fd_, -1);
    buffer_ = std::move(other.buffer_);
    used_ = std::exchange(other.used_, 0);
  }
  return *this;
}

void OutputFile::Write(std::string_view bytes) {
  if (fd_ < 0) {
    throw FileError(path_, "the file is not open");
  }
  if (bytes.size() > buffer_.size() - used_) {
    Flush();
  }
  if (bytes.size() >= buffer_.size()) {
    WriteAll(bytes.data(), bytes.size());
    return;
  }
  std::memcpy(buffer_.data() + used_, bytes.data(), bytes.size());
  used_ += bytes.size();
}

void OutputFile::Flush() {
  if (fd_ < 0) {
    throw FileError(path_, "the file is not open");
  }
  // On failure the bytes not yet written stay buffered, so a later Close() reports them too.
  std::size_t done = 0;
  if (const int error = WriteFully(fd_, buffer_.data(), used_, done); error != 0) {
    std::memmove(buffer_.data(), buffer_.data() + done, used_ - done);
    used_ -= done;
    throw FileError(path_, error);
  }
  used_ = 0;
}

void OutputFile::Hold() {
  Flush();
  buffer_ = std::vector<char>();  // writes after this go straight to the system
}

void OutputFile::Close() {
  if (fd_ < 0) {
    return;
  }
  // The descriptor is released even when the last bytes cannot be written.
  const int fd = fd_;
  try {
    Flush();
  } catch (const FileError&) {
    fd_ = -1;
    used_ = 0;
    ::close(fd);
    throw;
  }
  fd_ = -1;
  // After EINTR the descriptor is gone all the same; anything else is a real failure (a
  // network file system reporting a late write error, for one).
  if (::close(fd) != 0 && errno != EINTR) {
    throw FileError(path_, errno);
  }
}

void OutputFile::WriteAll(const char* data, std::size_t size) {
  std::size_t done = 0;
  if (const int error = WriteFully(fd_, data, size, done); error != 0) {
    throw FileError(path_, error);
  }
}

}  // namespace kalmor
