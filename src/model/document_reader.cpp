#include "model/document_reader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

#include "model/design_data.h"
#include "model/document_text.h"
#include "model/hierarchy_links.h"
#include "model/record_fields.h"
#include "model/tape_reader.h"
#include "model/text_reader.h"

namespace kalmor::model::detail {
namespace {

constexpr int32_t kFormatVersion = 1;
constexpr std::size_t kMaxFaceBytes = sizeof(LogFont::lfFaceName) - 1;
constexpr const char* kMissing = "required, but missing";
constexpr int kMostVectorDepth = 32;

// The box around some geometry, grown point by point.
class Extent {
 public:
  void Add(int64_t x, int64_t y) {
    if (!any_) {
      left_ = right_ = x;
      top_ = bottom_ = y;
      any_ = true;
      return;
    }
    left_ = std::min(left_, x);
    right_ = std::max(right_, x);
    top_ = std::min(top_, y);
    bottom_ = std::max(bottom_, y);
  }
  void Add(CPoint point) { Add(point.x, point.y); }
  void Add(const CRect& rect) {
    Add(rect.left, rect.top);
    Add(rect.right, rect.bottom);
  }
  void Add(const Extent& other, CPoint offset) {
    if (other.any_) {
      Add(other.left_ + offset.x, other.top_ + offset.y);
      Add(other.right_ + offset.x, other.bottom_ + offset.y);
    }
  }
  bool Within(int64_t limit) const {
    return std::max({-left_, -top_, right_, bottom_}) <= limit &&
           std::min({left_, top_, right_, bottom_}) >= -limit;
  }
  // An empty extent is the empty box at the origin.
  CRect rect() const { return {Clamp(left_), Clamp(top_), Clamp(right_), Clamp(bottom_)}; }

 private:
  static int32_t Clamp(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
  }
  bool any_ = false;
  int64_t left_ = 0, top_ = 0, right_ = 0, bottom_ = 0;
};

// The fields a graphic may have; each kind allows some and needs some of them.
enum GraphicField : uint32_t {
  kStartField = 1 << 0,
  kEndField = 1 << 1,
  kRectField = 1 << 2,
  kPointsField = 1 << 3,
  kWidthField = 1 << 4,
  kTextField = 1 << 5,
  kFontField = 1 << 6,
  kRotationField = 1 << 7,
  kLocationField = 1 << 8,
  kMembersField = 1 << 9,
};

enum class GraphicKind {
  kLine,
  kBox,
  kArc,
  kEllipse,
  kPolygon,
  kPolyline,
  kText,
  kBitMap,
  kVector,
  kCode
};

struct GraphicKindInfo {
  std::string_view name;
  GraphicKind kind;
  int32_t pageType;  // the code of the same graphic placed on a page
  uint32_t allowed;
  uint32_t required;
};
constexpr GraphicKindInfo kGraphicKinds[] = {
    {"line", GraphicKind::kLine, dbo_type::kGraphicLineInst, kStartField | kEndField | kWidthField,
     kStartField | kEndField},
    {"box", GraphicKind::kBox, dbo_type::kGraphicBoxInst, kRectField | kWidthField, kRectField},
    {"arc", GraphicKind::kArc, dbo_type::kGraphicArcInst,
     kRectField | kStartField | kEndField | kWidthField, kRectField | kStartField | kEndField},
    {"ellipse", GraphicKind::kEllipse, dbo_type::kGraphicEllipseInst, kRectField | kWidthField,
     kRectField},
    {"polygon", GraphicKind::kPolygon, dbo_type::kGraphicPolygonInst, kPointsField | kWidthField,
     kPointsField},
    {"polyline", GraphicKind::kPolyline, dbo_type::kGraphicPolylineInst, kPointsField | kWidthField,
     kPointsField},
    {"text", GraphicKind::kText, dbo_type::kGraphicCommentTextInst,
     kRectField | kTextField | kFontField | kRotationField, kRectField | kTextField},
    {"bitmap", GraphicKind::kBitMap, dbo_type::kGraphicBitMapInst, kRectField, kRectField},
    {"vector", GraphicKind::kVector, 0, kLocationField | kMembersField,
     kLocationField | kMembersField},
};

// A graphic as read, before it becomes a symbol vector or a page graphic.
struct GraphicFields {
  std::string typeName;
  std::optional<int32_t> typeCode;
  uint32_t given = 0;
  CPoint start, end, location;
  CRect rect;
  List<CPoint> points;
  LineWidthT width = 0;
  Text text;
  const LogFont* font = nullptr;
  RotationT rotation = 0;
  GraphicList members;
  Extent membersExtent;
};

struct Graphic {
  DboBaseObject* object = nullptr;  // null for a bare code on a page
  int32_t type = 0;                 // the page code, or the bare code
  RotationT rotation = 0;
  Extent extent;
};

// Reads a whole design document through `In`, a cursor over the parsed text that both readers
// offer: the careful one (every complaint exact, with its place) and the fast one (which gives up
// on anything unusual). Every record's fields are a table of name, reading function and whether
// the record needs it; every name and text goes through DesignText.
template <typename In>
class DocumentReader {
 public:
  DocumentReader(In& in, DesignData& data) : in_(in), data_(data) {
    defaultFont_ = Intern(LogFont{});
  }

  void Read() {
    ReadDocument();
    LinkHierarchy(data_, rootName_, blocks_, occurrenceKeys_);
    data_.propsMeasured = !In::kComplains;
  }

