#include "render/dxf_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <optional>
#include <utility>

#include "input/shown_text.h"

namespace kalmor {

DxfReadError::DxfReadError(std::string_view sourceName, std::size_t line, std::string record,
                           std::string_view problem)
    : std::runtime_error(std::string(sourceName) + ":" + std::to_string(line) + ": " +
                         std::string(problem)),
      source_(sourceName),
      line_(line),
      record_(std::move(record)) {}

namespace render_detail {
namespace {

// Coordinates beyond this cannot come from a page and would overflow the picture's arithmetic.
constexpr double kLargestNumber = 1e12;

std::string_view Trim(std::string_view s) {
  constexpr std::string_view kBlanks = " \t\r";  // a lone CR ending the last line too
  const auto first = s.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return s.substr(first, s.find_last_not_of(kBlanks) - first + 1);
}

std::string Str(std::string_view s) {
  return std::string(s);
}

struct Pair {
  int code = 0;
  std::string value;
  std::size_t line = 0;  // line of the group code; the value is on the next line
  std::size_t valueLine() const { return line + 1; }
  std::string_view name() const { return Trim(value); }
  bool Is(int c, std::string_view v) const { return code == c && name() == v; }
};

class Source {
 public:
  explicit Source(std::string_view name) : name_(name) {}
  [[noreturn]] void Fail(std::size_t line, std::string_view record,
                         const std::string& problem) const {
    throw DxfReadError(name_, line, Str(record), problem);
  }

 private:
  std::string_view name_;
};

// The bytes of a file in memory, as a byte source.
class MemoryBytes final : public ByteSource {
 public:
  explicit MemoryBytes(std::string_view bytes) : bytes_(bytes) {}
  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t n = std::min(size, bytes_.size());
    std::copy_n(bytes_.data(), n, buffer);
    bytes_.remove_prefix(n);
    return n;
  }

 private:
  std::string_view bytes_;
};

// The lines of a file, read from its source a buffer at a time: only the line being read is
// held, however long the file. Lines end in LF, with or without a CR before it; a last line
// without its LF counts when it is not empty.
class LineReader {
 public:
  explicit LineReader(ByteSource& bytes) : bytes_(bytes) {}

  bool Next(std::string& line) {
    line.clear();
    for (;;) {
      if (next_ == filled_) {
        filled_ = atEnd_ ? 0 : bytes_.Read(buffer_.data(), buffer_.size());
        next_ = 0;
        if (filled_ == 0) {
          atEnd_ = true;
          return EndLine(line, !line.empty());
        }
      }
      const char* begin = buffer_.data() + next_;
      const char* end = buffer_.data() + filled_;
      const char* lf = std::find(begin, end, '\n');
      line.append(begin, lf);
      next_ = static_cast<std::size_t>(lf - buffer_.data());
      if (lf != end) {
        ++next_;
        return EndLine(line, true);
      }
    }
  }

 private:
  static bool EndLine(std::string& line, bool isLine) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    return isLine;
  }

  ByteSource& bytes_;
  std::array<char, 1 << 16> buffer_{};
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
  bool atEnd_ = false;
};

// The file as group code / value pairs, with the two lines of the next pair read ahead.
class PairReader {
 public:
  PairReader(ByteSource& bytes, const Source& source) : lines_(bytes), source_(source) { Fill(); }

  bool AtEnd() const { return ahead_ == 0; }
  // The number of the file's last line; asked for once the whole file has been read.
  std::size_t LastLine() const { return std::max<std::size_t>(linesRead_, 1); }

  // Reads the pair at the cursor without taking it; the caller has checked AtEnd.
  Pair Peek() const {
    const std::size_t line = linesRead_ - ahead_ + 1;
    const std::string_view text = Trim(pending_[0]);
    int code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || code < 0) {
      source_.Fail(line, "", "expected a group code, found " + Quoted(pending_[0]));
    }
    if (ahead_ < 2) {
      source_.Fail(line, "",
                   "file ends after group code " + std::to_string(code) + " without its value");
    }
    return {code, pending_[1], line};
  }

  Pair Take() {
    Pair pair = Peek();
    ahead_ = 0;
    Fill();
    return pair;
  }

  // The 1-based line of the first non-blank line after the cursor, if any; reads to it.
  std::optional<std::size_t> NextNonBlankLine() {
    for (std::size_t i = 0; i < ahead_; ++i) {
      if (!Trim(pending_[i]).empty()) {
        return linesRead_ - ahead_ + i + 1;
      }
    }
    while (lines_.Next(pending_[0])) {
      ++linesRead_;
      if (!Trim(pending_[0]).empty()) {
        return linesRead_;
      }
    }
    return std::nullopt;
  }

