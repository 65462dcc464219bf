// The command where the system's work outweighs its own: `kalmor export` of a design of 200,000
// one-page schematics, which writes 200,000 files, against a small program that only creates the
// same files and writes the same bytes into them (page_files_baseline). Both run as processes,
// each time into a new empty folder; their files are compared once before timing. The folder
// is in memory unless KALMOR_BENCH_DIR names one on the disk to be measured.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench_dir.h"
#include "many_schematics.h"
#include "run_process.h"
#include "timing_reporter.h"

namespace {

constexpr int64_t kSchematics = 200000;

std::filesystem::path PageFile(const std::filesystem::path& folder, int64_t schematic) {
  return folder / ("many_S" + std::to_string(schematic) + "_1.dxf");
}

struct Fixture {
  Fixture() {
    dir = kalmor::bench::MakeBenchDir("many_files");
    document = (dir / "many.json").string();
    std::ofstream(document, std::ios::binary) << kalmor::bench::ManySchematics(kSchematics);
    double cpu = 0;
    if (!Export(dir / "exported", cpu)) {
      Fail("the command failed");
    }
    page = (dir / "page.dxf").string();
    std::filesystem::copy_file(PageFile(dir / "exported", 0), page);
    if (!Baseline(dir / "baseline", cpu)) {
      Fail("the baseline failed");
    }
    // Every page is drawn alike: the same bytes in each file, the same files in both folders.
    const std::string expected = kalmor::bench::ReadFile(page);
    for (int64_t i = 0; i < kSchematics; i += 997) {
      if (kalmor::bench::ReadFile(PageFile(dir / "exported", i)) != expected ||
          kalmor::bench::ReadFile(PageFile(dir / "baseline", i)) != expected) {
        Fail("the export and the baseline wrote different files");
      }
    }
    for (const char* folder : {"exported", "baseline"}) {
      const auto files = std::distance(std::filesystem::directory_iterator(dir / folder), {});
      if (files != kSchematics) {
        Fail("a folder holds the wrong number of files");
      }
      std::filesystem::remove_all(dir / folder);
    }
    bytes = static_cast<int64_t>(expected.size()) * kSchematics;
  }
  ~Fixture() { std::filesystem::remove_all(dir); }

  [[noreturn]] void Fail(const char* why) const {
    std::fprintf(stderr, "%s (in %s)\n", why, dir.c_str());
    std::abort();
  }

  bool Export(const std::filesystem::path& folder, double& cpu) const {
    std::filesystem::create_directory(folder);
    return kalmor::bench::RunProcess(
        {KALMOR_CLI_PATH, "export", document, "-o", (folder / "many.dxf").string()}, cpu);
  }
  bool Baseline(const std::filesystem::path& folder, double& cpu) const {
    std::filesystem::create_directory(folder);
    return kalmor::bench::RunProcess(
        {PAGE_FILES_BASELINE_PATH, std::to_string(kSchematics), page, folder.string(), "many"},
        cpu);
  }

  std::filesystem::path dir;
  std::string document;
  std::string page;
  int64_t bytes = 0;
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// Processor seconds per run of each process, by benchmark.
double g_exportCpu = 0;
double g_baselineCpu = 0;

template <bool (Fixture::*Process)(const std::filesystem::path&, double&) const, double* kCpu>
void BM_Process(benchmark::State& state) {
  const Fixture& fixture = Shared();  // made before the timing starts
  const std::filesystem::path folder = fixture.dir / "out";
  *kCpu = kalmor::bench::TimeProcess(
      state, fixture.bytes, [&](double& cpu) { return (fixture.*Process)(folder, cpu); },
      [&] { std::filesystem::remove_all(folder); });
}
BENCHMARK(BM_Process<&Fixture::Export, &g_exportCpu>)
    ->Name("KalmorExport")
    ->Unit(benchmark::kSecond)
    ->Iterations(3)
    ->UseRealTime();
BENCHMARK(BM_Process<&Fixture::Baseline, &g_baselineCpu>)
    ->Name("PageFilesBaseline")
    ->Unit(benchmark::kSecond)
    ->Iterations(3)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  kalmor::bench::TimingReporter reporter;
  kalmor::bench::RunAll(argc, argv, reporter);
  const double exported = reporter.Seconds("KalmorExport/iterations:3/real_time");
  const double baseline = reporter.Seconds("PageFilesBaseline/iterations:3/real_time");
  if (exported > 0 && baseline > 0) {
    std::printf(
        "kalmor export of %lld schematics (as many files, %.0f MB): %.2f s (%.2f s of processor); "
        "the baseline creating and writing the same files alone: %.2f s (%.2f s); the export "
        "takes %.2f of the baseline's time (%.2f of its processor time)\n",
        static_cast<long long>(kSchematics), static_cast<double>(Shared().bytes) / 1e6, exported,
        g_exportCpu, baseline, g_baselineCpu, exported / baseline, g_exportCpu / g_baselineCpu);
  }
  return 0;
}
