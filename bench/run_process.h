#pragma once

// Runs a program as a child process, as the benchmarks that time the command itself do.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

extern char** environ;

namespace kalmor::bench {

// Runs a program with `arguments` and its output thrown away; false unless it exits with 0.
// Adds the processor seconds it used (user and system) to `cpu`.
inline bool RunProcess(std::vector<std::string> arguments, double& cpu) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  while (spawned == 0 && wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
  }
  const auto seconds = [](timeval t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; };
  cpu += seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return spawned == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Times `run(cpu)`, a process run by RunProcess, once per iteration of `state`, calling
// `between()` untimed after each, and counts `bytes` per run. Returns the processor seconds per
// run, also shown as the counter "process_cpu_s".
template <typename Run, typename Between>
double TimeProcess(benchmark::State& state, int64_t bytes, Run run, Between between) {
  double cpu = 0;
  for (auto _ : state) {
    if (!run(cpu)) {
      state.SkipWithError("the process failed");
    }
    state.PauseTiming();
    between();
    state.ResumeTiming();
  }
  const double perRun = cpu / static_cast<double>(state.iterations());
  state.counters["process_cpu_s"] = perRun;
  state.SetBytesProcessed(state.iterations() * bytes);
  return perRun;
}

}  // namespace kalmor::bench
