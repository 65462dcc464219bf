#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "page/translators.h"
#include "support/entity_lines.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using Lines = std::vector<std::string>;

std::string FrameBytes(const std::string& border) {
  test::PageFixture page(test::OnePageDesign(R"("border": )" + border));
  TranslateFrame(page.context());
  return page.bytes();
}

// The frame's geometry at the default settings is pinned by the golden pages; what the settings
// change is counted here.
TEST(Frame, LabelsBySideCountStyleAndOrder) {
  struct Case {
    int count;
    bool letters, ascending;
    std::vector<std::string> first;  // the first labels, left to right
    std::string last;
    int solids, polylines;
  };
  const Case cases[] = {
      {1, false, true, {"1"}, "1", 0, 2},
      {3, false, true, {"1", "2", "3"}, "3", 0, 6},
      {10, false, true, {"1", "2", "3", "4", "5", "6", "7", "8", "09", "10"}, "10", 18, 20},
      {12, false, false, {"12", "11", "10", "09", "8", "7"}, "1", 22, 24},
      {28, true, true, {"A", "B", "C"}, "AB", 54, 56},
      {53, true, false, {"BA", "AZ", "AY"}, "A", 0, 106},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.count << (c.letters ? " letters" : " numbers")
                                      << (c.ascending ? " ascending" : " descending"));
    const std::string bytes =
        FrameBytes(R"({"vertical_count": 1, "horizontal_count": )" + std::to_string(c.count) +
                   R"(, "horizontal_letters": )" + (c.letters ? "true" : "false") +
                   R"(, "horizontal_ascending": )" + (c.ascending ? "true" : "false") + "}");
    // Each zone's label stands twice, bottom then top; the single row's two labels follow.
    std::vector<std::string> labels;
    int solids = 0, polylines = 0;
    for (const std::string& line : test::EntityLines(bytes)) {
      solids += line.starts_with("SOLID");
      polylines += line.starts_with("POLYLINE");
      if (line.starts_with("TEXT")) {
        labels.push_back(line.substr(line.find(" 1=") + 3));
      }
    }
    ASSERT_EQ(labels.size(), 2u * c.count + 2);
    for (std::size_t k = 0; k < c.first.size(); ++k) {
      EXPECT_EQ(labels[2 * k] + labels[2 * k + 1], c.first[k] + c.first[k]);
    }
    EXPECT_EQ(labels[2 * c.count - 1], c.last);
    EXPECT_EQ(solids, c.solids);
    EXPECT_EQ(polylines, c.polylines);
  }
}

}  // namespace
}  // namespace kalmor
