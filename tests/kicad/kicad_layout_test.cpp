// Where KiCad's symbols and texts land once the page walk draws them: every orientation of a
// symbol placed through the page walk's own symbol placement against KiCad's turn-then-mirror;
// justified texts; markup and text variables.

#include <cmath>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "kicad/kicad_reader.h"
#include "kicad/text_layout.h"
#include "kicad/text_markup.h"
#include "model/design.h"
#include "model/design_data.h"
#include "page/instance_placement.h"
#include "page/symbol_graphics.h"

namespace kalmor::kicad {
namespace {

using detail::Baseline;
using detail::HJustify;
using detail::VJustify;

// A symbol that looks different every way it is turned or mirrored, with one pin.
constexpr char kSymbol[] = R"((kicad_sch (version 20231120) (uuid "r")
  (lib_symbols (symbol "L:S" (symbol "S_1_1"
    (polyline (pts (xy 0 0) (xy 5.08 0) (xy 5.08 2.54) (xy 1.27 3.81)))
    (pin input line (at -2.54 1.27 0) (length 2.54) (name "A") (number "1")))))
  (symbol (lib_id "L:S") (at 50.8 50.8 ANGLE) MIRROR (unit 1) (uuid "u"))))";

// KiCad's placement of a library point (mm, y upward): turned counter-clockwise on the page,
// then mirrored, around the symbol's position; in page units from the page's origin.
CPoint KiCadPlaced(double x, double y, int turns, char mirror) {
  int32_t px = static_cast<int32_t>(std::lround(x / 0.254));
  int32_t py = static_cast<int32_t>(std::lround(-y / 0.254));
  for (int turn = 0; turn < turns; ++turn) {
    const int32_t was = px;
    px = py;
    py = -was;
  }
  if (mirror == 'x') {
    py = -py;
  } else if (mirror == 'y') {
    px = -px;
  }
  return {200 - 47 + px, 200 - 47 + py};
}

TEST(SymbolPlacement, EveryOrientationLandsWhereKiCadDrawsIt) {
  const std::pair<double, double> corners[] = {{0, 0}, {5.08, 0}, {5.08, 2.54}, {1.27, 3.81}};
  for (const char mirror : {'\0', 'x', 'y'}) {
    for (int turns = 0; turns < 4; ++turns) {
      std::string text = kSymbol;
      text.replace(text.find("ANGLE"), 5, std::to_string(turns * 90));
      text.replace(text.find("MIRROR"), 6,
                   mirror == 0 ? "" : std::string("(mirror ") + mirror + ")");
      SCOPED_TRACE(text.substr(text.find("(symbol (lib_id")));
      const KiCadDesign read = ReadKiCadSchematic(text, "t.kicad_sch", DiskFiles());
      const auto& part = read.design->data().schematics[0].pages[0].parts.at(0);

      // Placed the way the page walk places a part: its box turned and moved, then flipped on
      // a page 1000 units high.
      constexpr int32_t kHeight = 1000;
      const CRect rect = PlaceInstanceBox(part.body->box(), part.rotation, part.location, kHeight);
      const auto& outline =
          dynamic_cast<const model::detail::PolylineShape&>(*part.symbol->vectors.at(0));
      ASSERT_EQ(outline.points.size(), 4u);
      for (std::size_t i = 0; i < 4; ++i) {
        const CPoint p = outline.points[i];
        const double x =
            SymbolPointX(p.x, p.y, part.rotation, part.mirror, rect.left, rect.top, rect.right);
        const double y = SymbolPointY(p.x, p.y, part.rotation, part.mirror, rect.left, rect.top,
                                      rect.right, rect.bottom);
        const CPoint expected = KiCadPlaced(corners[i].first, corners[i].second, turns, mirror);
        EXPECT_EQ(x, expected.x) << "corner " << i;
        EXPECT_EQ(kHeight - y, expected.y) << "corner " << i;
      }
      const auto& pin = part.pins.at(0);
      EXPECT_EQ(pin.start, KiCadPlaced(-2.54, 1.27, turns, mirror));
      EXPECT_EQ(pin.end, KiCadPlaced(0, 1.27, turns, mirror));
    }
  }
}

TEST(TextLayout, JustifiedTextsStartTheirBaseLineAtTheRightPlace) {
  struct Case {
    bool vertical;
    HJustify h;
    VJustify v;
    Baseline expected;
  };
  // Anchor (100, 200), 40 units long, 10 high; y grows downward, vertical texts read upward.
  const Case cases[] = {
      {false, HJustify::kLeft, VJustify::kBottom, {100, 200, false}},
      {false, HJustify::kCenter, VJustify::kCenter, {80, 205, false}},
      {false, HJustify::kRight, VJustify::kTop, {60, 210, false}},
      {true, HJustify::kLeft, VJustify::kBottom, {100, 200, true}},
      {true, HJustify::kCenter, VJustify::kTop, {110, 220, true}},
      {true, HJustify::kRight, VJustify::kCenter, {105, 240, true}},
  };
  for (const Case& c : cases) {
    const Baseline got = detail::Justified(100, 200, c.vertical, c.h, c.v, 40, 10);
    EXPECT_EQ(got.x, c.expected.x);
    EXPECT_EQ(got.y, c.expected.y);
    EXPECT_EQ(got.vertical, c.expected.vertical);
  }
}

