#pragma once

// What the library throws. Every failure it reports is an Error of one kind, so that a caller can
// catch the base type and act by kind; the derived types carry the details of each kind.

#include <stdexcept>
#include <string>

#include "kalmor/api.h"

namespace kalmor {

enum class ErrorKind {
  kDocument,     // the design holds something that cannot be exported
  kOutputFile,   // an output file cannot be created, written or closed
  kEnvironment,  // the machine lacks something the export needs, such as a usable font
};

class KALMOR_API Error : public std::runtime_error {
 public:
  Error(ErrorKind kind, const std::string& message);
  ~Error() override;
  ErrorKind kind() const noexcept { return kind_; }

 private:
  ErrorKind kind_;
};

// Design data that cannot be exported; the message says where and what.
class KALMOR_API DocumentError : public Error {
 public:
  explicit DocumentError(const std::string& message);
  ~DocumentError() override;
};

// An output file that cannot be created, written, flushed or closed. The message names the path
// and the reason.
class KALMOR_API FileError : public Error {
 public:
  // A failure the system reported: the reason is the system's text for `errorNumber` (errno).
  FileError(std::string path, int errorNumber);
  // A failure in words of its own, with the system's error number when there is one (else 0).
  FileError(std::string path, std::string reason, int errorNumber = 0);
  ~FileError() override;

  const std::string& path() const noexcept { return path_; }
  const std::string& reason() const noexcept { return reason_; }
  int errorNumber() const noexcept { return errorNumber_; }

 private:
  std::string path_;
  std::string reason_;
  int errorNumber_ = 0;
};

// Something the machine lacks, such as a font for the texts: no export can run until it is
// installed.
class KALMOR_API EnvironmentError : public Error {
 public:
  explicit EnvironmentError(const std::string& message);
  ~EnvironmentError() override;
};

}  // namespace kalmor
