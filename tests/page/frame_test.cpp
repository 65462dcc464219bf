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

// A polyline on TITLE through "x y" points, its width as printed.
void Polyline(Lines& lines, const std::string& width, std::initializer_list<const char*> points) {
  lines.push_back(std::string("POLYLINE TITLE 66=1") + (points.size() == 4 ? " 70=1" : "") +
                  " 10=0.0 20=0.0 40=" + width + " 41=" + width);
  for (const char* point : points) {
    const std::string xy = point;
    lines.push_back("VERTEX TITLE 10=" + xy.substr(0, xy.find(' ')) +
                    " 20=" + xy.substr(xy.find(' ') + 1));
  }
  lines.push_back("SEQEND TITLE");
}

TEST(Frame, LetterSizePageWithFourByFourZones) {
  // 1100 x 850 at s = 0.01 with 20-unit strips: zones 255 wide and 192 high.
  Lines expected;
  const std::string thick = "0.0600", mark = "0.0400", thin = "0.0200";
  Polyline(expected, thick,
           {"-0.2000 0.2000", "10.8000 0.2000", "10.8000 8.7000", "-0.2000 8.7000"});
  Polyline(expected, thick, {"0.0000 0.4000", "10.6000 0.4000", "10.6000 8.5000", "0.0000 8.5000"});
  // Both centre marks follow every separator, identically.
  for (const std::string x : {"2.9500", "5.5000", "8.0500"}) {
    Polyline(expected, mark, {(x + " 0.4000").c_str(), (x + " 0.2000").c_str()});
    Polyline(expected, mark, {(x + " 8.5000").c_str(), (x + " 8.7000").c_str()});
    expected.push_back(
        "SOLID TITLE 10=5.5000 20=0.4000 11=5.4500 21=0.3000 12=5.5500 22=0.3000 "
        "13=5.5000 23=0.3000");
    expected.push_back(
        "SOLID TITLE 10=5.5000 20=8.5000 11=5.4500 21=8.6000 12=5.5500 22=8.6000 "
        "13=5.5000 23=8.6000");
  }
  for (const auto& [x, label] :
       {std::pair{"1.6700", "1"}, {"4.2200", "2"}, {"6.7700", "3"}, {"9.3200", "4"}}) {
    for (const char* y : {"0.2500", "8.5500"}) {
      expected.push_back(std::string("TEXT TITLE 10=") + x + " 20=" + y + " 40=0.1000 1=" + label);
    }
  }
  for (const std::string y : {"6.1800", "4.2600", "2.3400"}) {
    Polyline(expected, thin, {("-0.2000 " + y).c_str(), ("0.0000 " + y).c_str()});
    Polyline(expected, thin, {("10.6000 " + y).c_str(), ("10.8000 " + y).c_str()});
    expected.push_back(
        "SOLID TITLE 10=0.0000 20=4.2600 11=-0.1000 21=4.3100 12=-0.1000 "
        "22=4.2100 13=-0.1000 23=4.2600");
    expected.push_back(
        "SOLID TITLE 10=10.6000 20=4.2600 11=10.7000 21=4.3100 12=10.7000 "
        "22=4.2100 13=10.7000 23=4.2600");
  }
  for (const auto& [y, label] :
       {std::pair{"7.1400", "A"}, {"5.2200", "B"}, {"3.3000", "C"}, {"1.3800", "D"}}) {
    for (const char* x : {"-0.1500", "10.6500"}) {
      expected.push_back(std::string("TEXT TITLE 10=") + x + " 20=" + y + " 40=0.1000 1=" + label);
    }
  }
  EXPECT_EQ(test::EntityLines(FrameBytes(R"({"line_width": 3, "horizontal_separator_width": 2,
                                             "vertical_separator_width": 1})")),
            expected);
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
