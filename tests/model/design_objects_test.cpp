// What the host operations answer for each kind of object, with and without the optional
// fields of the document.

#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kalmor/dbo.h"
#include "kalmor/errors.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "text/font_metrics.h"
#include "text/text_extent.h"

namespace kalmor {
namespace {

using test::OnePageDesign;

class OnePage {
 public:
  explicit OnePage(std::string_view members, std::string_view symbols = "{}")
      : design_(model::ReadDesignDocument(OnePageDesign(members, symbols), "t.json")),
        page_(*design_->FindPage("S", "P")) {}
  const DboPage& page() const { return page_; }
  const DboPartInst& part() { return *page_.NewPartInstsIter(state)->NextPartInst(state); }
  const DboWire& wire() { return *page_.NewWiresIter(1, state)->NextWire(state); }
  DboState state;

 private:
  std::unique_ptr<model::Design> design_;
  const DboPage& page_;
};

TEST(DesignObjects, PartBodyBoxAndKinds) {
  struct Case {
    const char* part;
    int32_t type;
    CRect body;
  };
  const char* symbols = R"({"S": {"vectors": [{"type": "line", "start": [-5, 3], "end": [20, -8]},
      {"type": "vector", "location": [100, 100], "members": [
        {"type": "polyline", "points": [[1, 2], [3, 4]]}]}]}})";
  const Case cases[] = {
      {R"({"id": "U", "symbol": "S"})", dbo_type::kPartInst, {-5, -8, 103, 104}},
      {R"({"id": "U", "symbol": "S", "kind": "block", "bbox": [0, 0, 40, 20]})",
       dbo_type::kBlockInst,
       {0, 0, 40, 20}},
      {R"({"id": "U", "symbol": {"bbox": [1, 2, 3, 4]}, "kind": 99})", 99, {1, 2, 3, 4}},
      {R"({"id": "U", "symbol": {}})", dbo_type::kPartInst, {0, 0, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.part);
    OnePage page(std::string(R"("parts": [)") + c.part + "]", symbols);
    const DboPartInst& part = page.part();
    EXPECT_EQ(part.GetObjectType(page.state), c.type);
    EXPECT_EQ(part.GetDefiningPart(page.state)->GetBoundingBox(page.state), c.body);
    EXPECT_EQ(part.GetBoundingBox(page.state), c.body);
    EXPECT_EQ(part.GetPinNamesAreVisible(page.state), 1);
    EXPECT_EQ(part.GetPinNumbersAreVisible(page.state), 1);
    EXPECT_EQ(part.GetRotation(page.state), 0);
    EXPECT_EQ(part.GetMirror(page.state), 0);
    EXPECT_EQ(part.GetLocation(page.state), (CPoint{0, 0}));
  }
}

// What the page tests cannot see in the records: the font's other fields, display types given as
// words or as numbers nothing knows, and the defaults of what a property leaves out.
TEST(DesignObjects, FontFieldsDisplayTypesAndDefaults) {
  OnePage page(R"("wires": [{"start": [0, 0], "end": [1, 1],
      "aliases": [{"name": "CLK", "location": [7, 8],
                   "font": {"height": -12, "weight": 700, "face": "Courier New",
                            "italic": true, "charset": 2}}],
      "properties": [{"name": "N"}, {"name": "N", "display": "name_and_value_if_set"},
                     {"name": "N", "display": 42}]}])");
  DboState& s = page.state;
  const DboWire& wire = page.wire();
  LogFont font;
  wire.NewAliasesIter(s)->NextAlias(s)->GetFont(font, s);
  EXPECT_EQ(font.lfWeight, 700);
  EXPECT_EQ(font.lfItalic, 1);
  EXPECT_EQ(font.lfCharSet, 2);
  EXPECT_STREQ(font.lfFaceName, "Courier New");

  const auto props = wire.NewDisplayPropsIter(s);
  const DboDisplayProp* plain = props->NextProp(s);
  EXPECT_EQ(props->NextProp(s)->GetDisplayType(s), 4);
  EXPECT_EQ(props->NextProp(s)->GetDisplayType(s), 42);
  EXPECT_EQ(props->NextProp(s), nullptr);
  plain->GetFont(1, font, s);
  const LogFont defaultFont;
  EXPECT_EQ(std::memcmp(&font, &defaultFont, sizeof font), 0);
  EXPECT_EQ(plain->GetDisplayType(s), 1);
  EXPECT_EQ(plain->GetRotation(s), 0);
  EXPECT_EQ(plain->GetLocation(s), (CPoint{0, 0}));
}

