// The records each kind of page object writes, as one line per entity, and the placement and
// display-text rules they follow.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "page/display_props.h"
#include "page/instance_placement.h"
#include "page/symbol_graphics.h"
#include "page/translators.h"
#include "support/entity_lines.h"
#include "support/page_fixture.h"

namespace kalmor {
namespace {

using test::EntityLines;
using Lines = std::vector<std::string>;

// The records `translate` writes for the page of a design whose one page has `members`.
Lines Records(void (*translate)(PageContext&), const std::string& members) {
  test::PageFixture page(test::OnePageDesign(members));
  translate(page.context());
  return EntityLines(page.bytes());
}
Lines PartRecords(const std::string& members) {
  return Records(&TranslatePartInsts, members);
}
Lines WireRecords(const std::string& members) {
  return Records(&TranslateWires, members);
}
Lines Graphics(const std::string& graphics) {
  return Records(&TranslateCommentGraphics, R"("graphics": [)" + graphics + "]");
}

TEST(PageWalk, PageHeightIsTruncatedToPinToPinTenths) {
  for (const auto& [height, H] : {std::pair{8500, 850}, {8505, 850}, {8509, 850}, {-8505, -850}}) {
    test::PageFixture fixture(test::OnePageDesign(R"("height": )" + std::to_string(height)));
    EXPECT_EQ(fixture.context().H, H) << height;
    EXPECT_DOUBLE_EQ(fixture.context().Y(100), (H - 100) * 0.01) << height;
  }
}

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

struct FormatCase {
  DisplayTypeT type;
  const char* value;
  const char* shown;
};

// Every call starts from "prior": only type 4 with a missing value may leave it.
TEST(FormatDisplayPropText, ChoosesTheShownTextByDisplayType) {
  // The placeholder test is case-sensitive.
  const FormatCase cases[] = {
      // clang-format off
      {1, "", "<Value>"}, {1, "<Value>", "<Value>"}, {1, "10k", "10k"}, {1, "<value>", "<value>"},
      {2, "", "Value = "}, {2, "<Value>", "Value = "}, {2, "10k", "Value = 10k"},
      {3, "", "Value"}, {3, "10k", "Value"},
      {4, "", "prior"}, {4, "<Value>", "prior"}, {4, "<value>", "Value = <value>"},
      {4, "10k", "Value = 10k"},
      {0, "<Value>", "<Value>"}, {7, "", ""}, {-1, "10k", "10k"},
      // clang-format on
  };
  for (const FormatCase& c : cases) {
    std::string out = "prior";
    FormatDisplayPropText("Value", c.value, c.type, out);
    EXPECT_EQ(out, c.shown) << "type " << c.type << ", value \"" << c.value << '"';
  }
}

// The frame's geometry at the default settings is pinned by the golden pages; what the settings
// change is counted here.
TEST(Frame, LabelsBySideCountStyleAndOrder) {
  struct Case {
    int count;
    bool letters, ascending;
    std::vector<std::string> first;  // the first labels, left to right
    std::string last;
    int solids, polylines;
  };
  const Case cases[] = {
      {1, false, true, {"1"}, "1", 0, 2},
      {3, false, true, {"1", "2", "3"}, "3", 0, 6},
      {10, false, true, {"1", "2", "3", "4", "5", "6", "7", "8", "09", "10"}, "10", 18, 20},
      {12, false, false, {"12", "11", "10", "09", "8", "7"}, "1", 22, 24},
      {28, true, true, {"A", "B", "C"}, "AB", 54, 56},
      {53, true, false, {"BA", "AZ", "AY"}, "A", 0, 106},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.count << (c.letters ? " letters" : " numbers")
                                      << (c.ascending ? " ascending" : " descending"));
    const Lines lines = Records(
        &TranslateFrame, R"("border": {"vertical_count": 1, "horizontal_count": )" +
                             std::to_string(c.count) + R"(, "horizontal_letters": )" +
                             (c.letters ? "true" : "false") + R"(, "horizontal_ascending": )" +
                             (c.ascending ? "true" : "false") + "}");
    // Each zone's label stands twice, bottom then top; the single row's two labels follow.
    std::vector<std::string> labels;
    int solids = 0, polylines = 0;
    for (const std::string& line : lines) {
      solids += line.starts_with("SOLID");
      polylines += line.starts_with("POLYLINE");
      if (line.starts_with("TEXT")) {
        labels.push_back(line.substr(line.find(" 1=") + 3));
      }
    }
    ASSERT_EQ(labels.size(), 2u * c.count + 2);
    for (std::size_t k = 0; k < c.first.size(); ++k) {
      EXPECT_EQ(labels[2 * k] + labels[2 * k + 1], c.first[k] + c.first[k]);
    }
    EXPECT_EQ(labels[2 * c.count - 1], c.last);
    EXPECT_EQ(solids, c.solids);
    EXPECT_EQ(polylines, c.polylines);
  }
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
  const Lines all = PartRecords(c.pageMembers + part);
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
  EXPECT_EQ(Records(&TranslateTitleBlocks, R"("pin_to_pin_scale_factor": 0.5,
      "title_blocks": [{"location": [500, 100],
        "symbol": {"bbox": [0, 0, 100, 40],
                   "vectors": [{"type": "line", "start": [0, 0], "end": [100, 0]}]},
        "properties": [{"name": "Title", "value": "TITLE1", "display": 3, "location": [20, 10],
                        "font": {"height": -13}}]}])"),
            (Lines{"TEXT TITLE 10=5.1000 20=7.3857 40=0.0343 1=TITLE1",
                   "POLYLINE TITLE 66=1 10=0.0 20=0.0", "VERTEX TITLE 10=5.0000 20=7.5000",
                   "VERTEX TITLE 10=5.5000 20=7.5000", "SEQEND TITLE"}));
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
        EntityLines(page.bytes()),
        Wire(kThin,
             {std::string("TEXT WIRETEXT 10=1.0985 20=6.5000 40=0.0685 50=90.0000 1=") + value}));
  }
}

