// Design documents made to hurt the reader and the export: nesting far deeper than any design,
// strings of 20 MB, a polygon of a million points, bytes that are not UTF-8 and files that
// cannot be read. Each is refused with a short error that says where, or read and exported
// whole.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "hardening/export_in_memory.h"
#include "kalmor/export.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "render/dxf_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::size_t kDeep = 100000;
// Built with the sanitizers, strings are a tenth as long and the bounds on memory are not checked:
// the sanitizers' own bookkeeping would be what they measure.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
constexpr std::size_t kHuge = (kSanitized ? 2 : 20) * 1024 * 1024;
constexpr std::size_t kLong = 1024 * 1024;
// Messages quote what they complain about, but never a whole huge value.
constexpr std::size_t kLongestMessage = 1024;

std::string Repeat(std::string_view piece, std::size_t times) {
  std::string text;
  text.reserve(piece.size() * times);
  for (std::size_t i = 0; i < times; ++i) {
    text += piece;
  }
  return text;
}

// A design with one schematic S and one page P holding `pageMembers`, and `symbols`. The page
// shows no frame, so that every record written comes from the members.
std::string Document(const std::string& pageMembers, const std::string& symbols = "{}",
                     const std::string& names = R"("name": "D")") {
  return R"({"kalmor_design": 1, )" + names + R"(, "symbols": )" + symbols +
         R"(, "schematics": [{"name": "S", "pages": [{"name": "P", "border": {"visible": false})" +
         (pageMembers.empty() ? "" : ", " + pageMembers) + "}]}]}";
}

// One text of each kind that a page writes, and the design's name.
struct TextsOfEveryKind {
  std::string designName;
  std::string value;  // of a part's property
  std::string pinName;
  std::string pinNumber;
  std::string symbolText;  // a comment text of the part's symbol, measured to place it
  std::string alias;       // a wire's net name
  std::string comment;     // a comment text on the page
};

std::string Document(const TextsOfEveryKind& t) {
  return Document(R"("parts": [{"id": "U1", "symbol": {"vectors": [
                      {"type": "text", "rect": [0, 0, 10, 10], "text": ")" +
                      t.symbolText + R"("}]},
                    "properties": [{"name": "Value", "value": ")" +
                      t.value + R"("}],
                    "pins": [{"name": ")" +
                      t.pinName + R"(", "number": ")" + t.pinNumber +
                      R"(", "start": [0, 5], "end": [10, 5]}]}],
                  "wires": [{"start": [0, 0], "end": [1, 0],
                             "aliases": [{"name": ")" +
                      t.alias + R"(", "location": [0, 0]}]}],
                  "graphics": [{"type": "text", "rect": [0, 0, 10, 10], "text": ")" +
                      t.comment + R"("}])",
                  "{}", R"("name": ")" + t.designName + R"(")");
}

// The message of the error that reading `json` raises.
std::string ReadError(const std::string& json) {
  const auto error =
      Thrown<model::DesignDocumentError>([&] { model::ReadDesignDocument(json, "hostile.json"); });
  return error ? error->what() : "";
}

// A line of /proc/self/status, in bytes: VmHWM is the most memory the process has held at once
// since it started or since the peak was reset, VmRSS what it holds now.
std::size_t StatusBytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field + ":")) {
      return std::stoul(line.substr(field.size() + 1)) * 1024;
    }
  }
  return 0;
}

// Starts the peak again from what the process holds now, and says whether that worked: a bound
// on the growth of the peak means nothing unless the peak was reset.
bool ResetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
  return StatusBytes("VmHWM") <= StatusBytes("VmRSS") + (1 << 20) && StatusBytes("VmRSS") > 0;
}

// The values of the TEXT records of the one page of `design`, in order, read back by the strict
// reader of the renderer (every record whole, every number finite).
std::vector<std::string> PageTexts(const model::Design& design) {
  const std::vector<std::string> pages = ExportPagesInMemory(design);
  std::vector<std::string> values;
  EXPECT_EQ(pages.size(), 1u);
  for (const DxfEntity& entity : ReadDxf(pages.at(0), "page.dxf").entities) {
    if (const auto* text = std::get_if<DrawnText>(&entity.shape)) {
      values.push_back(text->value);
    }
  }
  return values;
}

