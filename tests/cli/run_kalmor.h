#pragma once

// Runs the built kalmor command as a process, with no terminal: standard input is empty and
// both outputs are captured.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "support/paths.h"

extern char** environ;

namespace kalmor::testing {

struct CommandResult {
  int status = -1;  // the exit status; -1 when the process did not exit normally
  std::string out;
  std::string err;
};

inline CommandResult RunKalmor(const std::vector<std::string>& arguments) {
  const TempDir capture;
  const std::string outPath = (capture / "out").string();
  const std::string errPath = (capture / "err").string();

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);

  std::vector<std::string> argv{KALMOR_CLI_PATH};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& argument : argv) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);

  // Leak checking, where the build has it, must not talk on the standard error under test.
  std::vector<std::string> environment{"LSAN_OPTIONS=print_suppressions=0"};
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string entry = *variable;
    if (entry.rfind("LSAN_OPTIONS=", 0) == 0) {
      environment[0] = entry + ":print_suppressions=0";
    } else {
      environment.push_back(entry);
    }
  }
  std::vector<char*> envp;
  for (std::string& entry : environment) {
    envp.push_back(entry.data());
  }
  envp.push_back(nullptr);

  CommandResult result;
  pid_t pid = 0;
  const int spawned =
      posix_spawn(&pid, KALMOR_CLI_PATH, &actions, nullptr, pointers.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    return result;
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) {
      return result;
    }
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = ReadFileBytes(outPath);
  result.err = ReadFileBytes(errPath);
  return result;
}

}  // namespace kalmor::testing
