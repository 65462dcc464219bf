#include "page/page_walk.h"

#include <gtest/gtest.h>

#include "export/fake_design.h"

namespace kalmor {
namespace {

using ::kalmor::testing::FakePage;

TEST(PageWalkTest, MappingTruncatesThePageHeightToPinToPinTenths) {
  struct Case {
    int32_t height;
    int32_t H;
  };
  for (const Case c : {Case{8500, 850}, Case{8505, 850}, Case{8509, 850}, Case{-8505, -850}}) {
    FakePage page("P", c.height);
    MemorySink out;
    DboState state;
    const PageContext context = OpenPageContext(out, state, page, nullptr);
    EXPECT_EQ(context.H, c.H) << "height " << c.height;
    EXPECT_EQ(context.W, 1100);
    EXPECT_DOUBLE_EQ(context.s, 0.01);
    // A page point (100, 0) lands one drawing unit right, H hundredths up.
    EXPECT_DOUBLE_EQ(context.X(100), 1.0);
    EXPECT_DOUBLE_EQ(context.Y(0), c.H * 0.01);
  }
}

TEST(PageWalkTest, EmptyPageWithHiddenBorderWritesNothingAndReturnsOK) {
  FakePage page("P");
  MemorySink out;
  DboState status(DboState::kFailed);
  DboState& returned = PageTranslator(status, page, nullptr, 1, 1, out, "ignored");
  EXPECT_EQ(&returned, &status);
  EXPECT_TRUE(status.OK());
  EXPECT_EQ(out.bytes(), "");
}

}  // namespace
}  // namespace kalmor