TEST(HostileDocumentsTest, NestingAHundredThousandDeepIsRefusedWithItsPlace) {
  const std::string vector = R"({"type": "vector", "location": [0, 0], "members": [)";
  struct Case {
    std::string name;
    std::string json;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"arrays as the document", Repeat("[", kDeep) + Repeat("]", kDeep),
       "hostile.json:1:1: expected an object (a design document), got an array of 1 value"},
      {"arrays as the schematics",
       R"({"kalmor_design": 1, "name": "D", "schematics": )" + Repeat("[", kDeep) +
           Repeat("]", kDeep) + "}",
       "/schematics/0: expected an object, got an array of 1 value"},
      {"objects in an unknown field",
       R"({"kalmor_design": 1, "name": "D", "schematics": [], "x": )" + Repeat(R"({"a": )", kDeep) +
           "1" + Repeat("}", kDeep) + "}",
       "/x: unknown field"},
      {"arrays left open", R"({"kalmor_design": 1, "schematics": )" + Repeat("[", kDeep),
       "not valid JSON: syntax error while parsing value - unexpected end of input"},
      {"vectors in vectors",
       Document("", R"({"S": {"vectors": [)" + Repeat(vector, kDeep) +
                        R"({"type": "line", "start": [0, 0], "end": [1, 1]})" +
                        Repeat("]}", kDeep) + "]}}"),
       "/members: vectors nested more than 32 deep"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string message = ReadError(c.json);
    EXPECT_THAT(message, HasSubstr(c.message));
    EXPECT_THAT(message, StartsWith("hostile.json:"));
  }
}

// A place deeper than a message can show keeps its first and last steps and says how many
// steps lie between.
TEST(HostileDocumentsTest, DeepPlacesAreShortenedInTheMiddle) {
  const std::string longName(300, 'k');
  const struct {
    const char* what;
    std::string json;
    const char* starts;
    const char* ends;
  } cases[] = {
      {"arrays left open", R"({"kalmor_design": 1, "schematics": )" + Repeat("[", kDeep),
       ": /schematics/0/0/0/", "/0/0/0: not valid JSON"},
      {"objects of long names",
       R"({"kalmor_design": 1, "name": "D", "schematics": [], "x": )" +
           Repeat(R"({")" + longName + R"(": )", kDeep) + "1",
       ": /x/kkkk", "kkk...: not valid JSON"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string message = ReadError(c.json);
    EXPECT_LT(message.size(), 400u) << message;
    EXPECT_THAT(message, HasSubstr(c.starts));
    EXPECT_THAT(message, HasSubstr(c.ends));
    EXPECT_THAT(message, HasSubstr(" more steps)..."));
  }
}

// Texts of 20 MB where the export works through a whole text: a pin name (its overbars
// converted) and a comment text (laid out in its box); the other kinds are long too.
TEST(HostileDocumentsTest, TwentyMegabyteStringsAreReadAndWrittenCut) {
  const std::string huge(kHuge, 'x');
  const std::string longText(kLong, 'x');
  TextsOfEveryKind texts{.designName = longText,
                         .value = longText,
                         .pinName = Repeat(R"(N\\)", kHuge / 2),  // every character overlined
                         .pinNumber = "",
                         .symbolText = longText,
                         .alias = longText,
                         .comment = huge};
  const auto design = model::ReadDesignDocument(Document(texts), "huge.json");
  EXPECT_EQ(design->name(), longText);
  const std::string cut(250, 'x');
  // The pin's name is one overlined run, cut after its toggle and 247 letters; its number is
  // empty.
  EXPECT_THAT(PageTexts(*design),
              ::testing::ElementsAre(cut, "%%o" + std::string(247, 'N'), "", cut, cut, cut));
}

// Whatever a complaint quotes (a member name, a symbol, a type, an id, a schematic, what the
// parser read last), it quotes a few dozen bytes of it.
TEST(HostileDocumentsTest, LongStringsInComplaintsAreShortened) {
  const std::string y(kLong, 'y');
  const std::vector<std::string> documents = {
      R"({"kalmor_design": 1, "name": "D", "schematics": [], ")" + y + R"(": 1})",
      Document(R"("globals": [{"symbol": ")" + y + R"("}])"),
      Document(R"("graphics": [{"type": ")" + y + R"("}])"),
      Document(R"("parts": [{"id": ")" + y + R"(/", "symbol": {}}])"),
      R"({"kalmor_design": 1, "name": "D", "root": ")" + y + R"(", "schematics": []})",
      Document("", R"({"S": {"vectors": [{"type": "text", "rect": [0, 0, 1, 1], "text": "t",
                     "font": {"face": ")" +
                       y + R"("}}]}})"),
      R"({"kalmor_design": 1, "name": ")" + y,
  };
  for (const std::string& json : documents) {
    const std::string message = ReadError(json);
    EXPECT_THAT(message, StartsWith("hostile.json:"));
    EXPECT_LE(message.size(), kLongestMessage) << message.substr(0, kLongestMessage);
  }
}

