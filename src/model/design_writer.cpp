#include "model/design_writer.h"

#include <cstdio>
#include <map>
#include <set>
#include <string_view>

#include "kalmor/host_text.h"
#include "model/design.h"
#include "model/design_data.h"

namespace kalmor::model {
namespace {

using namespace detail;

// JSON text with one member or element per line, and points, rectangles and fonts on one.
class JsonText {
 public:
  void Begin(char open) {
    Separate();
    out_ += open;
    first_.push_back(true);
  }
  void End(char close) {
    const bool empty = first_.back();
    first_.pop_back();
    if (!empty) {
      NewLine();
    }
    out_ += close;
  }
  void Key(std::string_view key) {
    Separate();
    Quote(key);
    out_ += ": ";
    afterKey_ = true;
  }
  void String(std::string_view text) {
    Separate();
    Quote(text);
  }
  void Int(int64_t value) {
    Separate();
    out_ += std::to_string(value);
  }
  void Bool(bool value) {
    Separate();
    out_ += value ? "true" : "false";
  }
  void Number(double value) {
    Separate();
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    out_ += text;
    if (std::string_view(text).find_first_of(".eEn") == std::string_view::npos) {
      out_ += ".0";
    }
  }
  // Values written as they stand on the current line.
  void Raw(std::string_view text) {
    Separate();
    out_ += text;
  }
  std::string Take() { return std::move(out_); }

  // A string as JSON quotes it: bytes that are not UTF-8 pass through, as the reader keeps them.
  static void QuoteInto(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
      switch (c) {
        case '"':
          out += "\\\"";
          break;
        case '\\':
          out += "\\\\";
          break;
        case '\n':
          out += "\\n";
          break;
        case '\r':
          out += "\\r";
          break;
        case '\t':
          out += "\\t";
          break;
        default:
          if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
            out += escape;
          } else {
            out += c;
          }
      }
    }
    out += '"';
  }

 private:
  void Separate() {
    if (afterKey_) {
      afterKey_ = false;
      return;
    }
    if (first_.empty()) {
      return;
    }
    if (!first_.back()) {
      out_ += ',';
    }
    first_.back() = false;
    NewLine();
  }
  void NewLine() {
    out_ += '\n';
    out_.append(2 * first_.size(), ' ');
  }
  void Quote(std::string_view text) { QuoteInto(out_, text); }

  std::string out_;
  std::vector<bool> first_;
  bool afterKey_ = false;
};

std::string PointText(CPoint point) {
  return "[" + std::to_string(point.x) + ", " + std::to_string(point.y) + "]";
}

std::string RectText(const CRect& rect) {
  return "[" + std::to_string(rect.left) + ", " + std::to_string(rect.top) + ", " +
         std::to_string(rect.right) + ", " + std::to_string(rect.bottom) + "]";
}

// A font on one line, with the fields that differ from the default font.
std::string FontText(const LogFont& font) {
  const LogFont plain;
  std::string text = "{";
  const auto add = [&](std::string_view key, const std::string& value) {
    text += (text.size() > 1 ? ", \"" : "\"") + std::string(key) + "\": " + value;
  };
  const auto number = [&](std::string_view key, int64_t value, int64_t usual) {
    if (value != usual) {
      add(key, std::to_string(value));
    }
  };
  const auto flag = [&](std::string_view key, uint8_t value) {
    if (value != 0) {
      add(key, "true");
    }
  };
  number("height", font.lfHeight, plain.lfHeight);
  number("width", font.lfWidth, plain.lfWidth);
  number("escapement", font.lfEscapement, plain.lfEscapement);
  number("orientation", font.lfOrientation, plain.lfOrientation);
  number("weight", font.lfWeight, plain.lfWeight);
  flag("italic", font.lfItalic);
  flag("underline", font.lfUnderline);
  flag("strike_out", font.lfStrikeOut);
  number("charset", font.lfCharSet, 0);
  number("out_precision", font.lfOutPrecision, 0);
  number("clip_precision", font.lfClipPrecision, 0);
  number("quality", font.lfQuality, 0);
  number("pitch_and_family", font.lfPitchAndFamily, 0);
  const std::string_view face(font.lfFaceName);
  if (face != std::string_view(plain.lfFaceName)) {
    std::string quoted;
    JsonText::QuoteInto(quoted, face);
    add("face", quoted);
  }
  return text + "}";
}

