#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "page/entity_lines.h"
#include "page/translators.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using testing::EntityLines;
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
  const std::string expected = testing::Crlf(
      " 0\nTEXT\n 8\nPARTTEXT\n 10\n  1.0000\n 20\n  6.3958\n 30\n0.0\n 40\n  0.0742\n"
      " 1\nNET1\n"
      " 0\nPOLYLINE\n 8\nPARTS\n 66\n1\n 10\n0.0\n 20\n0.0\n 30\n0.0\n"
      " 0\nVERTEX\n 8\nPARTS\n 10\n  1.0000\n 20\n  6.5000\n 30\n0.0\n"
      " 0\nVERTEX\n 8\nPARTS\n 10\n  1.1000\n 20\n  6.5000\n 30\n0.0\n"
      " 0\nSEQEND\n 8\nPARTS\n");
  testing::PageFixture fixture(testing::OnePageDesign(kConnectorPage));
  for (auto translate : {&TranslateGlobals, &TranslatePorts, &TranslateOffPageConnectors}) {
    fixture.clear();
    translate(fixture.context());
    EXPECT_EQ(fixture.bytes(), expected);
  }
}

TEST(TitleBlocks, ScaleFactorScalesLocationFontAndGraphics) {
  // At 0.5 the font of height -13 becomes -6, the location (20, 10) moves by (10, 5) from the
  // corner (500, 750), and the line 100 long draws 50 long. The raw value is written whatever
  // the display type.
  testing::PageFixture fixture(testing::OnePageDesign(R"("pin_to_pin_scale_factor": 0.5,
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
