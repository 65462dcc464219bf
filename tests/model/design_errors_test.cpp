// Bad design documents are refused with the document's name, the place and what was expected.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor {
namespace {

using ::testing::HasSubstr;
using testing::OnePageDesign;
using ::testing::StartsWith;

std::string ErrorOf(const std::string& json) {
  return testing::DocumentError(json, "board.json", "(accepted)");
}

std::string Schematics(const std::string& schematics) {
  return R"({"kalmor_design": 1, "name": "D", "schematics": [)" + schematics + "]}";
}

TEST(DesignErrors, ExactMessagesNameDocumentLineColumnAndPath) {
  EXPECT_EQ(ErrorOf("{\n  \"kalmor_design\": 1\n  \"name\": \"D\"\n}"),
            "board.json:3:8: not valid JSON: syntax error while parsing object - unexpected "
            "string literal; expected '}'");
  const std::string wire = OnePageDesign(R"("wires": [{"start": "here", "end": [0, 0]}])");
  EXPECT_EQ(ErrorOf(wire), "board.json:1:" + std::to_string(wire.find("\"here\"") + 1) +
                               ": /schematics/0/pages/0/wires/0/start: expected [x, y] of two "
                               "integers, got a string");
  EXPECT_EQ(ErrorOf(R"({"kalmor_design": 2, "name": "D", "schematics": []})"),
            "board.json:1:19: /kalmor_design: unsupported format version 2 (this reader reads "
            "version 1)");
  EXPECT_EQ(ErrorOf("{\"kalmor_design\": 1,\n \"schematics\": [],\n\n   \"name\": 5}"),
            "board.json:4:12: /name: expected a string, got 5");
  EXPECT_EQ(ErrorOf("[]"),
            "board.json:1:1: expected an object (a design document), got an empty array");
}

TEST(DesignErrors, EveryClassOfBadInputNamesItsPath) {
  struct Case {
    const char* what;
    std::string json;
    const char* pointer;
    const char* message;
  };
  const std::string face32(32, 'F');
  const Case cases[] = {
      {"not JSON", "{\"kalmor_design\": 1,", "", "not valid JSON"},
      {"wrong version type", R"({"kalmor_design": "1"})", "/kalmor_design",
       "expected the format version 1, got a string"},
      {"missing version", R"({"name": "D"})", "/kalmor_design", "required, but missing"},
      {"wrong type", OnePageDesign(R"("border": {"visible": 1})"),
       "/schematics/0/pages/0/border/visible", "expected true or false, got 1"},
      {"unknown field", OnePageDesign(R"("wires": [{"start": [0, 0], "end": [1, 1], "colr": 1}])"),
       "/schematics/0/pages/0/wires/0/colr", "unknown field"},
      {"field twice", OnePageDesign(R"("width": 10, "width": 20)"), "/schematics/0/pages/0/width",
       "field given twice"},
      {"integer beyond 32 bits",
       OnePageDesign(R"("globals": [{"symbol": {}, "rotation": 2147483648}])"),
       "/schematics/0/pages/0/globals/0/rotation", "expected an integer of 32 bits"},
      {"real for an integer", OnePageDesign(R"("height": 8500.5)"), "/schematics/0/pages/0/height",
       "expected an integer, got 8500.5"},
      {"pin_to_pin zero", OnePageDesign(R"("pin_to_pin": 0)"), "/schematics/0/pages/0/pin_to_pin",
       "greater than 0, got 0"},
      {"pin_to_pin negative", OnePageDesign(R"("pin_to_pin": -100)"),
       "/schematics/0/pages/0/pin_to_pin", "greater than 0, got -100"},
      {"border count zero", OnePageDesign(R"("border": {"vertical_count": 0})"),
       "/schematics/0/pages/0/border/vertical_count", "from 1 to 99, got 0"},
      {"missing block schematic",
       OnePageDesign(
           R"("parts": [{"id": "B1", "kind": "block", "schematic": "NONE", "symbol": {}}])"),
       "/schematics/0/pages/0/parts/0/schematic", "no schematic named \"NONE\""},
      {"schematic instantiates itself through another",
       Schematics(R"({"name": "A", "pages": [{"name": "1", "parts": [
           {"id": "B", "kind": "block", "schematic": "B", "symbol": {}}]}]},
         {"name": "B", "pages": [{"name": "1", "parts": [
           {"id": "A", "kind": "block", "schematic": "A", "symbol": {}}]}]})"),
       "/schematics/1/pages/0/parts/0/schematic",
       "schematic \"A\" instantiates itself (A -> B -> A)"},
      {"missing symbol", OnePageDesign(R"("globals": [{"symbol": "VCC"}])"),
       "/schematics/0/pages/0/globals/0/symbol", "no symbol named \"VCC\""},
      {"duplicate part id",
       Schematics(R"({"name": "S", "pages": [{"name": "1", "parts": [{"id": "U1", "symbol": {}}]},
                                            {"name": "2", "parts": [{"id": "U1", "symbol": {}}]}]})"),
       "/schematics/0/pages/1/parts/0/id",
       "part id \"U1\" is used twice in this schematic (first at /schematics/0/pages/0/parts/0)"},
      {"face too long",
       OnePageDesign(
           R"("wires": [{"start": [0, 0], "end": [1, 1], "aliases": [{"name": "A", "location": [0, 0], "font": {"face": ")" +
           face32 + R"("}}]}])"),
       "/schematics/0/pages/0/wires/0/aliases/0/font/face", "at most 31 bytes, got 32 bytes"},
      {"scale factor beyond doubles", OnePageDesign(R"("pin_to_pin_scale_factor": -1e400)"),
       "/schematics/0/pages/0/pin_to_pin_scale_factor", "the number -1e400 is too large to hold"},
      {"page beyond the coordinate range once mapped",
       OnePageDesign(R"("pin_to_pin": 1, "width": 2000000000)"), "/schematics/0/pages/0/width",
       "is 20000000000 tenths of pin_to_pin 1, beyond 16777216"},
      {"unknown occurrence path",
       OnePageDesign(
           R"("wires": [{"start": [0, 0], "end": [1, 1], "properties": [{"name": "N", "values": {"/U9": "x"}}]}])"),
       "/schematics/0/pages/0/wires/0/properties/0/values/~1U9",
       "no occurrence of schematic \"S\""},
      {"graphic field of another kind",
       OnePageDesign(R"("graphics": [{"type": "box", "rect": [0, 0, 1, 1], "points": []}])"),
       "/schematics/0/pages/0/graphics/0/points", "not a field of a box graphic"},
      {"vector on a page",
       OnePageDesign(R"("graphics": [{"type": "vector", "location": [0, 0], "members": []}])"),
       "/schematics/0/pages/0/graphics/0/type", "only among a symbol's vectors"},
      {"occurrence path twice", Schematics(R"({"name": "TOP", "pages": [{"name": "1", "parts": [
           {"id": "B", "kind": "block", "schematic": "SUB", "symbol": {}}]}]},
         {"name": "SUB", "pages": [{"name": "1", "wires": [{"start": [0, 0], "end": [1, 1],
           "properties": [{"name": "N", "values": {"/B": "1", "/B": "2"}}]}]}]})"),
       "/schematics/1/pages/0/wires/0/properties/0/values/~1B", "occurrence path given twice"},
      {"pin text for another part's occurrence",
       Schematics(R"({"name": "TOP", "pages": [{"name": "1", "parts": [
           {"id": "U1", "symbol": {}},
           {"id": "U2", "symbol": {}, "pins": [{"start": [0, 0], "end": [1, 1],
            "occurrences": {"/U1": {"name": "X"}}}]}]}]})"),
       "/schematics/0/pages/0/parts/1/pins/0/occurrences/~1U1",
       "no occurrence of part \"U2\" has this path"},
      {"root missing", R"({"kalmor_design": 1, "name": "D", "root": "R", "schematics": []})",
       "/root", "no schematic named \"R\""},
  };
  for (const Case& c : cases) {
    const std::string error = ErrorOf(c.json);
    EXPECT_THAT(error, StartsWith("board.json:")) << c.what;
    EXPECT_THAT(error, HasSubstr(std::string(": ") + c.pointer + (*c.pointer ? ": " : "")))
        << c.what;
    EXPECT_THAT(error, HasSubstr(c.message)) << c.what;
  }
}