bool IsDefaultFont(const LogFont& font) {
  return FontText(font) == "{}";
}

class DocumentWriter {
 public:
  explicit DocumentWriter(const DesignData& data) : data_(data) {}

  std::string Write() {
    NameSharedSymbols();
    out_.Begin('{');
    out_.Key("kalmor_design");
    out_.Int(1);
    out_.Key("name");
    out_.String(data_.name);
    if (data_.root != nullptr) {
      out_.Key("root");
      out_.String(data_.root->name);
    }
    if (!names_.empty()) {
      out_.Key("symbols");
      out_.Begin('{');
      for (const Symbol* symbol : sharedOrder_) {
        out_.Key(names_.at(symbol));
        WriteSymbolBody(*symbol);
      }
      out_.End('}');
    }
    out_.Key("schematics");
    out_.Begin('[');
    for (const Schematic& schematic : data_.schematics) {
      out_.Begin('{');
      out_.Key("name");
      out_.String(schematic.name);
      out_.Key("pages");
      out_.Begin('[');
      for (const Page& page : schematic.pages) {
        WritePage(page);
      }
      out_.End(']');
      out_.End('}');
    }
    out_.End(']');
    out_.End('}');
    std::string text = out_.Take();
    text += '\n';
    return text;
  }

 private:
  // Symbols placed more than once get a name (their own when they have a free one).
  void NameSharedSymbols() {
    std::map<const Symbol*, int> uses;
    std::vector<const Symbol*> order;
    const auto count = [&](const Symbol* symbol) {
      if (symbol != nullptr && uses[symbol]++ == 0) {
        order.push_back(symbol);
      }
    };
    for (const Schematic& schematic : data_.schematics) {
      for (const Page& page : schematic.pages) {
        for (const auto& item : page.titleBlocks) {
          count(item.symbol);
        }
        for (const auto& item : page.parts) {
          count(item.symbol);
        }
        for (const auto& item : page.globals) {
          count(item.symbol);
        }
        for (const auto& item : page.ports) {
          count(item.symbol);
        }
        for (const auto& item : page.offPageConnectors) {
          count(item.symbol);
        }
      }
    }
    std::set<std::string> taken;
    int next = 1;
    for (const Symbol* symbol : order) {
      if (uses[symbol] < 2) {
        continue;
      }
      std::string name = symbol->name.str();
      while (name.empty() || !taken.insert(name).second) {
        name = "symbol" + std::to_string(next++);
      }
      names_[symbol] = name;
      sharedOrder_.push_back(symbol);
    }
  }

  // A text the design holds in the host's code page, written back as the UTF-8 the reader takes;
  // names (of the design, schematics, pages, ids) are written as they are.
  void Text(std::string_view hostText) { out_.String(Utf8FromHostText(hostText)); }

  void WriteFont(std::string_view key, const LogFont* font) {
    if (font != nullptr && !IsDefaultFont(*font)) {
      out_.Key(key);
      out_.Raw(FontText(*font));
    }
  }

