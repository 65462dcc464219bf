// The fast reading of a design document makes exactly the design the careful reading makes, or
// leaves the document to it; it never accepts what the careful reading refuses.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "hardening/export_in_memory.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/document_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor::test {
namespace {

// Everything a design shows: its name, and every page with its schematic's and its own name as a
// design export writes it.
std::string Shown(std::unique_ptr<model::detail::DesignData> data) {
  const model::Design design(std::move(data));
  std::string shown = design.name() + "\n";
  const std::vector<std::string> pages = ExportPagesInMemory(design);
  DboState state;
  std::size_t index = 0;
  VisitDesignPages(
      design, state,
      [&](const DboPage& page, const DboInstOccurrence*, const std::string& schematic) {
        std::string name;
        page.GetName(name, state);
        shown += schematic + "/" + name + "\n" + pages.at(index++);
      });
  return shown;
}

// What the careful reading makes of `json`, or its complaint.
std::string Carefully(std::string_view json) {
  try {
    return Shown(model::detail::ReadCarefully(json, "doc.json"));
  } catch (const model::DesignDocumentError& error) {
    return std::string("refused: ") + error.what();
  }
}

// What the fast reading makes of `json`, or "" when it leaves it to the careful one.
std::string Fast(std::string_view json) {
  std::string padded(json);
  padded.resize(json.size() + 64);
  auto data = model::detail::ReadFast(std::string_view(padded).substr(0, json.size()), 64);
  return data != nullptr ? Shown(std::move(data)) : "";
}

std::string Page(std::string_view members) {
  return OnePageDesign(members);
}

TEST(FastReading, MakesTheDesignTheCarefulReadingMakes) {
  const std::string wire = R"("wires": [{"start": [0, 0], "end": [100, 0], "aliases": [)";
  const struct {
    const char* what;
    std::string json;
  } cases[] = {
      {"escapes in names and texts",
       Page(wire + R"({"name": "N\u00e9T\"1\\\n\t\/x\ud83d\ude00", "location": [0, 0]}]}])")},
      {"a NUL escaped in a text", Page(wire + R"({"name": "A\u0000B", "location": [0, 0]}]}])")},
      {"integers at the ends of 32 bits and of the coordinates",
       Page(R"("width": 2147483647, "height": -2147483648, "pin_to_pin": 2147483647,
               "wires": [{"start": [-16777216, 16777216], "end": [0, -0]}])")},
      {"a scale factor written as the integer -0",
       Page(R"("pin_to_pin_scale_factor": -0, "title_blocks": [{"location": [10, 10],
               "symbol": {"vectors": [{"type": "line", "start": [0, 0], "end": [20, 20]}]}}])")},
      {"a negative zero real", Page(R"("pin_to_pin_scale_factor": -0.0)")},
      {"an exponent", Page(R"("pin_to_pin_scale_factor": 25E-1)")},
      {"a real below the smallest double", Page(R"("pin_to_pin_scale_factor": 1e-400)")},
      {"a real of many digits",
       Page(
           R"("pin_to_pin_scale_factor": 1.00000000000000011102230246251565404236316680908203125)")},
      {"whitespace of every kind",
       "\t{\r\n\"kalmor_design\"\t:\n1 ,\"name\" : \"D\",\r\n"
       "\"schematics\":[ ] }\n\n"},
      {"members in any order, symbols last",
       R"({"schematics": [{"pages": [{"parts": [{"symbol": "S", "id": "U1"}], "name": "P"}],
           "name": "S"}], "name": "D", "symbols": {"S": {"vectors": [{"type": "text",
           "rect": [0, 0, 10, 10], "text": "T\r\nU", "font": {"face": "Arial", "height": 12}}]}},
           "kalmor_design": 1})"},
      {"occurrence paths with escapes", R"({"kalmor_design": 1, "name": "D", "root": "TOP",
           "schematics": [{"name": "TOP", "pages": [{"name": "1", "parts": [
             {"id": "B1", "kind": "block", "schematic": "SUB", "symbol": {}}]}]},
           {"name": "SUB", "pages": [{"name": "1", "wires": [{"start": [0, 0], "end": [1, 1],
             "properties": [{"name": "N", "display": 1,
               "values": {"\/B\u0031": "x"}}]}]}]}]})"},
      {"every field of every object",
       ReadFileBytes(SourceDir() / "tests/hardening/data/every_field.json")},
      {"the example board", ReadFileBytes(SourceDir() / "examples/board.json")},
      {"the example of texts", ReadFileBytes(SourceDir() / "examples/texts.json")},
  };
  for (const auto& c : cases) {
    const std::string fast = Fast(c.json);
    EXPECT_NE(fast, "") << c.what << ": left to the careful reading";
    EXPECT_EQ(fast, Carefully(c.json)) << c.what;
  }
}

// The fast reading leaves these to the careful one, which refuses some and reads others.
TEST(FastReading, LeavesWhatItCannotReadExactly) {
  const struct {
    const char* what;
    std::string json;
  } cases[] = {
      {"bytes that are not UTF-8", Page(R"("name": "P\xE9")")},
      {"a byte-order mark", "\xEF\xBB\xBF" + Page("")},
      {"text after the document", Page("") + " {}"},
      {"a lone surrogate", Page(R"("name": "\ud800")")},
      {"an escaped member name", Page(R"("n\u0061me2": "P")")},
      {"a real where an integer belongs", Page(R"("width": 1.0)")},
      {"an integer beyond 64 bits", Page(R"("pin_to_pin_scale_factor": 18446744073709551616)")},
      {"a part id used twice", Page(R"("parts": [{"id": "U1", "symbol": {}},
                                                 {"id": "U1", "symbol": {}}])")},
      {"an occurrence path given twice", R"({"kalmor_design": 1, "name": "D", "root": "T",
           "schematics": [{"name": "T", "pages": [{"name": "1", "parts": [
             {"id": "B", "kind": "block", "schematic": "S", "symbol": {}}]}]},
           {"name": "S", "pages": [{"name": "1", "wires": [{"start": [0, 0], "end": [1, 1],
             "properties": [{"name": "N", "values": {"/B": "1", "/B": "2"}}]}]}]}]})"},
      {"nesting deeper than the fast parser goes",
       Page(R"("graphics": )" + std::string(2000, '[') + std::string(2000, ']'))},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Fast(c.json), "") << c.what;
  }
}

}  // namespace
}  // namespace kalmor::test
