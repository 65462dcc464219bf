#include "cli/unusable_names.h"

#include <gtest/gtest.h>

#include <string>

#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor::cli {
namespace {

using namespace std::string_literals;

constexpr char kNames[] = R"({ "kalmor_design": 1, "name": "B", "schematics": [
  { "name": "A/B", "pages": [ { "name": "" } ] },
  { "name": "FINE", "pages": [ { "name": "Page 1.a" }, { "name": "../up" } ] } ] })";

TEST(UnusableNamesTest, FoundInExportOrderWithTheirReasons) {
  const auto design = model::ReadDesignDocument(kNames, "names.json");
  const std::vector<UnusableName> found = FindUnusableNames(*design);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].schematicName, "A/B");
  EXPECT_EQ(found[0].reason, "the schematic name holds a '/'");
  EXPECT_EQ(found[1].reason, "the page name is empty");
  EXPECT_EQ(found[2].pageName, "../up");
  EXPECT_EQ(found[2].reason, "the page name holds a '/'");
}

TEST(UnusableNamesTest, UnusableNames) {
  for (const char* usable : {"PAGE1", "Page 1", "a.b", "...", "Ω-sheet", "x:y"}) {
    EXPECT_FALSE(UnusableNameReason(usable).has_value()) << usable;
  }
  for (const std::string& unusable :
       {""s, "."s, ".."s, "a/b"s, "a\\b"s, "tab\there"s, "del\x7f"s, "nul\0"s, "\x1b[2J"s}) {
    EXPECT_TRUE(UnusableNameReason(unusable).has_value()) << unusable;
  }
}

}  // namespace
}  // namespace kalmor::cli
