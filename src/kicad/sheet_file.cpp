#include "kicad/sheet_file.h"

#include <charconv>
#include <cmath>
#include <numbers>

#include "input/shown_text.h"

namespace kalmor::kicad::detail {
namespace {

// Beyond a kilometre a coordinate is not a drawing; refusing it keeps every later sum finite.
constexpr double kLargestMillimetres = 1e6;

struct PaperSize {
  std::string_view name;
  double width;
  double height;
};
constexpr PaperSize kPaperSizes[] = {
    {"A5", 210, 148},          {"A4", 297, 210},           {"A3", 420, 297},
    {"A2", 594, 420},          {"A1", 841, 594},           {"A0", 1189, 841},
    {"A", 279.4, 215.9},       {"B", 431.8, 279.4},        {"C", 558.8, 431.8},
    {"D", 863.6, 558.8},       {"E", 1117.6, 863.6},       {"USLetter", 279.4, 215.9},
    {"USLegal", 355.6, 215.9}, {"USLedger", 431.8, 279.4},
};

[[noreturn]] void Fault(Sexpr at, std::string message) {
  throw SyntaxFault{at.spot(), std::move(message)};
}

// An atom or a string, as text.
std::string_view TextOf(Sexpr node, std::string_view what) {
  if (!node || node.IsList()) {
    Fault(node ? node : Sexpr(), "expected " + std::string(what));
  }
  return node.text();
}

double NumberOf(Sexpr node, std::string_view what) {
  if (!node || node.kind() != NodeKind::kAtom) {
    Fault(node, "expected " + std::string(what) + " (a number)");
  }
  const std::string_view text = node.text();
  double value = 0;
  const char* first = text.data();
  const char* last = text.data() + text.size();
  if (first != last && *first == '+') {
    ++first;
  }
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) {
    Fault(node, "expected " + std::string(what) + ", got " + Quoted(text));
  }
  if (std::fabs(value) > kLargestMillimetres) {
    Fault(node, std::string(what) + " " + Quoted(text) + " is beyond a kilometre");
  }
  return value;
}

int IntOf(Sexpr node, std::string_view what) {
  const double value = NumberOf(node, what);
  if (value != std::floor(value) || std::fabs(value) > 1e6) {
    Fault(node, "expected " + std::string(what) + " (a whole number)");
  }
  return static_cast<int>(value);
}

// The list's element at `position`, which must be there.
Sexpr Required(Sexpr list, std::size_t position, std::string_view what) {
  const Sexpr element = list[position];
  if (!element) {
    Fault(list, "(" + std::string(list.head()) + " ...) lacks " + std::string(what));
  }
  return element;
}

Sexpr RequiredList(Sexpr list, std::string_view name) {
  const Sexpr found = list.Find(name);
  if (!found) {
    Fault(list, "(" + std::string(list.head()) + " ...) lacks its (" + std::string(name) + " ...)");
  }
  return found;
}

Vec PointOf(Sexpr list) {
  return {NumberOf(Required(list, 1, "an x coordinate"), "an x coordinate"),
          NumberOf(Required(list, 2, "a y coordinate"), "a y coordinate")};
}

// "(at x y angle)", the angle optional.
Vec AtOf(Sexpr owner, double* angle) {
  const Sexpr at = RequiredList(owner, "at");
  if (angle != nullptr) {
    const Sexpr turn = at[3];
    *angle = turn ? NumberOf(turn, "an angle") : 0.0;
  }
  return PointOf(at);
}

// A yes/no switch written bare ("hide"), as a list ("(hide)", "(hide yes)", "(hide no)"), or
// absent.
bool Flag(Sexpr owner, std::string_view name) {
  for (const Sexpr element : owner) {
    if (!element.IsList()) {
      if (element.kind() == NodeKind::kAtom && element.text() == name) {
        return true;
      }
      continue;
    }
    if (element.head() == name) {
      const Sexpr value = element[1];
      return !value || value.text() != "no";
    }
  }
  return false;
}

// "(pts (xy x y) ...)"
std::vector<Vec> PointsOf(Sexpr owner) {
  std::vector<Vec> points;
  const Sexpr pts = RequiredList(owner, "pts");
  points.reserve(pts.size());
  for (const Sexpr element : pts) {
    if (element.IsList() && element.head() == "xy") {
      points.push_back(PointOf(element));
    }
  }
  return points;
}

double StrokeWidthOf(Sexpr owner) {
  const Sexpr width = owner.Find("stroke").Find("width");
  return width ? std::max(0.0, NumberOf(Required(width, 1, "a width"), "a line width")) : 0.0;
}

bool FilledOf(Sexpr owner) {
  const Sexpr type = owner.Find("fill").Find("type");
  return type && type[1] && type[1].text() != "none";
}

TextEffects EffectsOf(Sexpr owner) {
  TextEffects effects;
  const Sexpr node = owner.Find("effects");
  if (!node) {
    return effects;
  }
  if (const Sexpr font = node.Find("font")) {
    if (const Sexpr size = font.Find("size")) {
      effects.height = std::fabs(NumberOf(Required(size, 1, "a text height"), "a text height"));
    }
    if (const Sexpr face = font.Find("face")) {
      effects.face = TextOf(Required(face, 1, "a face name"), "a face name");
    }
    effects.bold = Flag(font, "bold");
    effects.italic = Flag(font, "italic");
  }
  if (const Sexpr justify = node.Find("justify")) {
    for (const Sexpr word : justify) {
      const std::string_view text = word.text();
      if (text == "left") {
        effects.hJustify = HJustify::kLeft;
      } else if (text == "right") {
        effects.hJustify = HJustify::kRight;
      } else if (text == "top") {
        effects.vJustify = VJustify::kTop;
      } else if (text == "bottom") {
        effects.vJustify = VJustify::kBottom;
      }
    }
  }
  effects.hidden = Flag(node, "hide");
  return effects;
}

Field FieldOf(Sexpr node) {
  Field field;
  field.spot = node.spot();
  field.name = TextOf(Required(node, 1, "a property name"), "a property name");
  field.value = TextOf(Required(node, 2, "a property value"), "a property value");
  if (const Sexpr id = node.Find("id")) {
    field.id = IntOf(Required(id, 1, "a property id"), "a property id");
  }
  if (node.Find("at")) {
    field.at = AtOf(node, &field.angle);
  }
  field.effects = EffectsOf(node);
  // Later versions write "(hide yes)" beside the effects rather than in them.
  field.effects.hidden = field.effects.hidden || Flag(node, "hide");
  field.showName = Flag(node, "show_name");
  return field;
}

// Library symbols give their texts' angles in tenths of a degree, schematics in degrees.
Text TextItemOf(Sexpr node, double angleUnit) {
  Text text;
  text.text = TextOf(Required(node, 1, "its text"), "a text");
  text.at = AtOf(node, &text.angle);
  text.angle *= angleUnit;
  text.effects = EffectsOf(node);
  return text;
}

TextBox TextBoxOf(Sexpr node) {
  TextBox box;
  box.text = TextOf(Required(node, 1, "its text"), "a text");
  if (node.Find("at")) {
    box.at = AtOf(node, &box.angle);
    box.size = PointOf(RequiredList(node, "size"));
  } else {
    // The first text boxes were given by two corners.
    box.at = PointOf(RequiredList(node, "start"));
    const Vec end = PointOf(RequiredList(node, "end"));
    box.size = {end.x - box.at.x, end.y - box.at.y};
  }
  box.effects = EffectsOf(node);
  if (const Sexpr margins = node.Find("margins")) {
    for (std::size_t i = 0; i < 4; ++i) {
      box.margins[i] = NumberOf(Required(margins, i + 1, "four margins"), "a margin");
    }
  } else {
    box.margins.fill(box.effects.height * 0.75);  // what KiCad gives a box without margins
  }
  box.width = StrokeWidthOf(node);
  const Sexpr strokeType = node.Find("stroke").Find("type");
  box.border = !(strokeType && strokeType[1] && strokeType[1].text() == "none");
  return box;
}

// An arc given by its centre, start and end: KiCad drew those counter-clockwise in library
// coordinates, the short way round.
Vec MidOfCentredArc(Vec start, Vec end, Vec centre, double radius) {
  double from = std::atan2(start.y - centre.y, start.x - centre.x);
  double sweep = std::atan2(end.y - centre.y, end.x - centre.x) - from;
  sweep = std::fmod(sweep + 4 * std::numbers::pi, 2 * std::numbers::pi);
  if (sweep > std::numbers::pi) {
    from += sweep;
    sweep = 2 * std::numbers::pi - sweep;
  }
  const double middle = from + sweep / 2;
  return {centre.x + radius * std::cos(middle), centre.y + radius * std::sin(middle)};
}

// A drawn shape, or nothing for an element that is not one.
std::optional<Shape> ShapeOf(Sexpr node) {
  const std::string_view head = node.head();
  Shape shape;
  if (head == "polyline") {
    shape.kind = Shape::Kind::kPolyline;
    shape.points = PointsOf(node);
  } else if (head == "bezier") {
    shape.kind = Shape::Kind::kBezier;
    shape.points = PointsOf(node);
  } else if (head == "rectangle") {
    shape.kind = Shape::Kind::kRectangle;
    shape.points = {PointOf(RequiredList(node, "start")), PointOf(RequiredList(node, "end"))};
  } else if (head == "circle") {
    shape.kind = Shape::Kind::kCircle;
    shape.points = {PointOf(RequiredList(node, "center"))};
    const Sexpr radius = RequiredList(node, "radius");
    shape.radius = std::fabs(NumberOf(Required(radius, 1, "a radius"), "a radius"));
  } else if (head == "arc") {
    shape.kind = Shape::Kind::kArc;
    const Vec start = PointOf(RequiredList(node, "start"));
    const Vec end = PointOf(RequiredList(node, "end"));
    if (const Sexpr mid = node.Find("mid")) {
      shape.points = {start, PointOf(mid), end};
    } else {
      const Sexpr radius = RequiredList(node, "radius");
      const Vec centre = PointOf(RequiredList(radius, "at"));
      const double length =
          NumberOf(Required(RequiredList(radius, "length"), 1, "a radius"), "a radius");
      shape.points = {start, MidOfCentredArc(start, end, centre, std::fabs(length)), end};
    }
  } else {
    return std::nullopt;
  }
  shape.width = StrokeWidthOf(node);
  shape.filled = FilledOf(node);
  return shape;
}

LibPin PinOf(Sexpr node) {
  LibPin pin;
  pin.type = TextOf(Required(node, 1, "its electrical type"), "a pin type");
  pin.shape = TextOf(Required(node, 2, "its graphic shape"), "a pin shape");
  pin.at = AtOf(node, &pin.angle);
  if (const Sexpr length = node.Find("length")) {
    pin.length = NumberOf(Required(length, 1, "a length"), "a pin length");
  }
  pin.hidden = Flag(node, "hide");
  if (const Sexpr name = node.Find("name")) {
    pin.name = TextOf(Required(name, 1, "a pin name"), "a pin name");
  }
  if (const Sexpr number = node.Find("number")) {
    pin.number = TextOf(Required(number, 1, "a pin number"), "a pin number");
  }
  for (const Sexpr element : node) {
    if (element.IsList() && element.head() == "alternate") {
      pin.alternates.push_back(
          {std::string(TextOf(Required(element, 1, "a name"), "an alternate name")),
           element[3] ? std::string(element[3].text()) : pin.shape});
    }
  }
  return pin;
}

// Items of a unit, whether in a "NAME_U_S" sub-symbol or, in hand-made files, in the symbol.
void ReadUnitItems(Sexpr node, LibUnit& unit) {
  for (const Sexpr element : node) {
    if (!element.IsList()) {
      continue;
    }
    const std::string_view head = element.head();
    if (head == "pin") {
      unit.pins.push_back(PinOf(element));
    } else if (head == "text") {
      unit.texts.push_back(TextItemOf(element, 0.1));
    } else if (head == "text_box") {
      unit.textBoxes.push_back(TextBoxOf(element));
    } else if (std::optional<Shape> shape = ShapeOf(element)) {
      unit.shapes.push_back(std::move(*shape));
    }
  }
}

// "NAME_U_S": the unit and the body style are the last two numbers of the name.
bool UnitAndStyle(std::string_view name, int& unit, int& style) {
  const auto number = [](std::string_view digits, int& out) {
    if (digits.empty() || digits.size() > 6) {
      return false;
    }
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), out);
    return error == std::errc() && end == digits.data() + digits.size();
  };
  const std::size_t last = name.rfind('_');
  if (last == std::string_view::npos || last == 0) {
    return false;
  }
  const std::size_t before = name.rfind('_', last - 1);
  if (before == std::string_view::npos) {
    return false;
  }
  return number(name.substr(before + 1, last - before - 1), unit) &&
         number(name.substr(last + 1), style);
}

