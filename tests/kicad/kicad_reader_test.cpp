// The KiCad reader on designs in the newer formats (tests/kicad/data/newer: KiCad 9 and 8 files,
// a sheet placed twice, the syntax KiCad 7 to 9 added) and on files that must be refused.

#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "kicad/kicad_reader.h"
#include "model/design.h"
#include "model/design_data.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor::kicad {
namespace {

using model::detail::DesignData;
using model::detail::DisplayProp;
using model::detail::Page;
using model::detail::PartInst;
using model::detail::Pin;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<std::string> Shown(const model::detail::DisplayPropList& props) {
  std::vector<std::string> texts;
  for (const DisplayProp& prop : props) {
    texts.push_back(prop.value.str());
  }
  return texts;
}

std::string NewerDesign() {
  return (test::SourceDir() / "tests/kicad/data/newer/newer.kicad_sch").string();
}

class NewerFormats : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { read_ = new KiCadDesign(LoadKiCadSchematic(NewerDesign())); }
  static void TearDownTestSuite() { delete read_; }

  static const DesignData& data() { return read_->design->data(); }
  static const Page& root() { return data().schematics.at(0).pages.at(0); }
  static const Page& channel() { return data().schematics.at(1).pages.at(0); }
  static const PartInst& Part(const Page& page, const std::string& id) {
    for (const PartInst& part : page.parts) {
      if (part.id == id) {
        return part;
      }
    }
    throw std::runtime_error("no part " + id);
  }
  static const Pin& PinOf(const PartInst& part, const std::string& number) {
    for (const Pin& pin : part.pins) {
      if (pin.number == number) {
        return pin;
      }
    }
    throw std::runtime_error("no pin " + number);
  }
  static KiCadDesign* read_;
};
KiCadDesign* NewerFormats::read_ = nullptr;

TEST_F(NewerFormats, EachSheetFileIsOneSchematicOfOnePage) {
  EXPECT_TRUE(read_->warnings.empty()) << read_->warnings.front();
  EXPECT_EQ(data().name, "newer");
  ASSERT_EQ(data().schematics.size(), 2u);
  EXPECT_EQ(data().schematics[0].name, "newer");
  EXPECT_EQ(data().schematics[1].name, "channel");
  EXPECT_EQ(root().name, "1");
  EXPECT_EQ(channel().name, "2");
  // A4 less KiCad's 10 mm margins, in tenths of page units; A5 standing upright.
  EXPECT_EQ(root().width, 10910);
  EXPECT_EQ(root().height, 7490);
  EXPECT_EQ(channel().width, 5050);
  EXPECT_EQ(channel().height, 7490);
  EXPECT_EQ(root().border.horizontalCount, 6);
  EXPECT_EQ(root().border.verticalCount, 4);
  EXPECT_EQ(read_->design->occurrenceCount(), 7u);
}

TEST_F(NewerFormats, SheetsAreBlocksWithTheirPins) {
  const PartInst& a = Part(root(), "CH_A");
  EXPECT_EQ(a.kind, dbo_type::kBlockInst);
  EXPECT_EQ(a.schematicName, "channel");
  EXPECT_EQ(a.body->box(), (CRect{0, 0, 80, 50}));
  ASSERT_EQ(a.pins.size(), 2u);
  EXPECT_EQ(a.pins[0].name, "IN");
  EXPECT_EQ(a.pins[0].start, (CPoint{a.location.x, 128}));  // on the left edge, at 44.45 mm
  EXPECT_EQ(a.pins[0].blockKind, 0);
  EXPECT_EQ(a.pins[1].start.x, a.location.x + 80);  // on the right edge
  EXPECT_EQ(a.pins[1].blockKind, 2);
  EXPECT_EQ(Part(root(), "CH_B").pins[0].blockKind, 1);
  EXPECT_THAT(Shown(a.properties), ElementsAre("CH_A", "File: channel.kicad_sch"));
}

