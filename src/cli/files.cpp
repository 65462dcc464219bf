#include "cli/files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cli/commands.h"
#include "kalmor/errors.h"

namespace kalmor::cli {

std::string ReadWholeFile(const std::string& path) {
  // The C library keeps the reason of a failed read; a stream reading a directory throws a
  // message of its own that names no file.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  std::string bytes;
  if (file != nullptr) {
    char buffer[1 << 16];
    while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, file.get())) {
      bytes.append(buffer, got);
    }
  }
  if (file == nullptr || std::ferror(file.get()) != 0) {
    throw InputError("cannot read " + path + ": " + std::strerror(errno));
  }
  return bytes;
}

void WriteWholeFile(const std::string& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) {
    throw FileError(path, errno);
  }
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  const int writeError = errno;
  // Closing flushes, and reports what the last buffer met (a full disk, for one).
  if (std::fclose(file) != 0) {
    throw FileError(path, written ? errno : writeError);
  }
  if (!written) {
    throw FileError(path, writeError);
  }
}

}  // namespace kalmor::cli
