#include "page/page_walk.h"

#include <gtest/gtest.h>

#include "support/page_fixture.h"

namespace kalmor {
namespace {

using ::kalmor::test::OnePageDesign;
using ::kalmor::test::PageFixture;

TEST(PageWalkTest, PageHeightIsTruncatedToPinToPinTenths) {
  for (const auto& [height, H] : {std::pair{8500, 850}, {8505, 850}, {8509, 850}, {-8505, -850}}) {
    PageFixture fixture(OnePageDesign(R"("height": )" + std::to_string(height)));
    EXPECT_EQ(fixture.context().H, H) << height;
    EXPECT_DOUBLE_EQ(fixture.context().Y(100), (H - 100) * 0.01) << height;
  }
}

}  // namespace
}  // namespace kalmor