LibSymbol LibSymbolOf(Sexpr node) {
  LibSymbol symbol;
  symbol.spot = node.spot();
  symbol.name = TextOf(Required(node, 1, "a symbol name"), "a symbol name");
  if (const Sexpr extends = node.Find("extends")) {
    symbol.extends = TextOf(Required(extends, 1, "a parent name"), "a parent symbol name");
  }
  symbol.power = static_cast<bool>(node.Find("power"));
  if (const Sexpr numbers = node.Find("pin_numbers")) {
    symbol.pinNumbersHidden = Flag(numbers, "hide");
  }
  if (const Sexpr names = node.Find("pin_names")) {
    symbol.pinNamesHidden = Flag(names, "hide");
    if (const Sexpr offset = names.Find("offset")) {
      symbol.pinNamesOutside = NumberOf(Required(offset, 1, "an offset"), "a pin name offset") == 0;
    }
  }
  LibUnit shared;
  for (const Sexpr element : node) {
    if (!element.IsList()) {
      continue;
    }
    const std::string_view head = element.head();
    if (head == "property") {
      symbol.fields.push_back(FieldOf(element));
    } else if (head == "symbol") {
      LibUnit& unit = symbol.units.emplace_back();
      const std::string_view name = TextOf(Required(element, 1, "a unit name"), "a unit name");
      if (!UnitAndStyle(name, unit.unit, unit.style)) {
        Fault(element, "a unit of a symbol is named NAME_UNIT_STYLE, not " + Quoted(name));
      }
      ReadUnitItems(element, unit);
    }
  }
  ReadUnitItems(node, shared);
  if (!shared.shapes.empty() || !shared.texts.empty() || !shared.pins.empty() ||
      !shared.textBoxes.empty()) {
    symbol.units.push_back(std::move(shared));
  }
  return symbol;
}