TEST_F(NewerFormats, ReferencesArePerOccurrenceByPathNeverByProject) {
  EXPECT_THAT(Shown(Part(root(), "U1").properties),
              ElementsAre("U1", "Chip", "CHIP-123", "U1:CHIP-123"));
  const PartInst& capacitor = channel().parts.at(0);
  EXPECT_EQ(capacitor.id, "C101");
  ASSERT_EQ(capacitor.properties.size(), 2u);
  const DisplayProp& reference = capacitor.properties[0];
  EXPECT_EQ(reference.value, "C101");
  ASSERT_EQ(reference.values.size(), 1u);
  EXPECT_EQ(reference.values[0].path, "/CH_B");
  EXPECT_EQ(reference.values[0].value, "C201");
  EXPECT_EQ(read_->design->FindOccurrence("/CH_B/C101")->GetDesignOccurrenceId(), 7u);
}

TEST_F(NewerFormats, SymbolsDrawTheirUnitStyleAndPins) {
  const PartInst& gate = Part(root(), "U3B");  // unit 2 of a two-unit symbol, mirrored
  EXPECT_TRUE(gate.mirror);
  EXPECT_THAT(Shown(gate.properties), ElementsAre("U3B", "Value: NAND2"));
  ASSERT_EQ(gate.pins.size(), 3u);
  const Pin& clock = PinOf(gate, "5");
  EXPECT_EQ(clock.name, "C\\L\\K\\");
  EXPECT_TRUE(clock.clock);
  EXPECT_TRUE(clock.noConnect);  // a no-connect flag stands on its end
  EXPECT_FALSE(PinOf(gate, "7").visible);
  EXPECT_EQ(gate.symbol->vectors.size(), 1u);  // unit 2's circle only

  const PartInst& chip = Part(root(), "U1");
  EXPECT_EQ(PinOf(chip, "1").name, "R\\E\\S\\E\\T\\");
  EXPECT_EQ(PinOf(chip, "3").name, "SDA");  // the alternate the symbol chose, with its shape
  EXPECT_TRUE(PinOf(chip, "3").dot);
  EXPECT_TRUE(PinOf(chip, "4").noConnect);  // a pin of type no_connect
  EXPECT_EQ(chip.rotation, 1);

  const PartInst& resistor = Part(root(), "R1");  // found by lib_name
  EXPECT_FALSE(resistor.pinNamesVisible);
  EXPECT_FALSE(resistor.pinNumbersVisible);
  EXPECT_THAT(Shown(resistor.properties), ElementsAre("R1", "10k"));  // Footprint is hidden
  EXPECT_EQ(resistor.symbol->bbox, (CRect{0, 0, 6, 14}));
}

TEST_F(NewerFormats, TextsExpandVariablesAndGraphicsKeepTheirKinds) {
  std::vector<std::string> texts;
  std::map<int32_t, int> kinds;
  for (const auto& graphic : root().graphics) {
    ++kinds[graphic.type];
    if (const auto* text = dynamic_cast<const model::detail::TextShape*>(graphic.shape)) {
      texts.push_back(text->text.str());
    }
    if (graphic.type == dbo_type::kGraphicBitMapInst) {
      EXPECT_EQ(graphic.box.right - graphic.box.left, 50);  // 25.4 mm at scale 0.5
      EXPECT_EQ(graphic.box.bottom - graphic.box.top, 25);
    }
  }
  EXPECT_THAT(texts, ElementsAre("Board Widget rev B ${NOPE}", "second line",
                                 "A text box whose words", "wrap at its width", "Net", "Class"));
  EXPECT_EQ(kinds[dbo_type::kGraphicLineInst], 2);      // the free no-connect cross
  EXPECT_EQ(kinds[dbo_type::kGraphicPolylineInst], 2);  // a polyline and the rule area
  EXPECT_EQ(kinds[dbo_type::kGraphicArcInst], 1);
  EXPECT_EQ(kinds[dbo_type::kGraphicEllipseInst], 1);
  EXPECT_EQ(kinds[dbo_type::kGraphicBoxInst], 4);  // a rectangle, a text box, two table cells
  EXPECT_EQ(kinds[dbo_type::kGraphicBitMapInst], 1);
  EXPECT_THAT(Shown(channel().titleBlocks.at(0).properties),
              ::testing::Contains("Title: Channel CH_A"));
  EXPECT_THAT(Shown(root().titleBlocks.at(0).properties), ::testing::Contains("Board Widget"));
}

