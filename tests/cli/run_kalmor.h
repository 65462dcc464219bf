#pragma once

// Runs the built kalmor command as a process, with no terminal: standard input is empty (or
// the given text) and both outputs are captured.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "support/paths.h"

extern char** environ;

namespace kalmor::test {

struct CommandResult {
  int status = -1;  // the exit status; -1 when the process did not exit normally
  std::string out;
  std::string err;
};

struct CommandSetting {
  std::string input;            // standard input's content
  bool closedOutput = false;    // start with standard output closed
  bool defaultSignals = false;  // every signal at its default action, none ignored
};

// One run of the command, started at construction; Wait() ends it.
class KalmorProcess {
 public:
  KalmorProcess(const std::vector<std::string>& arguments, const CommandSetting& setting = {}) {
    std::ofstream(capture_ / "in", std::ios::binary) << setting.input;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, (capture_ / "in").c_str(), O_RDONLY,
                                     0);
    if (setting.closedOutput) {
      posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
    } else {
      posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (capture_ / "out").c_str(),
                                       O_WRONLY | O_CREAT | O_TRUNC, 0644);
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (capture_ / "err").c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    if (setting.defaultSignals) {
      sigset_t all;
      sigfillset(&all);
      posix_spawnattr_setsigdefault(&attributes, &all);
      posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    }

    std::vector<std::string> argv{KALMOR_CLI_PATH};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : argv) {
      pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    // Leak checking, where the build has it, must not talk on the standard error under test;
    // this process read its own options when it started.
    static const int quiet = [] {
      const char* options = std::getenv("LSAN_OPTIONS");
      const std::string more = std::string(options ? options : "") + ":print_suppressions=0";
      return setenv("LSAN_OPTIONS", more.c_str(), 1);
    }();
    (void)quiet;
    if (posix_spawn(&pid_, KALMOR_CLI_PATH, &actions, &attributes, pointers.data(), environ) != 0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  ~KalmorProcess() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      Wait();
    }
  }
  KalmorProcess(const KalmorProcess&) = delete;
  KalmorProcess& operator=(const KalmorProcess&) = delete;

  pid_t pid() const { return pid_; }

  CommandResult Wait() {
    CommandResult result;
    int status = 0;
    while (pid_ > 0 && waitpid(pid_, &status, 0) < 0) {
      if (errno != EINTR) {
        return result;
      }
    }
    if (pid_ <= 0) {
      return result;
    }
    pid_ = -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (std::ifstream(capture_ / "out")) {
      result.out = ReadFileBytes(capture_ / "out");
    }
    result.err = ReadFileBytes(capture_ / "err");
    return result;
  }

 private:
  TempDir capture_;
  pid_t pid_ = -1;
};

inline CommandResult RunKalmor(const std::vector<std::string>& arguments,
                               const CommandSetting& setting = {}) {
  return KalmorProcess(arguments, setting).Wait();
}

// The tests of the command: a folder of their own for the files it reads and writes.
class CommandTest : public ::testing::Test {
 protected:
  // Writes `text` to the file `name` in the folder; returns its path.
  std::string Write(const std::string& name, const std::string& text) {
    std::ofstream(temp / name, std::ios::binary) << text;
    return In(name);
  }
  std::string In(const std::string& name) const { return (temp / name).string(); }

  TempDir temp;
};

}  // namespace kalmor::test