 private:
  using Self = DocumentReader;

  // ---------------------------------------------------------------------------------------
  // Values shared by several objects

  // The string at the cursor as a name, or as a text the drawing shows.
  Text NameText() { return DesignText(in_.StringView(), TextRole::kName); }
  Text ShownText() { return DesignText(in_.StringView(), TextRole::kShown); }
  std::string Name() { return DesignName(in_.StringView()); }

  const LogFont* Intern(const LogFont& font) {
    std::string key(reinterpret_cast<const char*>(&font), sizeof font);
    const auto [found, added] = fontIndex_.try_emplace(std::move(key), nullptr);
    if (added) {
      found->second = New<LogFont>(font);
    }
    return found->second;
  }

  const LogFont* ReadFont() {
    static constexpr Field<Self, LogFont> kFields[] = {
        {"height", [](Self& r, LogFont& f) { f.lfHeight = r.in_.Int32(); }},
        {"width", [](Self& r, LogFont& f) { f.lfWidth = r.in_.Int32(); }},
        {"escapement", [](Self& r, LogFont& f) { f.lfEscapement = r.in_.Int32(); }},
        {"orientation", [](Self& r, LogFont& f) { f.lfOrientation = r.in_.Int32(); }},
        {"weight", [](Self& r, LogFont& f) { f.lfWeight = r.in_.Int32(); }},
        {"italic", [](Self& r, LogFont& f) { f.lfItalic = r.in_.Boolean(); }},
        {"underline", [](Self& r, LogFont& f) { f.lfUnderline = r.in_.Boolean(); }},
        {"strike_out", [](Self& r, LogFont& f) { f.lfStrikeOut = r.in_.Boolean(); }},
        {"charset", [](Self& r, LogFont& f) { f.lfCharSet = r.in_.Byte(); }},
        {"out_precision", [](Self& r, LogFont& f) { f.lfOutPrecision = r.in_.Byte(); }},
        {"clip_precision", [](Self& r, LogFont& f) { f.lfClipPrecision = r.in_.Byte(); }},
        {"quality", [](Self& r, LogFont& f) { f.lfQuality = r.in_.Byte(); }},
        {"pitch_and_family", [](Self& r, LogFont& f) { f.lfPitchAndFamily = r.in_.Byte(); }},
        {"face", [](Self& r, LogFont& f) { r.ReadFace(f); }},
    };
    LogFont font;
    in_.Record(Fields<Self, LogFont>(kFields), *this, font);
    return Intern(font);
  }

  void ReadFace(LogFont& font) {
    const std::string face = Name();
    if (face.size() > kMaxFaceBytes || face.find('\0') != std::string::npos) {
      in_.Fail("expected a face name of at most 31 bytes, got " + std::to_string(face.size()) +
               " bytes");
    }
    font.SetFaceName(face.c_str());
  }

  // An integer code, or a word of `words` that stands for one.
  using Word = std::pair<std::string_view, int32_t>;
  int32_t ReadCodeOrWord(std::span<const Word> words, std::string_view expected,
                         std::string_view unknown, std::string_view choices) {
    if (in_.PeekKind() != Token::Kind::kString) {
      if (!in_.PeekInteger()) {
        in_.ExpectedInteger(expected);
      }
      return in_.Int32();
    }
    const std::string word = Name();
    for (const auto& [name, code] : words) {
      if (word == name) {
        return code;
      }
    }
    in_.Fail(std::string(unknown) + " " + Quoted(word) + " (expected " + std::string(choices) +
             ")");
  }

  DisplayTypeT ReadDisplayType() {
    static constexpr Word kWords[] = {
        {"value", 1}, {"name_and_value", 2}, {"name", 3}, {"name_and_value_if_set", 4}};
    return ReadCodeOrWord(kWords, "a display type (an integer, or a word such as \"value\")",
                          "unknown display type",
                          "value, name_and_value, name, name_and_value_if_set or an integer");
  }

  void ReadProperty(DisplayProp& prop) {
    static constexpr Field<Self, DisplayProp> kFields[] = {
        {"name", [](Self& r, DisplayProp& p) { p.name = r.ShownText(); }, kRequired},
        {"value", [](Self& r, DisplayProp& p) { p.value = r.ShownText(); }},
        {"display", [](Self& r, DisplayProp& p) { p.display = r.ReadDisplayType(); }},
        {"location", [](Self& r, DisplayProp& p) { p.location = r.in_.Point(); }},
        {"rotation", [](Self& r, DisplayProp& p) { p.rotation = r.in_.Int32(); }},
        {"font", [](Self& r, DisplayProp& p) { p.font = r.ReadFont(); }},
        {"extent", [](Self& r, DisplayProp& p) { p.extent = r.in_.Rect(); }},
        {"values", [](Self& r, DisplayProp& p) { r.ReadValues(p); }},
    };
    prop.font = defaultFont_;
    in_.Record(Fields<Self, DisplayProp>(kFields), *this, prop);
    // The fast reader measures each text while it is at hand, rather than in a walk over the
    // whole design once it is read; the careful one leaves them to that walk, after it has
    // checked everything.
    if constexpr (!In::kComplains) {
      if (!prop.extent) {
        prop.extent = extents_.Of(prop);
      }
    }
  }

