// Faults injected where an export meets the world outside it: a sink that fails after any number
// of bytes, and fonts that fail in the middle of a page. Each failure leaves the export by its own
// error with nothing reported as done, and the next export writes the bytes of one that never met
// a fault: no state is left half changed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "dxf/byte_sink.h"
#include "dxf/skeleton.h"
#include "hardening/export_in_memory.h"
#include "kalmor/export.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "page/page_walk.h"
#include "support/paths.h"
#include "support/recording_ui.h"
#include "text/font_metrics.h"

namespace kalmor::test {
namespace {

std::unique_ptr<model::Design> Board() {
  return model::LoadDesignDocument((SourceDir() / "examples/board.json").string());
}

// Hands on `budget` bytes at most, in windows of a few dozen bytes so that it is asked for room at
// nearly every record; then fails as a full disk does.
class FailingSink final : public ByteSink {
 public:
  explicit FailingSink(std::size_t budget) : budget_(budget) { MakeRoom(0); }
  std::string bytes;  // what was handed on before the failure

 private:
  void MakeRoom(std::size_t size) override {
    const std::string_view pending = Pending();
    bytes.append(pending.substr(0, std::min(pending.size(), budget_)));
    if (pending.size() > budget_) {
      throw FileError("sink", ENOSPC);
    }
    budget_ -= pending.size();
    window_.assign(std::max<std::size_t>(size, 48), '\0');
    OpenWindow(window_.data(), window_.size());
  }
  std::size_t budget_;
  std::vector<char> window_;
};

TEST(FaultInjection, ASinkFailingAfterAnyNumberOfBytesStopsThePageWithItsError) {
  const auto design = Board();
  const std::vector<std::string> pages = ExportPagesInMemory(*design);
  std::size_t failures = 0;
  DboState state;
  int index = 0;
  VisitDesignPages(
      *design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string&) {
        const std::string& whole = pages.at(index++);
        for (std::size_t budget = 0; budget < whole.size(); budget += whole.size() / 97 + 1) {
          FailingSink sink(budget);
          DboState status;
          EXPECT_THROW(
              {
                DxfWriteHeader(sink);
                DxfWriteEntitiesOpen(sink);
                PageTranslator(status, page, occurrence, 1, 1, sink, {});
                DxfWriteEnd(sink);
                sink.Write(std::string(whole.size(), '\0'));  // past what any page could fit
              },
              FileError)
              << "budget " << budget;
          EXPECT_TRUE(whole.starts_with(sink.bytes)) << "budget " << budget;
          ++failures;
        }
      });
  EXPECT_GT(failures, 250u);
  EXPECT_EQ(ExportPagesInMemory(*design), pages) << "a failed page changed the next export";
}

// The fonts of the running system, until the measurement numbered `failAt` (from 0) fails as a
// font file that can no longer be read does.
class FailingFonts final : public FontMetricsSource {
 public:
  explicit FailingFonts(long failAt) : real_(CurrentFontMetrics()), left_(failAt) {}
  long calls = 0;

  bool GetTextMetrics(const LogFont& font, TextMetrics& metrics) override {
    Count();
    return real_.GetTextMetrics(font, metrics);
  }
  TextExtent GetTextExtent(const LogFont& font, std::string_view line) override {
    Count();
    return real_.GetTextExtent(font, line);
  }
  void PrepareFont(const LogFont& font) override { real_.PrepareFont(font); }

 private:
  void Count() {
    ++calls;
    if (left_-- == 0) {
      throw EnvironmentError("the font file went away");
    }
  }
  FontMetricsSource& real_;
  long left_;
};

TEST(FaultInjection, FontsFailingInTheMiddleOfAPageStopTheExportWithTheirError) {
  const auto design = Board();
  const TempDir temp;
  RecordingUserInterface ui;
  const ScopedUserInterface scopedUi(ui);
  const auto exportAll = [&] { DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1); };

  long measurements = 0;
  {
    FailingFonts counting(-1);
    const ScopedFontMetrics scoped(counting);
    exportAll();
    measurements = counting.calls;
  }
  ASSERT_GT(measurements, 20) << "the pages measure too few texts to fail among them";
  const std::vector<std::string> written = FileNames(temp.path());
  std::vector<std::string> whole;
  for (const std::string& name : written) {
    whole.push_back(ReadFileBytes(temp / name));
  }

  for (long failAt = 0; failAt < measurements; failAt += measurements / 23 + 1) {
    SCOPED_TRACE(failAt);
    ui.messages.clear();
    {
      FailingFonts failing(failAt);
      const ScopedFontMetrics scoped(failing);
      EXPECT_THROW(exportAll(), EnvironmentError);
    }
    EXPECT_TRUE(ui.messages.empty()) << "a failed export reported completion";
    g_inDesignExport = 0;  // an export ended by an error leaves it set
    exportAll();
    for (std::size_t i = 0; i < written.size(); ++i) {
      EXPECT_TRUE(ReadFileBytes(temp / written[i]) == whole[i]) << written[i];
    }
  }
}

}  // namespace
}  // namespace kalmor::test