 private:
  void Fill() {
    while (ahead_ < 2 && lines_.Next(pending_[ahead_])) {
      ++ahead_;
      ++linesRead_;
    }
  }

  LineReader lines_;
  const Source& source_;
  std::array<std::string, 2> pending_;  // the code line and the value line read ahead
  std::size_t ahead_ = 0;               // how many of them hold a line
  std::size_t linesRead_ = 0;
};

// A record: its name and the groups up to the next group 0.
struct Record {
  std::string name;
  std::size_t line = 0;  // line of the name
  std::vector<Pair> groups;
};

// The groups of one record, checked against the codes its kind may carry.
class Fields {
 public:
  Fields(const Record& record, std::initializer_list<int> allowed, const Source& source)
      : record_(record), source_(source) {
    for (std::size_t i = 0; i < record.groups.size(); ++i) {
      const Pair& group = record.groups[i];
      if (std::find(allowed.begin(), allowed.end(), group.code) == allowed.end()) {
        Fail(group.line,
             "unsupported group " + std::to_string(group.code) + " in " + Str(record.name));
      }
      for (std::size_t j = 0; j < i; ++j) {
        if (record.groups[j].code == group.code) {
          Fail(group.line,
               "repeated group " + std::to_string(group.code) + " in " + Str(record.name));
        }
      }
    }
  }

  [[noreturn]] void Fail(std::size_t line, const std::string& problem) const {
    source_.Fail(line, record_.name, problem);
  }

  const Pair* Find(int code) const {
    for (const Pair& group : record_.groups) {
      if (group.code == code) {
        return &group;
      }
    }
    return nullptr;
  }

  const Pair& Required(int code, std::string_view what) const {
    const Pair* group = Find(code);
    if (group == nullptr) {
      Fail(record_.line,
           Str(record_.name) + " lacks group " + std::to_string(code) + " (" + Str(what) + ")");
    }
    return *group;
  }

  double Number(const Pair& group) const {
    const std::string_view text = Trim(group.value);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        !std::isfinite(value)) {
      Fail(group.valueLine(), "bad number " + Quoted(group.value) + " in group " +
                                  std::to_string(group.code) + " of " + Str(record_.name));
    }
    if (std::fabs(value) > kLargestNumber) {
      Fail(group.valueLine(), "number " + Quoted(text) + " in group " + std::to_string(group.code) +
                                  " of " + Str(record_.name) + " is out of range");
    }
    return value;
  }

  double Number(int code, std::string_view what) const { return Number(Required(code, what)); }

  double NumberOr(int code, double fallback) const {
    const Pair* group = Find(code);
    return group == nullptr ? fallback : Number(*group);
  }

  int Integer(const Pair& group) const {
    const std::string_view text = Trim(group.value);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
      Fail(group.valueLine(), "bad integer " + Quoted(group.value) + " in group " +
                                  std::to_string(group.code) + " of " + Str(record_.name));
    }
    return value;
  }

  DrawingPoint Point(int xCode, std::string_view what) const {
    const std::string x = Str(what) + " x";
    const std::string y = Str(what) + " y";
    DrawingPoint point{Number(xCode, x), Number(xCode + 10, y)};
    NumberOr(xCode + 20, 0);  // Z: checked, drawn flat
    return point;
  }

  std::size_t Layer() const {
    const Pair& group = Required(8, "layer");
    const auto found = std::find(kDrawingLayers.begin(), kDrawingLayers.end(), group.name());
    if (found == kDrawingLayers.end()) {
      Fail(group.valueLine(), "unknown layer " + Quoted(group.value) + " in " + Str(record_.name));
    }
    return static_cast<std::size_t>(found - kDrawingLayers.begin());
  }

 private:
  const Record& record_;
  const Source& source_;
};

class DxfParser {
 public:
  DxfParser(ByteSource& bytes, std::string_view sourceName)
      : source_(sourceName), pairs_(bytes, source_) {}

