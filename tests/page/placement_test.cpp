#include <gtest/gtest.h>

#include <cstdint>

#include "page/instance_placement.h"
#include "page/symbol_graphics.h"

namespace kalmor {
namespace {

struct PointCase {
  RotationT rotation;
  int32_t mirror;
  double x;
  double y;
};

// The point (1, 2) in a box 7 wide and 9 high (left 100, top 200). The KiCad layout test places
// every known rotation and mirror; unknown rotations neither turn nor mirror.
TEST(SymbolPoint, UnknownRotationsNeitherTurnNorMirror) {
  const PointCase cases[] = {
      {0, 0, 101, 198}, {5, 0, 101, 198}, {5, 1, 101, 198}, {-1, 1, 101, 198}};
  for (const PointCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "rotation " << c.rotation << " mirror " << c.mirror);
    EXPECT_EQ(SymbolPointX(1, 2, c.rotation, c.mirror, 100, 200, 107), c.x);
    EXPECT_EQ(SymbolPointY(1, 2, c.rotation, c.mirror, 100, 200, 107, 191), c.y);
  }
}

TEST(SymbolPoint, EvenPartOfANegativeExtentTruncatesTowardZero) {
  // Width -7 has the even part -6, not -8.
  EXPECT_EQ(SymbolPointX(1, 0, 0, 1, 107, 0, 100), 100);
  // Height -9 has the even part -8.
  EXPECT_EQ(SymbolPointY(1, 0, 3, 1, 0, 100, 0, 109), 109);
}

struct BoxCase {
  RotationT rotation;
  CRect placed;
};

// Box (0, 0, 40, 100) at (1000, 2000) on a page 5000 high: the quarter turns exchange only
// right and bottom, then everything moves and top and bottom flip.
TEST(PlaceInstanceBox, ExchangesRightAndBottomOnlyAtQuarterTurns) {
  const BoxCase cases[] = {
      {0, {1000, 3000, 1040, 2900}}, {1, {1000, 3000, 1100, 2960}}, {2, {1000, 3000, 1040, 2900}},
      {3, {1000, 3000, 1100, 2960}}, {4, {1000, 3000, 1040, 2900}},
  };
  for (const BoxCase& c : cases) {
    EXPECT_EQ(PlaceInstanceBox({0, 0, 40, 100}, c.rotation, {1000, 2000}, 5000), c.placed)
        << "rotation " << c.rotation;
  }
}

}  // namespace
}  // namespace kalmor
