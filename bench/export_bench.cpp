// The whole command against a plain writer: `kalmor export` of a page of 200,000 wires (read the
// document, walk the page, write the file) and, as the baseline, a small program that only
// formats and writes the same wire records with snprintf (wires_snprintf_baseline). Both run as
// processes; their files are compared once before timing. The export should take at most half
// the baseline's time. Beside the real time, each reports the processor time its processes used
// (user and system), which a machine shared with other work leaves steadier.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench_dir.h"
#include "run_process.h"
#include "timing_reporter.h"
#include "wire_page.h"

namespace {

constexpr int64_t kWires = 200000;

struct Fixture {
  Fixture() {
    dir = kalmor::bench::MakeBenchDir("export");
    document = (dir / "page.json").string();
    std::ofstream(document, std::ios::binary) << kalmor::bench::WirePageDocument(kWires);
    // The export's file is the baseline's records between the file's opening and closing texts.
    double cpu = 0;
    if (!Export(cpu) || !Baseline(cpu)) {
      std::fprintf(stderr, "the command or the baseline failed\n");
      std::abort();
    }
    const std::string exported = kalmor::bench::ReadFile(dir / "out_S_P.dxf");
    const std::string records = kalmor::bench::ReadFile(dir / "baseline.dxf");
    const std::string head =
        " 0\r\nSECTION\r\n 2\r\nHEADER\r\n 9\r\n$ACADVER\r\n 1\r\nAC1009\r\n 0\r\nENDSEC\r\n"
        " 0\r\nSECTION\r\n 2\r\nENTITIES\r\n";
    if (exported != head + records + " 0\r\nENDSEC\r\n 0\r\nEOF\r\n") {
      std::fprintf(stderr, "the export and the baseline wrote different wire records\n");
      std::abort();
    }
    bytes = exported.size();
  }
  ~Fixture() { std::filesystem::remove_all(dir); }

  bool Export(double& cpu) const {
    return kalmor::bench::RunProcess(
        {KALMOR_CLI_PATH, "export", document, "-o", (dir / "out.dxf").string(), "--no-frame"}, cpu);
  }
  bool Baseline(double& cpu) const {
    return kalmor::bench::RunProcess(
        {WIRES_BASELINE_PATH, std::to_string(kWires), (dir / "baseline.dxf").string()}, cpu);
  }

  std::filesystem::path dir;
  std::string document;
  std::size_t bytes = 0;
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// Processor seconds per run of each process, by benchmark.
double g_exportCpu = 0;
double g_baselineCpu = 0;

template <bool (Fixture::*Process)(double&) const, double* kCpu>
void BM_Process(benchmark::State& state) {
  const Fixture& fixture = Shared();  // made before the timing starts
  *kCpu = kalmor::bench::TimeProcess(
      state, static_cast<int64_t>(fixture.bytes),
      [&](double& cpu) { return (fixture.*Process)(cpu); }, [] {});
}
BENCHMARK(BM_Process<&Fixture::Export, &g_exportCpu>)
    ->Name("KalmorExport")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_Process<&Fixture::Baseline, &g_baselineCpu>)
    ->Name("SnprintfBaseline")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  kalmor::bench::TimingReporter reporter;
  kalmor::bench::RunAll(argc, argv, reporter);
  const double exported = reporter.Seconds("KalmorExport/real_time");
  const double baseline = reporter.Seconds("SnprintfBaseline/real_time");
  if (exported > 0 && baseline > 0) {
    std::printf(
        "kalmor export of %lld wires (%.1f MB of DXF): %.0f ms (%.0f ms of processor); the "
        "snprintf baseline writing the same wires alone: %.0f ms (%.0f ms); the export takes "
        "%.2f of the baseline's time (%.2f of its processor time)\n",
        static_cast<long long>(kWires), static_cast<double>(Shared().bytes) / 1e6, exported * 1e3,
        g_exportCpu * 1e3, baseline * 1e3, g_baselineCpu * 1e3, exported / baseline,
        g_exportCpu / g_baselineCpu);
  }
  return 0;
}