SymbolInstance SymbolInstanceOf(Sexpr path) {
  SymbolInstance instance;
  instance.path = TextOf(Required(path, 1, "a sheet path"), "a sheet path");
  if (const Sexpr reference = path.Find("reference")) {
    instance.reference = TextOf(Required(reference, 1, "a reference"), "a reference");
  }
  if (const Sexpr unit = path.Find("unit")) {
    instance.unit = IntOf(Required(unit, 1, "a unit"), "a unit number");
  }
  if (const Sexpr value = path.Find("value")) {
    instance.value = std::string(TextOf(Required(value, 1, "a value"), "a value"));
  }
  if (const Sexpr footprint = path.Find("footprint")) {
    instance.footprint = std::string(TextOf(Required(footprint, 1, "a footprint"), "a footprint"));
  }
  return instance;
}

// "(instances (project NAME (path P ...) ...) ...)": every path of every project, since the
// project's name says nothing about which path is the real one.
template <typename Read>
void ForEachInstancePath(Sexpr owner, Read&& read) {
  for (const Sexpr project : owner.Find("instances")) {
    if (!project.IsList() || project.head() != "project") {
      continue;
    }
    for (const Sexpr path : project) {
      if (path.IsList() && path.head() == "path") {
        read(path);
      }
    }
  }
}

