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

struct PinCase {
  const char* what;
  const char* pin;
  bool namesVisible;  // numbers too
  Lines records;
  const char* pageMembers = "";
};

// The records of one part holding one pin, the block outline (six records) left out.
Lines PinRecords(const char* kind, const char* box, const char* location, const PinCase& c,
                 std::size_t skip) {
  const char* visible = c.namesVisible ? "true" : "false";
  const std::string part =
      std::string(R"("parts": [{"id": "X1", "kind": ")") + kind + R"(", "symbol": {"bbox": )" +
      box + R"(, "vectors": []}, "location": )" + location + R"(, "pin_names_visible": )" +
      visible + R"(, "pin_numbers_visible": )" + visible + R"(, "pins": [)" + c.pin + "]}]";
  test::PageFixture fixture(test::OnePageDesign(c.pageMembers + part));
  TranslatePartInsts(fixture.context());
  const Lines all = EntityLines(fixture.bytes());
  return all.size() < skip ? all : Lines(all.begin() + skip, all.end());
}

// Block (200, 550)-(300, 500) in flipped page units.
TEST(BlockPins, MarkersNamesAndMarksPerEdge) {
  const PinCase cases[] = {
      {"kind 1 on the left edge",
       R"({"name": "CLK", "start": [200, 320], "end": [190, 320], "block_kind": 1})",
       true,
       {"SOLID PARTS 10=2.0000 20=5.3000 11=2.0500 21=5.2500 12=2.0500 22=5.3500 13=2.1000 "
        "23=5.3000",
        "TEXT PARTS 10=2.1500 20=5.2750 40=0.0500 1=CLK"}},
      {"kind 1 on the top-left corner gets two diamonds, then the no-connect mark",
       R"({"name": "X", "start": [200, 300], "end": [190, 300], "block_kind": 1,
           "no_connect": true})",
       false,
       {"SOLID PARTS 10=2.0000 20=5.5000 11=2.0500 21=5.4500 12=2.0500 22=5.5500 13=2.1000 "
        "23=5.5000",
        "SOLID PARTS 10=2.0000 20=5.5000 11=1.9500 21=5.4500 12=2.0500 22=5.4500 13=2.0000 "
        "23=5.4000",
        "LINE PARTS 10=1.9500 20=5.5500 11=2.0500 21=5.4500",
        "LINE PARTS 10=2.0500 20=5.5500 11=1.9500 21=5.4500"}},
      {"kind 3 writes only its property, placed and sized by the pin-to-pin scale factor",
       R"({"name": "X", "start": [200, 320], "end": [190, 320], "block_kind": 3,
           "no_connect": true, "properties": [{"name": "Type", "value": "IN", "location": [2, 4]}]})",
       true,
       {"TEXT PARTS 10=2.0100 20=5.4271 40=0.0229 1=IN"},
       R"("pin_to_pin_scale_factor": 0.5, )"},
      {"kind 4 on the right edge, its overbarred name ending 15 units inside",
       R"({"name": "R\\E\\S\\E\\T\\", "start": [300, 320], "end": [310, 320], "block_kind": 4})",
       true,
       {"SOLID PARTS 10=3.0000 20=5.2500 11=3.0000 21=5.3500 12=2.9000 22=5.2500 13=2.9000 "
        "23=5.3500",
        "TEXT PARTS 10=2.6500 20=5.2750 40=0.0500 1=%%oRESET%%o"}},
      {"kind 4 on the right edge: a character beyond the code page is one, overbarred",
       R"({"name": "Ω\\", "start": [300, 320], "end": [310, 320], "block_kind": 4})",
       true,
       {"SOLID PARTS 10=3.0000 20=5.2500 11=3.0000 21=5.3500 12=2.9000 22=5.2500 13=2.9000 "
        "23=5.3500",
        "TEXT PARTS 10=2.8100 20=5.2750 40=0.0500 1=%%o\\U+03A9%%o"}},
      {"kind 0 on the bottom edge points into the block",
       R"({"name": "N", "start": [250, 350], "end": [250, 360], "block_kind": 0})",
       true,
       {"SOLID PARTS 10=2.5500 20=5.0000 11=2.4500 21=5.0000 12=2.5500 22=5.0500 13=2.4500 "
        "23=5.0500",
        "SOLID PARTS 10=2.5000 20=5.0000 11=2.5500 21=5.0500 12=2.4500 22=5.0500 13=2.5000 "
        "23=5.1000",
        "TEXT PARTS 10=2.5250 20=5.1500 40=0.0500 50=90.0000 1=N"}},
      {"kind 2 on the top edge points out, its name ending 15 units below the pin",
       R"({"name": "AB", "start": [250, 300], "end": [250, 290], "block_kind": 2})",
       true,
       {"SOLID PARTS 10=2.5000 20=5.5000 11=2.4500 21=5.4500 12=2.5500 22=5.4500 13=2.5000 "
        "23=5.4000",
        "SOLID PARTS 10=2.5500 20=5.4500 11=2.4500 21=5.4500 12=2.5500 22=5.4000 13=2.4500 "
        "23=5.4000",
        "TEXT PARTS 10=2.5250 20=5.2700 40=0.0500 50=90.0000 1=AB"}},
  };
  for (const PinCase& c : cases) {
    EXPECT_EQ(PinRecords("block", "[0, 0, 100, 50]", "[200, 300]", c, 6), c.records) << c.what;
  }
}

