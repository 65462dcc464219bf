// Work whose cost must grow in step with its input, each measured at two sizes ten times apart:
// a chain of nested blocks (the hierarchy as deep as the design has schematics), a design of
// many schematics, texts in many distinct fonts, and a design of many pages. For each, the
// program prints the cost per item at the larger size against the smaller: 1 is linear, 10
// would be quadratic. The designs are loaded and exported (every page walked into memory) as the
// command would.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "dxf/byte_sink.h"
#include "dxf/skeleton.h"
#include "kalmor/dbo.h"
#include "kalmor/export.h"
#include "many_schematics.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "page/page_walk.h"
#include "text/vel_text.h"
#include "timing_reporter.h"

namespace {

// Schematics L0 to L(n-1), each placing the next as a block: n levels of hierarchy.
std::string DeepChain(int64_t levels) {
  std::string json = R"({"kalmor_design": 1, "name": "CHAIN", "schematics": [)";
  for (int64_t i = 0; i < levels; ++i) {
    json += i == 0 ? "\n" : ",\n";
    json += R"({"name": "L)" + std::to_string(i) + R"(", "pages": [{"name": "1", "parts": [)";
    json += R"({"id": "B", )";
    if (i + 1 < levels) {
      json += R"("kind": "block", "schematic": "L)" + std::to_string(i + 1) + R"(", )";
    }
    json += R"("symbol": {}}]}]})";
  }
  return json + "]}";
}

// One schematic of `count` pages, each with parts, properties and wires.
std::string ManyPages(int64_t count) {
  std::string json = R"({"kalmor_design": 1, "name": "PAGES", "symbols": {"R": {"vectors": [
    {"type": "box", "rect": [0, 0, 40, 20]}, {"type": "text", "rect": [0, 0, 40, 20], "text": "R"}]}},
    "schematics": [{"name": "S", "pages": [)";
  for (int64_t page = 0; page < count; ++page) {
    json += page == 0 ? "\n" : ",\n";
    json += R"({"name": "P)" + std::to_string(page) + R"(", "parts": [)";
    for (int part = 0; part < 20; ++part) {
      json += (part == 0 ? "" : ", ") + std::string(R"({"id": "R)") + std::to_string(page) + "_" +
              std::to_string(part) + R"(", "symbol": "R", "location": [)" +
              std::to_string(100 + part * 50) +
              R"(, 100], "properties": [{"name": "Value", "value": "10k", "location": [0, 30]}]})";
    }
    json += R"(], "wires": [)";
    for (int wire = 0; wire < 100; ++wire) {
      json += (wire == 0 ? "" : ", ") + std::string(R"({"start": [)") + std::to_string(wire * 10) +
              R"(, 500], "end": [)" + std::to_string(wire * 10 + 10) + R"(, 500]})";
    }
    json += "]}";
  }
  return json + "]}]}";
}

// Loads a design and walks every page a design export writes into memory.
void LoadAndExport(const std::string& json) {
  const std::unique_ptr<kalmor::model::Design> design =
      kalmor::model::ReadDesignDocument(json, "growth.json");
  kalmor::DboState state;
  kalmor::VisitDesignPages(*design, state,
                           [](const kalmor::DboPage& page,
                              const kalmor::DboInstOccurrence* occurrence, const std::string&) {
                             kalmor::MemorySink sink;
                             kalmor::DboState status;
                             kalmor::DxfWriteHeader(sink);
                             kalmor::DxfWriteEntitiesOpen(sink);
                             kalmor::PageTranslator(status, page, occurrence, 1, 1, sink, {});
                             kalmor::DxfWriteEnd(sink);
                             benchmark::DoNotOptimize(sink.bytes().size());
                           });
}

template <std::string (*Make)(int64_t)>
void BM_Design(benchmark::State& state) {
  const std::string json = Make(state.range(0));
  for (auto _ : state) {
    LoadAndExport(json);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Design<DeepChain>)
    ->Name("DeepChain")
    ->Arg(2000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Design<kalmor::bench::ManySchematics>)
    ->Name("ManySchematics")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Design<ManyPages>)
    ->Name("ManyPages")
    ->Arg(50)
    ->Arg(500)
    ->Unit(benchmark::kMillisecond);

// Texts measured in fonts never seen before: each new font joins the font cache.
void BM_ManyFonts(benchmark::State& state) {
  static int64_t next = 0;  // fonts stay new from one run to the next
  for (auto _ : state) {
    for (int64_t i = 0; i < state.range(0); ++i, ++next) {
      kalmor::LogFont font;
      font.lfHeight = static_cast<int32_t>(-(8 + next % 64));
      font.lfWidth = static_cast<int32_t>(1 + next / 64);
      const kalmor::CVelText text("R17", {0, 0}, font);
      benchmark::DoNotOptimize(text.GetBoundingRect());
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ManyFonts)->Arg(4000)->Arg(40000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  kalmor::bench::TimingReporter reporter;
  kalmor::bench::RunAll(argc, argv, reporter);
  const struct {
    const char* name;
    const char* what;
    int64_t small, large;
  } cases[] = {
      {"DeepChain", "levels of hierarchy", 2000, 20000},
      {"ManySchematics", "schematics", 10000, 100000},
      {"ManyPages", "pages", 50, 500},
      {"BM_ManyFonts", "distinct fonts", 4000, 40000},
  };
  for (const auto& c : cases) {
    const double small = reporter.CpuSeconds(std::string(c.name) + "/" + std::to_string(c.small));
    const double large = reporter.CpuSeconds(std::string(c.name) + "/" + std::to_string(c.large));
    if (small > 0 && large > 0) {
      const double ratio = static_cast<double>(c.large) / static_cast<double>(c.small);
      std::printf("%s: %lld %s in %.1f ms, %lld in %.1f ms: %.2f times the cost per item\n", c.name,
                  static_cast<long long>(c.small), c.what, small * 1e3,
                  static_cast<long long>(c.large), large * 1e3, large / small / ratio);
    }
  }
  return 0;
}
