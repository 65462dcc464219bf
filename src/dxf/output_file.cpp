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

// The file is written in whole chunks, which the operating system takes fastest (a write that
// ends inside a page makes it handle that page twice); the buffer holds a chunk and room for the
// piece that overflows it.
constexpr std::size_t kChunkBytes = 64 * 1024;
constexpr std::size_t kBufferBytes = kChunkBytes + 16 * 1024;

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

// A design export writes its pages one after another: each file takes the buffer the last one
// gave back, rather than allocating and clearing one of its own.
std::vector<char>& SpareBuffer() {
  thread_local std::vector<char> spare;
  return spare;
}

std::vector<char> TakeBuffer() {
  std::vector<char>& spare = SpareBuffer();
  if (spare.size() == kBufferBytes) {
    return std::move(spare);
  }
  return std::vector<char>(kBufferBytes);
}

void GiveBack(std::vector<char>& buffer) {
  std::vector<char>& spare = SpareBuffer();
  if (buffer.size() == kBufferBytes && spare.empty()) {
    spare = std::move(buffer);
  }
  buffer = std::vector<char>();
}

}  // namespace

OutputFile::OutputFile(std::string path) : OutputFile(std::move(path), [] { return false; }) {}

OutputFile::OutputFile(std::string path, const std::function<bool()>& freeDescriptors)
    : path_(std::move(path)), buffer_(TakeBuffer()) {
  // Most pages go to new files: creating exclusively makes a regular file that is empty and
  // no other process's, which is locked without a look and never emptied (some file systems
  // take a truncation, even of an empty file, as a file being replaced, and write it to disk
  // as soon as it is closed). A link at the target is not
  // followed: one planted in a shared folder would send the page to any file the user can
  // write. Opening without blocking keeps a named pipe with no reader from hanging the export
  // before it is refused below.
  const auto open = [&](int flags) {
    int fd = ::open(path_.c_str(), flags, 0666);
    if (fd < 0 && (errno == EMFILE || errno == ENFILE) && freeDescriptors()) {
      fd = ::open(path_.c_str(), flags, 0666);
    }
    return fd;
  };
  constexpr int kWrite = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW;
  int fd = open(kWrite | O_EXCL);
  const bool created = fd >= 0;
  if (!created && errno == EEXIST) {
    fd = open(kWrite | O_NONBLOCK);
  }
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
  if (!created) {
    if (::fstat(fd, &info) != 0) {
      refuse(errno);
    }
    if (S_ISFIFO(info.st_mode)) {
      ::close(fd);
      throw FileError(path_, "it is a named pipe, not a file");
    }
  }
  if (created || S_ISREG(info.st_mode)) {
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      if (errno == EWOULDBLOCK) {
        ::close(fd);
        throw FileError(path_, "held by another process", EWOULDBLOCK);
      }
      refuse(errno);
    }
    if (!created && ::ftruncate(fd, 0) != 0) {
      refuse(errno);
    }
  } else if (const int flags = ::fcntl(fd, F_GETFL);
             flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    // A device is written as the system's other writers write it, waiting when it is busy.
    refuse(errno);
  }
  fd_ = fd;
  OpenWindow(buffer_.data(), buffer_.size());
}

OutputFile::~OutputFile() {
  try {
    Close();
  } catch (const FileError&) {
    // A destructor must not throw; Close() is there for callers who want to know.
  }
}

// The window lies in the buffer's heap block, which moves with the buffer.
OutputFile::OutputFile(OutputFile&& other) noexcept
    : path_(std::move(other.path_)),
      fd_(std::exchange(other.fd_, -1)),
      buffer_(std::move(other.buffer_)) {
  TakeWindow(other);
}

void OutputFile::MakeRoom(std::size_t size) {
  const std::size_t pending = Pending().size();
  WritePending(pending < kChunkBytes ? pending : pending - pending % kChunkBytes);
  // Only a piece holding an oversized string value outgrows the buffer.
  if (Pending().size() + size > buffer_.size()) {
    const std::size_t kept = Pending().size();
    buffer_.resize(kept + size);
    OpenWindow(buffer_.data(), buffer_.size());
    Commit(buffer_.data() + kept);
  }
}

void OutputFile::Flush() {
  WritePending(Pending().size());
}

void OutputFile::WritePending(std::size_t size) {
  if (fd_ < 0) {
    throw FileError(path_, "the file is not open");
  }
  // On failure the bytes not yet written stay buffered, so a later Close() reports them too.
  const std::string_view pending = Pending();
  if (pending.empty()) {
    return;
  }
  std::size_t done = 0;
  const int error = WriteFully(fd_, pending.data(), size, done);
  std::memmove(buffer_.data(), pending.data() + done, pending.size() - done);
  OpenWindow(buffer_.data(), buffer_.size());
  Commit(buffer_.data() + (pending.size() - done));
  if (error != 0) {
    throw FileError(path_, error);
  }
}

void OutputFile::Hold() {
  Flush();
  // A write after this opens a buffer again, of the size it needs.
  CloseWindow();
  GiveBack(buffer_);
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
    CloseWindow();
    ::close(fd);
    throw;
  }
  fd_ = -1;
  CloseWindow();
  GiveBack(buffer_);
  // After EINTR the descriptor is gone all the same; anything else is a real failure (a
  // network file system reporting a late write error, for one).
  if (::close(fd) != 0 && errno != EINTR) {
    throw FileError(path_, errno);
  }
}

}  // namespace kalmor
