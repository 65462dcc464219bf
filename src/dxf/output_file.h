#pragma once

// The output file of one page: created or replaced, opened read-write and exclusively, written
// through its own buffer. Every failure (create, write, flush, close) is a FileError that names
// the path and the operating system's reason; nothing is lost silently.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"
#include "kalmor/errors.h"

namespace kalmor {

class OutputFile final : public ByteSink {
 public:
  // Creates or truncates `path`; throws FileError when it cannot.
  explicit OutputFile(std::string path);
  // As above, but should the process be out of descriptors, `freeDescriptors` is asked to
  // close some (it answers whether it did) and the open is tried once more. Nothing is thrown
  // in between: with no descriptor free, even building an exception may fail.
  OutputFile(std::string path, const std::function<bool()>& freeDescriptors);
  ~OutputFile() override;  // closes; errors here are swallowed: call Close() to see them

  // Movable so that a list of open files can grow; never reassigned.
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

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
  void MakeRoom(std::size_t size) override;
  // Writes the first `size` bytes pending and keeps the rest at the start of the buffer.
  void WritePending(std::size_t size);

  std::string path_;
  int fd_ = -1;
  std::vector<char> buffer_;  // the sink's window while the file is open
};

}  // namespace kalmor