  void ReadValues(DisplayProp& prop) {
    in_.Map([&](std::string_view path) {
      prop.values.push_back({DesignText(path, TextRole::kName), 0, ShownText()});
      occurrenceKeys_ = true;
    });
  }

  void ReadProperties(DisplayPropList& props) {
    in_.ListInto(props, [&](DisplayProp& prop) { ReadProperty(prop); });
  }

  // ---------------------------------------------------------------------------------------
  // Graphics and symbols

  // "type", then the graphic fields in the order of their bits.
  static Fields<Self, GraphicFields> GraphicFieldTable() {
    static constexpr Field<Self, GraphicFields> kFields[] = {
        {"type", [](Self& r, GraphicFields& g) { r.ReadGraphicType(g); }, kRequired},
        {"start", [](Self& r, GraphicFields& g) { g.start = r.Given(g, kStartField).Point(); }},
        {"end", [](Self& r, GraphicFields& g) { g.end = r.Given(g, kEndField).Point(); }},
        {"rect", [](Self& r, GraphicFields& g) { g.rect = r.Given(g, kRectField).Rect(); }},
        {"points", [](Self& r, GraphicFields& g) { r.Given(g, kPointsField).Points(g.points); }},
        {"width", [](Self& r, GraphicFields& g) { g.width = r.Given(g, kWidthField).Int32(); }},
        {"text",
         [](Self& r, GraphicFields& g) {
           r.Given(g, kTextField);
           g.text = r.ShownText();
         }},
        {"font",
         [](Self& r, GraphicFields& g) {
           r.Given(g, kFontField);
           g.font = r.ReadFont();
         }},
        {"rotation",
         [](Self& r, GraphicFields& g) { g.rotation = r.Given(g, kRotationField).Int32(); }},
        {"location",
         [](Self& r, GraphicFields& g) { g.location = r.Given(g, kLocationField).Point(); }},
        {"members",
         [](Self& r, GraphicFields& g) {
           r.Given(g, kMembersField);
           r.ReadMembers(g);
         }},
    };
    return kFields;
  }

  // Marks `field` as given and returns the cursor to read it with.
  In& Given(GraphicFields& fields, GraphicField field) {
    fields.given |= field;
    return in_;
  }

  void ReadGraphicType(GraphicFields& fields) {
    if (in_.PeekKind() == Token::Kind::kString) {
      fields.typeName = Name();
    } else if (in_.PeekInteger()) {
      fields.typeCode = in_.Int32();
    } else {
      in_.ExpectedInteger("a graphic type (a word such as \"line\", or a type code)");
    }
  }

  void ReadMembers(GraphicFields& fields) {
    // Each level is read (and later freed) by a call of its own; real symbols nest a level or
    // two.
    if (vectorDepth_ == kMostVectorDepth) {
      in_.Fail("vectors nested more than " + std::to_string(kMostVectorDepth) + " deep");
    }
    ++vectorDepth_;
    in_.ListInto(fields.members, [&](DboBaseObject*& member) {
      const Graphic graphic = ReadGraphic(true);
      fields.membersExtent.Add(graphic.extent, CPoint{});
      member = graphic.object;
    });
    --vectorDepth_;
  }

  Graphic ReadGraphic(bool inSymbol) {
    GraphicFields fields;
    in_.Record(GraphicFieldTable(), *this, fields);
    return MakeGraphic(fields, inSymbol);
  }

  Graphic MakeGraphic(GraphicFields& fields, bool inSymbol) {
    Graphic graphic;
    if (fields.typeCode) {
      if (fields.given != 0) {
        in_.FailAt(FieldName(fields.given & -fields.given),
                   "a graphic given by its type code has no other fields");
      }
      graphic.type = *fields.typeCode;
      if (inSymbol) {
        auto* raw = New<RawObject>();
        raw->type = *fields.typeCode;
        graphic.object = raw;
      }
      return graphic;
    }
    const auto* info = std::find_if(std::begin(kGraphicKinds), std::end(kGraphicKinds),
                                    [&](const auto& kind) { return kind.name == fields.typeName; });
    if (info == std::end(kGraphicKinds)) {
      in_.FailAt("type", "unknown graphic type " + Quoted(fields.typeName) +
                             " (expected line, box, arc, ellipse, polygon, polyline, text, "
                             "bitmap, vector or a type code)");
    }
    if (info->kind == GraphicKind::kVector && !inSymbol) {
      in_.FailAt("type", "a vector stands only among a symbol's vectors");
    }
    if (const uint32_t extra = fields.given & ~info->allowed; extra != 0) {
      in_.FailAt(FieldName(extra & -extra),
                 "not a field of a " + std::string(info->name) + " graphic");
    }
    if (const uint32_t missing = info->required & ~fields.given; missing != 0) {
      in_.FailAt(FieldName(missing & -missing), kMissing);
    }
    graphic.type = inSymbol ? 0 : info->pageType;
    switch (info->kind) {
      case GraphicKind::kLine: {
        auto* line = New<LineShape>();
        line->start = fields.start;
        line->end = fields.end;
        line->width = fields.width;
        graphic.extent.Add(fields.start);
        graphic.extent.Add(fields.end);
        graphic.object = line;
        break;
      }
      case GraphicKind::kBox: {
        auto* box = New<BoxShape>();
        box->rect = fields.rect;
        box->width = fields.width;
        graphic.object = box;
        break;
      }
      case GraphicKind::kArc: {
        auto* arc = New<ArcShape>();
        arc->rect = fields.rect;
        arc->start = fields.start;
        arc->end = fields.end;
        arc->width = fields.width;
        graphic.object = arc;
        break;
      }
      case GraphicKind::kEllipse: {
        auto* ellipse = New<EllipseShape>();
        ellipse->rect = fields.rect;
        ellipse->width = fields.width;
        graphic.object = ellipse;
        break;
      }
      case GraphicKind::kPolygon:
        graphic.object = MakePointList<PolygonShape>(fields, graphic.extent);
        break;
      case GraphicKind::kPolyline:
        graphic.object = MakePointList<PolylineShape>(fields, graphic.extent);
        break;
      case GraphicKind::kText: {
        auto* text = New<TextShape>();
        text->rect = fields.rect;
        text->text = fields.text;
        text->font = fields.font != nullptr ? fields.font : defaultFont_;
        text->rotation = fields.rotation;
        graphic.rotation = fields.rotation;
        graphic.object = text;
        break;
      }
      case GraphicKind::kBitMap: {
        auto* bitmap = New<BitMapShape>();
        bitmap->rect = fields.rect;
        graphic.object = bitmap;
        break;
      }
      case GraphicKind::kVector: {
        auto* vector = New<VectorShape>();
        vector->location = fields.location;
        vector->members = std::move(fields.members);
        graphic.extent.Add(fields.membersExtent, fields.location);
        graphic.object = vector;
        break;
      }
      case GraphicKind::kCode:
        break;
    }
    if ((fields.given & kRectField) != 0) {
      graphic.extent.Add(fields.rect);
    }
    return graphic;
  }

