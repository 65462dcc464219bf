// The baseline of many_files_bench: a small program that only creates page files and writes
// them, each given the same bytes, one system call each for its creation, its bytes and its
// close: what any program writing these files must at least ask of the system.
//
//   page_files_baseline COUNT PAGE DIR STEM
//
// writes the bytes of the file PAGE to DIR/STEM_S<i>_1.dxf for i from 0 to COUNT - 1, the names
// the command gives the pages of the benchmark's design.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: page_files_baseline COUNT PAGE DIR STEM\n");
    return 2;
  }
  const long count = std::strtol(argv[1], nullptr, 10);
  std::ifstream in(argv[2], std::ios::binary);
  const std::string page(std::istreambuf_iterator<char>(in), {});
  if (!in.good() && !in.eof()) {
    std::perror(argv[2]);
    return 1;
  }
  const std::string prefix = std::string(argv[3]) + "/" + argv[4] + "_S";
  for (long i = 0; i < count; ++i) {
    const std::string path = prefix + std::to_string(i) + "_1.dxf";
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0 || ::write(file, page.data(), page.size()) != static_cast<ssize_t>(page.size()) ||
        ::close(file) != 0) {
      std::perror(path.c_str());
      return 1;
    }
  }
  return 0;
}
