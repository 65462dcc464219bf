#include <string>

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

std::string WireBytes(const std::string& members) {
  PageFixture page(OnePageDesign(members));
  TranslateWires(page.context());
  return page.bytes();
}

// The four records of a wire from page (100, 200) to (300, 200).
std::string Line(std::string_view width = "") {
  return Polyline("WIRE", width) + Vertex("WIRE", "  1.0000", "  6.5000") +
         Vertex("WIRE", "  3.0000", "  6.5000") + SeqEnd("WIRE");
}

TEST(Wires, ThinWireHasNoWidthAndABusIsOneUnitWide) {
  const std::string wire = R"("wires": [{"start": [100, 200], "end": [300, 200])";
  EXPECT_EQ(WireBytes(wire + "}]"), Crlf(Line()));
  EXPECT_EQ(WireBytes(wire + R"(, "bus": true}])"), Crlf(Line("  0.0200")));
}

TEST(Wires, EachWireWritesLinePropertiesJunctionsThenAliases) {
  // The property shows its raw value whatever its display type; the dot is 2 units across.
  EXPECT_EQ(
      WireBytes(R"("wires": [{"start": [100, 200], "end": [300, 200],
      "aliases": [{"name": "CLK", "location": [200, 200], "font": {"height": -12}}],
      "junctions": [[100, 200]],
      "properties": [{"name": "Net", "value": "N1", "display": 3, "location": [100, 200],
                      "font": {"height": -12}}]},
      {"start": [100, 200], "end": [300, 200], "bus": true}])"),
      Crlf(Line() + Text("WIRETEXT", "  1.0000", "  6.4015", "  0.0685", "", "N1") +
           Polyline("WIRE", "  0.0200", true) + Vertex("WIRE", "  0.9900", "  6.5000", "1.0") +
           Vertex("WIRE", "  1.0100", "  6.5000", "1.0") + SeqEnd("WIRE") +
           Text("WIRETEXT", "  2.0000", "  6.5300", "  0.0685", "", "CLK") + Line("  0.0200")));
}

TEST(Wires, AliasIsNudgedAndTurnedByItsRotation) {
  struct Case {
    int rotation, fontHeight;
    const char *x, *y, *height, *angle;
  };
  // The height follows the sine: at 175 it is sin(1), not the whole 100 * s.
  const Case cases[] = {
      {0, -12, "  1.0000", "  6.5300", "  0.0685", ""},
      {1, -12, "  0.9700", "  6.5000", "  0.0685", " 90.0000"},
      {2, -12, "  1.0000", "  6.4700", "  0.0685", "180.0000"},
      {3, 12, "  1.0300", "  6.5000", "  0.0685", "270.0000"},
      {7, -12, "  1.0000", "  6.5300", "  0.0685", ""},
      {0, 175, "  1.0000", "  6.5300", "  0.8415", ""},
      {0, 0, "  1.0000", "  6.5300", "  0.0514", ""},  // 0 is the default height, -9
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "rotation " << c.rotation << ", font " << c.fontHeight);
    EXPECT_EQ(WireBytes(R"("wires": [{"start": [100, 200], "end": [300, 200], "aliases": [
                 {"name": "D0", "location": [100, 200], "rotation": )" +
                        std::to_string(c.rotation) + R"(, "font": {"height": )" +
                        std::to_string(c.fontHeight) + "}}]}]"),
              Crlf(Line() + Text("WIRETEXT", c.x, c.y, c.height, c.angle, "D0")));
  }
}

TEST(Wires, PropertyValueFollowsTheOccurrence) {
  PageFixture page(R"({"kalmor_design": 1, "name": "D", "root": "ROOT", "schematics": [
      {"name": "ROOT", "pages": [{"name": "R1", "parts": [{"id": "BLK1", "kind": "block",
        "schematic": "S", "symbol": {"bbox": [0, 0, 10, 10], "vectors": []}}]}]},
      {"name": "S", "pages": [{"name": "P", "wires": [{"start": [100, 200], "end": [300, 200],
        "properties": [{"name": "Net", "value": "PLAIN", "values": {"/BLK1": "OCCURRENCE"},
                        "location": [100, 200], "rotation": 1, "font": {"height": 12}}]}]}]}]})",
                   "S", "P");
  for (const char* value : {"PLAIN", "OCCURRENCE"}) {
    page.SetOccurrence(std::string_view(value) == "PLAIN" ? "" : "/BLK1");
    page.clear();
    TranslateWires(page.context());
    EXPECT_EQ(page.bytes(), Crlf(Line() + Text("WIRETEXT", "  1.0985", "  6.5000", "  0.0685",
                                               " 90.0000", value)));
  }
}

TEST(BusEntries, EachIsAThinSegmentFromEntryToEnd) {
  PageFixture page(OnePageDesign(R"("bus_entries": [{"entry": [100, 200], "end": [300, 200]},
                                                    {"entry": [0, 850], "end": [-10, 860]}])"));
  TranslateBusEntries(page.context());
  EXPECT_EQ(page.bytes(), Crlf(Line() + Polyline("WIRE") + Vertex("WIRE", "  0.0000", "  0.0000") +
                               Vertex("WIRE", " -0.1000", " -0.1000") + SeqEnd("WIRE")));
}

}  // namespace
}  // namespace kalmor
