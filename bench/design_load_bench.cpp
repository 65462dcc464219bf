// Loading a large design document: throughput, and the memory the load needs beyond the text.
//
// The document (about 50 MB) is generated in memory: pages of resistors and ICs with pins and
// properties, wires with aliases and junctions, connectors, bus entries and graphics, and a
// block schematic placed twice.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "model/design.h"
#include "model/design_reader.h"

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

// Generated once for both benchmarks.
const std::string& Document() {
  static const std::string document = GenerateDocument();
  return document;
}

// Starts the peak over from the present resident size; false where the kernel cannot.
bool ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
  clear.flush();
  return static_cast<bool>(clear);
}

void BM_LoadDesignDocument(benchmark::State& state) {
  const std::string& document = Document();
  bool measured = false;
  double peakBytes = 0;
  for (auto _ : state) {
    const bool reset = !measured && ResetPeak();
    const std::size_t before = StatusBytes("VmRSS:");
    std::unique_ptr<kalmor::model::Design> design =
        kalmor::model::ReadDesignDocument(document, "generated.json");
    benchmark::DoNotOptimize(design.get());
    if (reset) {
      peakBytes = static_cast<double>(StatusBytes("VmHWM:") - before);
      measured = true;
    }
    state.PauseTiming();
    design.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * document.size()));
  const double size = static_cast<double>(document.size());
  state.counters["document_MB"] = size / 1e6;
  if (measured) {
    // The text itself was resident before the load; the peak counts it once more.
    state.counters["load_peak_MB"] = peakBytes / 1e6;
    state.counters["peak_per_document"] = (peakBytes + size) / size;
  }
}
BENCHMARK(BM_LoadDesignDocument)->Unit(benchmark::kMillisecond)->Iterations(5);

// Baseline: the JSON library's own tree parse of the same text, which checks nothing and builds
// no design; the load above is worth comparing with it on the same machine and run.
void BM_ParseJsonTree(benchmark::State& state) {
  const std::string& document = Document();
  for (auto _ : state) {
    nlohmann::json tree = nlohmann::json::parse(document);
    benchmark::DoNotOptimize(tree);
    state.PauseTiming();
    tree = nullptr;
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * document.size()));
}
BENCHMARK(BM_ParseJsonTree)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
