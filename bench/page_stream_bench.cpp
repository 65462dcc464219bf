// Exports one page of many wires through the page walk into a file, and shows that the export
// streams: the peak resident memory grows by a fixed buffer during the export, whatever the
// size of the file written.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include <unistd.h>

#include "dxf/output_file.h"
#include "dxf/skeleton.h"
#include "kalmor/dbo.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "page/page_walk.h"

namespace {

// A page of `count` wires in a grid; every tenth carries a junction and a net alias, so that
// the text path runs too.
std::string WireDesign(int64_t count) {
  std::string json = R"({"kalmor_design": 1, "name": "BENCH", "schematics": [{"name": "S",
    "pages": [{"name": "P", "width": 110000, "height": 85000, "wires": [)";
  json.reserve(static_cast<std::size_t>(count) * 110);
  for (int64_t i = 0; i < count; ++i) {
    const int64_t x = (i % 1000) * 10;
    const int64_t y = (i / 1000) * 10;
    json += i == 0 ? "\n" : ",\n";
    json += R"({"start": [)" + std::to_string(x) + ", " + std::to_string(y) + R"(], "end": [)" +
            std::to_string(x + 10) + ", " + std::to_string(y) + "]";
    if (i % 10 == 0) {
      json += R"(, "junctions": [[)" + std::to_string(x) + ", " + std::to_string(y) +
              R"(]], "aliases": [{"name": "N)" + std::to_string(i) + R"(", "location": [)" +
              std::to_string(x) + ", " + std::to_string(y) + "]}]";
    }
    json += "}";
  }
  json += "]}]}]}";
  return json;
}

// A field of /proc/self/status in kibibytes (VmHWM: the peak resident size; VmRSS: the current).
int64_t StatusKiB(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  const std::string key = std::string(field) + ":";
  while (std::getline(status, line)) {
    if (line.rfind(key, 0) == 0) {
      return std::strtoll(line.c_str() + key.size(), nullptr, 10);
    }
  }
  return -1;
}

// Starts a new peak at the current resident size, so that the next peak read belongs to what
// runs after this call.
void ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
}

void BM_PageStream(benchmark::State& state) {
  const int64_t wires = state.range(0);
  std::unique_ptr<kalmor::model::Design> design =
      kalmor::model::ReadDesignDocument(WireDesign(wires), "bench");
  const kalmor::DboPage* page = design->FindPage("S", "P");
  if (page == nullptr) {
    state.SkipWithError("the generated page was not found");
    return;
  }
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("kalmor-page-stream-" + std::to_string(::getpid()) + ".dxf");

  const int64_t loadPeakKiB = StatusKiB("VmHWM");
  ResetPeak();
  const int64_t loadedKiB = StatusKiB("VmRSS");
  int64_t written = 0;
  for (auto _ : state) {
    kalmor::OutputFile file(path.string());
    kalmor::DxfWriteHeader(file);
    kalmor::DxfWriteEntitiesOpen(file);
    kalmor::DboState status;
    kalmor::PageTranslator(status, *page, nullptr, 1, 1, file, std::string());
    kalmor::DxfWriteEnd(file);
    file.Close();
    written += static_cast<int64_t>(std::filesystem::file_size(path));
  }
  const int64_t peakKiB = StatusKiB("VmHWM");
  std::filesystem::remove(path);

  state.SetBytesProcessed(written);
  state.counters["file_MB"] = static_cast<double>(written) / state.iterations() / 1e6;
  state.counters["load_peak_MiB"] = static_cast<double>(loadPeakKiB) / 1024;
  state.counters["loaded_MiB"] = static_cast<double>(loadedKiB) / 1024;
  state.counters["peak_MiB"] = static_cast<double>(peakKiB) / 1024;
  state.counters["export_growth_KiB"] = static_cast<double>(peakKiB - loadedKiB);
}

// Ten times the wires, ten times the file: the growth during the export stays the same.
BENCHMARK(BM_PageStream)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
