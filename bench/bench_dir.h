#pragma once

// Where benchmarks write their files, and how they read them back: in memory (/dev/shm) where the
// machine has it, so that a benchmark times the program and not the disk's writeback (replacing a
// file the disk is still writing waits for the disk), else in /tmp; or in the folder
// KALMOR_BENCH_DIR names, to measure a disk.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

namespace kalmor::bench {

// A fresh directory named after `name`; the caller removes it.
inline std::filesystem::path MakeBenchDir(const std::string& name) {
  std::error_code error;
  const char* chosen = std::getenv("KALMOR_BENCH_DIR");
  const std::string base = chosen != nullptr && *chosen != '\0'               ? chosen
                           : std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm"
                                                                              : "/tmp";
  std::string pattern = base + "/kalmor_" + name + "_XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    std::perror("mkdtemp");
    std::abort();
  }
  return pattern;
}

// The bytes of the file at `path`; empty if it cannot be read.
inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace kalmor::bench
