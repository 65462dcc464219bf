#include "cli/files.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "cli/commands.h"
#include "dxf/output_file.h"

namespace kalmor::cli {

std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string bytes;
  if (in) {
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  if (!in && !in.eof()) {
    throw InputError("cannot read " + path + ": " + std::strerror(errno));
  }
  return bytes;
}

void WriteWholeFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Close();
}

}  // namespace kalmor::cli
