#include "model/design_reader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <unordered_map>

#include "kalmor/host_text.h"
#include "model/design.h"
#include "model/design_data.h"
#include "model/hierarchy_links.h"
#include "model/tape_reader.h"

namespace kalmor::model {
namespace detail {
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
constexpr std::pair<std::string_view, uint32_t> kGraphicFieldNames[] = {
    {"start", kStartField},     {"end", kEndField},           {"rect", kRectField},
    {"points", kPointsField},   {"width", kWidthField},       {"text", kTextField},
    {"font", kFontField},       {"rotation", kRotationField}, {"location", kLocationField},
    {"members", kMembersField},
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
  std::vector<CPoint> points;
  LineWidthT width = 0;
  std::string text;
  const LogFont* font = nullptr;
  RotationT rotation = 0;
  GraphicList members;
  Extent membersExtent;
};

struct Graphic {
  std::unique_ptr<DboBaseObject> object;  // null for a bare code on a page
  int32_t type = 0;                       // the page code, or the bare code
  RotationT rotation = 0;
  Extent extent;
};

class DocumentReader {
 public:
  DocumentReader(const JsonTape& tape, DesignData& data) : in_(tape), data_(data) {
    defaultFont_ = Intern(LogFont{});
  }

  void Read() {
    ReadDocument();
    LinkHierarchy(data_, rootName_, blocks_);
  }

 private:
  // ---------------------------------------------------------------------------------------
  // Values shared by several objects

  // A text that the drawing shows, as the host keeps it (names of files and of the hierarchy
  // stay UTF-8).
  std::string ReadText() { return HostTextFromUtf8(in_.String()); }

  const LogFont* Intern(const LogFont& font) {
    std::string key(reinterpret_cast<const char*>(&font), sizeof font);
    const auto [found, added] = fontIndex_.try_emplace(std::move(key), nullptr);
    if (added) {
      found->second = &data_.fonts.emplace_back(font);
    }
    return found->second;
  }

  const LogFont* ReadFont() {
    LogFont font;
    in_.Record([&](std::string_view key) {
      if (key == "height") {
        font.lfHeight = in_.Int32();
      } else if (key == "width") {
        font.lfWidth = in_.Int32();
      } else if (key == "escapement") {
        font.lfEscapement = in_.Int32();
      } else if (key == "orientation") {
        font.lfOrientation = in_.Int32();
      } else if (key == "weight") {
        font.lfWeight = in_.Int32();
      } else if (key == "italic") {
        font.lfItalic = in_.Boolean();
      } else if (key == "underline") {
        font.lfUnderline = in_.Boolean();
      } else if (key == "strike_out") {
        font.lfStrikeOut = in_.Boolean();
      } else if (key == "charset") {
        font.lfCharSet = in_.Byte();
      } else if (key == "out_precision") {
        font.lfOutPrecision = in_.Byte();
      } else if (key == "clip_precision") {
        font.lfClipPrecision = in_.Byte();
      } else if (key == "quality") {
        font.lfQuality = in_.Byte();
      } else if (key == "pitch_and_family") {
        font.lfPitchAndFamily = in_.Byte();
      } else if (key == "face") {
        const std::string face = in_.String();
        if (face.size() > kMaxFaceBytes || face.find('\0') != std::string::npos) {
          in_.Fail("expected a face name of at most 31 bytes, got " + std::to_string(face.size()) +
                   " bytes");
        }
        font.SetFaceName(face.c_str());
      } else {
        return false;
      }
      return true;
    });
    return Intern(font);
  }

  DisplayTypeT ReadDisplayType() {
    if (in_.PeekKind() != Token::Kind::kString) {
      if (in_.PeekKind() != Token::Kind::kInteger && in_.PeekKind() != Token::Kind::kUnsigned) {
        in_.Expected("a display type (an integer, or a word such as \"value\")");
      }
      return in_.Int32();
    }
    const std::string word = in_.String();
    constexpr std::pair<std::string_view, DisplayTypeT> kWords[] = {
        {"value", 1}, {"name_and_value", 2}, {"name", 3}, {"name_and_value_if_set", 4}};
    for (const auto& [name, type] : kWords) {
      if (word == name) {
        return type;
      }
    }
    in_.Fail("unknown display type " + Quoted(word) +
             " (expected value, name_and_value, name, name_and_value_if_set or an integer)");
  }

