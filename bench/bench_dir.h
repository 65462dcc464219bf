#pragma once

// Where benchmarks write their files: in memory (/dev/shm) where the machine has it, so that a
// benchmark times the program and not the disk's writeback (replacing a file the disk is still
// writing waits for the disk), else in /tmp.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace kalmor::bench {

// A fresh directory named after `name`; the caller removes it.
inline std::filesystem::path MakeBenchDir(const std::string& name) {
  std::error_code error;
  const std::string base = std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm" : "/tmp";
  std::string pattern = base + "/kalmor_" + name + "_XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    std::perror("mkdtemp");
    std::abort();
  }
  return pattern;
}

}  // namespace kalmor::bench
