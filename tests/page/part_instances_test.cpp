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

Lines PartRecords(const std::string& pageMembers) {
  test::PageFixture fixture(test::OnePageDesign(pageMembers));
  TranslatePartInsts(fixture.context());
  return EntityLines(fixture.bytes());
}

TEST(PartInstances, QuarterTurnPlacesTextAndBodyInTheExchangedBox) {
  // Box (0, 0, 40, 100) turned once at (1000, 2000) on a page 5000 high lands at
  // (1000, 3000)-(1100, 2960).
  EXPECT_EQ(PartRecords(R"("height": 50000, "parts": [{"id": "R1", "location": [1000, 2000],
                "rotation": 1, "symbol": {"vectors": [{"type": "box", "rect": [0, 0, 40, 100]}]},
                "properties": [{"name": "Ref", "value": "R1", "font": {"height": 0}}]}])"),
            (Lines{"TEXT PARTTEXT 10=10.0000 20=29.9186 40=0.0514 1=R1",
                   "POLYLINE PARTS 66=1 70=1 10=0.0 20=0.0", "VERTEX PARTS 10=10.0000 20=29.6000",
                   "VERTEX PARTS 10=10.0000 20=30.0000", "VERTEX PARTS 10=11.0000 20=30.0000",
                   "VERTEX PARTS 10=11.0000 20=29.6000", "SEQEND PARTS"}));
}

TEST(PartInstances, PropertyTextIsAnchoredPerRotationAndFormatted) {
  // Reference corner (100, 500); every property 40 by 10, located at (5, 3). A zero font height
  // is the default height, -9: texts 0.0514 high, their base line 0.0814 from the anchor.
  std::string props = "[";
  for (const char* own : {R"("rotation": 0, "value": "x")", R"("rotation": 1, "value": "x")",
                          R"("rotation": 2, "value": "x")", R"("rotation": 3, "value": "x")",
                          R"("display": 2, "value": "")", R"("display": 4, "value": "<V>")"}) {
    props += R"({"name": "V", "location": [5, 3], "extent": [0, 0, 40, 10],
                 "font": {"height": 0}, )" +
             std::string(own) + "},";
  }
  props.back() = ']';
  EXPECT_EQ(PartRecords(R"("parts": [{"id": "U1", "location": [100, 350],
                "symbol": {"bbox": [0, 0, 10, 10], "vectors": []}, "properties": )" +
                        props + "}]"),
            (Lines{"TEXT PARTTEXT 10=1.0500 20=4.8886 40=0.0514 1=x",
                   "TEXT PARTTEXT 10=1.1314 20=4.8700 40=0.0514 50=90.0000 1=x",
                   "TEXT PARTTEXT 10=1.4500 20=4.9514 40=0.0514 50=180.0000 1=x",
                   "TEXT PARTTEXT 10=1.3686 20=4.9700 40=0.0514 50=270.0000 1=x",
                   "TEXT PARTTEXT 10=1.0500 20=4.8886 40=0.0514 1=V = ",
                   "TEXT PARTTEXT 10=1.0500 20=4.8886 40=0.0514 1="}));
}

TEST(PartInstances, BlockWritesTextThenOutlineThenPinsThenBody) {
  EXPECT_EQ(PartRecords(R"("parts": [{"id": "B1", "kind": "block", "location": [200, 300],
          "pin_names_visible": false,
          "symbol": {"bbox": [0, 0, 100, 50],
                     "vectors": [{"type": "line", "start": [0, 0], "end": [10, 0]}]},
          "properties": [{"name": "Ref", "value": "B1", "font": {"height": 0}}],
          "pins": [{"start": [200, 320], "end": [190, 320], "block_kind": 1}]}])"),
            (Lines{"TEXT PARTTEXT 10=2.0000 20=5.4186 40=0.0514 1=B1",
                   "POLYLINE PARTS 66=1 70=1 10=0.0 20=0.0", "VERTEX PARTS 10=2.0000 20=5.5000",
                   "VERTEX PARTS 10=3.0000 20=5.5000", "VERTEX PARTS 10=3.0000 20=5.0000",
                   "VERTEX PARTS 10=2.0000 20=5.0000", "SEQEND PARTS",
                   "SOLID PARTS 10=2.0000 20=5.3000 11=2.0500 21=5.2500 12=2.0500 22=5.3500 "
                   "13=2.1000 23=5.3000",
                   "POLYLINE PARTS 66=1 10=0.0 20=0.0", "VERTEX PARTS 10=2.0000 20=5.5000",
                   "VERTEX PARTS 10=2.1000 20=5.5000", "SEQEND PARTS"}));
}

Lines HierarchyRecords(const char* occurrence) {
  test::PageFixture fixture(test::HierarchyDocument(), "SUB", "S1");
  fixture.SetOccurrence(occurrence);
  TranslateTitleBlocks(fixture.context());
  TranslatePartInsts(fixture.context());
  TranslatePorts(fixture.context());
  return EntityLines(fixture.bytes());
}

TEST(PartInstances, ValuesAndPinTextFollowThePageOccurrenceExceptOnConnectors) {
  const auto records = [](const char* title, const char* value, const char* name,
                          const char* number) {
    return Lines{std::string("TEXT TITLE 10=5.0000 20=7.4186 40=0.0514 1=") + title,
                 std::string("TEXT PARTTEXT 10=2.0000 20=6.4186 40=0.0514 1=") + value,
                 "LINE PARTS 10=1.7000 20=6.2000 11=2.0000 21=6.2000",
                 std::string("TEXT PARTS 10=2.0900 20=6.1750 40=0.0500 1=") + name,
                 std::string("TEXT PARTS 10=1.9000 20=6.2300 40=0.0500 1=") + number,
                 "TEXT PARTTEXT 10=0.0000 20=8.4186 40=0.0514 1=plain"};
  };
  EXPECT_EQ(HierarchyRecords("/BLK1"), records("own", "22k", "OUT", "2"));
  EXPECT_EQ(HierarchyRecords(""), records("plain", "10k", "IN", "1"));
}

}  // namespace
}  // namespace kalmor