  void ReadProperty(DisplayProp& prop) {
    prop.font = defaultFont_;
    in_.Record({"name"}, [&](std::string_view key) {
      if (key == "name") {
        prop.name = ReadText();
      } else if (key == "value") {
        prop.value = ReadText();
      } else if (key == "display") {
        prop.display = ReadDisplayType();
      } else if (key == "location") {
        prop.location = in_.Point();
      } else if (key == "rotation") {
        prop.rotation = in_.Int32();
      } else if (key == "font") {
        prop.font = ReadFont();
      } else if (key == "extent") {
        prop.extent = in_.Rect();
      } else if (key == "values") {
        in_.Map([&](std::string_view path) {
          prop.values.push_back({std::string(path), 0, ReadText()});
        });
      } else {
        return false;
      }
      return true;
    });
  }

  void ReadProperties(DisplayPropList& props) {
    in_.ListInto(props, [&](DisplayProp& prop) { ReadProperty(prop); });
  }

  // ---------------------------------------------------------------------------------------
  // Graphics and symbols

  Graphic ReadGraphic(bool inSymbol) {
    GraphicFields fields;
    in_.Record({"type"}, [&](std::string_view key) {
      if (key == "type") {
        if (in_.PeekKind() == Token::Kind::kString) {
          fields.typeName = in_.String();
        } else if (in_.PeekKind() == Token::Kind::kInteger ||
                   in_.PeekKind() == Token::Kind::kUnsigned) {
          fields.typeCode = in_.Int32();
        } else {
          in_.Expected("a graphic type (a word such as \"line\", or a type code)");
        }
        return true;
      }
      const auto* field = std::find_if(std::begin(kGraphicFieldNames), std::end(kGraphicFieldNames),
                                       [&](const auto& entry) { return entry.first == key; });
      if (field == std::end(kGraphicFieldNames)) {
        return false;
      }
      fields.given |= field->second;
      switch (field->second) {
        case kStartField:
          fields.start = in_.Point();
          break;
        case kEndField:
          fields.end = in_.Point();
          break;
        case kRectField:
          fields.rect = in_.Rect();
          break;
        case kPointsField:
          fields.points = in_.Points();
          break;
        case kWidthField:
          fields.width = in_.Int32();
          break;
        case kTextField:
          fields.text = ReadText();
          break;
        case kFontField:
          fields.font = ReadFont();
          break;
        case kRotationField:
          fields.rotation = in_.Int32();
          break;
        case kLocationField:
          fields.location = in_.Point();
          break;
        case kMembersField:
          // Each level is read (and later freed) by a call of its own; real symbols nest a
          // level or two.
          if (vectorDepth_ == kMostVectorDepth) {
            in_.Fail("vectors nested more than " + std::to_string(kMostVectorDepth) + " deep");
          }
          ++vectorDepth_;
          fields.members.reserve(in_.ListSize());
          in_.List([&](std::size_t) {
            Graphic member = ReadGraphic(true);
            fields.membersExtent.Add(member.extent, CPoint{});
            fields.members.push_back(std::move(member.object));
          });
          --vectorDepth_;
          break;
      }
      return true;
    });
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
        auto raw = std::make_unique<RawObject>();
        raw->type = *fields.typeCode;
        graphic.object = std::move(raw);
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
        auto line = std::make_unique<LineShape>();
        line->start = fields.start;
        line->end = fields.end;
        line->width = fields.width;
        graphic.extent.Add(fields.start);
        graphic.extent.Add(fields.end);
        graphic.object = std::move(line);
        break;
      }
      case GraphicKind::kBox: {
        auto box = std::make_unique<BoxShape>();
        box->rect = fields.rect;
        box->width = fields.width;
        graphic.object = std::move(box);
        break;
      }
      case GraphicKind::kArc: {
        auto arc = std::make_unique<ArcShape>();
        arc->rect = fields.rect;
        arc->start = fields.start;
        arc->end = fields.end;
        arc->width = fields.width;
        graphic.object = std::move(arc);
        break;
      }
      case GraphicKind::kEllipse: {
        auto ellipse = std::make_unique<EllipseShape>();
        ellipse->rect = fields.rect;
        ellipse->width = fields.width;
        graphic.object = std::move(ellipse);
        break;
      }
      case GraphicKind::kPolygon:
        graphic.object = MakePointList<PolygonShape>(fields, graphic.extent);
        break;
      case GraphicKind::kPolyline:
        graphic.object = MakePointList<PolylineShape>(fields, graphic.extent);
        break;
      case GraphicKind::kText: {
        auto text = std::make_unique<TextShape>();
        text->rect = fields.rect;
        text->text = std::move(fields.text);
        text->font = fields.font != nullptr ? fields.font : defaultFont_;
        text->rotation = fields.rotation;
        graphic.rotation = fields.rotation;
        graphic.object = std::move(text);
        break;
      }
      case GraphicKind::kBitMap: {
        auto bitmap = std::make_unique<BitMapShape>();
        bitmap->rect = fields.rect;
        graphic.object = std::move(bitmap);
        break;
      }
      case GraphicKind::kVector: {
        auto vector = std::make_unique<VectorShape>();
        vector->location = fields.location;
        vector->members = std::move(fields.members);
        graphic.extent.Add(fields.membersExtent, fields.location);
        graphic.object = std::move(vector);
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
  static std::unique_ptr<DboBaseObject> MakePointList(GraphicFields& fields, Extent& extent) {
    auto shape = std::make_unique<Shape>();
    for (const CPoint& point : fields.points) {
      extent.Add(point);
    }
    shape->points = std::move(fields.points);
    shape->width = fields.width;
    return shape;
  }

  static std::string_view FieldName(uint32_t bit) {
    for (const auto& [name, field] : kGraphicFieldNames) {
      if (field == bit) {
        return name;
      }
    }
    return {};
  }

  const Symbol* ReadSymbol() {
    auto symbol = std::make_unique<Symbol>();
    std::optional<CRect> bbox;
    Extent extent;
    in_.Record([&](std::string_view key) {
      if (key == "bbox") {
        bbox = in_.Rect();
      } else if (key == "vectors") {
        symbol->vectors.reserve(in_.ListSize());
        in_.List([&](std::size_t) {
          Graphic vector = ReadGraphic(true);
          extent.Add(vector.extent, CPoint{});
          symbol->vectors.push_back(std::move(vector.object));
        });
      } else {
        return false;
      }
      return true;
    });
    if (bbox) {
      symbol->bbox = *bbox;
    } else if (!extent.Within(kCoordinateLimit)) {
      // Locations of nested vectors add up; the box around them must still be a place.
      in_.Fail("the vectors reach beyond the coordinate range -" +
               std::to_string(kCoordinateLimit) + " to " + std::to_string(kCoordinateLimit) +
               "; give the symbol a bbox");
    } else {
      symbol->bbox = extent.rect();
    }
    return data_.symbols.emplace_back(std::move(symbol)).get();
  }

  const Symbol* ReadSymbolRef() {
    if (in_.PeekKind() == Token::Kind::kString) {
      const std::string name = in_.String();
      const auto found = symbolsByName_.find(name);
      if (found == symbolsByName_.end()) {
        in_.Fail("no symbol named " + Quoted(name) + " in /symbols");
      }
      return found->second;
    }
    if (in_.PeekKind() != Token::Kind::kObject) {
      in_.Expected("a symbol name or a symbol object");
    }
    return ReadSymbol();
  }

  void ReadSymbols() {
    in_.Map([&](std::string_view name) {
      if (in_.PeekKind() != Token::Kind::kObject) {
        in_.Expected("a symbol object");
      }
      const Symbol* symbol = ReadSymbol();
      if (!symbolsByName_.emplace(std::string(name), symbol).second) {
        in_.Fail("symbol name given twice");
      }
    });
  }

  // ---------------------------------------------------------------------------------------
  // Page objects

  template <typename Item>
  bool ReadPlacedField(Item& item, std::string_view key) {
    if (key == "symbol") {
      item.symbol = ReadSymbolRef();
    } else if (key == "location") {
      item.location = in_.Point();
    } else if (key == "rotation") {
      item.rotation = in_.Int32();
    } else if (key == "mirror") {
      item.mirror = in_.Boolean();
    } else if (key == "properties") {
      ReadProperties(item.properties);
    } else {
      return false;
    }
    return true;
  }

  template <typename Item>
  void ReadInstances(std::vector<Item>& items) {
    in_.ListInto(items, [&](Item& item) {
      in_.Record({"symbol"}, [&](std::string_view key) { return ReadPlacedField(item, key); });
    });
  }

  int32_t ReadPartKind() {
    if (in_.PeekKind() != Token::Kind::kString) {
      if (in_.PeekKind() != Token::Kind::kInteger && in_.PeekKind() != Token::Kind::kUnsigned) {
        in_.Expected("a part kind (\"part\", \"block\" or a type code)");
      }
      return in_.Int32();
    }
    const std::string kind = in_.String();
    if (kind == "part") {
      return dbo_type::kPartInst;
    }
    if (kind == "block") {
      return dbo_type::kBlockInst;
    }
    in_.Fail("unknown part kind " + Quoted(kind) + " (expected part, block or a type code)");
  }

  void ReadPin(Pin& pin) {
    bool hasId = false;
    struct Given {
      bool name = false;
      bool number = false;
    };
    std::vector<Given> given;
    in_.Record({"start", "end"}, [&](std::string_view key) {
      if (key == "id") {
        pin.id = in_.String();
        hasId = true;
      } else if (key == "name") {
        pin.name = ReadText();
      } else if (key == "number") {
        pin.number = ReadText();
      } else if (key == "start") {
        pin.start = in_.Point();
      } else if (key == "end") {
        pin.end = in_.Point();
      } else if (key == "visible") {
        pin.visible = in_.Boolean();
      } else if (key == "no_connect") {
        pin.noConnect = in_.Boolean();
      } else if (key == "dot") {
        pin.dot = in_.Boolean();
      } else if (key == "clock") {
        pin.clock = in_.Boolean();
      } else if (key == "block_kind") {
        pin.blockKind = in_.Int32();
      } else if (key == "properties") {
        ReadProperties(pin.properties);
      } else if (key == "occurrences") {
        in_.Map([&](std::string_view path) {
          OccurrencePinText& text = pin.occurrences.emplace_back();
          text.path = path;
          Given& own = given.emplace_back();
          in_.Record([&](std::string_view field) {
            if (field == "name") {
              text.name = ReadText();
              own.name = true;
            } else if (field == "number") {
              text.number = ReadText();
              own.number = true;
            } else {
              return false;
            }
            return true;
          });
        });
      } else {
        return false;
      }
      return true;
    });
    if (!hasId) {
      pin.id = pin.number;
    }
    // What an occurrence leaves out is the pin's own.
    for (std::size_t i = 0; i < given.size(); ++i) {
      if (!given[i].name) {
        pin.occurrences[i].name = pin.name;
      }
      if (!given[i].number) {
        pin.occurrences[i].number = pin.number;
      }
    }
  }

  // Part ids of the schematic being read, with the page and index of each first use.
  // The ids are views of the parts' own, which stay put: every list is sized before it is read.
  using PartIds = std::unordered_map<std::string_view, std::pair<std::size_t, std::size_t>>;

  void ReadPart(PartInst& part, PartIds& ids, std::size_t schematic, std::size_t page,
                std::size_t index) {
    bool hasSchematic = false;
    std::optional<CRect> bbox;
    in_.Record({"id", "symbol"}, [&](std::string_view key) {
      if (ReadPlacedField(part, key)) {
        return true;
      }
      if (key == "id") {
        part.id = in_.String();
        if (part.id.empty() || part.id.find('/') != std::string::npos) {
          in_.Fail("expected a part id that is not empty and holds no \"/\", got " +
                   Quoted(part.id));
        }
      } else if (key == "kind") {
        part.kind = ReadPartKind();
      } else if (key == "bbox") {
        bbox = in_.Rect();
      } else if (key == "schematic") {
        part.schematicName = in_.String();
        hasSchematic = true;
      } else if (key == "pin_names_visible") {
        part.pinNamesVisible = in_.Boolean();
      } else if (key == "pin_numbers_visible") {
        part.pinNumbersVisible = in_.Boolean();
      } else if (key == "pins") {
        in_.ListInto(part.pins, [&](Pin& pin) { ReadPin(pin); });
      } else {
        return false;
      }
      return true;
    });
    part.body.bbox = bbox ? *bbox : part.symbol->bbox;
    part.body.symbol = part.symbol;
    if (hasSchematic) {
      if (part.kind != dbo_type::kBlockInst) {
        in_.FailAt("schematic", "only a part of kind \"block\" instantiates a schematic");
      }
      blocks_.push_back({schematic, page, index});
    }
    const auto [first, added] = ids.try_emplace(part.id, page, index);
    if (!added) {
      in_.FailAt("id", "part id " + Quoted(part.id) +
                           " is used twice in this schematic (first at " + "/schematics/" +
                           std::to_string(schematic) + "/pages/" +
                           std::to_string(first->second.first) + "/parts/" +
                           std::to_string(first->second.second) + ")");
    }
  }

  void ReadAlias(Alias& alias) {
    alias.font = defaultFont_;
    in_.Record({"name", "location"}, [&](std::string_view key) {
      if (key == "name") {
        alias.name = ReadText();
      } else if (key == "location") {
        alias.location = in_.Point();
      } else if (key == "rotation") {
        alias.rotation = in_.Int32();
      } else if (key == "font") {
        alias.font = ReadFont();
      } else {
        return false;
      }
      return true;
    });
  }

  void ReadWire(Wire& wire) {
    in_.Record({"start", "end"}, [&](std::string_view key) {
      if (key == "start") {
        wire.start = in_.Point();
      } else if (key == "end") {
        wire.end = in_.Point();
      } else if (key == "bus") {
        wire.bus = in_.Boolean();
      } else if (key == "properties") {
        ReadProperties(wire.properties);
      } else if (key == "junctions") {
        wire.junctions = in_.Points();
      } else if (key == "aliases") {
        in_.ListInto(wire.aliases, [&](Alias& alias) { ReadAlias(alias); });
      } else {
        return false;
      }
      return true;
    });
  }

  void ReadBusEntry(BusEntry& entry) {
    in_.Record({"entry", "end"}, [&](std::string_view key) {
      if (key == "entry") {
        entry.entry = in_.Point();
      } else if (key == "end") {
        entry.end = in_.Point();
      } else {
        return false;
      }
      return true;
    });
  }

  void ReadBorder(Border& border) {
    in_.Record([&](std::string_view key) {
      // Zone labels run out of digits after 99; each zone is drawn, so a count is kept small.
      constexpr int32_t kMostZones = 99;
      constexpr const char* kCount = "a zone count from 1 to 99";
      if (key == "visible") {
        border.visible = in_.Boolean();
      } else if (key == "line_width") {
        border.lineWidth = in_.Int32();
      } else if (key == "horizontal_label_width") {
        border.horizontalLabelWidth = in_.Int32();
      } else if (key == "vertical_label_width") {
        border.verticalLabelWidth = in_.Int32();
      } else if (key == "horizontal_count") {
        border.horizontalCount = in_.Int32Within(1, kMostZones, kCount);
      } else if (key == "vertical_count") {
        border.verticalCount = in_.Int32Within(1, kMostZones, kCount);
      } else if (key == "horizontal_letters") {
        border.horizontalLetters = in_.Boolean();
      } else if (key == "vertical_letters") {
        border.verticalLetters = in_.Boolean();
      } else if (key == "horizontal_ascending") {
        border.horizontalAscending = in_.Boolean();
      } else if (key == "vertical_ascending") {
        border.verticalAscending = in_.Boolean();
      } else if (key == "horizontal_separator_width") {
        border.horizontalSeparatorWidth = in_.Int32();
      } else if (key == "vertical_separator_width") {
        border.verticalSeparatorWidth = in_.Int32();
      } else {
        return false;
      }
      return true;
    });
  }

  void ReadGraphics(std::vector<CommentGraphic>& graphics) {
    graphics.reserve(in_.ListSize());
    in_.List([&](std::size_t) {
      Graphic read = ReadGraphic(false);
      CommentGraphic& graphic = graphics.emplace_back();
      graphic.type = read.type;
      graphic.shape = std::move(read.object);
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

  void ReadPage(Page& page, PartIds& ids, std::size_t schematic, std::size_t index) {
    in_.Record({"name"}, [&](std::string_view key) {
      if (key == "name") {
        page.name = in_.String();
      } else if (key == "pin_to_pin") {
        page.pinToPin = in_.Int32AtLeast(1, "a pin-to-pin value greater than 0");
      } else if (key == "width") {
        page.width = in_.Int32();
      } else if (key == "height") {
        page.height = in_.Int32();
      } else if (key == "pin_to_pin_scale_factor") {
        page.pinToPinScaleFactor = in_.NumberWithin(-kScaleFactorLimit, kScaleFactorLimit,
                                                    "a pin-to-pin scale factor from -32 to 32");
      } else if (key == "border") {
        ReadBorder(page.border);
      } else if (key == "title_blocks") {
        ReadInstances(page.titleBlocks);
      } else if (key == "parts") {
        page.parts.reserve(in_.ListSize());
        in_.List([&](std::size_t part) {
          ReadPart(page.parts.emplace_back(), ids, schematic, index, part);
        });
      } else if (key == "wires") {
        in_.ListInto(page.wires, [&](Wire& wire) { ReadWire(wire); });
      } else if (key == "globals") {
        ReadInstances(page.globals);
      } else if (key == "ports") {
        ReadInstances(page.ports);
      } else if (key == "off_page_connectors") {
        ReadInstances(page.offPageConnectors);
      } else if (key == "bus_entries") {
        in_.ListInto(page.busEntries, [&](BusEntry& entry) { ReadBusEntry(entry); });
      } else if (key == "graphics") {
        ReadGraphics(page.graphics);
      } else {
        return false;
      }
      return true;
    });
    CheckPageSize(page, "width", page.width);
    CheckPageSize(page, "height", page.height);
  }

  void ReadSchematic(Schematic& schematic, std::size_t index) {
    PartIds ids;
    std::unordered_map<std::string, std::size_t> pageNames;
    in_.Record({"name", "pages"}, [&](std::string_view key) {
      if (key == "name") {
        schematic.name = in_.String();
      } else if (key == "pages") {
        schematic.pages.reserve(in_.ListSize());
        in_.List([&](std::size_t page) {
          Page& own = schematic.pages.emplace_back();
          ReadPage(own, ids, index, page);
          if (const auto [first, added] = pageNames.emplace(own.name, page); !added) {
            in_.FailAt("name", "page name " + Quoted(own.name) +
                                   " is used twice in this schematic (first at /schematics/" +
                                   std::to_string(index) + "/pages/" +
                                   std::to_string(first->second) + ")");
          }
        });
      } else {
        return false;
      }
      return true;
    });
  }

  // ---------------------------------------------------------------------------------------
  // The document

  void ReadDocument() {
    if (in_.PeekKind() != Token::Kind::kObject) {
      in_.Expected("an object (a design document)");
    }
    // The version says how to read everything else, and symbols are named before they are
    // used wherever they stand in the text; both are read first.
    const std::size_t versionAt = in_.FindMember("kalmor_design");
    if (versionAt == 0) {
      in_.FailAt("kalmor_design", "required, but missing (the format version, 1)");
    }
    in_.ReadMemberAt("kalmor_design", versionAt, [&] {
      const Token version = in_.Peek();
      if (version.kind != Token::Kind::kInteger) {
        in_.Expected("the format version 1");
      }
      if (version.integer != kFormatVersion) {
        in_.Fail("unsupported format version " + std::to_string(version.integer) +
                 " (this reader reads version 1)");
      }
    });
    if (const std::size_t symbolsAt = in_.FindMember("symbols"); symbolsAt != 0) {
      in_.ReadMemberAt("symbols", symbolsAt, [&] { ReadSymbols(); });
    }
    std::unordered_map<std::string, std::size_t> schematicNames;
    in_.Record({"name", "schematics"}, [&](std::string_view key) {
      if (key == "kalmor_design" || key == "symbols") {
        in_.Skip();
      } else if (key == "name") {
        data_.name = in_.String();
      } else if (key == "root") {
        rootName_ = in_.String();
      } else if (key == "schematics") {
        data_.schematics.reserve(in_.ListSize());
        in_.List([&](std::size_t index) {
          Schematic& schematic = data_.schematics.emplace_back();
          ReadSchematic(schematic, index);
          if (const auto [first, added] = schematicNames.emplace(schematic.name, index); !added) {
            in_.FailAt("name", "schematic name " + Quoted(schematic.name) +
                                   " is used twice (first at /schematics/" +
                                   std::to_string(first->second) + ")");
          }
        });
      } else {
        return false;
      }
      return true;
    });
  }

  TapeReader in_;
  DesignData& data_;
  const LogFont* defaultFont_ = nullptr;
  std::unordered_map<std::string, const LogFont*> fontIndex_;
  std::unordered_map<std::string, const Symbol*> symbolsByName_;
  std::optional<std::string> rootName_;
  std::vector<BlockRef> blocks_;
  int vectorDepth_ = 0;  // vectors open around the graphic being read
};

std::string Located(std::string_view documentName, std::string_view json, std::size_t offset,
                    const std::string& pointer, const std::string& message) {
  const LineColumn where = LineColumnAt(json, offset);
  std::string text = std::string(documentName) + ":" + std::to_string(where.line) + ":" +
                     std::to_string(where.column) + ": ";
  if (!pointer.empty()) {
    // Member names are the document's own and may be of any length.
    for (std::size_t step = 0; step < pointer.size();) {
      const std::size_t next = std::min(pointer.find('/', step + 1), pointer.size());
      text += Abbreviated(std::string_view(pointer).substr(step, next - step));
      step = next;
    }
    text += ": ";
  }
  return text + message;
}

}  // namespace
}  // namespace detail

std::unique_ptr<Design> ReadDesignDocument(std::string_view json, std::string_view documentName) {
  detail::JsonTape tape;
  detail::SyntaxError syntax;
  if (!tape.Parse(json, syntax)) {
    throw DesignDocumentError(
        detail::Located(documentName, json, syntax.offset, syntax.pointer, syntax.message));
  }
  auto data = std::make_unique<detail::DesignData>();
  try {
    detail::DocumentReader(tape, *data).Read();
  } catch (const detail::DocumentFault& fault) {
    throw DesignDocumentError(detail::Located(documentName, json,
                                              detail::LocatePointer(json, fault.pointer),
                                              fault.pointer, fault.message));
  }
  return std::make_unique<Design>(std::move(data));
}

std::unique_ptr<Design> LoadDesignDocument(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (file == nullptr) {
    throw DesignDocumentError(path + ": cannot open: " + std::strerror(errno));
  }
  std::string json;
  std::error_code unknown;
  if (const auto size = std::filesystem::file_size(path, unknown); !unknown) {
    json.reserve(size);
  }
  char buffer[1 << 16];
  while (const std::size_t read = std::fread(buffer, 1, sizeof buffer, file.get())) {
    json.append(buffer, read);
  }
  if (std::ferror(file.get()) != 0) {
    throw DesignDocumentError(path + ": cannot read: " + std::strerror(errno));
  }
  return ReadDesignDocument(json, path);
}

}  // namespace kalmor::model