  void WriteGraphic(const DboBaseObject& object, RotationT pageRotation, bool onPage) {
    out_.Begin('{');
    const auto width = [&](LineWidthT value) {
      if (value != 0) {
        out_.Key("width");
        out_.Int(value);
      }
    };
    const auto point = [&](std::string_view key, CPoint value) {
      out_.Key(key);
      out_.Raw(PointText(value));
    };
    const auto rect = [&](const CRect& value) {
      out_.Key("rect");
      out_.Raw(RectText(value));
    };
    const auto type = [&](std::string_view name) {
      out_.Key("type");
      out_.String(name);
    };
    const auto points = [&](const List<CPoint>& list) {
      std::string text = "[";
      for (std::size_t i = 0; i < list.size(); ++i) {
        text += (i == 0 ? "" : ", ") + PointText(list[i]);
      }
      out_.Key("points");
      out_.Raw(text + "]");
    };
    if (const auto* line = dynamic_cast<const LineShape*>(&object)) {
      type("line");
      point("start", line->start);
      point("end", line->end);
      width(line->width);
    } else if (const auto* box = dynamic_cast<const BoxShape*>(&object)) {
      type("box");
      rect(box->rect);
      width(box->width);
    } else if (const auto* arc = dynamic_cast<const ArcShape*>(&object)) {
      type("arc");
      rect(arc->rect);
      point("start", arc->start);
      point("end", arc->end);
      width(arc->width);
    } else if (const auto* ellipse = dynamic_cast<const EllipseShape*>(&object)) {
      type("ellipse");
      rect(ellipse->rect);
      width(ellipse->width);
    } else if (const auto* polygon = dynamic_cast<const PolygonShape*>(&object)) {
      type("polygon");
      points(polygon->points);
      width(polygon->width);
    } else if (const auto* polyline = dynamic_cast<const PolylineShape*>(&object)) {
      type("polyline");
      points(polyline->points);
      width(polyline->width);
    } else if (const auto* text = dynamic_cast<const TextShape*>(&object)) {
      type("text");
      rect(text->rect);
      out_.Key("text");
      Text(text->text);
      WriteFont("font", text->font);
      const RotationT rotation = onPage ? pageRotation : text->rotation;
      if (rotation != 0) {
        out_.Key("rotation");
        out_.Int(rotation);
      }
    } else if (const auto* bitmap = dynamic_cast<const BitMapShape*>(&object)) {
      type("bitmap");
      rect(bitmap->rect);
    } else if (const auto* vector = dynamic_cast<const VectorShape*>(&object)) {
      type("vector");
      point("location", vector->location);
      out_.Key("members");
      out_.Begin('[');
      for (const auto& member : vector->members) {
        WriteGraphic(*member, 0, false);
      }
      out_.End(']');
    } else {
      DboState state;
      out_.Key("type");
      out_.Int(object.GetObjectType(state));
    }
    out_.End('}');
  }

  void WriteSymbolBody(const Symbol& symbol) {
    out_.Begin('{');
    out_.Key("bbox");
    out_.Raw(RectText(symbol.bbox));
    out_.Key("vectors");
    out_.Begin('[');
    for (const auto& vector : symbol.vectors) {
      WriteGraphic(*vector, 0, false);
    }
    out_.End(']');
    out_.End('}');
  }

  void WriteSymbolRef(const Symbol* symbol) {
    out_.Key("symbol");
    if (const auto named = names_.find(symbol); named != names_.end()) {
      out_.String(named->second);
    } else {
      WriteSymbolBody(*symbol);
    }
  }

  void WriteProperties(const DisplayPropList& props) {
    if (props.empty()) {
      return;
    }
    out_.Key("properties");
    out_.Begin('[');
    for (const DisplayProp& prop : props) {
      out_.Begin('{');
      out_.Key("name");
      Text(prop.name);
      if (!prop.value.empty()) {
        out_.Key("value");
        Text(prop.value);
      }
      if (prop.display != 1) {
        out_.Key("display");
        out_.Int(prop.display);
      }
      if (prop.location != CPoint{}) {
        out_.Key("location");
        out_.Raw(PointText(prop.location));
      }
      if (prop.rotation != 0) {
        out_.Key("rotation");
        out_.Int(prop.rotation);
      }
      WriteFont("font", prop.font);
      if (prop.extent) {
        out_.Key("extent");
        out_.Raw(RectText(*prop.extent));
      }
      if (!prop.values.empty()) {
        out_.Key("values");
        out_.Begin('{');
        for (const OccurrenceValue& value : prop.values) {
          out_.Key(value.path);
          Text(value.value);
        }
        out_.End('}');
      }
      out_.End('}');
    }
    out_.End(']');
  }