  template <typename Shape>
  static DboBaseObject* MakePointList(GraphicFields& fields, Extent& extent) {
    auto* shape = New<Shape>();
    for (const CPoint& point : fields.points) {
      extent.Add(point);
    }
    shape->points = std::move(fields.points);
    shape->width = fields.width;
    return shape;
  }

  // The name of a graphic field by its bit: the fields follow "type" in bit order.
  static std::string_view FieldName(uint32_t bit) {
    return GraphicFieldTable()[1 + static_cast<std::size_t>(std::countr_zero(bit))].name;
  }

  // Reads a symbol object into `symbol`.
  void ReadSymbol(Symbol& symbol) {
    struct Read {
      Symbol& symbol;
      std::optional<CRect> bbox;
      Extent extent;
    };
    static constexpr Field<Self, Read> kFields[] = {
        {"bbox", [](Self& r, Read& s) { s.bbox = r.in_.Rect(); }},
        {"vectors", [](Self& r, Read& s) { r.ReadVectors(s.symbol, s.extent); }},
    };
    Read read{symbol, std::nullopt, Extent{}};
    in_.Record(Fields<Self, Read>(kFields), *this, read);
    if (read.bbox) {
      symbol.bbox = *read.bbox;
    } else if (!read.extent.Within(kCoordinateLimit)) {
      // Locations of nested vectors add up; the box around them must still be a place.
      in_.Fail("the vectors reach beyond the coordinate range -" +
               std::to_string(kCoordinateLimit) + " to " + std::to_string(kCoordinateLimit) +
               "; give the symbol a bbox");
    } else {
      symbol.bbox = read.extent.rect();
    }
  }

  static Symbol& NewSymbol() { return *New<Symbol>(); }

  void ReadVectors(Symbol& symbol, Extent& extent) {
    in_.ListInto(symbol.vectors, [&](DboBaseObject*& slot) {
      const Graphic vector = ReadGraphic(true);
      extent.Add(vector.extent, CPoint{});
      slot = vector.object;
    });
  }

  // The careful reader has read /symbols before any use. The fast one reads the members of the
  // document in their order, so a name may come before the symbol it names: it stands for the
  // symbol, to be read into it when /symbols comes.
  const Symbol* ReadSymbolRef() {
    if (in_.PeekKind() == Token::Kind::kString) {
      const std::string name = Name();
      const auto found = symbolsByName_.find(name);
      if (found != symbolsByName_.end()) {
        return found->second.symbol;
      }
      if constexpr (!In::kComplains) {
        if (!symbolsRead_) {
          Symbol& pending = NewSymbol();
          symbolsByName_.emplace(name, NamedSymbol{&pending, true});
          ++pendingSymbols_;
          return &pending;
        }
      }
      in_.Fail("no symbol named " + Quoted(name) + " in /symbols");
    }
    if (in_.PeekKind() != Token::Kind::kObject) {
      in_.Expected("a symbol name or a symbol object");
    }
    Symbol& symbol = NewSymbol();
    ReadSymbol(symbol);
    return &symbol;
  }

  void ReadSymbols() {
    in_.Map([&](std::string_view name) {
      if (in_.PeekKind() != Token::Kind::kObject) {
        in_.Expected("a symbol object");
      }
      auto [named, added] = symbolsByName_.try_emplace(DesignName(name), NamedSymbol{});
      if (added) {
        named->second.symbol = &NewSymbol();
      } else if (named->second.pending) {
        named->second.pending = false;
        --pendingSymbols_;
      } else {
        in_.Fail("symbol name given twice");
      }
      ReadSymbol(*named->second.symbol);
    });
    symbolsRead_ = true;
  }

  // ---------------------------------------------------------------------------------------
  // Page objects

