#include "kalmor/errors.h"

#include <cstring>
#include <utility>

#include "input/shown_text.h"

namespace kalmor {

// The destructors are defined here so that each type's identity lives in the library once, and
// a host catches exactly the types the library throws.
Error::Error(ErrorKind kind, const std::string& message)
    : std::runtime_error(message), kind_(kind) {}
Error::~Error() = default;

DocumentError::DocumentError(const std::string& message) : Error(ErrorKind::kDocument, message) {}
DocumentError::~DocumentError() = default;

FileError::FileError(std::string path, int errorNumber)
    : FileError(std::move(path), std::strerror(errorNumber), errorNumber) {}

FileError::FileError(std::string path, std::string reason, int errorNumber)
    // The path escaped: a NUL would otherwise end the message early for anyone reading what()
    // as a C string, and take the reason with it.
    : Error(ErrorKind::kOutputFile, "cannot write " + Escaped(path) + ": " + reason),
      path_(std::move(path)),
      reason_(std::move(reason)),
      errorNumber_(errorNumber) {}
FileError::~FileError() = default;

EnvironmentError::EnvironmentError(const std::string& message)
    : Error(ErrorKind::kEnvironment, message) {}
EnvironmentError::~EnvironmentError() = default;

}  // namespace kalmor