PlacedSymbol PlacedSymbolOf(Sexpr node) {
  PlacedSymbol symbol;
  symbol.spot = node.spot();
  symbol.libId = TextOf(Required(RequiredList(node, "lib_id"), 1, "a library id"), "a library id");
  if (const Sexpr libName = node.Find("lib_name")) {
    symbol.libName = TextOf(Required(libName, 1, "a library name"), "a library name");
  }
  symbol.at = AtOf(node, &symbol.angle);
  if (const Sexpr mirror = node.Find("mirror")) {
    const std::string_view axis = TextOf(Required(mirror, 1, "an axis"), "a mirror axis");
    symbol.mirror = axis == "x" ? 'x' : axis == "y" ? 'y' : 0;
  }
  if (const Sexpr unit = node.Find("unit")) {
    symbol.unit = IntOf(Required(unit, 1, "a unit"), "a unit number");
  }
  for (const std::string_view name : {"convert", "body_style"}) {
    if (const Sexpr style = node.Find(name)) {
      symbol.style = IntOf(Required(style, 1, "a body style"), "a body style");
    }
  }
  if (const Sexpr uuid = node.Find("uuid")) {
    symbol.uuid = TextOf(Required(uuid, 1, "a uuid"), "a uuid");
  }
  for (const Sexpr element : node) {
    if (!element.IsList()) {
      continue;
    }
    if (element.head() == "property") {
      symbol.fields.push_back(FieldOf(element));
    } else if (element.head() == "pin") {
      if (const Sexpr alternate = element.Find("alternate")) {
        symbol.pinAlternates.emplace_back(
            TextOf(Required(element, 1, "a pin number"), "a pin number"),
            TextOf(Required(alternate, 1, "an alternate"), "an alternate name"));
      }
    }
  }
  ForEachInstancePath(node,
                      [&](Sexpr path) { symbol.instances.push_back(SymbolInstanceOf(path)); });
  return symbol;
}