  template <typename Item>
  void ReadInstances(List<Item>& items) {
    static constexpr Field<Self, Item> kFields[] = {
        {"symbol", [](Self& r, Item& i) { i.symbol = r.ReadSymbolRef(); }, kRequired},
        {"location", [](Self& r, Item& i) { i.location = r.in_.Point(); }},
        {"rotation", [](Self& r, Item& i) { i.rotation = r.in_.Int32(); }},
        {"mirror", [](Self& r, Item& i) { i.mirror = r.in_.Boolean(); }},
        {"properties", [](Self& r, Item& i) { r.ReadProperties(i.properties); }},
    };
    in_.ListInto(items, [&](Item& item) { in_.Record(Fields<Self, Item>(kFields), *this, item); });
  }

  int32_t ReadPartKind() {
    static constexpr Word kWords[] = {{"part", dbo_type::kPartInst},
                                      {"block", dbo_type::kBlockInst}};
    return ReadCodeOrWord(kWords, "a part kind (\"part\", \"block\" or a type code)",
                          "unknown part kind", "part, block or a type code");
  }

  // A pin as read, with which of its occurrence texts gave a name and a number of their own.
  struct PinRead {
    Pin& pin;
    bool hasId = false;
    struct Given {
      bool name = false;
      bool number = false;
    };
    std::vector<Given> given;
  };

  void ReadPin(Pin& pin) {
    static constexpr Field<Self, PinRead> kFields[] = {
        {"id",
         [](Self& r, PinRead& p) {
           p.pin.id = r.NameText();
           p.hasId = true;
         }},
        {"name", [](Self& r, PinRead& p) { p.pin.name = r.ShownText(); }},
        {"number", [](Self& r, PinRead& p) { p.pin.number = r.ShownText(); }},
        {"start", [](Self& r, PinRead& p) { p.pin.start = r.in_.Point(); }, kRequired},
        {"end", [](Self& r, PinRead& p) { p.pin.end = r.in_.Point(); }, kRequired},
        {"visible", [](Self& r, PinRead& p) { p.pin.visible = r.in_.Boolean(); }},
        {"no_connect", [](Self& r, PinRead& p) { p.pin.noConnect = r.in_.Boolean(); }},
        {"dot", [](Self& r, PinRead& p) { p.pin.dot = r.in_.Boolean(); }},
        {"clock", [](Self& r, PinRead& p) { p.pin.clock = r.in_.Boolean(); }},
        {"block_kind", [](Self& r, PinRead& p) { p.pin.blockKind = r.in_.Int32(); }},
        {"properties", [](Self& r, PinRead& p) { r.ReadProperties(p.pin.properties); }},
        {"occurrences", [](Self& r, PinRead& p) { r.ReadPinOccurrences(p); }},
    };
    PinRead read{pin, false, {}};
    in_.Record(Fields<Self, PinRead>(kFields), *this, read);
    if (!read.hasId) {
      pin.id = pin.number;
    }
    // What an occurrence leaves out is the pin's own.
    for (std::size_t i = 0; i < read.given.size(); ++i) {
      if (!read.given[i].name) {
        pin.occurrences[i].name = pin.name;
      }
      if (!read.given[i].number) {
        pin.occurrences[i].number = pin.number;
      }
    }
  }

  void ReadPinOccurrences(PinRead& read) {
    struct Own {
      OccurrencePinText& text;
      typename PinRead::Given& given;
    };
    static constexpr Field<Self, Own> kFields[] = {
        {"name",
         [](Self& r, Own& o) {
           o.text.name = r.ShownText();
           o.given.name = true;
         }},
        {"number",
         [](Self& r, Own& o) {
           o.text.number = r.ShownText();
           o.given.number = true;
         }},
    };
    in_.Map([&](std::string_view path) {
      OccurrencePinText& text = read.pin.occurrences.emplace_back();
      occurrenceKeys_ = true;
      text.path = DesignText(path, TextRole::kName);
      Own own{text, read.given.emplace_back()};
      in_.Record(Fields<Self, Own>(kFields), *this, own);
    });
  }

  // Part ids of the schematic being read. The careful reader refuses a repeated id where it
  // stands, naming its first use (the ids are views of its tape, which lasts as long as the
  // reading); the fast one only needs to know whether any id repeats, which it learns at the end
  // of the schematic by placing the ids' hashes in an open-addressed table, comparing the parts'
  // own ids where two hashes meet (no map of ids to build while reading).
  struct PartIds {
    struct Hashed {
      std::size_t hash;
      uint32_t page;
      uint32_t part;
    };
    std::unordered_map<std::string_view, std::pair<std::size_t, std::size_t>> firstUse;
    std::vector<Hashed> hashed;

    bool AnyTwice(const Schematic& schematic) const {
      const auto id = [&](const Hashed& entry) {
        return schematic.pages[entry.page].parts[entry.part].id.view();
      };
      const std::size_t mask = std::bit_ceil(2 * hashed.size() + 1) - 1;
      std::vector<uint32_t> slots(mask + 1, 0);  // an entry's index + 1; 0 when empty
      for (std::size_t i = 0; i < hashed.size(); ++i) {
        const Hashed& entry = hashed[i];
        std::size_t slot = entry.hash & mask;
        for (; slots[slot] != 0; slot = (slot + 1) & mask) {
          const Hashed& other = hashed[slots[slot] - 1];
          if (other.hash == entry.hash && id(other) == id(entry)) {
            return true;
          }
        }
        slots[slot] = static_cast<uint32_t>(i + 1);
      }
      return false;
    }
  };