TEST(DesignObjects, MeasuredExtentIsThatOfTheShownText) {
  struct Case {
    const char* display;
    const char* value;
    const char* shown;
  };
  const Case cases[] = {
      {"1", "", "<Value>"},
      {"3", "10k", "Value"},
      {"4", "10k", "Value = 10k"},
      {"\"name\"", "x", "Value"},
  };
  LogFont font;
  font.lfHeight = -12;
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.display) + " " + c.value);
    OnePage page(std::string(R"("title_blocks": [{"symbol": {}, "properties": [{"name": "Value",
        "font": {"height": -12}, "display": )") +
                 c.display + R"(, "value": ")" + c.value + R"("}]}])");
    const DboDisplayProp* prop = page.page()
                                     .NewTitleBlocksIter(page.state)
                                     ->NextTitleBlock(page.state)
                                     ->NewDisplayPropsIter(page.state)
                                     ->NextProp(page.state);
    EXPECT_EQ(prop->GetBoundingBox(page.state), MeasureTextExtent(c.shown, font));
  }
}

// Properties of one design that share all but one of what decides their text and font each get
// the extent of their own text, whichever reading made the design.
TEST(DesignObjects, RepeatedPropertyTextsKeepTheirOwnExtents) {
  struct Case {
    const char* property;
    const char* shown;
    int height;
  };
  const Case cases[] = {
      {R"({"name": "Value", "value": "10k"})", "10k", 0},
      {R"({"name": "Value", "value": "10k", "display": 2})", "Value = 10k", 0},
      {R"({"name": "Ref", "value": "10k", "display": 2})", "Ref = 10k", 0},
      {R"({"name": "Value", "value": "10k", "font": {"height": -40}})", "10k", -40},
      {R"({"name": "Value", "value": "22k"})", "22k", 0},
      {R"({"name": "Value", "value": "10k"})", "10k", 0},
  };
  std::string properties;
  for (const Case& c : cases) {
    properties += (properties.empty() ? "" : ", ") + std::string(c.property);
  }
  // A member name with an escape is left to the careful reading.
  for (const char* symbol : {R"("symbol")", R"("symbol")"}) {
    SCOPED_TRACE(symbol);
    OnePage page(std::string(R"("title_blocks": [{)") + symbol + R"(: {}, "properties": [)" +
                 properties + "]}]");
    const auto props = page.page()
                           .NewTitleBlocksIter(page.state)
                           ->NextTitleBlock(page.state)
                           ->NewDisplayPropsIter(page.state);
    for (const Case& c : cases) {
      SCOPED_TRACE(c.property);
      LogFont font;
      font.lfHeight = c.height;
      EXPECT_EQ(props->NextProp(page.state)->GetBoundingBox(page.state),
                MeasureTextExtent(c.shown, font));
    }
  }
}

// A system without fonts: every measurement fails.
class NoFonts final : public FontMetricsSource {
 public:
  bool GetTextMetrics(const LogFont&, TextMetrics&) override { throw Missing(); }
  TextExtent GetTextExtent(const LogFont&, std::string_view) override { throw Missing(); }

 private:
  static EnvironmentError Missing() { return EnvironmentError("no fonts"); }
};

// Without fonts, a document's own faults are still what a reading reports; a sound document
// fails on its first text to measure.
TEST(DesignObjects, DocumentFaultsComeBeforeMissingFonts) {
  NoFonts none;
  const ScopedFontMetrics scoped(none);
  const std::string texts = R"("title_blocks": [{"symbol": {}, "properties": [
      {"name": "Value", "value": "a value measured nowhere else"}]}])";
  const auto read = [](const std::string& members) {
    model::ReadDesignDocument(OnePageDesign(members), "t.json");
  };
  EXPECT_THROW(read(texts + R"(, "wires": [{"start": [0, 0]}])"), model::DesignDocumentError);
  EXPECT_THROW(read(texts), EnvironmentError);
}

}  // namespace
}  // namespace kalmor
