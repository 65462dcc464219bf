// Loading a large design document from its file as the command does (read, parse, validate,
// build the design): throughput against two parses of the same text measured in the same run
// (the JSON library's tree, as the reader once parsed, and simdjson's bare parse, the floor), and
// the peak memory of the load against the document's size.
//
// The document (about 50 MB) is generated: pages of resistors and ICs with pins and properties,
// wires with aliases and junctions, connectors, bus entries and graphics, and a block schematic
// placed twice.

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "bench_dir.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "timing_reporter.h"

namespace {

constexpr std::size_t kTargetBytes = 50'000'000;

void AppendPin(std::string& out, int number, int x, int y, int dx, const char* name) {
  out += R"({"name": ")";
  out += name;
  out += R"(", "number": ")" + std::to_string(number) + R"(", "start": [)" +
         std::to_string(x - dx) + ", " + std::to_string(y) + "], \"end\": [" + std::to_string(x) +
         ", " + std::to_string(y) + "]}";
}

void AppendPart(std::string& out, int page, int index) {
  const int x = 100 + (index % 20) * 50;
  const int y = 60 + (index / 20) * 70 % 700;
  const bool ic = index % 10 == 0;
  out += R"({"id": ")";
  out += ic ? "U" : "R";
  out += std::to_string(page) + "_" + std::to_string(index) + R"(", "symbol": ")";
  out += ic ? "IC" : "R";
  out += R"(", "location": [)" + std::to_string(x) + ", " + std::to_string(y) +
         R"(], "properties": [{"name": "Part Reference", "value": ")" +
         std::string(ic ? "U" : "R") + std::to_string(index) +
         R"(", "location": [0, -4]}, {"name": "Value", "value": ")" +
         (ic ? std::string("MCU-8") : std::to_string(index % 97) + "k") +
         R"(", "location": [0, 30], "font": {"height": -9}}], "pins": [)";
  const int pins = ic ? 16 : 2;
  for (int pin = 0; pin < pins; ++pin) {
    if (pin > 0) {
      out += ", ";
    }
    static const char* kNames[] = {"VDD", "GND", "PA0", "PA1", R"(R\\E\\S\\E\\T\\)", "CLK"};
    AppendPin(out, pin + 1, x + (pin % 2) * 40, y + 10 + (pin / 2) * 10, pin % 2 ? -30 : 30,
              ic ? kNames[pin % 6] : "");
  }
  out += "]}";
}

void AppendWire(std::string& out, int index) {
  const int x = 100 + (index * 37) % 900;
  const int y = 50 + (index * 53) % 700;
  out += R"({"start": [)" + std::to_string(x) + ", " + std::to_string(y) + R"(], "end": [)" +
         std::to_string(x + 40) + ", " + std::to_string(y) + "]";
  if (index % 5 == 0) {
    out += R"(, "aliases": [{"name": "NET)" + std::to_string(index) + R"(", "location": [)" +
           std::to_string(x + 4) + ", " + std::to_string(y - 2) + "]}]";
  }
  if (index % 7 == 0) {
    out += R"(, "junctions": [[)" + std::to_string(x) + ", " + std::to_string(y) + "]]";
  }
  out += "}";
}

void AppendPage(std::string& out, int page, bool withBlocks) {
  out += R"({"name": "P)" + std::to_string(page) + R"(",
    "title_blocks": [{"symbol": "TITLE", "location": [640, 690], "properties": [
      {"name": "Title", "value": "Generated page", "location": [10, 52]}]}],
    "parts": [)";
  for (int i = 0; i < 200; ++i) {
    if (i > 0) {
      out += ",\n      ";
    }
    AppendPart(out, page, i);
  }
  if (withBlocks) {
    for (const char* id : {",\n      {\"id\": \"BLK_A", ",\n      {\"id\": \"BLK_B"}) {
      out += id + std::to_string(page) +
             R"(", "kind": "block", "schematic": "CELL", "symbol": {"bbox": [0, 0, 100, 60]},
             "location": [900, 600], "pins": [{"name": "IN", "start": [900, 620],
             "end": [900, 620], "block_kind": 1}]})";
    }
  }
  out += "],\n    \"wires\": [";
  for (int i = 0; i < 300; ++i) {
    if (i > 0) {
      out += ",\n      ";
    }
    AppendWire(out, i);
  }
  out += R"(],
    "globals": [{"symbol": "GND", "location": [340, 380]}, {"symbol": "GND", "location": [580, 450]}],
    "off_page_connectors": [{"symbol": "OFF", "location": [800, 390],
      "properties": [{"name": "Name", "value": "D[0..3]", "location": [44, 14]}]}],
    "bus_entries": [{"entry": [760, 230], "end": [750, 220]}, {"entry": [760, 250], "end": [750, 240]}],
    "graphics": [{"type": "text", "rect": [700, 470, 1000, 520], "text": "NOTES:\r1. Generated."},
      {"type": "arc", "rect": [700, 550, 760, 610], "start": [760, 580], "end": [730, 550]},
      {"type": "polyline", "points": [[920, 600], [940, 560], [960, 600], [980, 560]]}]})";
}

