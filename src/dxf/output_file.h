#pragma once

// The output file of one page: created or replaced, opened read-write and exclusively, written
// through its own buffer. A symbolic link or a named pipe at the path is refused. Every failure (create, write, flush, close) is a FileError that names
// the path and the operating system's reason; nothing is lost silently.

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"

namespace kalmor {

class FileError : public std::runtime_error {
 public:
  // `systemError`: the errno behind the failure, 0 when it is not the system's.
  FileError(std::string path, std::string reason, int systemError = 0);
  // The system's own words for `systemError`.
  static FileError FromSystem(std::string path, int systemError);

  const std::string& path() const { return path_; }
  const std::string& reason() const { return reason_; }
  int systemError() const { return systemError_; }

 private:
  std::string path_;
  std::string reason_;
  int systemError_;
};

class OutputFile final : public ByteSink {
 public:
  // Creates or truncates `path`; throws FileError when it cannot.
  explicit OutputFile(std::string path);
  ~OutputFile() override;  // closes; errors here are swallowed: call Close() to see them

  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&& other) noexcept;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(std::string_view bytes) override;
  // Hands the buffer to the operating system; throws FileError on failure.
  void Flush();
  // Flushes and gives back the buffer; the file stays open, and locked, until Close(). For a
  // file that is written and must stay held while others are written.
  void Hold();
  // Flushes and closes; throws FileError on failure. Idempotent.
  void Close();

  const std::string& path() const { return path_; }
  bool is_open() const { return fd_ >= 0; }
  int descriptor() const { return fd_; }

 private:
  void WriteAll(const char* data, std::size_t size);

  std::string path_;
  int fd_ = -1;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
};

}  // namespace kalmor
