#include "kicad/page_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "input/shown_text.h"
#include "kicad/drawing_sheet.h"
#include "kicad/image_size.h"
#include "kicad/label_shapes.h"
#include "kicad/shape_primitives.h"
#include "kicad/symbol_library.h"
#include "kicad/text_layout.h"
#include "kicad/text_markup.h"
#include "kicad/units.h"

namespace kalmor::kicad::detail {
namespace {

using model::detail::Alias;
using model::detail::BitMapShape;
using model::detail::CommentGraphic;
using model::detail::DisplayProp;
using model::detail::DisplayPropList;
using model::detail::EllipseShape;
using model::detail::GraphicList;
using model::detail::LineShape;
using model::detail::OccurrenceValue;
using model::detail::PartInst;
using model::detail::Pin;
using model::detail::PolygonShape;
using model::detail::PolylineShape;
using model::detail::Symbol;
using model::detail::TextShape;
using model::detail::Wire;

// The page walk puts a text's base line its drawn height plus this many units below its anchor,
// and a net alias's base line this far above (or left of) its anchor.
constexpr double kBaseLineGap = 3;
// KiCad's line pitch, as a part of the text height.
constexpr double kInterline = 1.62;
// A local label's text stands this part of its height, and half a pen, off the wire.
constexpr double kLabelLift = 0.15;
constexpr double kPenHalfWidth = 0.4;
// Half the size of the cross KiCad draws for a no-connect flag away from any pin.
constexpr int32_t kNoConnectHalf = 2;

// A value shown through every occurrence of the page: the first occurrence's is the plain value,
// the others are kept where they differ.
struct PerOccurrence {
  std::string plain;
  std::vector<OccurrenceValue> values;
};

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

std::string UnitLetters(int unit, char first) {
  std::string letters;
  while (unit > 0) {
    --unit;
    letters.insert(letters.begin(), static_cast<char>(first + unit % 26));
    unit /= 26;
  }
  return letters;
}

int32_t RoundToUnit(double value) {
  return static_cast<int32_t>(std::lround(value));
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// A placed symbol as one occurrence sees it.
struct SymbolView {
  std::string reference;  // with its unit letter when the symbol has several units
  std::string unitLetters;
  int unit = 1;
  std::string value;
  std::string footprint;
};

const Field* FieldNamed(const std::vector<Field>& fields, std::string_view name) {
  for (const Field& field : fields) {
    if (field.name == name) {
      return &field;
    }
  }
  return nullptr;
}

class Builder {
 public:
  Builder(const PageSources& sources, const DesignContext& design, FontTable& fonts,
          model::detail::DesignData& data, model::detail::Page& page,
          std::vector<std::size_t>& blockParts, std::vector<SyntaxFault>& warnings)
      : file_(*sources.file),
        sources_(sources),
        design_(design),
        fonts_(fonts),
        data_(data),
        page_(page),
        blockParts_(blockParts),
        warnings_(warnings),
        library_(file_.libSymbols, data),
        frame_(FrameFor(file_.paper)) {}

  void Build() {
    page_.pinToPin = 100;
    page_.width = frame_.width * 10;
    page_.height = frame_.height * 10;
    page_.border = frame_.border;
    AddTitleBlock();
    ReservePartIds();
    for (const PlacedSymbol& symbol : file_.symbols) {
      AddSymbol(symbol);
    }
    for (std::size_t i = 0; i < file_.sheets.size(); ++i) {
      AddSheet(file_.sheets[i], sources_.sheets[i]);
    }
    for (const Segment& wire : file_.wires) {
      AddWire(wire, false);
    }
    for (const Segment& bus : file_.buses) {
      AddWire(bus, true);
    }
    for (const Vec& junction : file_.junctions) {
      const CPoint at = At(junction);
      WireAt(at, false).junctions.push_back(at);
    }
    for (const Label& label : file_.labels) {
      AddLabel(label);
    }
    for (const Vec& flag : file_.noConnects) {
      AddNoConnect(At(flag));
    }
    for (const BusEntry& entry : file_.busEntries) {
      page_.busEntries.emplace_back();
      page_.busEntries.back().entry = At(entry.at);
      page_.busEntries.back().end = At({entry.at.x + entry.size.x, entry.at.y + entry.size.y});
    }
    const Frame frame{-static_cast<double>(frame_.origin), -static_cast<double>(frame_.origin), 1};
    for (const Shape& shape : file_.shapes) {
      GraphicList primitives;
      AppendShape(shape, false, frame, primitives);
      for (auto& primitive : primitives) {
        AddGraphic(std::move(primitive));
      }
    }
    for (const Text& text : file_.texts) {
      AddFreeText(text);
    }
    for (const TextBox& box : file_.textBoxes) {
      AddTextBox(box);
    }
    for (const Image& image : file_.images) {
      AddImage(image);
    }
  }

 private:
  // ---------------------------------------------------------------------------------------
  // Coordinates

  CPoint At(Vec point) const {
    return {ToUnits(point.x) - frame_.origin, ToUnits(point.y) - frame_.origin};
  }
  // A coordinate (x or y alike) in page units, not rounded.
  double Exact(double millimetres) const { return ToUnitsExact(millimetres) - frame_.origin; }

  // ---------------------------------------------------------------------------------------
  // Texts

  template <typename TextFor>
  PerOccurrence ForEachOccurrence(TextFor&& textFor) const {
    PerOccurrence out;
    out.plain = textFor(*sources_.occurrences.front());
    for (std::size_t i = 1; i < sources_.occurrences.size(); ++i) {
      const SheetOccurrence& occurrence = *sources_.occurrences[i];
      std::string text = textFor(occurrence);
      if (text != out.plain) {
        out.values.push_back({occurrence.designPath, 0, std::move(text)});
      }
    }
    return out;
  }

  std::optional<std::string> SheetVariable(const SheetOccurrence& occurrence,
                                           std::string_view name) const {
    const TitleBlock& block = file_.titleBlock;
    if (name == "#") {
      return occurrence.pageNumber;
    }
    if (name == "##") {
      return std::to_string(design_.pageCount);
    }
    if (name == "SHEETNAME") {
      return occurrence.sheetName;
    }
    if (name == "SHEETPATH") {
      return occurrence.sheetPath;
    }
    if (name == "FILENAME") {
      return BaseName(file_.path);
    }
    if (name == "FILEPATH") {
      return file_.path;
    }
    if (name == "TITLE") {
      return block.title;
    }
    if (name == "REVISION") {
      return block.revision;
    }
    if (name == "ISSUE_DATE") {
      return block.date;
    }
    if (name == "COMPANY") {
      return block.company;
    }
    if (name == "PAPER") {
      return file_.paper.name;
    }
    if (name.size() == 8 && name.starts_with("COMMENT") && name[7] >= '1' && name[7] <= '9') {
      return block.comments[static_cast<std::size_t>(name[7] - '1')];
    }
    if (const auto found = design_.projectVariables.find(name);
        found != design_.projectVariables.end()) {
      return found->second;
    }
    return std::nullopt;
  }

  // A text of the sheet itself (not of a symbol) as shown through an occurrence.
  std::string SheetText(std::string_view text, const SheetOccurrence& occurrence) const {
    return HostText(PlainText(ExpandVariables(
        text, [&](std::string_view name) { return SheetVariable(occurrence, name); })));
  }

  const LogFont* Font(const TextEffects& effects) { return fonts_.Intern(FontFor(effects)); }

  // A display property whose base line starts at `baseline`, placed relative to its owner's
  // corner the way the page walk will place it back.
  void AddProperty(DisplayPropList& props, std::string name, PerOccurrence text,
                   const LogFont* font, const Baseline& baseline, CPoint corner) {
    DisplayProp& prop = props.emplace_back();
    prop.name = HostText(std::move(name));
    prop.value = std::move(text.plain);
    prop.values = std::move(text.values);
    prop.display = 0;  // the value as it is: KiCad shows empty fields as nothing
    prop.font = font;
    prop.extent = MeasuredExtent(prop.value, *font);
    const double height = DrawnHeight(*font);
    if (!baseline.vertical) {
      prop.rotation = 0;
      prop.location = {RoundToUnit(baseline.x - corner.x),
                       RoundToUnit(baseline.y - height - kBaseLineGap - corner.y)};
    } else {
      prop.rotation = 1;
      const int32_t extentHeight = std::abs(prop.extent->bottom - prop.extent->top);
      prop.location = {RoundToUnit(baseline.x - height - kBaseLineGap - corner.x),
                       RoundToUnit(baseline.y - extentHeight - corner.y)};
    }
  }

  // A single line of comment text whose base line starts at `baseline`.
  void AddCommentLine(std::string text, const LogFont* font, const Baseline& baseline) {
    const double height = DrawnHeight(*font);
    const double width = DrawnWidth(text, *font);
    const CRect extent = MeasuredExtent(text, *font);
    const int32_t lineHeight = std::abs(extent.bottom - extent.top);
    auto shape = std::make_unique<TextShape>();
    if (!baseline.vertical) {
      shape->rect.left = RoundToUnit(baseline.x);
      shape->rect.top = RoundToUnit(baseline.y - height - kBaseLineGap);
      shape->rect.right = shape->rect.left + RoundToUnit(width);
      shape->rect.bottom = shape->rect.top + lineHeight;
    } else {
      shape->rect.left = RoundToUnit(baseline.x - height - kBaseLineGap);
      shape->rect.bottom = RoundToUnit(baseline.y);
      shape->rect.top = shape->rect.bottom - RoundToUnit(width);
      shape->rect.right = shape->rect.left + lineHeight;
      shape->rotation = 1;
    }
    shape->text = std::move(text);
    shape->font = font;
    CommentGraphic& graphic = page_.graphics.emplace_back();
    graphic.type = dbo_type::kGraphicCommentTextInst;
    graphic.rotation = shape->rotation;
    graphic.box = shape->rect;
    graphic.shape = std::move(shape);
  }

  // A text of one or more lines, each justified on its own, KiCad's way.
  void AddTextLines(const std::string& text, const TextEffects& effects, double x, double y,
                    bool vertical) {
    const LogFont* font = Font(effects);
    const double height = DrawnHeight(*font);
    const double pitch = kInterline * ToUnitsExact(effects.height);
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (;;) {
      const std::size_t end = text.find('\n', start);
      lines.push_back(text.substr(start, end == std::string::npos ? end : end - start));
      if (end == std::string::npos) {
        break;
      }
      start = end + 1;
    }
    const double first = effects.vJustify == VJustify::kTop      ? 0.0
                         : effects.vJustify == VJustify::kCenter ? -(lines.size() - 1) / 2.0
                                                                 : -(lines.size() - 1.0);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (!lines[i].empty() && lines[i].back() == '\r') {
        lines[i].pop_back();
      }
      if (lines[i].empty()) {
        continue;
      }
      const double down = (first + static_cast<double>(i)) * pitch;
      const double lineX = vertical ? x + down : x;
      const double lineY = vertical ? y : y + down;
      const Baseline baseline = Justified(lineX, lineY, vertical, effects.hJustify,
                                          effects.vJustify, DrawnWidth(lines[i], *font), height);
      AddCommentLine(std::move(lines[i]), font, baseline);
    }
  }

  void AddGraphic(std::unique_ptr<DboBaseObject> primitive) {
    CommentGraphic& graphic = page_.graphics.emplace_back();
    graphic.type = PageGraphicType(*primitive);
    graphic.box = PrimitiveExtent(*primitive);
    graphic.shape = std::move(primitive);
  }

  // ---------------------------------------------------------------------------------------
  // The title block

  void AddTitleBlock() {
    TitleBlockDrawing drawing = TitleBlockLines();
    auto symbol = std::make_unique<Symbol>();
    symbol->bbox = {0, 0, drawing.width, drawing.height};
    symbol->vectors = std::move(drawing.lines);
    model::detail::TitleBlock& block = page_.titleBlocks.emplace_back();
    block.symbol = data_.symbols.emplace_back(std::move(symbol)).get();
    block.location = TitleBlockCorner(frame_);
    for (const TitleBlockText& item : TitleBlockTexts()) {
      PerOccurrence text = ForEachOccurrence(
          [&](const SheetOccurrence& occurrence) { return SheetText(item.text, occurrence); });
      if (text.plain.empty() && text.values.empty()) {
        continue;
      }
      TextEffects effects;
      effects.height = item.size;
      effects.bold = item.bold;
      effects.italic = item.italic;
      const LogFont* font = Font(effects);
      const Vec anchor = TitleBlockAnchor(item);
      const Baseline baseline = Justified(block.location.x + anchor.x, block.location.y + anchor.y,
                                          false, HJustify::kLeft, VJustify::kCenter,
                                          DrawnWidth(text.plain, *font), DrawnHeight(*font));
      AddProperty(block.properties, "Text", std::move(text), font, baseline, block.location);
    }
  }

  // ---------------------------------------------------------------------------------------
  // Symbols

  // Block ids come from sheet names and are the design's occurrence paths; parts take their
  // ids from references and give way to them.
  void ReservePartIds() {
    for (const SheetLink& sheet : sources_.sheets) {
      usedIds_.insert(sheet.blockId);
    }
  }

  std::string UniquePartId(std::string wanted) {
    std::replace(wanted.begin(), wanted.end(), '/', '_');
    if (wanted.empty()) {
      wanted = "?";
    }
    std::string id = wanted;
    for (int suffix = 2; !usedIds_.insert(id).second; ++suffix) {
      id = wanted + "_" + std::to_string(suffix);
    }
    return id;
  }

  const SymbolInstance* InstanceFor(const PlacedSymbol& symbol,
                                    const SheetOccurrence& occurrence) const {
    // Exact paths first (the file's own, then KiCad 6's table in the root), then a path that
    // differs only by the root sheet's uuid, as in a sheet copied from another project.
    for (const SymbolInstance& instance : symbol.instances) {
      if (instance.path == occurrence.uuidPath) {
        return &instance;
      }
    }
    if (const auto found = design_.legacySymbols.find(occurrence.legacyPath + "/" + symbol.uuid);
        found != design_.legacySymbols.end()) {
      return found->second;
    }
    for (const SymbolInstance& instance : symbol.instances) {
      const std::size_t second = instance.path.find('/', 1);
      const std::string_view tail = second == std::string::npos
                                        ? std::string_view()
                                        : std::string_view(instance.path).substr(second);
      if (!instance.path.empty() && tail == occurrence.legacyPath) {
        return &instance;
      }
    }
    return nullptr;
  }

  SymbolView ViewOf(const PlacedSymbol& symbol, const SheetOccurrence& occurrence,
                    int unitCount) const {
    SymbolView view;
    const SymbolInstance* instance = InstanceFor(symbol, occurrence);
    const Field* reference = FieldNamed(symbol.fields, "Reference");
    const Field* value = FieldNamed(symbol.fields, "Value");
    const Field* footprint = FieldNamed(symbol.fields, "Footprint");
    view.reference = instance != nullptr && !instance->reference.empty() ? instance->reference
                     : reference != nullptr                              ? reference->value
                                                                         : std::string();
    view.unit = instance != nullptr && instance->unit > 0 ? instance->unit : symbol.unit;
    view.value = instance != nullptr && instance->value ? *instance->value
                 : value != nullptr                     ? value->value
                                                        : std::string();
    view.footprint = instance != nullptr && instance->footprint ? *instance->footprint
                     : footprint != nullptr                     ? footprint->value
                                                                : std::string();
    if (unitCount > 1) {
      view.unitLetters = UnitLetters(view.unit, design_.firstUnitLetter);
      view.reference += design_.unitSeparator + view.unitLetters;
    }
    return view;
  }

  std::optional<std::string> SymbolVariable(const PlacedSymbol& symbol, const SymbolView& view,
                                            const SheetOccurrence& occurrence,
                                            std::string_view name) const {
    if (name == "REFERENCE") {
      return view.reference;
    }
    if (name == "VALUE") {
      return view.value;
    }
    if (name == "FOOTPRINT") {
      return view.footprint;
    }
    if (name == "UNIT") {
      return view.unitLetters;
    }
    for (const Field& field : symbol.fields) {
      if (EqualIgnoringCase(field.name, name)) {
        return field.value;
      }
    }
    return SheetVariable(occurrence, name);
  }

  std::string SymbolText(const PlacedSymbol& symbol, const SymbolView& view,
                         const SheetOccurrence& occurrence, std::string_view text) const {
    return PlainText(ExpandVariables(text, [&](std::string_view name) {
      return SymbolVariable(symbol, view, occurrence, name);
    }));
  }

  std::string FieldText(const PlacedSymbol& symbol, const Field& field, const SymbolView& view,
                        const SheetOccurrence& occurrence) const {
    const std::string& raw = field.name == "Reference"   ? view.reference
                             : field.name == "Value"     ? view.value
                             : field.name == "Footprint" ? view.footprint
                                                         : field.value;
    std::string shown = SymbolText(symbol, view, occurrence, raw);
    if (field.showName && !shown.empty()) {
      shown = field.name + ": " + shown;
    }
    return HostText(std::move(shown));
  }

  void AddSymbol(const PlacedSymbol& symbol) {
    const LibSymbol* lib = library_.Find(symbol.libName.empty() ? symbol.libId : symbol.libName);
    if (lib == nullptr) {
      lib = library_.Find(symbol.libId);
    }
    const int unitCount = lib != nullptr ? library_.UnitCount(*lib) : 1;
    std::vector<SymbolView> views;
    for (const SheetOccurrence* occurrence : sources_.occurrences) {
      views.push_back(ViewOf(symbol, *occurrence, unitCount));
    }
    if (lib == nullptr) {
      warnings_.push_back({symbol.spot, "symbol " + Quoted(views.front().reference) + " (" +
                                            Quoted(symbol.libId) +
                                            ") is not among the file's library symbols; drawn "
                                            "as an empty box"});
    }
    const BuiltSymbol& built = lib != nullptr
                                   ? library_.Build(*lib, views.front().unit, symbol.style)
                                   : library_.Missing();
    const Orientation orientation = OrientationOf(symbol.angle, symbol.mirror);
    const CPoint origin = At(symbol.at);
    const auto placed = [&](CPoint local) {
      int32_t x = local.x;
      int32_t y = local.y;
      orientation.Apply(x, y);
      return CPoint{origin.x + x, origin.y + y};
    };

    PartInst& part = page_.parts.emplace_back();
    part.id = UniquePartId(views.front().reference);
    part.kind = dbo_type::kPartInst;
    part.symbol = built.symbol;
    part.body.symbol = built.symbol;
    part.body.bbox = built.symbol->bbox;
    // KiCad turns, then mirrors; the page walk mirrors in the symbol, then turns.
    const int turns = orientation.quarterTurns;
    part.rotation = orientation.mirror == 'y'   ? (4 - turns) % 4
                    : orientation.mirror == 'x' ? (6 - turns) % 4
                                                : turns;
    part.mirror = orientation.mirror != 0;
    // The symbol's box turned with it; its top left corner is where the page walk places it.
    int32_t left = std::numeric_limits<int32_t>::max();
    int32_t top = std::numeric_limits<int32_t>::max();
    for (const CPoint corner :
         {built.origin, CPoint{built.origin.x + built.width, built.origin.y},
          CPoint{built.origin.x, built.origin.y + built.height},
          CPoint{built.origin.x + built.width, built.origin.y + built.height}}) {
      const CPoint turned = placed(corner);
      left = std::min(left, turned.x);
      top = std::min(top, turned.y);
    }
    part.location = {left, top};
    // KiCad writes the names of a symbol whose name offset is 0 along the pins, outside the
    // body, where the page walk has no place for them; they are left out.
    part.pinNamesVisible = lib == nullptr || (!lib->pinNamesHidden && !lib->pinNamesOutside);
    part.pinNumbersVisible = lib == nullptr || !lib->pinNumbersHidden;

    for (const LocalPin& local : built.pins) {
      Pin& pin = part.pins.emplace_back();
      const LibPin& own = *local.pin;
      std::string name = own.name;
      std::string shape = own.shape;
      for (const auto& [number, alternate] : symbol.pinAlternates) {
        if (number != own.number) {
          continue;
        }
        for (const PinAlternate& option : own.alternates) {
          if (option.name == alternate) {
            name = option.name;
            shape = option.shape;
          }
        }
      }
      const std::string number = own.number == "~" ? std::string() : own.number;
      pin.id = number;  // ids name things, in UTF-8; the texts shown are host texts
      pin.name = HostText(PinNameText(name));
      pin.number = HostText(number);
      pin.start = placed(local.at);
      pin.end = placed(local.end);
      pin.visible = !own.hidden;
      pin.noConnect = own.type == "no_connect";  // KiCad marks such pins with a cross
      pin.dot = shape == "inverted" || shape == "inverted_clock";
      pin.clock = shape == "clock" || shape == "inverted_clock" || shape == "clock_low" ||
                  shape == "edge_clock_high";
    }

    for (const Field& field : symbol.fields) {
      if (field.effects.hidden) {
        continue;
      }
      PerOccurrence text =
          ForEachOccurrence([&, index = std::size_t{0}](const SheetOccurrence& occurrence) mutable {
            return FieldText(symbol, field, views[index++], occurrence);
          });
      if (text.plain.empty() && text.values.empty()) {
        continue;
      }
      const LogFont* font = Font(field.effects);
      const Baseline baseline =
          FieldBaseline(Exact(field.at.x), Exact(field.at.y), field.angle, field.effects,
                        orientation, DrawnWidth(text.plain, *font), DrawnHeight(*font));
      AddProperty(part.properties, field.name, std::move(text), font, baseline, part.location);
    }

    // Library texts turn with the symbol like its fields.
    const auto exactPlaced = [&](Vec libraryPoint) {
      double x = ToUnitsExact(libraryPoint.x);
      double y = -ToUnitsExact(libraryPoint.y);
      orientation.Apply(x, y);
      return Vec{origin.x + x, origin.y + y};
    };
    const auto addLibraryText = [&](const std::string& raw, Vec at, double angle,
                                    const TextEffects& effects) {
      PerOccurrence text =
          ForEachOccurrence([&, index = std::size_t{0}](const SheetOccurrence& occurrence) mutable {
            return HostText(SymbolText(symbol, views[index++], occurrence, raw));
          });
      if (text.plain.empty() && text.values.empty()) {
        return;
      }
      const LogFont* font = Font(effects);
      const Vec anchor = exactPlaced(at);
      const Baseline baseline = FieldBaseline(anchor.x, anchor.y, angle, effects, orientation,
                                              DrawnWidth(text.plain, *font), DrawnHeight(*font));
      AddProperty(part.properties, "Text", std::move(text), font, baseline, part.location);
    };
    for (const Text* text : built.texts) {
      if (!text->effects.hidden) {
        addLibraryText(text->text, text->at, text->angle, text->effects);
      }
    }
    for (const TextBox* box : built.textBoxes) {
      // A text box's text, anchored inside its margins by its justification.
      const double left = box->at.x + box->margins[0];
      const double right = box->at.x + box->size.x - box->margins[2];
      const double top = box->at.y - box->margins[1];
      const double bottom = box->at.y - box->size.y + box->margins[3];
      const Vec anchor{box->effects.hJustify == HJustify::kLeft    ? left
                       : box->effects.hJustify == HJustify::kRight ? right
                                                                   : (left + right) / 2,
                       box->effects.vJustify == VJustify::kTop      ? top
                       : box->effects.vJustify == VJustify::kBottom ? bottom
                                                                    : (top + bottom) / 2};
      addLibraryText(box->text, anchor, box->angle, box->effects);
    }
  }

  // ---------------------------------------------------------------------------------------
  // Sheets

  static int32_t BlockPinKind(std::string_view shape) {
    if (shape == "input") {
      return 0;  // a pentagon pointing into the block
    }
    if (shape == "output") {
      return 2;  // pointing out of it
    }
    if (shape == "bidirectional" || shape == "tri_state") {
      return 1;  // a diamond
    }
    return 4;  // a square
  }

  void AddSheet(const Sheet& sheet, const SheetLink& link) {
    const CPoint a = At(sheet.at);
    const CPoint b = At({sheet.at.x + sheet.size.x, sheet.at.y + sheet.size.y});
    const CRect box{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
    auto outline = std::make_unique<Symbol>();
    outline->bbox = {0, 0, box.right - box.left, box.bottom - box.top};

    blockParts_.push_back(page_.parts.size());
    PartInst& block = page_.parts.emplace_back();
    block.id = link.blockId;
    block.kind = dbo_type::kBlockInst;
    block.schematicName = link.schematicName;
    block.symbol = data_.symbols.emplace_back(std::move(outline)).get();
    block.body.symbol = block.symbol;
    block.body.bbox = block.symbol->bbox;
    block.location = {box.left, box.top};
    block.pinNumbersVisible = false;
    for (const SheetPin& own : sheet.pins) {
      Pin& pin = block.pins.emplace_back();
      CPoint at = At(own.at);
      // Sheet pins sit on the sheet's edges; rounding must not move them off.
      switch (((static_cast<int>(std::lround(own.angle / 90.0)) % 4) + 4) % 4) {
        case 0:
          at.x = box.right;
          break;
        case 1:
          at.y = box.top;
          break;
        case 2:
          at.x = box.left;
          break;
        default:
          at.y = box.bottom;
          break;
      }
      pin.start = at;
      pin.end = at;
      pin.id = own.name;
      pin.name = HostText(PinNameText(own.name));
      pin.blockKind = BlockPinKind(own.shape);
    }
    for (std::size_t i = 0; i < sheet.fields.size(); ++i) {
      const Field& field = sheet.fields[i];
      if (field.effects.hidden) {
        continue;
      }
      const bool isFile = static_cast<int>(i) == sheet.fileField;
      PerOccurrence text = ForEachOccurrence([&](const SheetOccurrence& occurrence) {
        const std::string shown = SheetText(field.value, occurrence);
        return isFile ? "File: " + shown : shown;
      });
      if (text.plain.empty() && text.values.empty()) {
        continue;
      }
      const LogFont* font = Font(field.effects);
      const Baseline baseline =
          FieldBaseline(Exact(field.at.x), Exact(field.at.y), field.angle, field.effects, {},
                        DrawnWidth(text.plain, *font), DrawnHeight(*font));
      AddProperty(block.properties, field.name, std::move(text), font, baseline, block.location);
    }
  }

  // ---------------------------------------------------------------------------------------
  // Wires, labels, flags

  void AddWire(const Segment& segment, bool bus) {
    Wire& wire = page_.wires.emplace_back();
    wire.start = At(segment.start);
    wire.end = At(segment.end);
    wire.bus = bus;
  }

  static bool Touches(const Wire& wire, CPoint point) {
    const int64_t dx = int64_t{wire.end.x} - wire.start.x;
    const int64_t dy = int64_t{wire.end.y} - wire.start.y;
    const int64_t px = int64_t{point.x} - wire.start.x;
    const int64_t py = int64_t{point.y} - wire.start.y;
    if (dx * py - dy * px != 0) {
      return false;
    }
    return std::min(wire.start.x, wire.end.x) <= point.x &&
           point.x <= std::max(wire.start.x, wire.end.x) &&
           std::min(wire.start.y, wire.end.y) <= point.y &&
           point.y <= std::max(wire.start.y, wire.end.y);
  }

  static double DistanceSquared(const Wire& wire, CPoint point) {
    const double dx = static_cast<double>(wire.end.x) - wire.start.x;
    const double dy = static_cast<double>(wire.end.y) - wire.start.y;
    const double length = dx * dx + dy * dy;
    double t = length == 0 ? 0
                           : ((point.x - static_cast<double>(wire.start.x)) * dx +
                              (point.y - static_cast<double>(wire.start.y)) * dy) /
                                 length;
    t = std::clamp(t, 0.0, 1.0);
    const double nx = wire.start.x + t * dx - point.x;
    const double ny = wire.start.y + t * dy - point.y;
    return nx * nx + ny * ny;
  }

  // The wire (or bus, when asked for) through a point; failing that the nearest one; failing
  // that a wire of no length made there. Junctions and net names belong to a wire in the design,
  // though they are drawn where they stand.
  Wire& WireAt(CPoint point, bool bus) {
    Wire* nearest = nullptr;
    double best = std::numeric_limits<double>::infinity();
    for (const bool wanted : {bus, !bus}) {
      for (Wire& wire : page_.wires) {
        if (wire.bus == wanted && Touches(wire, point)) {
          return wire;
        }
      }
    }
    for (Wire& wire : page_.wires) {
      const double distance = DistanceSquared(wire, point);
      if (distance < best) {
        best = distance;
        nearest = &wire;
      }
    }
    if (nearest != nullptr) {
      return *nearest;
    }
    Wire& wire = page_.wires.emplace_back();
    wire.start = point;
    wire.end = point;
    wire.bus = bus;
    return wire;
  }

  void AddLabel(const Label& label) {
    const std::string text = SheetText(label.text, *sources_.occurrences.front());
    const double size = ToUnitsExact(label.effects.height);
    const double x = Exact(label.at.x);
    const double y = Exact(label.at.y);
    switch (label.kind) {
      case Label::Kind::kLocal:
        AddLocalLabel(label, text, x, y);
        return;
      case Label::Kind::kGlobal:
      case Label::Kind::kHierarchical: {
        const LogFont* font = Font(label.effects);
        const double width = DrawnWidth(text, *font);
        const Spin spin = SpinOf(label.angle);
        const LabelOutline outline = label.kind == Label::Kind::kGlobal
                                         ? GlobalLabelOutline(label.shape, spin, size, width)
                                         : HierarchicalLabelOutline(label.shape, spin, size);
        if (label.kind == Label::Kind::kGlobal) {
          AddConnector(page_.globals.emplace_back(), outline, x, y, text, font, width);
        } else {
          AddConnector(page_.ports.emplace_back(), outline, x, y, text, font, width);
        }
        return;
      }
      case Label::Kind::kDirective: {
        const LabelOutline outline =
            DirectiveLabelOutline(label.shape, label.angle, size, ToUnitsExact(label.length));
        model::detail::Global& flag = page_.globals.emplace_back();
        AddConnector(flag, outline, x, y, std::string(), nullptr, 0);
        for (const Field& field : label.fields) {
          if (field.effects.hidden) {
            continue;
          }
          PerOccurrence shown = ForEachOccurrence([&](const SheetOccurrence& occurrence) {
            const std::string value = SheetText(field.value, occurrence);
            return field.showName ? HostText(field.name + ": ") + value : value;
          });
          if (shown.plain.empty()) {
            continue;
          }
          const LogFont* font = Font(field.effects);
          const Baseline baseline =
              FieldBaseline(Exact(field.at.x), Exact(field.at.y), field.angle, field.effects, {},
                            DrawnWidth(shown.plain, *font), DrawnHeight(*font));
          shown.values.clear();  // connectors show plain values only
          AddProperty(flag.properties, field.name, std::move(shown), font, baseline, flag.location);
        }
        return;
      }
    }
  }

  void AddLocalLabel(const Label& label, const std::string& text, double x, double y) {
    const LogFont* font = Font(label.effects);
    const double height = DrawnHeight(*font);
    const double lift = kLabelLift * ToUnitsExact(label.effects.height) + kPenHalfWidth;
    const Spin spin = SpinOf(label.angle);
    const bool vertical = spin == Spin::kUp || spin == Spin::kBottom;
    const HJustify justify =
        spin == Spin::kRight || spin == Spin::kUp ? HJustify::kLeft : HJustify::kRight;
    const Baseline baseline =
        Justified(vertical ? x - lift : x, vertical ? y : y - lift, vertical, justify,
                  VJustify::kBottom, DrawnWidth(text, *font), height);
    Alias& alias = WireAt({RoundToUnit(x), RoundToUnit(y)}, false).aliases.emplace_back();
    alias.name = text;
    alias.font = font;
    // The page walk draws an alias's base line 3 units above (or left of) its location.
    if (!vertical) {
      alias.rotation = 0;
      alias.location = {RoundToUnit(baseline.x), RoundToUnit(baseline.y + kBaseLineGap)};
    } else {
      alias.rotation = 1;
      alias.location = {RoundToUnit(baseline.x + kBaseLineGap), RoundToUnit(baseline.y)};
    }
  }

  // A global, port or flag: its outline as the instance's symbol, its text as its property.
  template <typename Instance>
  void AddConnector(Instance& instance, const LabelOutline& outline, double x, double y,
                    const std::string& text, const LogFont* font, double width) {
    GraphicList vectors;
    const auto point = [&](LabelOutline::Point offset) {
      return CPoint{RoundToUnit(x + offset.x), RoundToUnit(y + offset.y)};
    };
    for (const auto& polygon : outline.polygons) {
      auto shape = std::make_unique<PolygonShape>();
      for (const LabelOutline::Point& offset : polygon) {
        shape->points.push_back(point(offset));
      }
      vectors.push_back(std::move(shape));
    }
    for (const auto& polyline : outline.polylines) {
      auto shape = std::make_unique<PolylineShape>();
      for (const LabelOutline::Point& offset : polyline) {
        shape->points.push_back(point(offset));
      }
      vectors.push_back(std::move(shape));
    }
    for (const LabelOutline::Circle& circle : outline.circles) {
      auto shape = std::make_unique<EllipseShape>();
      const CPoint centre = point(circle.centre);
      const int32_t r = std::max(1, RoundToUnit(circle.radius));
      shape->rect = {centre.x - r, centre.y - r, centre.x + r, centre.y + r};
      vectors.push_back(std::move(shape));
    }
    CRect extent{RoundToUnit(x), RoundToUnit(y), RoundToUnit(x), RoundToUnit(y)};
    for (const auto& vector : vectors) {
      const CRect box = PrimitiveExtent(*vector);
      extent = {std::min(extent.left, box.left), std::min(extent.top, box.top),
                std::max(extent.right, box.right), std::max(extent.bottom, box.bottom)};
    }
    for (auto& vector : vectors) {
      Translate(*vector, {-extent.left, -extent.top});
    }
    auto symbol = std::make_unique<Symbol>();
    symbol->bbox = {0, 0, extent.right - extent.left, extent.bottom - extent.top};
    symbol->vectors = std::move(vectors);
    instance.symbol = data_.symbols.emplace_back(std::move(symbol)).get();
    instance.location = {extent.left, extent.top};
    if (font != nullptr && !text.empty()) {
      const Baseline baseline =
          Justified(x + outline.text.x, y + outline.text.y, outline.vertical, outline.justify,
                    VJustify::kCenter, width, DrawnHeight(*font));
      AddProperty(instance.properties, "Name", {text, {}}, font, baseline, instance.location);
    }
  }

  void AddNoConnect(CPoint at) {
    for (PartInst& part : page_.parts) {
      for (Pin& pin : part.pins) {
        if (pin.start == at && part.kind == dbo_type::kPartInst) {
          pin.noConnect = true;
          return;
        }
      }
    }
    for (const int32_t sign : {1, -1}) {
      auto line = std::make_unique<LineShape>();
      line->start = {at.x - kNoConnectHalf, at.y - sign * kNoConnectHalf};
      line->end = {at.x + kNoConnectHalf, at.y + sign * kNoConnectHalf};
      AddGraphic(std::move(line));
    }
  }

  // ---------------------------------------------------------------------------------------
  // Free texts, boxes and images

  void AddFreeText(const Text& text) {
    const std::string shown = SheetText(text.text, *sources_.occurrences.front());
    // KiCad 6 turns texts by 180 and 270 degrees and justifies them the other way; they read
    // left to right or upward all the same.
    const bool vertical = SpinOf(text.angle) == Spin::kUp || SpinOf(text.angle) == Spin::kBottom;
    AddTextLines(shown, text.effects, Exact(text.at.x), Exact(text.at.y), vertical);
  }

  // Text boxes wrap their text at the box's width, between words.
  std::string Wrapped(const std::string& text, const LogFont& font, double width) const {
    std::string out;
    std::size_t start = 0;
    while (start <= text.size()) {
      const std::size_t end = std::min(text.find('\n', start), text.size());
      std::string line;
      std::size_t word = start;
      while (word < end) {
        std::size_t next = text.find(' ', word);
        next = next == std::string::npos || next > end ? end : next;
        const std::string candidate = line.empty() ? text.substr(word, next - word)
                                                   : line + " " + text.substr(word, next - word);
        if (!line.empty() && DrawnWidth(candidate, font) > width) {
          out += line + "\n";
          line = text.substr(word, next - word);
        } else {
          line = candidate;
        }
        word = next + 1;
      }
      out += line;
      if (end == text.size()) {
        break;
      }
      out += "\n";
      start = end + 1;
    }
    return out;
  }

  void AddTextBox(const TextBox& box) {
    const CPoint a = At(box.at);
    const CPoint b = At({box.at.x + box.size.x, box.at.y + box.size.y});
    const CRect rect{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x),
                     std::max(a.y, b.y)};
    if (box.border) {
      auto outline = std::make_unique<model::detail::BoxShape>();
      outline->rect = rect;
      outline->width = LineWidthUnits(box.width);
      AddGraphic(std::move(outline));
    }
    const bool vertical = SpinOf(box.angle) == Spin::kUp || SpinOf(box.angle) == Spin::kBottom;
    const double left = rect.left + ToUnitsExact(box.margins[0]);
    const double top = rect.top + ToUnitsExact(box.margins[1]);
    const double right = rect.right - ToUnitsExact(box.margins[2]);
    const double bottom = rect.bottom - ToUnitsExact(box.margins[3]);
    const LogFont* font = Font(box.effects);
    const std::string shown = Wrapped(SheetText(box.text, *sources_.occurrences.front()), *font,
                                      vertical ? bottom - top : right - left);
    // Along the text: its horizontal justification; across it: its vertical one.
    double x = 0;
    double y = 0;
    if (!vertical) {
      x = box.effects.hJustify == HJustify::kLeft    ? left
          : box.effects.hJustify == HJustify::kRight ? right
                                                     : (left + right) / 2;
      y = box.effects.vJustify == VJustify::kTop      ? top
          : box.effects.vJustify == VJustify::kBottom ? bottom
                                                      : (top + bottom) / 2;
    } else {
      y = box.effects.hJustify == HJustify::kLeft    ? bottom
          : box.effects.hJustify == HJustify::kRight ? top
                                                     : (top + bottom) / 2;
      x = box.effects.vJustify == VJustify::kTop      ? left
          : box.effects.vJustify == VJustify::kBottom ? right
                                                      : (left + right) / 2;
    }
    // Each line of a box's text lies between its margins; KiCad lays out the block from the
    // justified side.
    AddTextLines(shown, box.effects, x, y, vertical);
  }

  void AddImage(const Image& image) {
    const std::optional<ImageSize> size = ImageSizeOf(image.data);
    if (!size) {
      warnings_.push_back({image.spot, "an image of a kind this reader cannot size is left out"});
      return;
    }
    const int32_t width = ToUnits(size->widthMillimetres * image.scale);
    const int32_t height = ToUnits(size->heightMillimetres * image.scale);
    auto bitmap = std::make_unique<BitMapShape>();
    bitmap->rect.left = RoundToUnit(Exact(image.at.x) - width / 2.0);
    bitmap->rect.top = RoundToUnit(Exact(image.at.y) - height / 2.0);
    bitmap->rect.right = bitmap->rect.left + width;
    bitmap->rect.bottom = bitmap->rect.top + height;
    AddGraphic(std::move(bitmap));
  }

  const SheetFile& file_;
  const PageSources& sources_;
  const DesignContext& design_;
  FontTable& fonts_;
  model::detail::DesignData& data_;
  model::detail::Page& page_;
  std::vector<std::size_t>& blockParts_;
  std::vector<SyntaxFault>& warnings_;
  SymbolLibrary library_;
  PageFrame frame_;
  std::set<std::string> usedIds_;
};

}  // namespace

const LogFont* FontTable::Intern(const LogFont& font) {
  std::string key(reinterpret_cast<const char*>(&font), sizeof font);
  const auto [found, added] = index_.try_emplace(std::move(key), nullptr);
  if (added) {
    found->second = &fonts_.emplace_back(font);
  }
  return found->second;
}

void BuildPage(const PageSources& sources, const DesignContext& design, FontTable& fonts,
               model::detail::DesignData& data, model::detail::Page& page,
               std::vector<std::size_t>& blockParts, std::vector<SyntaxFault>& warnings) {
  Builder(sources, design, fonts, data, page, blockParts, warnings).Build();
}

}  // namespace kalmor::kicad::detail