// Body (200, 650)-(300, 550) in flipped page units; pins given in page points.
TEST(SymbolPins, LineDecorationsNameAndNumberPerDirection) {
  const PinCase cases[] = {
      {"entering from the left, with dot and clock",
       R"({"name": "D", "number": "1", "start": [170, 230], "end": [200, 230], "dot": true,
           "clock": true})",
       true,
       {"CIRCLE PARTS 10=1.9700 20=6.2000 40=0.0300",
        "LINE PARTS 10=1.7000 20=6.2000 11=1.9400 21=6.2000",
        "LINE PARTS 10=2.0000 20=6.2600 11=2.0600 21=6.2000",
        "LINE PARTS 10=2.0600 20=6.2000 11=2.0000 21=6.1400",
        "TEXT PARTS 10=2.0900 20=6.1750 40=0.0500 1=D",
        "TEXT PARTS 10=1.9000 20=6.2300 40=0.0500 1=1"}},
      {"entering from the left, its number's width counting characters, not bytes",
       R"({"name": "\u00b5", "number": "Ω1", "start": [170, 230], "end": [200, 230]})",
       true,
       {"LINE PARTS 10=1.7000 20=6.2000 11=2.0000 21=6.2000",
        "TEXT PARTS 10=2.0900 20=6.1750 40=0.0500 1=\xB5",
        "TEXT PARTS 10=1.8600 20=6.2300 40=0.0500 1=\\U+03A91"}},
      {"entering from the right, not connected: the small X sits on the outer end",
       R"({"name": "Q\\", "number": "12", "start": [330, 260], "end": [300, 260],
           "no_connect": true})",
       true,
       {"LINE PARTS 10=3.3000 20=5.9000 11=3.0000 21=5.9000",
        "LINE PARTS 10=3.2750 20=5.9250 11=3.3250 21=5.8750",
        "LINE PARTS 10=3.3250 20=5.9250 11=3.2750 21=5.8750",
        "TEXT PARTS 10=2.8700 20=5.8750 40=0.0500 1=%%oQ%%o",
        "TEXT PARTS 10=3.0600 20=5.9300 40=0.0500 1=12"}},
      {"entering through the top: the name's width counts its backslash",
       R"({"name": "A\\B", "number": "7", "start": [250, 170], "end": [250, 200],
           "clock": true})",
       true,
       {"LINE PARTS 10=2.5000 20=6.8000 11=2.5000 21=6.5000",
        "LINE PARTS 10=2.5600 20=6.5000 11=2.5000 21=6.4400",
        "LINE PARTS 10=2.5000 20=6.4400 11=2.4400 21=6.5000",
        "TEXT PARTS 10=2.5250 20=6.2900 40=0.0500 50=90.0000 1=%%oA%%oB",
        "TEXT PARTS 10=2.4700 20=6.5600 40=0.0500 50=90.0000 1=7"}},
      {"entering through the bottom, with dot",
       R"({"name": "B", "number": "9", "start": [280, 580], "end": [280, 550], "dot": true})",
       true,
       {"CIRCLE PARTS 10=2.8000 20=2.9700 40=0.0300",
        "LINE PARTS 10=2.8000 20=2.7000 11=2.8000 21=2.9400",
        "TEXT PARTS 10=2.8250 20=3.0900 40=0.0500 50=90.0000 1=B",
        "TEXT PARTS 10=2.7700 20=2.8800 40=0.0500 50=90.0000 1=9"}},
      {"names and numbers hidden: the line alone",
       R"({"name": "D", "number": "1", "start": [170, 230], "end": [200, 230]})",
       false,
       {"LINE PARTS 10=1.7000 20=6.2000 11=2.0000 21=6.2000"}},
      {"hidden: nothing at all, not even its property",
       R"({"name": "H", "number": "5", "start": [170, 230], "end": [200, 230], "dot": true,
           "visible": false, "properties": [{"name": "P", "value": "v"}]})",
       true,
       {}},
  };
  for (const PinCase& c : cases) {
    EXPECT_EQ(PinRecords("part", "[0, 0, 100, 100]", "[200, 200]", c, 0), c.records) << c.what;
  }
}

}  // namespace
}  // namespace kalmor