  template <typename Item>
  void WritePlacedFields(const Item& item) {
    WriteSymbolRef(item.symbol);
    if (item.location != CPoint{}) {
      out_.Key("location");
      out_.Raw(PointText(item.location));
    }
    if (item.rotation != 0) {
      out_.Key("rotation");
      out_.Int(item.rotation);
    }
    if (item.mirror) {
      out_.Key("mirror");
      out_.Bool(true);
    }
    WriteProperties(item.properties);
  }

  template <typename Item>
  void WriteInstances(std::string_view key, const List<Item>& items) {
    if (items.empty()) {
      return;
    }
    out_.Key(key);
    out_.Begin('[');
    for (const Item& item : items) {
      out_.Begin('{');
      WritePlacedFields(item);
      out_.End('}');
    }
    out_.End(']');
  }

  void WritePin(const Pin& pin) {
    out_.Begin('{');
    if (pin.id != pin.number) {
      out_.Key("id");
      out_.String(pin.id);
    }
    if (!pin.name.empty()) {
      out_.Key("name");
      Text(pin.name);
    }
    if (!pin.number.empty()) {
      out_.Key("number");
      Text(pin.number);
    }
    out_.Key("start");
    out_.Raw(PointText(pin.start));
    out_.Key("end");
    out_.Raw(PointText(pin.end));
    const auto flag = [&](std::string_view key, bool value, bool usual) {
      if (value != usual) {
        out_.Key(key);
        out_.Bool(value);
      }
    };
    flag("visible", pin.visible, true);
    flag("no_connect", pin.noConnect, false);
    flag("dot", pin.dot, false);
    flag("clock", pin.clock, false);
    if (pin.blockKind != 0) {
      out_.Key("block_kind");
      out_.Int(pin.blockKind);
    }
    WriteProperties(pin.properties);
    if (!pin.occurrences.empty()) {
      out_.Key("occurrences");
      out_.Begin('{');
      for (const OccurrencePinText& text : pin.occurrences) {
        out_.Key(text.path);
        out_.Begin('{');
        out_.Key("name");
        Text(text.name);
        out_.Key("number");
        Text(text.number);
        out_.End('}');
      }
      out_.End('}');
    }
    out_.End('}');
  }

  void WritePart(const PartInst& part) {
    out_.Begin('{');
    out_.Key("id");
    out_.String(part.id);
    if (part.kind == dbo_type::kBlockInst) {
      out_.Key("kind");
      out_.String("block");
    } else if (part.kind != dbo_type::kPartInst) {
      out_.Key("kind");
      out_.Int(part.kind);
    }
    WritePlacedFields(part);
    if (part.body->box() != part.symbol->bbox) {
      out_.Key("bbox");
      out_.Raw(RectText(part.body->box()));
    }
    if (!part.schematicName.empty()) {
      out_.Key("schematic");
      out_.String(part.schematicName);
    }
    if (!part.pinNamesVisible) {
      out_.Key("pin_names_visible");
      out_.Bool(false);
    }
    if (!part.pinNumbersVisible) {
      out_.Key("pin_numbers_visible");
      out_.Bool(false);
    }
    if (!part.pins.empty()) {
      out_.Key("pins");
      out_.Begin('[');
      for (const Pin& pin : part.pins) {
        WritePin(pin);
      }
      out_.End(']');
    }
    out_.End('}');
  }

  void WriteWire(const Wire& wire) {
    out_.Begin('{');
    out_.Key("start");
    out_.Raw(PointText(wire.start));
    out_.Key("end");
    out_.Raw(PointText(wire.end));
    if (wire.bus) {
      out_.Key("bus");
      out_.Bool(true);
    }
    WriteProperties(wire.properties);
    if (!wire.junctions.empty()) {
      std::string text = "[";
      for (std::size_t i = 0; i < wire.junctions.size(); ++i) {
        text += (i == 0 ? "" : ", ") + PointText(wire.junctions[i]);
      }
      out_.Key("junctions");
      out_.Raw(text + "]");
    }
    if (!wire.aliases.empty()) {
      out_.Key("aliases");
      out_.Begin('[');
      for (const Alias& alias : wire.aliases) {
        out_.Begin('{');
        out_.Key("name");
        Text(alias.name);
        out_.Key("location");
        out_.Raw(PointText(alias.location));
        if (alias.rotation != 0) {
          out_.Key("rotation");
          out_.Int(alias.rotation);
        }
        WriteFont("font", alias.font);
        out_.End('}');
      }
      out_.End(']');
    }
    out_.End('}');
  }