std::string GenerateDocument() {
  std::string out;
  out.reserve(kTargetBytes + kTargetBytes / 8);
  out += R"({"kalmor_design": 1, "name": "GENERATED", "root": "TOP",
  "symbols": {
    "R": {"bbox": [0, 0, 40, 20], "vectors": [{"type": "box", "rect": [0, 4, 40, 16]}]},
    "IC": {"bbox": [0, 0, 40, 90], "vectors": [{"type": "box", "rect": [0, 0, 40, 90], "width": 1},
      {"type": "text", "rect": [5, 40, 35, 50], "text": "IC"}]},
    "GND": {"vectors": [{"type": "line", "start": [0, 0], "end": [0, 10]},
      {"type": "line", "start": [-10, 10], "end": [10, 10]}]},
    "OFF": {"vectors": [{"type": "polygon", "points": [[0, 0], [30, 0], [40, 10], [30, 20], [0, 20]]}]},
    "TITLE": {"vectors": [{"type": "box", "rect": [0, 0, 400, 100], "width": 1}]}
  },
  "schematics": [
    {"name": "CELL", "pages": [)";
  AppendPage(out, 0, false);
  out += "]},\n    {\"name\": \"TOP\", \"pages\": [";
  for (int page = 1; out.size() < kTargetBytes; ++page) {
    if (page > 1) {
      out += ",\n    ";
    }
    AppendPage(out, page, page == 1);
  }
  out += "]}\n  ]\n}\n";
  return out;
}

// The process's resident size and its peak, in bytes.
std::size_t StatusBytes(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field, 0) == 0) {
      return std::stoull(line.substr(std::strlen(field))) * 1024;
    }
  }
  return 0;
}

// Generated once, kept in memory for the parses and in a file for the load.
struct Generated {
  Generated() : text(GenerateDocument()) {
    dir = kalmor::bench::MakeBenchDir("load");
    path = (dir / "generated.json").string();
    std::ofstream(path, std::ios::binary) << text;
  }
  ~Generated() { std::filesystem::remove_all(dir); }

  std::string text;
  std::filesystem::path dir;
  std::string path;
};

const Generated& Document() {
  static const Generated document;
  return document;
}

// Starts the peak over from the present resident size; false where the kernel cannot.
bool ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
  clear.flush();
  return static_cast<bool>(clear);
}

double g_peakPerDocument = 0;

void BM_LoadDesignDocument(benchmark::State& state) {
  const Generated& document = Document();
  bool measured = false;
  for (auto _ : state) {
    const bool reset = !measured && ResetPeak();
    const std::size_t before = StatusBytes("VmRSS:");
    std::unique_ptr<kalmor::model::Design> design =
        kalmor::model::LoadDesignDocument(document.path);
    benchmark::DoNotOptimize(design.get());
    if (reset) {
      // The text is read inside the load: the peak holds it, the parse and the design.
      const auto peak = static_cast<double>(StatusBytes("VmHWM:") - before);
      g_peakPerDocument = peak / static_cast<double>(document.text.size());
      state.counters["load_peak_MB"] = peak / 1e6;
      state.counters["peak_per_document"] = g_peakPerDocument;
      measured = true;
    }
    state.PauseTiming();
    design.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * document.text.size()));
  state.counters["document_MB"] = static_cast<double>(document.text.size()) / 1e6;
}
BENCHMARK(BM_LoadDesignDocument)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

// The JSON library's own tree parse of the text, which checks nothing and builds no design.
void BM_ParseJsonTree(benchmark::State& state) {
  const std::string& text = Document().text;
  for (auto _ : state) {
    nlohmann::json tree = nlohmann::json::parse(text);
    benchmark::DoNotOptimize(tree);
    state.PauseTiming();
    tree = nullptr;
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ParseJsonTree)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

// simdjson's whole parse of the text into its own tree: as fast as JSON is read on this machine.
void BM_ParseSimdjson(benchmark::State& state) {
  const simdjson::padded_string text(Document().text);
  simdjson::dom::parser parser;
  for (auto _ : state) {
    simdjson::dom::element root;
    if (parser.parse(text).get(root) != simdjson::SUCCESS) {
      std::abort();
    }
    benchmark::DoNotOptimize(root);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ParseSimdjson)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  kalmor::bench::TimingReporter reporter;
  kalmor::bench::RunAll(argc, argv, reporter);
  const std::string suffix = "/iterations:5/real_time";
  const double load = reporter.Seconds("BM_LoadDesignDocument" + suffix);
  const double loadCpu = reporter.CpuSeconds("BM_LoadDesignDocument" + suffix);
  const double tree = reporter.Seconds("BM_ParseJsonTree" + suffix);
  const double simd = reporter.Seconds("BM_ParseSimdjson" + suffix);
  if (load > 0 && tree > 0 && simd > 0) {
    const double mb = static_cast<double>(Document().text.size()) / 1e6;
    std::printf(
        "load %.0f MB/s (%.0f MB/s of processor time), %.1f times the JSON library's tree parse "
        "(%.0f MB/s); simdjson's bare parse %.0f MB/s; peak memory %.2f times the document\n",
        mb / load, mb / loadCpu, tree / load, mb / tree, mb / simd, g_peakPerDocument);
  }
  return 0;
}