TEST(BusEntries, EachIsAThinSegmentFromEntryToEnd) {
  EXPECT_EQ(Records(&TranslateBusEntries, R"("bus_entries": [
      {"entry": [100, 200], "end": [300, 200]}, {"entry": [0, 850], "end": [-10, 860]}])"),
            Wire(kThin, {"POLYLINE WIRE 66=1 10=0.0 20=0.0", "VERTEX WIRE 10=0.0000 20=0.0000",
                         "VERTEX WIRE 10=-0.1000 20=-0.1000", "SEQEND WIRE"}));
}

// A polyline on `layer`: its header, a vertex per "10=x 20=y", and its end. `width` is printed as
// in the file, "" for none.
Lines Polyline(const std::string& layer, bool closed, const std::string& width,
               const Lines& vertices) {
  Lines lines = {"POLYLINE " + layer + " 66=1" + (closed ? " 70=1" : "") + " 10=0.0 20=0.0" +
                 (width.empty() ? "" : " 40=" + width + " 41=" + width)};
  for (const std::string& vertex : vertices) {
    lines.push_back("VERTEX " + layer + " " + vertex);
  }
  lines.push_back("SEQEND " + layer);
  return lines;
}

TEST(CommentGraphics, EachKindInOrderAndUnknownKindsSkipped) {
  const Lines corners = {"10=1.0000 20=6.5000", "10=3.0000 20=6.5000", "10=3.0000 20=4.5000",
                         "10=1.0000 20=4.5000"};
  const Lines points = {"10=0.0000 20=8.5000", "10=1.0000 20=8.5000", "10=1.0000 20=7.5000"};
  // About the centre (1.0, 7.5) of the box [0, 0, 200, 200]: east is page (200, 100), north is
  // page (100, 0). A quarter turn, then the same arc the long way round.
  const std::string arc = R"({"type": "arc", "rect": [0, 0, 200, 200], )";
  const struct {
    std::string graphic;
    Lines records;
  } cases[] = {
      {R"({"type": 54}, {"type": "box", "rect": [100, 200, 300, 400], "width": 2}, {"type": 63})",
       Polyline("COMMENTS", true, "0.0400", corners)},
      {R"({"type": "line", "start": [100, 200], "end": [300, 400]})",
       Polyline("COMMENTS", false, "", {corners[0], corners[2]})},
      {R"({"type": "bitmap", "rect": [100, 200, 300, 400]})",
       Polyline("BITMAPS", true, "", corners)},
      {arc + R"("start": [200, 100], "end": [100, 0]})",
       Polyline("COMMENTS", false, "", {"10=2.0000 20=7.5000 42=0.4142", "10=1.0000 20=8.5000"})},
      {arc + R"("start": [100, 0], "end": [200, 100], "width": 1})",
       Polyline("COMMENTS", false, "0.0200",
                {"10=1.0000 20=8.5000 42=2.4142", "10=2.0000 20=7.5000"})},
      {R"({"type": "polygon", "width": 1, "points": [[0, 0], [100, 0], [100, 100]]})",
       Polyline("COMMENTS", true, "0.0200", points)},
      {R"({"type": "polyline", "width": 1, "points": [[0, 0], [100, 0], [100, 100]]})",
       Polyline("COMMENTS", false, "0.0200", points)},
      {R"({"type": "polygon", "points": []})", Polyline("COMMENTS", true, "", {})},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Graphics(c.graphic), c.records) << c.graphic;
  }
}