Segment SegmentOf(Sexpr node) {
  const std::vector<Vec> points = PointsOf(node);
  if (points.size() < 2) {
    Fault(node, "a wire or bus needs two points");
  }
  return {points.front(), points.back()};
}

Label LabelOf(Sexpr node, Label::Kind kind) {
  Label label;
  label.kind = kind;
  label.spot = node.spot();
  label.text = TextOf(Required(node, 1, "its text"), "a label text");
  if (const Sexpr shape = node.Find("shape")) {
    label.shape = TextOf(Required(shape, 1, "a shape"), "a label shape");
  }
  if (const Sexpr length = node.Find("length")) {
    label.length = NumberOf(Required(length, 1, "a length"), "a length");
  }
  label.at = AtOf(node, &label.angle);
  label.effects = EffectsOf(node);
  for (const Sexpr element : node) {
    if (element.IsList() && element.head() == "property") {
      label.fields.push_back(FieldOf(element));
    }
  }
  return label;
}

Image ImageOf(Sexpr node) {
  Image image;
  image.spot = node.spot();
  image.at = AtOf(node, nullptr);
  if (const Sexpr scale = node.Find("scale")) {
    image.scale = NumberOf(Required(scale, 1, "a scale"), "a scale");
  }
  bool first = true;
  for (const Sexpr part : node.Find("data")) {
    if (first) {
      first = false;
      continue;
    }
    if (!part.IsList()) {
      image.data += part.text();
    }
  }
  return image;
}

SheetInstance SheetInstanceOf(Sexpr path) {
  SheetInstance instance;
  instance.path = TextOf(Required(path, 1, "a sheet path"), "a sheet path");
  if (const Sexpr page = path.Find("page")) {
    instance.page = TextOf(Required(page, 1, "a page number"), "a page number");
  }
  return instance;
}