  void WriteBorder(const Border& border) {
    const Border usual;
    out_.Key("border");
    out_.Begin('{');
    const auto flag = [&](std::string_view key, bool value, bool plain) {
      if (value != plain) {
        out_.Key(key);
        out_.Bool(value);
      }
    };
    const auto number = [&](std::string_view key, int32_t value, int32_t plain) {
      if (value != plain) {
        out_.Key(key);
        out_.Int(value);
      }
    };
    flag("visible", border.visible, usual.visible);
    number("line_width", border.lineWidth, usual.lineWidth);
    number("horizontal_label_width", border.horizontalLabelWidth, usual.horizontalLabelWidth);
    number("vertical_label_width", border.verticalLabelWidth, usual.verticalLabelWidth);
    number("horizontal_count", border.horizontalCount, usual.horizontalCount);
    number("vertical_count", border.verticalCount, usual.verticalCount);
    flag("horizontal_letters", border.horizontalLetters, usual.horizontalLetters);
    flag("vertical_letters", border.verticalLetters, usual.verticalLetters);
    flag("horizontal_ascending", border.horizontalAscending, usual.horizontalAscending);
    flag("vertical_ascending", border.verticalAscending, usual.verticalAscending);
    number("horizontal_separator_width", border.horizontalSeparatorWidth,
           usual.horizontalSeparatorWidth);
    number("vertical_separator_width", border.verticalSeparatorWidth, usual.verticalSeparatorWidth);
    out_.End('}');
  }

  void WritePage(const Page& page) {
    out_.Begin('{');
    out_.Key("name");
    out_.String(page.name);
    out_.Key("pin_to_pin");
    out_.Int(page.pinToPin);
    out_.Key("width");
    out_.Int(page.width);
    out_.Key("height");
    out_.Int(page.height);
    if (page.pinToPinScaleFactor != 1.0) {
      out_.Key("pin_to_pin_scale_factor");
      out_.Number(page.pinToPinScaleFactor);
    }
    WriteBorder(page.border);
    WriteInstances("title_blocks", page.titleBlocks);
    if (!page.parts.empty()) {
      out_.Key("parts");
      out_.Begin('[');
      for (const PartInst& part : page.parts) {
        WritePart(part);
      }
      out_.End(']');
    }
    if (!page.wires.empty()) {
      out_.Key("wires");
      out_.Begin('[');
      for (const Wire& wire : page.wires) {
        WriteWire(wire);
      }
      out_.End(']');
    }
    WriteInstances("globals", page.globals);
    WriteInstances("ports", page.ports);
    WriteInstances("off_page_connectors", page.offPageConnectors);
    if (!page.busEntries.empty()) {
      out_.Key("bus_entries");
      out_.Begin('[');
      for (const BusEntry& entry : page.busEntries) {
        out_.Raw("{\"entry\": " + PointText(entry.entry) + ", \"end\": " + PointText(entry.end) +
                 "}");
      }
      out_.End(']');
    }
    if (!page.graphics.empty()) {
      out_.Key("graphics");
      out_.Begin('[');
      for (const CommentGraphic& graphic : page.graphics) {
        if (graphic.shape != nullptr) {
          WriteGraphic(*graphic.shape, graphic.rotation, true);
        } else {
          out_.Raw("{\"type\": " + std::to_string(graphic.type) + "}");
        }
      }
      out_.End(']');
    }
    out_.End('}');
  }

  const DesignData& data_;
  JsonText out_;
  std::map<const Symbol*, std::string> names_;
  std::vector<const Symbol*> sharedOrder_;
};

}  // namespace

std::string WriteDesignDocument(const Design& design) {
  return DocumentWriter(design.data()).Write();
}

}  // namespace kalmor::model
