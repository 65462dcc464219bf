#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "page/records.h"
#include "page/translators.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using namespace testing::records;
using testing::Crlf;
using testing::OnePageDesign;
using testing::PageFixture;

std::string FrameBytes(const std::string& border) {
  PageFixture page(OnePageDesign(R"("border": )" + border));
  TranslateFrame(page.context());
  return page.bytes();
}

// A SOLID on "TITLE" with its corners (x, y pairs) in the record's order 10, 11, 12, 13.
std::string Solid(std::initializer_list<std::string_view> c) {
  const std::string_view* v = c.begin();
  return Join({" 0",  "SOLID", " 8",  "TITLE", " 10", v[0],  " 20", v[1], " 30", "0.0",
               " 11", v[2],    " 21", v[3],    " 31", "0.0", " 12", v[4], " 22", v[5],
               " 32", "0.0",   " 13", v[6],    " 23", v[7],  " 33", "0.0"});
}

std::string Segment(std::string_view width, std::string_view x1, std::string_view y1,
                    std::string_view x2, std::string_view y2) {
  return Polyline("TITLE", width) + Vertex("TITLE", x1, y1) + Vertex("TITLE", x2, y2) +
         SeqEnd("TITLE");
}

TEST(Frame, LetterSizePageWithFourByFourZones) {
  // 1100 x 850 at s = 0.01 with 20-unit strips: zones 255 wide and 192 high.
  std::string expected;
  for (const auto& [l, b, r, t] : {std::array{" -0.2000", "  0.2000", " 10.8000", "  8.7000"},
                                   std::array{"  0.0000", "  0.4000", " 10.6000", "  8.5000"}}) {
    expected += Polyline("TITLE", "  0.0600", true) + Vertex("TITLE", l, b) +
                Vertex("TITLE", r, b) + Vertex("TITLE", r, t) + Vertex("TITLE", l, t) +
                SeqEnd("TITLE");
  }
  // Both centre marks follow every separator, identically.
  for (const char* x : {"  2.9500", "  5.5000", "  8.0500"}) {
    expected += Segment("  0.0400", x, "  0.4000", x, "  0.2000") +
                Segment("  0.0400", x, "  8.5000", x, "  8.7000") +
                Solid({"  5.5000", "  0.4000", "  5.4500", "  0.3000", "  5.5500", "  0.3000",
                       "  5.5000", "  0.3000"}) +
                Solid({"  5.5000", "  8.5000", "  5.4500", "  8.6000", "  5.5500", "  8.6000",
                       "  5.5000", "  8.6000"});
  }
  for (const auto& [x, label] :
       {std::pair{"  1.6700", "1"}, {"  4.2200", "2"}, {"  6.7700", "3"}, {"  9.3200", "4"}}) {
    expected += Text("TITLE", x, "  0.2500", "  0.1000", "", label) +
                Text("TITLE", x, "  8.5500", "  0.1000", "", label);
  }
  for (const char* y : {"  6.1800", "  4.2600", "  2.3400"}) {
    expected += Segment("  0.0200", " -0.2000", y, "  0.0000", y) +
                Segment("  0.0200", " 10.6000", y, " 10.8000", y) +
                Solid({"  0.0000", "  4.2600", " -0.1000", "  4.3100", " -0.1000", "  4.2100",
                       " -0.1000", "  4.2600"}) +
                Solid({" 10.6000", "  4.2600", " 10.7000", "  4.3100", " 10.7000", "  4.2100",
                       " 10.7000", "  4.2600"});
  }
  for (const auto& [y, label] :
       {std::pair{"  7.1400", "A"}, {"  5.2200", "B"}, {"  3.3000", "C"}, {"  1.3800", "D"}}) {
    expected += Text("TITLE", " -0.1500", y, "  0.1000", "", label) +
                Text("TITLE", " 10.6500", y, "  0.1000", "", label);
  }
  EXPECT_EQ(FrameBytes(R"({"line_width": 3, "horizontal_separator_width": 2,
                           "vertical_separator_width": 1})"),
            Crlf(expected));
}

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
    for (std::size_t at = bytes.find("\r\n 1\r\n"); at != std::string::npos;
         at = bytes.find("\r\n 1\r\n", at + 1)) {
      labels.push_back(bytes.substr(at + 6, bytes.find("\r\n", at + 6) - at - 6));
    }
    ASSERT_EQ(labels.size(), 2u * c.count + 2);
    for (std::size_t k = 0; k < c.first.size(); ++k) {
      EXPECT_EQ(labels[2 * k] + labels[2 * k + 1], c.first[k] + c.first[k]);
    }
    EXPECT_EQ(labels[2 * c.count - 1], c.last);
    const auto count = [&](std::string_view kind) {
      int n = 0;
      for (std::size_t at = bytes.find(kind); at != std::string::npos;
           at = bytes.find(kind, at + 1)) {
        ++n;
      }
      return n;
    };
    EXPECT_EQ(count("SOLID"), c.solids);
    EXPECT_EQ(count("POLYLINE"), c.polylines);
  }
}

}  // namespace
}  // namespace kalmor