Sheet SheetOf(Sexpr node) {
  Sheet sheet;
  sheet.spot = node.spot();
  sheet.at = AtOf(node, nullptr);
  sheet.size = PointOf(RequiredList(node, "size"));
  if (const Sexpr uuid = node.Find("uuid")) {
    sheet.uuid = TextOf(Required(uuid, 1, "a uuid"), "a uuid");
  }
  for (const Sexpr element : node) {
    if (!element.IsList()) {
      continue;
    }
    if (element.head() == "property") {
      sheet.fields.push_back(FieldOf(element));
    } else if (element.head() == "pin") {
      SheetPin& pin = sheet.pins.emplace_back();
      pin.name = TextOf(Required(element, 1, "a pin name"), "a sheet pin name");
      pin.shape = TextOf(Required(element, 2, "a pin shape"), "a sheet pin shape");
      pin.at = AtOf(element, &pin.angle);
      pin.effects = EffectsOf(element);
    }
  }
  // KiCad 6 names these two properties in the user's language and tells them apart by id;
  // later versions drop the ids and use fixed names.
  for (std::size_t i = 0; i < sheet.fields.size(); ++i) {
    const Field& field = sheet.fields[i];
    if (field.id == 0 ||
        (field.id < 0 && (field.name == "Sheetname" || field.name == "Sheet name"))) {
      sheet.nameField = static_cast<int>(i);
    } else if (field.id == 1 ||
               (field.id < 0 && (field.name == "Sheetfile" || field.name == "Sheet file"))) {
      sheet.fileField = static_cast<int>(i);
    }
  }
  if (sheet.fileField < 0) {
    if (sheet.fields.size() >= 2 && sheet.nameField != 1) {
      sheet.fileField = 1;
    } else {
      Fault(node, "a sheet names no file (its Sheetfile property)");
    }
  }
  if (sheet.nameField < 0 && sheet.fileField != 0 && !sheet.fields.empty()) {
    sheet.nameField = 0;
  }
  ForEachInstancePath(node, [&](Sexpr path) { sheet.instances.push_back(SheetInstanceOf(path)); });
  return sheet;
}

// Tables are drawn as their cells: each a bordered text box.
void ReadTable(Sexpr node, std::vector<TextBox>& boxes) {
  for (const Sexpr cell : node.Find("cells")) {
    if (!cell.IsList() || cell.head() != "table_cell") {
      continue;
    }
    TextBox box = TextBoxOf(cell);
    if (box.size.x != 0 && box.size.y != 0) {
      boxes.push_back(std::move(box));
    }
  }
}

Paper PaperOf(Sexpr node) {
  Paper paper;
  paper.name = TextOf(Required(node, 1, "a paper size"), "a paper size");
  bool known = false;
  if (paper.name == "User") {
    paper.width = NumberOf(Required(node, 2, "a width"), "a paper width");
    paper.height = NumberOf(Required(node, 3, "a height"), "a paper height");
    if (paper.width <= 0 || paper.height <= 0) {
      Fault(node, "a paper of size zero or less");
    }
    known = true;
  }
  for (const PaperSize& size : kPaperSizes) {
    if (paper.name == size.name) {
      paper.width = size.width;
      paper.height = size.height;
      known = true;
    }
  }
  if (!known) {
    paper.name = "A4";
  }
  if (Flag(node, "portrait")) {
    std::swap(paper.width, paper.height);
  }
  return paper;
}

TitleBlock TitleBlockOf(Sexpr node) {
  TitleBlock block;
  for (const Sexpr element : node) {
    if (!element.IsList()) {
      continue;
    }
    const std::string_view head = element.head();
    const auto value = [&](std::size_t at) {
      return std::string(TextOf(Required(element, at, "a value"), "a title block value"));
    };
    if (head == "title") {
      block.title = value(1);
    } else if (head == "date") {
      block.date = value(1);
    } else if (head == "rev") {
      block.revision = value(1);
    } else if (head == "company") {
      block.company = value(1);
    } else if (head == "comment") {
      const int number = IntOf(Required(element, 1, "a comment number"), "a comment number");
      if (number >= 1 && number <= 9) {
        block.comments[static_cast<std::size_t>(number - 1)] = value(2);
      }
    }
  }
  return block;
}

void CheckOldFormat(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) {
    throw SyntaxFault{{1, 1}, "the file is empty"};
  }
  if (text.substr(first).starts_with("EESchema Schematic File Version")) {
    throw SyntaxFault{{1, 1},
                      "a schematic of KiCad 5 or older; open it in KiCad 6 or later and save it "
                      "to read it here"};
  }
}

void CheckHeader(Sexpr root) {
  if (!root || !root.IsList() || root.head() != "kicad_sch") {
    throw SyntaxFault{root ? root.spot() : Spot{1, 1},
                      "not a KiCad schematic: the file does not start with (kicad_sch"};
  }
}

}  // namespace