  DxfDrawing Parse() {
    if (pairs_.AtEnd()) {
      source_.Fail(1, "", "not a DXF file: it is empty");
    }
    std::optional<Pair> first;
    try {
      first = pairs_.Peek();
    } catch (const DxfReadError&) {
      first.reset();
    }
    if (!first || !first->Is(0, "SECTION")) {
      source_.Fail(1, "", "not a DXF file: it does not begin with a SECTION record");
    }
    bool seenHeader = false;
    bool seenEntities = false;
    for (;;) {
      const Pair head = Next("file ends before the EOF record");
      if (head.code != 0) {
        source_.Fail(head.line, "",
                     "unexpected group " + std::to_string(head.code) + " between sections");
      }
      const std::string_view name = head.name();
      if (name == "EOF") {
        if (const auto extra = pairs_.NextNonBlankLine()) {
          source_.Fail(*extra, "EOF", "content after the EOF record");
        }
        return std::move(drawing_);
      }
      if (name != "SECTION") {
        if (IsEntityName(name)) {
          source_.Fail(head.valueLine(), name, Abbreviated(name) + " outside the ENTITIES section");
        }
        source_.Fail(head.valueLine(), name, "unsupported record " + Abbreviated(name));
      }
      const Pair section = Next("file ends after SECTION without its name");
      if (section.code != 2) {
        source_.Fail(section.line, "SECTION", "SECTION without its name (group 2)");
      }
      if (section.name() == "HEADER" && !seenHeader && !seenEntities) {
        seenHeader = true;
        ReadHeader();
      } else if (section.name() == "ENTITIES" && !seenEntities) {
        seenEntities = true;
        ReadEntities();
      } else if (section.name() == "HEADER" || section.name() == "ENTITIES") {
        source_.Fail(section.valueLine(), "SECTION",
                     "unexpected " + Str(section.name()) + " section (one HEADER, then ENTITIES)");
      } else {
        source_.Fail(section.valueLine(), "SECTION",
                     "unsupported section " + Abbreviated(section.name()));
      }
    }
  }

 private:
  static bool IsEntityName(std::string_view name) {
    for (const std::string_view known :
         {"LINE", "CIRCLE", "SOLID", "POLYLINE", "VERTEX", "SEQEND", "TEXT"}) {
      if (name == known) {
        return true;
      }
    }
    return false;
  }

  // The next pair; at the end of the file, a truncation error saying what is missing.
  Pair Next(const std::string& whenMissing, std::string_view record = "") {
    if (pairs_.AtEnd()) {
      source_.Fail(pairs_.LastLine(), record, whenMissing);
    }
    return pairs_.Take();
  }

  Record ReadRecord(const Pair& head) {
    Record record{Str(head.name()), head.valueLine(), {}};
    while (!pairs_.AtEnd() && pairs_.Peek().code != 0) {
      record.groups.push_back(pairs_.Take());
    }
    return record;
  }

  void ReadHeader() {
    for (;;) {
      const Pair pair = Next("file ends inside the HEADER section (no ENDSEC)");
      if (pair.Is(0, "ENDSEC")) {
        return;
      }
      if (pair.code == 0) {
        source_.Fail(pair.valueLine(), "HEADER",
                     "HEADER section ends without ENDSEC (found " + Abbreviated(pair.name()) + ")");
      }
      if (pair.code != 9) {
        source_.Fail(pair.line, "HEADER",
                     "unsupported group " + std::to_string(pair.code) + " in HEADER");
      }
      if (pair.name() != "$ACADVER") {
        source_.Fail(pair.valueLine(), "HEADER",
                     "unsupported header variable " + Abbreviated(pair.name()));
      }
      const Pair version = Next("file ends after $ACADVER without its value");
      if (version.code != 1) {
        source_.Fail(version.line, "HEADER", "$ACADVER without its value (group 1)");
      }
      if (version.name() != "AC1009") {
        source_.Fail(
            version.valueLine(), "HEADER",
            "unsupported DXF version " + Abbreviated(version.name()) + " (AC1009 is read)");
      }
    }
  }

  void ReadEntities() {
    for (;;) {
      const Pair head = Next("file ends inside the ENTITIES section (no ENDSEC)");
      if (head.code != 0) {
        source_.Fail(head.line, "",
                     "expected a record (group 0), found group " + std::to_string(head.code));
      }
      const std::string_view name = head.name();
      if (name == "ENDSEC") {
        const Record record = ReadRecord(head);
        const Fields nothingElse(record, {}, source_);
        return;
      }
      if (name == "LINE") {
        const Record record = ReadRecord(head);
        const Fields f(record, {8, 10, 20, 30, 11, 21, 31}, source_);
        const std::size_t layer = f.Layer();
        Add(record, layer, DrawnLine{f.Point(10, "start"), f.Point(11, "end")});
      } else if (name == "CIRCLE") {
        const Record record = ReadRecord(head);
        const Fields f(record, {8, 10, 20, 30, 40}, source_);
        const std::size_t layer = f.Layer();
        Add(record, layer, DrawnCircle{f.Point(10, "centre"), f.Number(40, "radius")});
      } else if (name == "SOLID") {
        const Record record = ReadRecord(head);
        const Fields f(record, {8, 10, 20, 30, 11, 21, 31, 12, 22, 32, 13, 23, 33}, source_);
        const std::size_t layer = f.Layer();
        Add(record, layer,
            DrawnSolid{{f.Point(10, "first corner"), f.Point(11, "second corner"),
                        f.Point(12, "third corner"), f.Point(13, "fourth corner")}});
      } else if (name == "TEXT") {
        const Record record = ReadRecord(head);
        const Fields f(record, {8, 10, 20, 30, 40, 50, 1}, source_);
        const std::size_t layer = f.Layer();
        DrawnText text{f.Point(10, "insertion point"), f.Number(40, "height"), f.NumberOr(50, 0),
                       Str(f.Required(1, "text value").value)};
        Add(record, layer, std::move(text));
      } else if (name == "POLYLINE") {
        ReadPolyline(ReadRecord(head));
      } else if (name == "VERTEX" || name == "SEQEND") {
        source_.Fail(head.valueLine(), name, Abbreviated(name) + " outside a POLYLINE");
      } else if (name == "EOF" || name == "SECTION") {
        source_.Fail(head.valueLine(), name, "ENTITIES section ends without ENDSEC");
      } else {
        source_.Fail(head.valueLine(), name, "unsupported record " + Abbreviated(name));
      }
    }
  }

