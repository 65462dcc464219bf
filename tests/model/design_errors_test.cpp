// Bad design documents are refused with the document's name, the place and what was expected.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor {
namespace {

using test::OnePageDesign;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string ErrorOf(const std::string& json) {
  return test::ThrownMessage<model::DesignDocumentError>(
      [&] { model::ReadDesignDocument(json, "board.json"); });
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

// tests/model/data/bad_documents.json, which the schema's test refuses too: each case is a whole
// "document", the members of the one "page" of a design, or raw "text".
TEST(DesignErrors, EveryClassOfBadInputNamesItsPath) {
  const nlohmann::json cases = nlohmann::json::parse(
      test::ReadFileBytes(test::SourceDir() / "tests/model/data/bad_documents.json"));
  ASSERT_GT(cases.size(), 20u);
  for (const nlohmann::json& c : cases) {
    std::string json;
    if (c.contains("text")) {
      json = c["text"].get<std::string>();
    } else if (c.contains("page")) {
      const std::string members = c["page"].dump();
      json = OnePageDesign(members.substr(1, members.size() - 2));
    } else {
      json = c["document"].dump();
    }
    const std::string error = ErrorOf(json);
    const std::string what = c["what"];
    EXPECT_THAT(error, StartsWith("board.json:")) << what;
    EXPECT_THAT(error, HasSubstr(": " + c["at"].get<std::string>() + ": ")) << what;
    EXPECT_THAT(error, HasSubstr(c["says"].get<std::string>())) << what;
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
  const std::string tiny = test::ReadFileBytes(test::SourceDir() / "examples" / "tiny.json");
  const std::size_t closing = tiny.rfind('}');
  for (std::size_t length = 0; length <= closing; ++length) {
    const std::string error = ErrorOf(tiny.substr(0, length));
    ASSERT_THAT(error, StartsWith("board.json:")) << length;
    ASSERT_THAT(error, HasSubstr("not valid JSON")) << length;
  }
}

}  // namespace
}  // namespace kalmor