// An in-memory set of files, for designs written inline.
FileSource Files(std::map<std::string, std::string> files) {
  return
      [files = std::move(files)](const std::string& path, std::string& text, std::string& error) {
        const auto found = files.find(path);
        if (found == files.end()) {
          error = path + ": No such file or directory";
          return false;
        }
        text = found->second;
        return true;
      };
}

std::string RefusalOf(const std::string& text, std::map<std::string, std::string> others = {}) {
  return test::ThrownMessage<KiCadError>(
      [&] { ReadKiCadSchematic(text, "d/t.kicad_sch", Files(std::move(others))); });
}

constexpr char kSheetOf[] = R"((sheet (at 10 10) (size 20 20) (uuid "s")
  (property "Sheetname" "S" (at 10 9 0)) (property "Sheetfile" "FILE" (at 10 31 0))))";

std::string WithSheet(const std::string& file) {
  std::string sheet = kSheetOf;
  sheet.replace(sheet.find("FILE"), 4, file);
  return "(kicad_sch (version 20231120) (uuid \"r\")\n  " + sheet + ")";
}

// A schematic of tests/kicad/data/bad_schematics.json is its "text" or holds a "sheet" of that file
// name; so are the other "files" its sheets read.
std::string CaseText(const nlohmann::json& c) {
  return c.contains("sheet") ? WithSheet(c["sheet"]) : c["text"].get<std::string>();
}

TEST(KiCadReader, RefusesBadFilesSayingWhereAndWhat) {
  const nlohmann::json cases = nlohmann::json::parse(
      test::ReadFileBytes(test::SourceDir() / "tests/kicad/data/bad_schematics.json"));
  ASSERT_GT(cases.size(), 10u);
  for (const nlohmann::json& c : cases) {
    std::map<std::string, std::string> others;
    const nlohmann::json files = c.value("files", nlohmann::json::object());
    for (const auto& [path, file] : files.items()) {
      others[path] = CaseText(file);
    }
    EXPECT_THAT(RefusalOf(CaseText(c), others), HasSubstr(c["says"].get<std::string>()))
        << c["what"].get<std::string>();
  }
}

TEST(KiCadReader, ReadsNoDevicesFromDisk) {
  EXPECT_THAT(test::ThrownMessage<KiCadError>(
                  [] { ReadKiCadSchematic(WithSheet("/dev/zero"), "d/t.kicad_sch", DiskFiles()); }),
              HasSubstr("cannot read /dev/zero: it is a device"));
}

TEST(KiCadReader, ReadsNewerVersionsWithOneWarningAndFindsSheetsBesideTheRoot) {
  const std::string sub =
      "(kicad_sch (version 20991231) (future_token (nested 1)) (wire (pts "
      "(xy 0 0) (xy 2.54 0))))";
  // The sheet file is named relative to the sub-folder's file, and found beside the root.
  const KiCadDesign read = ReadKiCadSchematic(
      WithSheet("sub/s.kicad_sch"), "d/t.kicad_sch",
      Files({{"d/sub/s.kicad_sch", WithSheet("inner.kicad_sch")}, {"d/inner.kicad_sch", sub}}));
  ASSERT_EQ(read.warnings.size(), 1u);
  EXPECT_THAT(read.warnings[0], HasSubstr("d/inner.kicad_sch:1:21: warning: file version "
                                          "20991231 is newer than this reader knows"));
  ASSERT_EQ(read.design->data().schematics.size(), 3u);
  EXPECT_EQ(read.design->data().schematics[2].pages[0].wires.size(), 1u);
}

