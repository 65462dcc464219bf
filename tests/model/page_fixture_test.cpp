// The shared page fixture gives the translators' tests the page and mapping the walk would.

#include <stdexcept>

#include <gtest/gtest.h>

#include "support/page_fixture.h"

namespace kalmor::testing {
namespace {

TEST(PageFixture, CrlfTurnsEveryLineFeedIntoCarriageReturnLineFeed) {
  EXPECT_EQ(Crlf("  0\nLINE\n"), "  0\r\nLINE\r\n");
  EXPECT_EQ(Crlf(""), "");
}

TEST(PageFixture, MapsTheChosenPageAsTheWalkDoes) {
  PageFixture defaults(OnePageDesign(""));
  EXPECT_EQ(defaults.context().pinToPin, 100);
  EXPECT_DOUBLE_EQ(defaults.context().s, 0.01);
  EXPECT_EQ(defaults.context().H, 850);
  EXPECT_EQ(defaults.context().W, 1100);
  EXPECT_EQ(defaults.context().occurrence, nullptr);

  PageFixture custom(OnePageDesign(
      R"("pin_to_pin": 50, "width": 2005, "height": 1003, "pin_to_pin_scale_factor": 0.5)"));
  EXPECT_EQ(custom.context().H, 200);  // truncated
  EXPECT_EQ(custom.context().W, 401);
  EXPECT_DOUBLE_EQ(custom.context().pinToPinScaleFactor, 0.5);
  EXPECT_EQ(&custom.context().page, &custom.page());
}

TEST(PageFixture, PicksPagesAndOccurrencesByName) {
  const char* design = R"({"kalmor_design": 1, "name": "D", "root": "TOP", "schematics": [
      {"name": "SUB", "pages": [{"name": "A", "height": 1000}, {"name": "B", "height": 2000}]},
      {"name": "TOP", "pages": [{"name": "T", "parts": [
        {"id": "BLK1", "kind": "block", "schematic": "SUB", "symbol": {}}]}]}]})";
  PageFixture first(design);
  EXPECT_EQ(first.context().H, 100);
  PageFixture second(design, "SUB", "B");
  EXPECT_EQ(second.context().H, 200);
  second.SetOccurrence("/BLK1");
  EXPECT_EQ(second.context().occurrence, second.design().FindOccurrence("/BLK1"));
  second.SetOccurrence("");
  EXPECT_EQ(second.context().occurrence, nullptr);
  EXPECT_THROW(second.SetOccurrence("/BLK2"), std::invalid_argument);
  EXPECT_THROW(PageFixture(design, "SUB", "C"), std::invalid_argument);
}

TEST(PageFixture, CollectsAndClearsTheBytesWritten) {
  PageFixture page(OnePageDesign(""));
  page.context().out.Write("  0\r\n");
  EXPECT_EQ(page.bytes(), "  0\r\n");
  page.clear();
  EXPECT_EQ(page.bytes(), "");
}

}  // namespace
}  // namespace kalmor::testing
