// Reading KiCad schematics, on the demo designs of Debian's kicad-demos: every schematic file read
// from disk (the baseline), the same bytes tokenized, every design imported (tokenized, mapped
// to the design, texts measured) from those bytes in memory, and the largest design read from
// disk and exported to DXF files end to end.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

#include "kalmor/export.h"
#include "kicad/kicad_reader.h"
#include "kicad/sexpr.h"
#include "model/design.h"

namespace {

namespace fs = std::filesystem;

const fs::path kDemos = "/usr/share/kicad/demos";

struct Demos {
  std::vector<std::string> paths;                  // every schematic file
  std::map<std::string, std::string> texts;        // by path
  std::vector<std::string> roots;                  // designs: beside a project file
  std::map<std::string, std::size_t> designBytes;  // the files of each design, by root
  std::size_t bytes = 0;
};

std::string ReadFile(const std::string& path) {
  std::string text;
  std::string error;
  if (!kalmor::kicad::DiskFiles()(path, text, error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
  }
  return text;
}

const Demos& LoadDemos() {
  static const Demos demos = [] {
    Demos found;
    std::error_code missing;
    for (const auto& entry : fs::recursive_directory_iterator(kDemos, missing)) {
      const fs::path& path = entry.path();
      if (path.extension() == ".kicad_sch") {
        found.paths.push_back(path.string());
        found.texts[path.string()] = ReadFile(path.string());
        found.bytes += found.texts[path.string()].size();
        if (fs::exists(fs::path(path).replace_extension(".kicad_pro"))) {
          found.roots.push_back(path.string());
        }
      }
    }
    return found;
  }();
  return demos;
}

kalmor::kicad::FileSource InMemory(const Demos& demos, std::size_t& read) {
  return [&demos, &read](const std::string& path, std::string& text, std::string& error) {
    const auto found = demos.texts.find(fs::path(path).lexically_normal().string());
    if (found == demos.texts.end()) {
      error = "not a demo file";
      return false;
    }
    text = found->second;
    read += text.size();
    return true;
  };
}

bool HaveDemos(benchmark::State& state) {
  if (LoadDemos().paths.empty()) {
    state.SkipWithError("no KiCad demos: scripts/setup installs kicad-demos");
    return false;
  }
  return true;
}

void BM_ReadFiles(benchmark::State& state) {
  if (!HaveDemos(state)) {
    return;
  }
  for (auto _ : state) {
    for (const std::string& path : LoadDemos().paths) {
      benchmark::DoNotOptimize(ReadFile(path));
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * LoadDemos().bytes));
}
BENCHMARK(BM_ReadFiles)->Unit(benchmark::kMillisecond);

void BM_Tokenize(benchmark::State& state) {
  if (!HaveDemos(state)) {
    return;
  }
  for (auto _ : state) {
    std::size_t tokens = 0;
    for (const auto& [path, text] : LoadDemos().texts) {
      kalmor::kicad::detail::Tokenizer tokenizer(text);
      while (tokenizer.Next().kind != kalmor::kicad::detail::TokenKind::kEnd) {
        ++tokens;
      }
    }
    benchmark::DoNotOptimize(tokens);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * LoadDemos().bytes));
}
BENCHMARK(BM_Tokenize)->Unit(benchmark::kMillisecond);

void BM_Import(benchmark::State& state) {
  if (!HaveDemos(state)) {
    return;
  }
  const Demos& demos = LoadDemos();
  std::size_t read = 0;
  const kalmor::kicad::FileSource files = InMemory(demos, read);
  for (auto _ : state) {
    for (const std::string& root : demos.roots) {
      read += demos.texts.at(root).size();
      benchmark::DoNotOptimize(
          kalmor::kicad::ReadKiCadSchematic(demos.texts.at(root), root, files).design);
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(read));
}
BENCHMARK(BM_Import)->Unit(benchmark::kMillisecond);

// The design whose files are largest, from disk to DXF files.
void BM_LargestEndToEnd(benchmark::State& state) {
  if (!HaveDemos(state)) {
    return;
  }
  const Demos& demos = LoadDemos();
  std::string largest;
  std::size_t most = 0;
  for (const std::string& root : demos.roots) {
    std::size_t read = 0;
    kalmor::kicad::ReadKiCadSchematic(demos.texts.at(root), root, InMemory(demos, read));
    if (read + demos.texts.at(root).size() > most) {
      most = read + demos.texts.at(root).size();
      largest = root;
    }
  }
  const fs::path folder =
      fs::temp_directory_path() / ("kalmor-kicad-bench-" + std::to_string(::getpid()));
  fs::create_directories(folder);
  for (auto _ : state) {
    const kalmor::kicad::KiCadDesign read = kalmor::kicad::LoadKiCadSchematic(largest);
    kalmor::DesignToDXF(read.design.get(), (folder / "largest.dxf").string(), 0, 1, 1);
  }
  fs::remove_all(folder);
  state.SetLabel(fs::path(largest).filename().string() + ", " + std::to_string(most) + " bytes");
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * most));
}
BENCHMARK(BM_LargestEndToEnd)->Unit(benchmark::kMillisecond)->UseRealTime();

// Keeps each run's throughput and time beside the usual console output.
class Reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.iterations > 0 && run.error_message.empty()) {
        const auto rate = run.counters.find("bytes_per_second");
        megabytesPerSecond[run.benchmark_name()] =
            rate != run.counters.end() ? rate->second.value / 1e6 : 0;
        seconds[run.benchmark_name()] =
            run.real_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> megabytesPerSecond;
  std::map<std::string, double> seconds;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  auto& rate = reporter.megabytesPerSecond;
  if (rate.size() < 4) {
    return 0;  // a filter or missing demos left some out
  }
  const double read = rate["BM_ReadFiles"];
  const double tokenize = rate["BM_Tokenize"];
  const double import = rate["BM_Import"];
  const double largest = reporter.seconds["BM_LargestEndToEnd/real_time"];
  std::printf(
      "read %.0f MB/s; tokenize %.0f MB/s (%.2f x the read); import %.0f MB/s "
      "(%.2f x); largest design end to end %.1f ms\n",
      read, tokenize, tokenize / read, import, import / read, largest * 1e3);
  if (tokenize < 300 || import < 100 || largest >= 0.1) {
    std::fprintf(stderr, "below the targets: tokenize 300 MB/s, import 100 MB/s, largest 100 ms\n");
    return 1;
  }
  return 0;
}
