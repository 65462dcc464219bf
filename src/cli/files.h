#pragma once

// Whole-file reads and writes of the command, with errors that name the file.

#include <string>

namespace kalmor::cli {

// Throws InputError when the file cannot be read.
std::string ReadWholeFile(const std::string& path);
// Creates or replaces `path`; throws FileError when it cannot.
void WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace kalmor::cli
