#include "kalmor/errors.h"

#include <cstring>
#include <utility>

namespace kalmor {

// The destructors are defined here so that each type's identity lives in the library once, and
// a host catches exactly the types the library throws.
Error::Error(ErrorKind kind, const std::string& message)
    : std::runtime_error(message), kind_(kind) {}
Error::~Error() = default;

DocumentError::DocumentError(const std::string& message) : Error(ErrorKind::kDocument, message) {}
DocumentError::~DocumentError() = default;

namespace {

// The path as the message shows it, control characters escaped: a NUL would otherwise end the
// message early for anyone reading what() as a C string, and take the reason with it.
std::string ShownPath(const std::string& path) {
  std::string shown;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      static constexpr char kHex[] = "0123456789abcdef";
      shown += {'\\', 'x', kHex[byte >> 4], kHex[byte & 0xf]};
    } else {
      shown += c;
    }
  }
  return shown;
}

}  // namespace

FileError::FileError(std::string path, int errorNumber)
    : FileError(std::move(path), std::strerror(errorNumber), errorNumber) {}

FileError::FileError(std::string path, std::string reason, int errorNumber)
    : Error(ErrorKind::kOutputFile, "cannot write " + ShownPath(path) + ": " + reason),
      path_(std::move(path)),
      reason_(std::move(reason)),
      errorNumber_(errorNumber) {}
FileError::~FileError() = default;

EnvironmentError::EnvironmentError(const std::string& message)
    : Error(ErrorKind::kEnvironment, message) {}
EnvironmentError::~EnvironmentError() = default;

}  // namespace kalmor
