// Texts measured per second through the text shape: with the font cache and the loaded face warm,
// and with the font loaded afresh for every text. The cache must make the warm path at least ten
// times faster; the program fails when it does not.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "text/freetype_metrics.h"
#include "text/vel_text.h"

namespace {

using kalmor::CVelText;

const std::array<std::string, 4> kTexts = {"R17", "10k 1%", "VCC_3V3\r\nDECOUPLE NEAR PIN 4",
                                           "Note: place C12 close to U3"};

kalmor::LogFont Arial() {
  kalmor::LogFont font;
  font.lfHeight = -12;
  font.SetFaceName("Arial");
  return font;
}

int32_t MeasureOne(std::size_t i) {
  const CVelText shape(kTexts[i % kTexts.size()], {0, 0}, Arial());
  return shape.GetBoundingRect().right;
}

void BM_MeasureWarm(benchmark::State& state) {
  MeasureOne(0);  // loads the face once
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(MeasureOne(i++));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MeasureWarm);

void BM_MeasureColdFontLoad(benchmark::State& state) {
  std::size_t i = 0;
  for (auto _ : state) {
    kalmor::FreeTypeFontMetrics fresh;
    const kalmor::ScopedFontMetrics scope(fresh);
    benchmark::DoNotOptimize(MeasureOne(i++));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MeasureColdFontLoad);

// Keeps the time per text of every run beside the usual console output.
class TimingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.iterations > 0) {
        secondsPerText[run.benchmark_name()] =
            run.real_accumulated_time / static_cast<double>(run.iterations);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> secondsPerText;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  TimingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  const auto warm = reporter.secondsPerText.find("BM_MeasureWarm");
  const auto cold = reporter.secondsPerText.find("BM_MeasureColdFontLoad");
  if (warm == reporter.secondsPerText.end() || cold == reporter.secondsPerText.end()) {
    return 0;  // a filter left one of them out
  }
  const double speedup = cold->second / warm->second;
  std::printf("warm: %.0f texts/s, cold font load: %.0f texts/s, warm is %.1f times faster\n",
              1.0 / warm->second, 1.0 / cold->second, speedup);
  if (speedup < 10.0) {
    std::fprintf(stderr, "the font cache makes measuring less than ten times faster\n");
    return 1;
  }
  return 0;
}
