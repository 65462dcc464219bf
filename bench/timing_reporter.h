#pragma once

// The benchmarks' console output, keeping each run's real time per iteration by name so that a
// program can print how its cases compare with the baseline measured in the same run.

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace kalmor::bench {

class TimingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.iterations > 0 && run.run_type == Run::RT_Iteration) {
        seconds_[run.benchmark_name()] =
            run.real_accumulated_time / static_cast<double>(run.iterations);
        cpuSeconds_[run.benchmark_name()] =
            run.cpu_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Seconds per iteration of the named run, or 0 when a filter left it out.
  double Seconds(const std::string& name) const { return Find(seconds_, name); }
  // The processor seconds (user and system) per iteration of this process's own work, which a
  // machine shared with other work leaves steadier than the real time.
  double CpuSeconds(const std::string& name) const { return Find(cpuSeconds_, name); }

 private:
  static double Find(const std::map<std::string, double>& times, const std::string& name) {
    const auto found = times.find(name);
    return found != times.end() ? found->second : 0.0;
  }

  std::map<std::string, double> seconds_;
  std::map<std::string, double> cpuSeconds_;
};

// Runs every benchmark of the program with `reporter`.
inline void RunAll(int argc, char** argv, TimingReporter& reporter) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
}

}  // namespace kalmor::bench