// KiCad 6 keeps page numbers and references in the root file, names the sheet properties in the
// user's language, and writes arcs by their centre and angles.
TEST(KiCadReader, ReadsKiCadSixHierarchies) {
  const std::string root = R"((kicad_sch (version 20211123) (generator eeschema)
  (uuid 0) (paper "A4")
  (lib_symbols
    (symbol "L:Dual"
      (symbol "Dual_1_1" (arc (start 1.27 0) (end 0 1.27)
        (radius (at 0 0) (length 1.27) (angles 0 90)) (stroke (width 0)) (fill (type none))))
      (symbol "Dual_2_1" (circle (center 0 0) (radius 1.27)))))
  (symbol (lib_id "L:Dual") (at 25.4 25.4 0) (unit 1) (uuid U)
    (property "Reference" "U?" (id 0) (at 25.4 22 0)))
  (symbol (lib_id "L:Dual") (at 25.4 35.56 0) (unit 1) (uuid V)
    (property "Reference" "U?" (id 0) (at 25.4 32 0)))
  (sheet (at 50.8 50.8) (size 10.16 10.16) (uuid S1)
    (property "Nom feuille" "Ampli" (id 0) (at 50.8 50 0))
    (property "Fichier de feuille" "amp.kicad_sch" (id 1) (at 50.8 61.7 0)))
  (sheet (at 76.2 50.8) (size 10.16 10.16) (uuid S2)
    (property "Nom feuille" "Ampli2" (id 0) (at 76.2 50 0))
    (property "Fichier de feuille" "amp.kicad_sch" (id 1) (at 76.2 61.7 0)))
  (sheet_instances (path "/" (page "1")) (path "/S1" (page "5")) (path "/S2" (page "7")))
  (symbol_instances
    (path "/U" (reference "U4") (unit 2) (value "Dual") (footprint ""))
    (path "/S1/R" (reference "R11") (unit 1) (value "1k") (footprint ""))
    (path "/S2/R" (reference "R21") (unit 1) (value "2k") (footprint ""))))
)";
  const std::string amp = R"((kicad_sch (version 20211123) (generator eeschema) (uuid A)
  (symbol (lib_id "L:R") (at 25.4 25.4 0) (unit 1) (uuid R)
    (property "Reference" "R?" (id 0) (at 25.4 22 0))
    (property "Value" "R" (id 1) (at 25.4 28 0))))
)";
  const KiCadDesign read =
      ReadKiCadSchematic(root, "p/board.kicad_sch",
                         Files({{"p/amp.kicad_sch", amp},
                                {"p/board.kicad_pro", R"({"schematic": {"subpart_id_separator": 46,
                                    "subpart_first_id": 97}})"}}));
  const DesignData& data = read.design->data();
  ASSERT_EQ(data.schematics.size(), 2u);
  const Page& top = data.schematics[0].pages[0];
  EXPECT_EQ(top.parts[0].properties[0].value, "U4.b");
  EXPECT_EQ(top.parts[0].symbol->vectors.size(), 1u);   // unit 2's circle
  EXPECT_EQ(top.parts[1].properties[0].value, "U?.a");  // no instance: the field, unit 1
  DboState state;
  ASSERT_EQ(top.parts[1].symbol->vectors.size(), 1u);
  EXPECT_EQ(top.parts[1].symbol->vectors[0]->GetObjectType(state), dbo_type::kArc);
  EXPECT_EQ(top.parts[2].id, "Ampli");
  EXPECT_EQ(top.parts[3].id, "Ampli2");
  const Page& sub = data.schematics[1].pages[0];
  EXPECT_EQ(sub.name, "5");
  ASSERT_EQ(sub.parts[0].properties.size(), 2u);
  for (const auto& [index, plain, other] : {std::tuple{0, "R11", "R21"}, {1, "1k", "2k"}}) {
    const DisplayProp& prop = sub.parts[0].properties[static_cast<std::size_t>(index)];
    EXPECT_EQ(prop.value, plain);
    ASSERT_EQ(prop.values.size(), 1u);
    EXPECT_EQ(prop.values[0].path, "/Ampli2");
    EXPECT_EQ(prop.values[0].value, other);
  }
  EXPECT_THAT(Shown(sub.titleBlocks[0].properties), ::testing::Contains("Id: 5/3"));
  ASSERT_EQ(read.warnings.size(), 1u);  // L:R is not among amp's library symbols
  EXPECT_THAT(read.warnings[0], HasSubstr("p/amp.kicad_sch:2:3: warning: symbol \"R11\""));
}

TEST(KiCadReader, TellsKiCadSchematicsByTheirContent) {
  EXPECT_TRUE(IsKiCadSchematic("  \n(kicad_sch (version 1))"));
  EXPECT_TRUE(IsKiCadSchematic("EESchema Schematic File Version 2"));
  EXPECT_FALSE(IsKiCadSchematic("{\"kalmor_design\": 1}"));
  EXPECT_FALSE(IsKiCadSchematic("(kicad_pcb"));
  EXPECT_FALSE(IsKiCadSchematic(""));
}

}  // namespace
}  // namespace kalmor::kicad
