// A program of its own: the box is shown once per process.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kalmor/user_interface.h"
#include "support/fixed_metrics.h"
#include "text/vel_text.h"

namespace kalmor {
namespace {

struct RecordingUserInterface final : UserInterface {
  bool logOpen = false;
  std::vector<std::string> boxes, log;

  void MessageBox(std::string_view caption, std::string_view text, unsigned style) override {
    boxes.push_back(std::string(caption) + '|' + std::string(text) + '|' + std::to_string(style));
  }
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings&) override { return {}; }
  bool AppendToSessionLog(std::string_view text) override {
    if (logOpen) {
      log.emplace_back(text);
    }
    return logOpen;
  }
};

const std::string kError = "Internal Device Error: TextExtent returned unrealistic values.\n";

CRect Measure(const std::string& text) {
  return CVelText(text, {0, 0}, LogFont{}).GetBoundingRect();
}

TEST(TextExtentGuard, ImpossibleExtentsBecomeThreeByThreeAndAreReportedOnce) {
  test::FixedMetrics fixed;
  fixed.extents = {{"wide", {32768, 12}},
                   {"tall", {7, -32768}},
                   {"edge", {32767, 32767}},
                   {"min", {INT32_MIN, 0}},
                   {"\xB5\\U+03A9", {40000, 12}}};
  ScopedFontMetrics metrics(fixed);
  RecordingUserInterface ui;
  ScopedUserInterface scope(ui);

  // Line height 12, descent 3: a 3-wide line gives (0, 0)-(4, 10).
  EXPECT_EQ(Measure("edge"), (CRect{0, 0, 32768, 10})) << "32767 is still realistic";
  EXPECT_EQ(Measure("wide"), (CRect{0, 0, 4, 10}));
  EXPECT_EQ(ui.boxes, (std::vector<std::string>{"KALMOR|" + kError + "wide|0"}));
  EXPECT_TRUE(ui.log.empty()) << "no log is open";

  ui.logOpen = true;
  EXPECT_EQ(Measure("ab\rtall"), (CRect{0, 0, 14, 22})) << "the other line is wider";
  EXPECT_EQ(Measure("min"), (CRect{0, 0, 4, 10}));
  Measure("\xB5\\U+03A9");
  EXPECT_EQ(ui.log, (std::vector<std::string>{kError + "tall", kError + "min", kError + "µΩ"}));
  EXPECT_EQ(ui.boxes.size(), 1u) << "the box is shown once per process";
}

}  // namespace
}  // namespace kalmor