TEST(CommentGraphics, EllipseTakesAbsoluteRadiiWhicheverWayItsBoxRuns) {
  const Lines forward =
      Graphics(R"({"type": "ellipse", "width": 1, "rect": [100, 200, 500, 400]})");
  ASSERT_EQ(forward.size(), 18u);
  EXPECT_EQ(forward[0], "POLYLINE COMMENTS 66=1 70=1 10=0.0 20=0.0 40=0.0200 41=0.0200");
  EXPECT_EQ(forward[1], "VERTEX COMMENTS 10=5.0000 20=5.5000 42=0.1284");  // the long axis' end
  EXPECT_EQ(forward[5], "VERTEX COMMENTS 10=3.0000 20=6.5000 42=0.0687");  // the short one's
  EXPECT_EQ(Graphics(R"({"type": "ellipse", "width": 1, "rect": [500, 400, 100, 200]})"), forward);
}

TEST(CommentGraphics, CommentTextIsLaidOutInItsFlippedBox) {
  // The box [100, 200, 300, 260] flips to x 100..300, y 650..590; font height 12 gives 0.0685.
  const struct {
    int rotation;
    const char* text;
    Lines records;
  } cases[] = {
      {0, "NOTE", {"TEXT COMMENTS 10=1.0000 20=6.4015 40=0.0685 1=NOTE"}},
      {1, "NOTE", {"TEXT COMMENTS 10=1.0985 20=5.9000 40=0.0685 50=90.0000 1=NOTE"}},
      {2, "NOTE", {"TEXT COMMENTS 10=3.0000 20=5.9985 40=0.0685 50=180.0000 1=NOTE"}},
      {3, "NOTE", {"TEXT COMMENTS 10=2.9015 20=6.5000 40=0.0685 50=270.0000 1=NOTE"}},
      {0,
       R"(A\nB)",
       {"TEXT COMMENTS 10=1.0000 20=6.4015 40=0.0685 1=A",
        "TEXT COMMENTS 10=1.0000 20=6.1015 40=0.0685 1=B"}},
      {1,
       R"(A\nB)",
       {"TEXT COMMENTS 10=1.0985 20=5.9000 40=0.0685 50=90.0000 1=A",
        "TEXT COMMENTS 10=2.0985 20=5.9000 40=0.0685 50=90.0000 1=B"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Graphics(R"({"type": "text", "rect": [100, 200, 300, 260], "text": ")" +
                       std::string(c.text) + R"(", "font": {"height": -12}, "rotation": )" +
                       std::to_string(c.rotation) + "}"),
              c.records)
        << "rotation " << c.rotation << ", " << c.text;
  }
}

}  // namespace
}  // namespace kalmor