  struct PartRead {
    PartInst& part;
    std::string_view id;
    bool hasSchematic = false;
    std::optional<CRect> bbox;
  };

  void ReadPart(PartInst& part, PartIds& ids, std::size_t schematic, std::size_t page,
                std::size_t index) {
    static constexpr Field<Self, PartRead> kFields[] = {
        {"id", [](Self& r, PartRead& p) { r.ReadPartId(p); }, kRequired},
        {"symbol", [](Self& r, PartRead& p) { p.part.symbol = r.ReadSymbolRef(); }, kRequired},
        {"location", [](Self& r, PartRead& p) { p.part.location = r.in_.Point(); }},
        {"rotation", [](Self& r, PartRead& p) { p.part.rotation = r.in_.Int32(); }},
        {"mirror", [](Self& r, PartRead& p) { p.part.mirror = r.in_.Boolean(); }},
        {"properties", [](Self& r, PartRead& p) { r.ReadProperties(p.part.properties); }},
        {"kind", [](Self& r, PartRead& p) { p.part.kind = r.ReadPartKind(); }},
        {"bbox", [](Self& r, PartRead& p) { p.bbox = r.in_.Rect(); }},
        {"schematic",
         [](Self& r, PartRead& p) {
           p.part.schematicName = r.NameText();
           p.hasSchematic = true;
         }},
        {"pin_names_visible",
         [](Self& r, PartRead& p) { p.part.pinNamesVisible = r.in_.Boolean(); }},
        {"pin_numbers_visible",
         [](Self& r, PartRead& p) { p.part.pinNumbersVisible = r.in_.Boolean(); }},
        {"pins",
         [](Self& r, PartRead& p) {
           r.in_.ListInto(p.part.pins, [&](Pin& pin) { r.ReadPin(pin); });
         }},
    };
    PartRead read{part, {}, false, std::nullopt};
    in_.Record(Fields<Self, PartRead>(kFields), *this, read);
    if (read.bbox) {
      auto* body = New<DefiningPart>();
      body->own = read.bbox;
      body->symbol = part.symbol;
      part.body = body;
    } else {
      part.body = &part.symbol->asPart;
    }
    if (read.hasSchematic) {
      if (part.kind != dbo_type::kBlockInst) {
        in_.FailAt("schematic", "only a part of kind \"block\" instantiates a schematic");
      }
      blocks_.push_back({schematic, page, index});
    }
    if constexpr (!In::kComplains) {
      ids.hashed.push_back({std::hash<std::string_view>{}(read.id), static_cast<uint32_t>(page),
                            static_cast<uint32_t>(index)});
      return;
    }
    const auto [first, added] = ids.firstUse.try_emplace(read.id, page, index);
    if (!added) {
      in_.FailAt("id", "part id " + Quoted(part.id) +
                           " is used twice in this schematic (first at " + "/schematics/" +
                           std::to_string(schematic) + "/pages/" +
                           std::to_string(first->second.first) + "/parts/" +
                           std::to_string(first->second.second) + ")");
    }
  }

  void ReadPartId(PartRead& read) {
    read.id = in_.StringView();
    read.part.id = DesignText(read.id, TextRole::kName);
    if (read.id.empty() || read.id.find('/') != std::string_view::npos) {
      in_.Fail("expected a part id that is not empty and holds no \"/\", got " +
               Quoted(read.part.id));
    }
  }

  void ReadAlias(Alias& alias) {
    static constexpr Field<Self, Alias> kFields[] = {
        {"name", [](Self& r, Alias& a) { a.name = r.ShownText(); }, kRequired},
        {"location", [](Self& r, Alias& a) { a.location = r.in_.Point(); }, kRequired},
        {"rotation", [](Self& r, Alias& a) { a.rotation = r.in_.Int32(); }},
        {"font", [](Self& r, Alias& a) { a.font = r.ReadFont(); }},
    };
    alias.font = defaultFont_;
    in_.Record(Fields<Self, Alias>(kFields), *this, alias);
  }

  void ReadWire(Wire& wire) {
    static constexpr Field<Self, Wire> kFields[] = {
        {"start", [](Self& r, Wire& w) { w.start = r.in_.Point(); }, kRequired},
        {"end", [](Self& r, Wire& w) { w.end = r.in_.Point(); }, kRequired},
        {"bus", [](Self& r, Wire& w) { w.bus = r.in_.Boolean(); }},
        {"properties", [](Self& r, Wire& w) { r.ReadProperties(w.properties); }},
        {"junctions", [](Self& r, Wire& w) { r.in_.Points(w.junctions); }},
        {"aliases",
         [](Self& r, Wire& w) {
           r.in_.ListInto(w.aliases, [&](Alias& alias) { r.ReadAlias(alias); });
         }},
    };
    in_.Record(Fields<Self, Wire>(kFields), *this, wire);
  }

  void ReadBusEntry(BusEntry& entry) {
    static constexpr Field<Self, BusEntry> kFields[] = {
        {"entry", [](Self& r, BusEntry& e) { e.entry = r.in_.Point(); }, kRequired},
        {"end", [](Self& r, BusEntry& e) { e.end = r.in_.Point(); }, kRequired},
    };
    in_.Record(Fields<Self, BusEntry>(kFields), *this, entry);
  }

