#pragma once

// The command's files beyond reading them (input/input_file.h): outputs are refused when they are
// an input, and written whole.

#include <optional>
#include <string>

#include "input/input_file.h"

namespace kalmor::cli {

// The file a path reaches through any links, if it exists.
std::optional<FileIdentity> IdentityOf(const std::string& path);

// Throws UsageError when `output` reaches the file `input` (at `inputPath`): writing it would
// destroy what is being read.
void RefuseSameFile(const std::string& output, const FileIdentity& input,
                    const std::string& inputPath);

// Creates or replaces `path`; throws FileError when it cannot.
void WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace kalmor::cli
