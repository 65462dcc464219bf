#pragma once

// One KiCad schematic file (.kicad_sch, KiCad 6 to 9) as read: every object the drawing needs,
// in KiCad's own terms (millimetres, y downward on the sheet, y upward inside library symbols),
// each with the place in the file it came from. Tokens this reader does not know are skipped,
// so that files of newer versions still read.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kicad/sexpr.h"

namespace kalmor::kicad::detail {

// The oldest and newest file versions this reader knows; KiCad 6's release wrote 20211014, and
// its development builds a few earlier ones, which read the same way.
inline constexpr int64_t kOldestVersion = 20200101;
inline constexpr int64_t kNewestVersion = 20250114;

struct Vec {
  double x = 0;
  double y = 0;
};

enum class HJustify : int8_t { kLeft = -1, kCenter = 0, kRight = 1 };
enum class VJustify : int8_t { kTop = -1, kCenter = 0, kBottom = 1 };

struct TextEffects {
  double height = 1.27;  // mm
  bool bold = false;
  bool italic = false;
  std::string face;  // empty: KiCad's own font
  HJustify hJustify = HJustify::kCenter;
  VJustify vJustify = VJustify::kCenter;
  bool hidden = false;
};

// A property (field) of a symbol, a sheet or a label.
struct Field {
  std::string name;
  std::string value;
  int id = -1;  // KiCad 6 numbers its fields; later versions do not
  Vec at;
  double angle = 0;
  TextEffects effects;
  bool showName = false;
  Spot spot;
};

struct Shape {
  enum class Kind : uint8_t { kPolyline, kRectangle, kCircle, kArc, kBezier };
  Kind kind = Kind::kPolyline;
  // Polyline and bezier: their points; rectangle: two corners; circle: the centre; arc: start,
  // middle and end.
  std::vector<Vec> points;
  double radius = 0;  // circles
  double width = 0;   // mm; 0 is KiCad's default line
  bool filled = false;
};

struct Text {
  std::string text;
  Vec at;
  double angle = 0;
  TextEffects effects;
};

struct TextBox {
  std::string text;
  Vec at;    // top left corner
  Vec size;  // may be negative
  double angle = 0;
  std::array<double, 4> margins{};  // left, top, right, bottom
  TextEffects effects;
  bool border = true;
  double width = 0;
};

struct PinAlternate {
  std::string name;
  std::string shape;
};

struct LibPin {
  std::string type;   // input, output, ..., no_connect
  std::string shape;  // line, inverted, clock, ...
  Vec at;             // the connection point, library coordinates
  double angle = 0;   // 0: the pin runs from its point to the right
  double length = 2.54;
  bool hidden = false;
  std::string name;
  std::string number;
  std::vector<PinAlternate> alternates;
};

// The items of one unit and body style ("NAME_U_S"); unit 0 and style 0 are shared by all.
struct LibUnit {
  int unit = 0;
  int style = 0;
  std::vector<Shape> shapes;
  std::vector<Text> texts;
  std::vector<TextBox> textBoxes;
  std::vector<LibPin> pins;
};

struct LibSymbol {
  std::string name;     // as the schematic's symbols name it (lib_id or lib_name)
  std::string extends;  // a parent symbol of the same file, or empty
  bool power = false;
  bool pinNamesHidden = false;
  bool pinNamesOutside = false;  // "(pin_names (offset 0))": names along the pin, outside
  bool pinNumbersHidden = false;
  std::vector<Field> fields;
  std::vector<LibUnit> units;
  Spot spot;
};

// A reference to a placed symbol as seen through one sheet path.
struct SymbolInstance {
  std::string path;
  std::string reference;
  int unit = 0;  // 0: not given
  std::optional<std::string> value;
  std::optional<std::string> footprint;
};

struct PlacedSymbol {
  std::string libId;
  std::string libName;  // when it differs from lib_id
  Vec at;
  double angle = 0;
  char mirror = 0;  // 'x', 'y' or none
  int unit = 1;
  int style = 1;
  std::string uuid;
  std::vector<Field> fields;
  std::vector<std::pair<std::string, std::string>> pinAlternates;  // pin number, alternate
  std::vector<SymbolInstance> instances;
  Spot spot;
};

struct Segment {
  Vec start;
  Vec end;
};

struct BusEntry {
  Vec at;
  Vec size;
};

struct Label {
  enum class Kind : uint8_t { kLocal, kGlobal, kHierarchical, kDirective };
  Kind kind = Kind::kLocal;
  std::string text;
  std::string shape;  // input, output, bidirectional, tri_state, passive; dot, round, ...
  Vec at;
  double angle = 0;
  double length = 2.54;  // directive labels
  TextEffects effects;
  std::vector<Field> fields;
  Spot spot;
};

struct Image {
  Spot spot;
  Vec at;  // centre
  double scale = 1;
  std::string data;  // base64
};

struct SheetPin {
  std::string name;
  std::string shape;
  Vec at;
  double angle = 0;
  TextEffects effects;
};

// The page number a sheet (or the root) has through one path of its parent sheets.
struct SheetInstance {
  std::string path;
  std::string page;
};

struct Sheet {
  Vec at;
  Vec size;
  std::string uuid;
  std::vector<Field> fields;
  int nameField = -1;  // indices into fields
  int fileField = -1;
  std::vector<SheetPin> pins;
  std::vector<SheetInstance> instances;
  Spot spot;
};

struct TitleBlock {
  std::string title;
  std::string date;
  std::string revision;
  std::string company;
  std::array<std::string, 9> comments;
};

struct Paper {
  std::string name = "A4";
  double width = 297;  // mm, as the sheet lies (portrait already applied)
  double height = 210;
};

struct SheetFile {
  std::string path;  // as named to the reader
  int64_t version = 0;
  Spot versionSpot;
  std::string uuid;
  Paper paper;
  TitleBlock titleBlock;
  std::vector<LibSymbol> libSymbols;
  std::vector<PlacedSymbol> symbols;
  std::vector<Segment> wires;
  std::vector<Segment> buses;
  std::vector<Vec> junctions;
  std::vector<Vec> noConnects;
  std::vector<BusEntry> busEntries;
  std::vector<Label> labels;
  std::vector<Text> texts;
  std::vector<TextBox> textBoxes;
  std::vector<Shape> shapes;
  std::vector<Image> images;
  std::vector<Sheet> sheets;
  // KiCad 6 keeps every sheet's page number and every symbol's references in the root file.
  std::vector<SheetInstance> sheetInstances;
  std::vector<SymbolInstance> symbolInstances;
};

// Reads a whole file. Throws SyntaxFault for text that is not a KiCad 6 or later schematic
// (an older format, a malformed list, a number that is not one). `warnings` receives notes that
// do not stop the reading.
SheetFile ReadSheetFile(std::string_view text, std::string path,
                        std::vector<SyntaxFault>& warnings);

}  // namespace kalmor::kicad::detail