  void ReadBorder(Border& border) {
    // Zone labels run out of digits after 99; each zone is drawn, so a count is kept small.
    static constexpr int32_t kMostZones = 99;
    static constexpr const char* kCount = "a zone count from 1 to 99";
    static constexpr Field<Self, Border> kFields[] = {
        {"visible", [](Self& r, Border& b) { b.visible = r.in_.Boolean(); }},
        {"line_width", [](Self& r, Border& b) { b.lineWidth = r.in_.Int32(); }},
        {"horizontal_label_width",
         [](Self& r, Border& b) { b.horizontalLabelWidth = r.in_.Int32(); }},
        {"vertical_label_width", [](Self& r, Border& b) { b.verticalLabelWidth = r.in_.Int32(); }},
        {"horizontal_count",
         [](Self& r, Border& b) { b.horizontalCount = r.in_.Int32Within(1, kMostZones, kCount); }},
        {"vertical_count",
         [](Self& r, Border& b) { b.verticalCount = r.in_.Int32Within(1, kMostZones, kCount); }},
        {"horizontal_letters", [](Self& r, Border& b) { b.horizontalLetters = r.in_.Boolean(); }},
        {"vertical_letters", [](Self& r, Border& b) { b.verticalLetters = r.in_.Boolean(); }},
        {"horizontal_ascending",
         [](Self& r, Border& b) { b.horizontalAscending = r.in_.Boolean(); }},
        {"vertical_ascending", [](Self& r, Border& b) { b.verticalAscending = r.in_.Boolean(); }},
        {"horizontal_separator_width",
         [](Self& r, Border& b) { b.horizontalSeparatorWidth = r.in_.Int32(); }},
        {"vertical_separator_width",
         [](Self& r, Border& b) { b.verticalSeparatorWidth = r.in_.Int32(); }},
    };
    in_.Record(Fields<Self, Border>(kFields), *this, border);
  }

  void ReadGraphics(List<CommentGraphic>& graphics) {
    in_.ListInto(graphics, [&](CommentGraphic& graphic) {
      Graphic read = ReadGraphic(false);
      graphic.type = read.type;
      graphic.shape = read.object;
      graphic.rotation = read.rotation;
      graphic.box = read.extent.rect();
    });
  }

  // The page is mapped in whole tenths of its pin-to-pin value; in those units both sizes are
  // places on the page like any other.
  void CheckPageSize(const Page& page, std::string_view key, int32_t size) {
    const double tenths = std::trunc(size / (page.pinToPin * 0.1));
    if (tenths < -kCoordinateLimit || tenths > kCoordinateLimit) {
      char text[40];
      std::snprintf(text, sizeof text, "%.0f", tenths);
      in_.FailAt(key, "the page " + std::string(key) + " " + std::to_string(size) + " is " + text +
                          " tenths of pin_to_pin " + std::to_string(page.pinToPin) + ", beyond " +
                          std::to_string(kCoordinateLimit));
    }
  }

  struct PageRead {
    Page& page;
    PartIds& ids;
    std::size_t schematic;
    std::size_t index;
  };

  void ReadPage(Page& page, PartIds& ids, std::size_t schematic, std::size_t index) {
    static constexpr Field<Self, PageRead> kFields[] = {
        {"name", [](Self& r, PageRead& p) { p.page.name = r.NameText(); }, kRequired},
        {"pin_to_pin",
         [](Self& r, PageRead& p) {
           p.page.pinToPin = r.in_.Int32AtLeast(1, "a pin-to-pin value greater than 0");
         }},
        {"width", [](Self& r, PageRead& p) { p.page.width = r.in_.Int32(); }},
        {"height", [](Self& r, PageRead& p) { p.page.height = r.in_.Int32(); }},
        {"pin_to_pin_scale_factor",
         [](Self& r, PageRead& p) {
           p.page.pinToPinScaleFactor = r.in_.NumberWithin(
               -kScaleFactorLimit, kScaleFactorLimit, "a pin-to-pin scale factor from -32 to 32");
         }},
        {"border", [](Self& r, PageRead& p) { r.ReadBorder(p.page.border); }},
        {"title_blocks", [](Self& r, PageRead& p) { r.ReadInstances(p.page.titleBlocks); }},
        {"parts", [](Self& r, PageRead& p) { r.ReadParts(p); }},
        {"wires",
         [](Self& r, PageRead& p) {
           r.in_.ListInto(p.page.wires, [&](Wire& wire) { r.ReadWire(wire); });
         }},
        {"globals", [](Self& r, PageRead& p) { r.ReadInstances(p.page.globals); }},
        {"ports", [](Self& r, PageRead& p) { r.ReadInstances(p.page.ports); }},
        {"off_page_connectors",
         [](Self& r, PageRead& p) { r.ReadInstances(p.page.offPageConnectors); }},
        {"bus_entries",
         [](Self& r, PageRead& p) {
           r.in_.ListInto(p.page.busEntries, [&](BusEntry& entry) { r.ReadBusEntry(entry); });
         }},
        {"graphics", [](Self& r, PageRead& p) { r.ReadGraphics(p.page.graphics); }},
    };
    PageRead read{page, ids, schematic, index};
    in_.Record(Fields<Self, PageRead>(kFields), *this, read);
    CheckPageSize(page, "width", page.width);
    CheckPageSize(page, "height", page.height);
  }

  void ReadParts(PageRead& read) {
    std::size_t index = 0;
    in_.ListInto(read.page.parts, [&](PartInst& part) {
      ReadPart(part, read.ids, read.schematic, read.index, index++);
    });
  }