// Text taller than 32 bits: many lines in the largest font, measured for a symbol's text box.
TEST(HostileDocumentsTest, SymbolTextTallerThanThirtyTwoBitsIsWrittenLineByLine) {
  const std::string lines = Repeat("\\r", 40000);
  for (const int escapement : {0, 900, 1800, 2700}) {
    SCOPED_TRACE(escapement);
    const std::string json = Document(R"("parts": [{"id": "U1", "location": [100, 100],
        "symbol": {"vectors": [{"type": "text", "rect": [0, 0, 10, 10], "text": ")" +
                                      lines + R"(",
          "font": {"height": -2147483647, "escapement": )" +
                                      std::to_string(escapement) + "}}]}}]");
    EXPECT_EQ(PageTexts(*model::ReadDesignDocument(json, "tall.json")).size(), 40001u);
  }
}

// Bytes of names and texts that are not UTF-8 are the host's already: whatever they are, they
// reach the file unchanged, beside UTF-8 converted to the host's code page.
TEST(HostileDocumentsTest, BytesThatAreNotUtf8PassThroughUnchanged) {
  // A lone continuation byte, a lead byte without its continuation, an overlong slash, an
  // encoded surrogate, a byte never used, a sequence cut by the end of the string, and text in
  // a single-byte code page.
  const std::vector<std::string> samples = {"\x80",
                                            "\xc3(",
                                            "\xc0\xaf",
                                            "\xed\xa0\x80",
                                            "\xff",
                                            "ab\xe2\x82",
                                            "Stra\xdf"
                                            "e \xc4rger"};
  for (const std::string& bytes : samples) {
    SCOPED_TRACE(::testing::PrintToString(bytes));
    const TextsOfEveryKind texts{bytes, bytes, bytes, bytes, bytes, bytes, "\\u00e9" + bytes};
    const auto design = model::ReadDesignDocument(Document(texts), "bytes.json");
    EXPECT_EQ(design->name(), bytes);
    EXPECT_THAT(PageTexts(*design),
                ::testing::ElementsAre(bytes, bytes, bytes, bytes, bytes, "\xe9" + bytes));
  }
  // Outside strings such bytes are not JSON.
  EXPECT_THAT(ReadError(Document(R"("width": 1)"
                                 "\xff")),
              HasSubstr("not valid JSON"));
}

// A million points go out as a million vertices through the file's own buffer: the export adds
// little to the memory the design already takes.
TEST(HostileDocumentsTest, MillionPointPolygonIsStreamedToItsFile) {
  if (kSanitized) {
    GTEST_SKIP() << "a bound on memory means nothing under the sanitizers";
  }
  constexpr int kPoints = 1000000;
  std::string points;
  points.reserve(kPoints * 16);
  for (int i = 0; i < kPoints; ++i) {
    points +=
        (i == 0 ? "[" : ", [") + std::to_string(i % 10000) + ", " + std::to_string(i / 100) + "]";
  }
  const auto design = model::ReadDesignDocument(
      Document(R"("graphics": [{"type": "polygon", "width": 1, "points": [)" + points + "]}]"),
      "million.json");

  const TempDir temp;
  ASSERT_TRUE(ResetPeak());
  const std::size_t before = StatusBytes("VmHWM");
  DesignToDXF(design.get(), (temp / "million.dxf").string(), 0, 1, 1);
  const std::size_t growth = StatusBytes("VmHWM") - before;

  const std::string dxf = ReadFileBytes(temp / "million_S_P.dxf");
  const DxfDrawing read = ReadDxf(dxf, "million.dxf");
  ASSERT_EQ(read.entities.size(), 1u);
  EXPECT_EQ(std::get<DrawnPolyline>(read.entities[0].shape).vertices.size(), std::size_t{kPoints});
  EXPECT_GT(dxf.size(), 60u * kPoints);
  EXPECT_LT(growth, dxf.size() / 8) << "the export held " << growth << " bytes at its peak";
}

TEST(HostileDocumentsTest, FileThatCannotBeReadIsNamedWithTheReason) {
  const TempDir temp;
  std::ofstream(temp / "plain") << "{}";
  const std::string folder = temp.path().string();
  const std::vector<std::pair<std::string, std::string>> cases = {
      {folder, ": it is a directory; only files and pipes are read"},
      {(temp / "missing.json").string(), ": No such file or directory"},
      {(temp / "plain" / "x.json").string(), ": Not a directory"},
  };
  for (const auto& [path, reason] : cases) {
    EXPECT_EQ(ThrownMessage<model::DesignDocumentError>([&] { model::LoadDesignDocument(path); }),
              "cannot read " + path + reason);
  }
}

TEST(HostileDocumentsTest, BlankLinesAfterADrawingAreReadWithoutBeingHeld) {
  if (kSanitized) {
    GTEST_SKIP() << "a bound on memory means nothing under the sanitizers";
  }
  const auto design = model::ReadDesignDocument(Document(R"("wires": [{"start": [0, 0],
      "end": [10, 0]}])"),
                                                "wire.json");
  std::string dxf = ExportPagesInMemory(*design)[0];
  dxf.append(50'000'000, '\n');
  ASSERT_TRUE(ResetPeak());
  const std::size_t before = StatusBytes("VmHWM");
  EXPECT_EQ(ReadDxf(dxf, "blank.dxf").entities.size(),
            ReadDxf(dxf.substr(0, dxf.find("EOF") + 5), "page.dxf").entities.size());
  EXPECT_LT(StatusBytes("VmHWM") - before, dxf.size() / 4) << "the lines were held";
}

}  // namespace
}  // namespace kalmor::test