TEST(TextLayout, FieldsTurnWithTheirSymbolAndStayReadable) {
  struct Case {
    double fieldAngle;
    detail::Orientation symbol;
    Baseline expected;
  };
  // A left-justified field anchored at (100, 200), 40 long and 10 high.
  const Case cases[] = {
      {0, {0, 0}, {100, 205, false}},   // as written
      {0, {1, 0}, {105, 200, true}},    // symbol turned: reads upward from the anchor
      {0, {0, 'y'}, {60, 205, false}},  // symbol mirrored: ends at the anchor
      {90, {0, 0}, {105, 200, true}},   // field turned
      {90, {1, 0}, {60, 205, false}},   // both turned: back to horizontal, ending at the anchor
      {0, {2, 0}, {60, 205, false}},    // upside down is drawn the right way up, from the left
      {0, {1, 'x'}, {105, 240, true}},  // turned then flipped: ends at the anchor
  };
  detail::TextEffects effects;
  effects.hJustify = HJustify::kLeft;
  for (const Case& c : cases) {
    const Baseline got = detail::FieldBaseline(100, 200, c.fieldAngle, effects, c.symbol, 40, 10);
    EXPECT_EQ(got.x, c.expected.x) << c.fieldAngle << " " << c.symbol.quarterTurns;
    EXPECT_EQ(got.y, c.expected.y) << c.fieldAngle << " " << c.symbol.quarterTurns;
    EXPECT_EQ(got.vertical, c.expected.vertical) << c.fieldAngle << " " << c.symbol.quarterTurns;
  }
}

TEST(TextLayout, LinesOfAFreeTextAreJustifiedEachOnItsOwn) {
  // Right and top justified at (50.8, 50.8) mm, which is (153, 153) on the page.
  const std::string text = R"((kicad_sch (version 20231120) (uuid "r")
    (text "a longer first line\nend" (at 50.8 50.8 0)
      (effects (font (size 1.27 1.27)) (justify right top)))))";
  const KiCadDesign read = ReadKiCadSchematic(text, "t.kicad_sch", DiskFiles());
  const auto& graphics = read.design->data().schematics[0].pages[0].graphics;
  ASSERT_EQ(graphics.size(), 2u);
  const auto& first = dynamic_cast<const model::detail::TextShape&>(*graphics[0].shape);
  const auto& second = dynamic_cast<const model::detail::TextShape&>(*graphics[1].shape);
  EXPECT_EQ(first.text, "a longer first line");
  EXPECT_EQ(second.text, "end");
  // Each line ends at the anchor; the second is KiCad's pitch (1.62 of 5 units) lower.
  EXPECT_NEAR(first.rect.right, 153, 1);
  EXPECT_NEAR(second.rect.right, 153, 1);
  EXPECT_LT(first.rect.left, second.rect.left);
  EXPECT_EQ(second.rect.top - first.rect.top, 8);
  // The first line's capitals hang from the anchor: the page walk puts the base line its
  // height (5.14) and 3 units below the box's top.
  EXPECT_EQ(first.rect.top, 153 + 5 - 5 - 3);
}

TEST(TextLayout, FontHeightsDrawKiCadSizes) {
  // A KiCad size of u units becomes the height whose drawn text is u units high.
  for (const double millimetres : {0.762, 1.016, 1.27, 1.524, 2.54, 5.08}) {
    detail::TextEffects effects;
    effects.height = millimetres;
    const LogFont font = detail::FontFor(effects);
    EXPECT_NEAR(detail::DrawnHeight(font), millimetres / 0.254, 0.33) << millimetres;
  }
  detail::TextEffects styled;
  styled.bold = true;
  styled.italic = true;
  styled.face = "An extremely long face name that does not fit";
  const LogFont font = detail::FontFor(styled);
  EXPECT_EQ(font.lfHeight, -9);
  EXPECT_EQ(font.lfWeight, 700);
  EXPECT_EQ(font.lfItalic, 1);
  EXPECT_EQ(std::string(font.lfFaceName), "An extremely long face name tha");
}

TEST(TextMarkup, ShowsMarkupAsPlainTextOrPinBars) {
  const std::pair<const char*, const char*> plain[] = {
      {"~{RESET}", "RESET"}, {"V_{CC}", "VCC"},          {"x^{2}", "x2"},
      {"A{slash}B", "A/B"},  {"~{A_{1}}", "A1"},         {"~{open", "~{open"},
      {"a~b_c", "a~b_c"},    {"{unknown}", "{unknown}"}, {"{lt}{gt}{colon}", "<>:"},
  };
  for (const auto& [text, shown] : plain) {
    EXPECT_EQ(detail::PlainText(text), shown) << text;
  }
  const std::pair<const char*, const char*> pins[] = {
      {"~{RESET}", "R\\E\\S\\E\\T\\"},
      {"~{CS}/RD", "C\\S\\/RD"},
      {"~", ""},
      {"EN~{A}", "ENA\\"},
      {"PA0", "PA0"},
      {"~{µΩ}", "µ\\Ω\\"},
  };
  for (const auto& [text, shown] : pins) {
    EXPECT_EQ(detail::PinNameText(text), shown) << text;
  }
}

TEST(TextMarkup, ExpandsKnownVariablesAndLeavesTheRest) {
  const std::map<std::string, std::string, std::less<>> values = {
      {"A", "1"}, {"X", "${A}${A}"}, {"SELF", "${SELF}"}};
  const detail::VariableLookup lookup = [&](std::string_view name) -> std::optional<std::string> {
    const auto found = values.find(name);
    return found != values.end() ? std::optional<std::string>(found->second) : std::nullopt;
  };
  const std::pair<const char*, const char*> cases[] = {
      {"${A}-${B}", "1-${B}"}, {"<${X}>", "<11>"}, {"${SELF}", "${SELF}"},
      {"${A", "${A"},          {"plain", "plain"}, {"$${A}}", "$1}"},
  };
  for (const auto& [text, expanded] : cases) {
    EXPECT_EQ(detail::ExpandVariables(text, lookup), expanded) << text;
  }
}

}  // namespace
}  // namespace kalmor::kicad
