#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "page/translators.h"
#include "support/entity_lines.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using Lines = std::vector<std::string>;

Lines WireRecords(const std::string& members) {
  test::PageFixture page(test::OnePageDesign(members));
  TranslateWires(page.context());
  return test::EntityLines(page.bytes());
}

// The records of a wire from page (100, 200) to (300, 200), then `more`.
Lines Wire(const char* width, Lines more = {}) {
  Lines lines = {std::string("POLYLINE WIRE 66=1 10=0.0 20=0.0") + width,
                 "VERTEX WIRE 10=1.0000 20=6.5000", "VERTEX WIRE 10=3.0000 20=6.5000",
                 "SEQEND WIRE"};
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}
constexpr char kThin[] = "";
constexpr char kBus[] = " 40=0.0200 41=0.0200";

TEST(Wires, EachWireWritesLinePropertiesJunctionsThenAliases) {
  // The property shows its raw value whatever its display type; the dot is 2 units across. A
  // thin wire has no width, a bus is one unit wide.
  Lines expected = Wire(
      kThin, {"TEXT WIRETEXT 10=1.0000 20=6.4015 40=0.0685 1=N1",
              "POLYLINE WIRE 66=1 70=1 10=0.0 20=0.0 40=0.0200 41=0.0200",
              "VERTEX WIRE 10=0.9900 20=6.5000 42=1.0", "VERTEX WIRE 10=1.0100 20=6.5000 42=1.0",
              "SEQEND WIRE", "TEXT WIRETEXT 10=2.0000 20=6.5300 40=0.0685 1=CLK"});
  const Lines bus = Wire(kBus);
  expected.insert(expected.end(), bus.begin(), bus.end());
  EXPECT_EQ(WireRecords(R"("wires": [{"start": [100, 200], "end": [300, 200],
      "aliases": [{"name": "CLK", "location": [200, 200], "font": {"height": -12}}],
      "junctions": [[100, 200]],
      "properties": [{"name": "Net", "value": "N1", "display": 3, "location": [100, 200],
                      "font": {"height": -12}}]},
      {"start": [100, 200], "end": [300, 200], "bus": true}])"),
            expected);
}

TEST(Wires, AliasIsNudgedAndTurnedByItsRotation) {
  struct Case {
    int rotation, fontHeight;
    const char* text;
  };
  // The height follows the sine: at 175 it is sin(1), not the whole 100 * s.
  const Case cases[] = {
      {0, -12, "10=1.0000 20=6.5300 40=0.0685"},
      {1, -12, "10=0.9700 20=6.5000 40=0.0685 50=90.0000"},
      {2, -12, "10=1.0000 20=6.4700 40=0.0685 50=180.0000"},
      {3, 12, "10=1.0300 20=6.5000 40=0.0685 50=270.0000"},
      {7, -12, "10=1.0000 20=6.5300 40=0.0685"},
      {0, 175, "10=1.0000 20=6.5300 40=0.8415"},
      {0, 0, "10=1.0000 20=6.5300 40=0.0514"},  // 0 is the default height, -9
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "rotation " << c.rotation << ", font " << c.fontHeight);
    EXPECT_EQ(WireRecords(R"("wires": [{"start": [100, 200], "end": [300, 200], "aliases": [
                 {"name": "D0", "location": [100, 200], "rotation": )" +
                          std::to_string(c.rotation) + R"(, "font": {"height": )" +
                          std::to_string(c.fontHeight) + "}}]}]"),
              Wire(kThin, {std::string("TEXT WIRETEXT ") + c.text + " 1=D0"}));
  }
}

TEST(Wires, PropertyValueFollowsTheOccurrence) {
  test::PageFixture page(test::HierarchyDocument(), "SUB", "S1");
  for (const auto& [occurrence, value] : {std::pair{"", "N"}, {"/BLK1", "N1"}}) {
    page.SetOccurrence(occurrence);
    page.clear();
    TranslateWires(page.context());
    EXPECT_EQ(
        test::EntityLines(page.bytes()),
        Wire(kThin,
             {std::string("TEXT WIRETEXT 10=1.0985 20=6.5000 40=0.0685 50=90.0000 1=") + value}));
  }
}

TEST(BusEntries, EachIsAThinSegmentFromEntryToEnd) {
  test::PageFixture page(test::OnePageDesign(R"("bus_entries": [
      {"entry": [100, 200], "end": [300, 200]}, {"entry": [0, 850], "end": [-10, 860]}])"));
  TranslateBusEntries(page.context());
  EXPECT_EQ(test::EntityLines(page.bytes()),
            Wire(kThin, {"POLYLINE WIRE 66=1 10=0.0 20=0.0", "VERTEX WIRE 10=0.0000 20=0.0000",
                         "VERTEX WIRE 10=-0.1000 20=-0.1000", "SEQEND WIRE"}));
}

}  // namespace
}  // namespace kalmor