  struct SchematicRead {
    Schematic& schematic;
    std::size_t index;
    PartIds ids;
  };

  void ReadSchematic(Schematic& schematic, std::size_t index) {
    static constexpr Field<Self, SchematicRead> kFields[] = {
        {"name", [](Self& r, SchematicRead& s) { s.schematic.name = r.NameText(); }, kRequired},
        {"pages", [](Self& r, SchematicRead& s) { r.ReadPages(s); }, kRequired},
    };
    SchematicRead read{schematic, index, {}};
    in_.Record(Fields<Self, SchematicRead>(kFields), *this, read);
    if constexpr (!In::kComplains) {
      if (read.ids.AnyTwice(schematic)) {
        in_.Fail("a part id is used twice in this schematic");
      }
    }
  }

  void ReadPages(SchematicRead& read) {
    std::unordered_map<std::string, std::size_t> pageNames;
    std::size_t next = 0;
    in_.ListInto(read.schematic.pages, [&](Page& page) {
      const std::size_t index = next++;
      ReadPage(page, read.ids, read.index, index);
      if (const auto [first, added] = pageNames.emplace(page.name.str(), index); !added) {
        in_.FailAt("name", "page name " + Quoted(page.name) +
                               " is used twice in this schematic (first at /schematics/" +
                               std::to_string(read.index) + "/pages/" +
                               std::to_string(first->second) + ")");
      }
    });
  }

  // ---------------------------------------------------------------------------------------
  // The document

  // The version says how to read everything else, and symbols are named before they are used
  // wherever they stand in the text: the careful reader reads both first, so that its complaints
  // come in that order. The fast one, which never complains, reads the members in their order and
  // checks afterwards that the version was given and every symbol named was found.
  void ReadDocument() {
    static constexpr Field<Self, DesignData> kFields[] = {
        {"kalmor_design", [](Self& r, DesignData&) { r.ReadInTurn([&] { r.ReadVersion(); }); }},
        {"symbols", [](Self& r, DesignData&) { r.ReadInTurn([&] { r.ReadSymbols(); }); }},
        {"name", [](Self& r, DesignData& d) { d.name = r.Name(); }, kRequired},
        {"root", [](Self& r, DesignData&) { r.rootName_ = r.Name(); }},
        {"schematics", [](Self& r, DesignData&) { r.ReadSchematics(); }, kRequired},
    };
    if (in_.PeekKind() != Token::Kind::kObject) {
      in_.Expected("an object (a design document)");
    }
    if constexpr (In::kComplains) {
      if (!in_.ReadMemberFirst("kalmor_design", [&] { ReadVersion(); })) {
        in_.FailAt("kalmor_design", "required, but missing (the format version, 1)");
      }
      in_.ReadMemberFirst("symbols", [&] { ReadSymbols(); });
    }
    in_.Record(Fields<Self, DesignData>(kFields), *this, data_);
    if constexpr (!In::kComplains) {
      if (!versionRead_ || pendingSymbols_ != 0) {
        in_.Fail("read in turn");
      }
    }
  }

  // A member of the document that the careful reader has read first.
  template <typename Read>
  void ReadInTurn(Read&& read) {
    if constexpr (In::kComplains) {
      in_.Skip();
    } else {
      read();
    }
  }

  void ReadVersion() {
    const std::optional<int64_t> version = in_.Integer();
    if (!version) {
      in_.ExpectedInteger("the format version 1");
    }
    if (*version != kFormatVersion) {
      in_.Fail("unsupported format version " + std::to_string(*version) +
               " (this reader reads version 1)");
    }
    versionRead_ = true;
  }

  void ReadSchematics() {
    std::unordered_map<std::string, std::size_t> schematicNames;
    std::size_t next = 0;
    in_.ListInto(data_.schematics, [&](Schematic& schematic) {
      const std::size_t index = next++;
      ReadSchematic(schematic, index);
      if (const auto [first, added] = schematicNames.emplace(schematic.name.str(), index); !added) {
        in_.FailAt("name", "schematic name " + Quoted(schematic.name) +
                               " is used twice (first at /schematics/" +
                               std::to_string(first->second) + ")");
      }
    });
  }

  In& in_;
  DesignData& data_;
  const LogFont* defaultFont_ = nullptr;
  std::unordered_map<std::string, const LogFont*> fontIndex_;
  struct NamedSymbol {
    Symbol* symbol = nullptr;
    bool pending = false;  // named by a part before /symbols was read
  };
  std::unordered_map<std::string, NamedSymbol> symbolsByName_;
  bool symbolsRead_ = false;
  std::size_t pendingSymbols_ = 0;
  bool versionRead_ = false;
  std::optional<std::string> rootName_;
  std::vector<BlockRef> blocks_;
  PropExtents extents_;          // of the fast reader
  bool occurrenceKeys_ = false;  // whether a value or pin text was keyed by an occurrence path
  int vectorDepth_ = 0;          // vectors open around the graphic being read
};

}  // namespace

template <typename In>
void ReadDesign(In& in, DesignData& data) {
  const Arena::Scope scope(data.arena);
  DocumentReader<In>(in, data).Read();
}

template void ReadDesign<TapeReader>(TapeReader& in, DesignData& data);
template void ReadDesign<TextReader>(TextReader& in, DesignData& data);

}  // namespace kalmor::model::detail