SheetFile ReadSheetFile(std::string_view text, std::string path,
                        std::vector<SyntaxFault>& warnings) {
  // An old file is named as such before its text is taken for S-expressions.
  CheckOldFormat(text);
  const SexprTree tree(text);
  const Sexpr root = tree.root();
  CheckHeader(root);

  SheetFile file;
  file.path = std::move(path);
  const Sexpr version = RequiredList(root, "version");
  const Sexpr number = Required(version, 1, "a version");
  file.versionSpot = number.spot();
  const std::string_view digits = number.text();
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), file.version);
  if (number.IsList() || error != std::errc() || end != digits.data() + digits.size()) {
    Fault(number, "expected a file version (a date such as 20211014), got " + Quoted(digits));
  }
  if (file.version < kOldestVersion) {
    Fault(number, "file version " + std::string(number.text()) +
                      " is older than KiCad 6; open the file in KiCad 6 or later and save it");
  }
  if (file.version > kNewestVersion) {
    warnings.push_back({file.versionSpot, "file version " + std::string(number.text()) +
                                              " is newer than this reader knows (" +
                                              std::to_string(kNewestVersion) +
                                              "); what it does not know is left out"});
  }

  for (const Sexpr element : root) {
    if (!element.IsList()) {
      continue;
    }
    const std::string_view head = element.head();
    if (head == "uuid") {
      file.uuid = TextOf(Required(element, 1, "a uuid"), "a uuid");
    } else if (head == "paper") {
      file.paper = PaperOf(element);
    } else if (head == "title_block") {
      file.titleBlock = TitleBlockOf(element);
    } else if (head == "lib_symbols") {
      for (const Sexpr symbol : element) {
        if (symbol.IsList() && symbol.head() == "symbol") {
          file.libSymbols.push_back(LibSymbolOf(symbol));
        }
      }
    } else if (head == "symbol") {
      file.symbols.push_back(PlacedSymbolOf(element));
    } else if (head == "wire") {
      file.wires.push_back(SegmentOf(element));
    } else if (head == "bus") {
      file.buses.push_back(SegmentOf(element));
    } else if (head == "junction") {
      file.junctions.push_back(AtOf(element, nullptr));
    } else if (head == "no_connect") {
      file.noConnects.push_back(AtOf(element, nullptr));
    } else if (head == "bus_entry") {
      file.busEntries.push_back({AtOf(element, nullptr), PointOf(RequiredList(element, "size"))});
    } else if (head == "label") {
      file.labels.push_back(LabelOf(element, Label::Kind::kLocal));
    } else if (head == "global_label") {
      file.labels.push_back(LabelOf(element, Label::Kind::kGlobal));
    } else if (head == "hierarchical_label") {
      file.labels.push_back(LabelOf(element, Label::Kind::kHierarchical));
    } else if (head == "netclass_flag" || head == "directive_label") {
      file.labels.push_back(LabelOf(element, Label::Kind::kDirective));
    } else if (head == "text") {
      file.texts.push_back(TextItemOf(element, 1.0));
    } else if (head == "text_box") {
      file.textBoxes.push_back(TextBoxOf(element));
    } else if (head == "table") {
      ReadTable(element, file.textBoxes);
    } else if (head == "image") {
      file.images.push_back(ImageOf(element));
    } else if (head == "sheet") {
      file.sheets.push_back(SheetOf(element));
    } else if (head == "rule_area") {
      for (const Sexpr outline : element) {
        if (outline.IsList() && outline.head() == "polyline") {
          Shape shape = *ShapeOf(outline);
          if (!shape.points.empty()) {
            shape.points.push_back(shape.points.front());
          }
          file.shapes.push_back(std::move(shape));
        }
      }
    } else if (head == "sheet_instances") {
      for (const Sexpr path : element) {
        if (path.IsList() && path.head() == "path") {
          file.sheetInstances.push_back(SheetInstanceOf(path));
        }
      }
    } else if (head == "symbol_instances") {
      for (const Sexpr path : element) {
        if (path.IsList() && path.head() == "path") {
          file.symbolInstances.push_back(SymbolInstanceOf(path));
        }
      }
    } else if (std::optional<Shape> shape = ShapeOf(element)) {
      file.shapes.push_back(std::move(*shape));
    }
  }
  return file;
}

}  // namespace kalmor::kicad::detail