TEST(DesignErrors, HierarchyThatMultipliesBeyondTheLimitIsRefused) {
  // Every level places the next twice: 2^23 leaves below the root.
  std::string schematics;
  for (int level = 0; level < 23; ++level) {
    const std::string next = "L" + std::to_string(level + 1);
    schematics += R"({"name": "L)" + std::to_string(level) +
                  R"(", "pages": [{"name": "1", "parts": [
        {"id": "A", "kind": "block", "schematic": ")" +
                  next + R"(", "symbol": {}},
        {"id": "B", "kind": "block", "schematic": ")" +
                  next + R"(", "symbol": {}}]}]},)";
  }
  schematics +=
      R"({"name": "L23", "pages": [{"name": "1", "parts": [{"id": "R", "symbol": {}}]}]})";
  EXPECT_THAT(ErrorOf(Schematics(schematics)),
              HasSubstr(": /root: the hierarchy below schematic \"L0\" has more than 1048576 "
                        "occurrences"));
}

TEST(DesignErrors, EveryTruncationIsRefusedAtItsEnd) {
  const std::string tiny = testing::ReadFileBytes(testing::SourceDir() / "examples" / "tiny.json");
  const std::size_t closing = tiny.rfind('}');
  for (std::size_t length = 0; length <= closing; ++length) {
    const std::string error = ErrorOf(tiny.substr(0, length));
    ASSERT_THAT(error, StartsWith("board.json:")) << length;
    ASSERT_THAT(error, HasSubstr("not valid JSON")) << length;
  }
}

TEST(DesignErrors, UnreadableFilesAreNamed) {
  testing::TempDir dir;
  for (const std::string& path : {(dir / "none.json").string(), dir.path().string()}) {
    try {
      model::LoadDesignDocument(path);
      ADD_FAILURE() << path << " was read";
    } catch (const model::DesignDocumentError& error) {
      EXPECT_THAT(error.what(), StartsWith("cannot read " + path + ": "));
    }
  }
}

}  // namespace
}  // namespace kalmor