  void ReadPolyline(const Record& record) {
    const Fields f(record, {8, 66, 70, 10, 20, 30, 40, 41}, source_);
    const std::size_t layer = f.Layer();
    if (f.Integer(f.Required(66, "vertices-follow flag")) != 1) {
      f.Fail(f.Find(66)->valueLine(), "POLYLINE vertices-follow flag (group 66) must be 1");
    }
    DrawnPolyline polyline;
    if (const Pair* flags = f.Find(70)) {
      const int value = f.Integer(*flags);
      if (value != 0 && value != 1) {
        f.Fail(flags->valueLine(),
               "unsupported POLYLINE flags " + std::to_string(value) + " (0 open, 1 closed)");
      }
      polyline.closed = value == 1;
    }
    f.NumberOr(10, 0);  // the base point is a dummy
    f.NumberOr(20, 0);
    f.NumberOr(30, 0);
    const double start = f.NumberOr(40, 0);
    const double end = f.NumberOr(41, 0);
    const auto shown = [&f](int code) {
      const Pair* group = f.Find(code);
      return group == nullptr ? std::string("0") : Abbreviated(group->name());
    };
    if (start != end) {
      f.Fail(record.line,
             "tapered POLYLINE (widths " + shown(40) + " and " + shown(41) + ") is not supported");
    }
    // A design may give a line a negative width and the exporter writes it as given; it is
    // drawn at its magnitude, as a negative circle radius is.
    polyline.width = std::fabs(start);

    const std::string unfinished =
        "POLYLINE from line " + std::to_string(record.line) + " ends without SEQEND";
    for (;;) {
      const Pair head = Next(
          "file ends inside the POLYLINE from line " + std::to_string(record.line) + " (no SEQEND)",
          "POLYLINE");
      const std::string_view name = head.name();
      if (name != "VERTEX" && name != "SEQEND") {
        source_.Fail(head.valueLine(), "POLYLINE",
                     unfinished + " (found " + Abbreviated(name) + ")");
      }
      const Record part = ReadRecord(head);
      const bool isVertex = name == "VERTEX";
      const Fields v =
          isVertex ? Fields(part, {8, 10, 20, 30, 42}, source_) : Fields(part, {8}, source_);
      if (v.Layer() != layer) {
        v.Fail(v.Find(8)->valueLine(), Str(name) + " on layer " + Quoted(v.Find(8)->name()) +
                                           " inside a POLYLINE on layer " +
                                           Quoted(kDrawingLayers[layer]));
      }
      if (!isVertex) {
        break;
      }
      polyline.vertices.push_back({v.Point(10, "vertex"), v.NumberOr(42, 0)});
    }
    Add(record, layer, std::move(polyline));
  }

  template <typename Shape>
  void Add(const Record& record, std::size_t layer, Shape shape) {
    // Filled in place: building the entity from a braced list trips a false uninitialized
    // warning in GCC's variant.
    DxfEntity& entity = drawing_.entities.emplace_back();
    entity.layer = layer;
    entity.line = record.line;
    entity.shape.emplace<Shape>(std::move(shape));
  }

  Source source_;
  PairReader pairs_;
  DxfDrawing drawing_;
};

}  // namespace
}  // namespace render_detail

DxfDrawing ReadDxf(ByteSource& bytes, std::string_view sourceName) {
  return render_detail::DxfParser(bytes, sourceName).Parse();
}

DxfDrawing ReadDxf(std::string_view dxf, std::string_view sourceName) {
  render_detail::MemoryBytes bytes(dxf);
  return ReadDxf(bytes, sourceName);
}

}  // namespace kalmor
