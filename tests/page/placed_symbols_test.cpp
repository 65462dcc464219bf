#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "page/translators.h"
#include "support/entity_lines.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using test::EntityLines;
using Lines = std::vector<std::string>;

// One connector, repeated as a global, a port and an off-page connector on a page whose
// pin-to-pin scale factor (0.5) must not touch them.
constexpr char kConnectorPage[] = R"("pin_to_pin_scale_factor": 0.5,
  "globals": [{"location": [100, 200],
      "symbol": {"vectors": [{"type": "line", "start": [0, 0], "end": [10, 0]}]},
      "properties": [{"name": "Net", "value": "NET1", "display": 3, "font": {"height": -13}}]}],
  "ports": [{"location": [100, 200],
      "symbol": {"vectors": [{"type": "line", "start": [0, 0], "end": [10, 0]}]},
      "properties": [{"name": "Net", "value": "NET1", "display": 3, "font": {"height": -13}}]}],
  "off_page_connectors": [{"location": [100, 200],
      "symbol": {"vectors": [{"type": "line", "start": [0, 0], "end": [10, 0]}]},
      "properties": [{"name": "Net", "value": "NET1", "display": 3, "font": {"height": -13}}]}])";

TEST(Connectors, EveryKindWritesItsPlainValueAndUnscaledSymbol) {
  const Lines expected = {"TEXT PARTTEXT 10=1.0000 20=6.3958 40=0.0742 1=NET1",
                          "POLYLINE PARTS 66=1 10=0.0 20=0.0", "VERTEX PARTS 10=1.0000 20=6.5000",
                          "VERTEX PARTS 10=1.1000 20=6.5000", "SEQEND PARTS"};
  test::PageFixture fixture(test::OnePageDesign(kConnectorPage));
  for (auto translate : {&TranslateGlobals, &TranslatePorts, &TranslateOffPageConnectors}) {
    fixture.clear();
    translate(fixture.context());
    EXPECT_EQ(EntityLines(fixture.bytes()), expected);
  }
}

TEST(TitleBlocks, ScaleFactorScalesLocationFontAndGraphics) {
  // At 0.5 the font of height -13 becomes -6, the location (20, 10) moves by (10, 5) from the
  // corner (500, 750), and the line 100 long draws 50 long. The raw value is written whatever
  // the display type.
  test::PageFixture fixture(test::OnePageDesign(R"("pin_to_pin_scale_factor": 0.5,
      "title_blocks": [{"location": [500, 100],
        "symbol": {"bbox": [0, 0, 100, 40],
                   "vectors": [{"type": "line", "start": [0, 0], "end": [100, 0]}]},
        "properties": [{"name": "Title", "value": "TITLE1", "display": 3, "location": [20, 10],
                        "font": {"height": -13}}]}])"));
  TranslateTitleBlocks(fixture.context());
  EXPECT_EQ(EntityLines(fixture.bytes()),
            (Lines{"TEXT TITLE 10=5.1000 20=7.3857 40=0.0343 1=TITLE1",
                   "POLYLINE TITLE 66=1 10=0.0 20=0.0", "VERTEX TITLE 10=5.0000 20=7.5000",
                   "VERTEX TITLE 10=5.5000 20=7.5000", "SEQEND TITLE"}));
}

}  // namespace
}  // namespace kalmor
