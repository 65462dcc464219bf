#pragma once

// The command's files beyond reading them (input/input_file.h): outputs are refused when they are
// an input, and written whole.

#include <optional>
#include <string>
#include <vector>

#include "input/input_file.h"

namespace kalmor::cli {

// The file a path reaches through any links, if it exists.
std::optional<FileIdentity> IdentityOf(const std::string& path);

// Throws UsageError when `output` reaches the file `input` (at `inputPath`): writing it would
// destroy what is being read.
void RefuseSameFile(const std::string& output, const FileIdentity& input,
                    const std::string& inputPath);

// As RefuseSameFile, for each of `outputs` in order. After one listing of each folder, only the
// names it holds (or, but for case, holds as a link) are looked up, and every name of a folder
// that holds the input: a design of many small pages would spend longer on a lookup of each name
// than on writing.
void RefuseSameFiles(const std::vector<std::string>& outputs, const FileIdentity& input,
                     const std::string& inputPath);

// Creates or replaces `path`; throws FileError when it cannot.
void WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace kalmor::cli
