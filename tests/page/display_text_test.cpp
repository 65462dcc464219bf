#include <gtest/gtest.h>

#include <string>

#include "page/display_props.h"

namespace kalmor {
namespace {

struct FormatCase {
  DisplayTypeT type;
  const char* value;
  const char* shown;
};

// Every call starts from "prior": only type 4 with a missing value may leave it.
TEST(FormatDisplayPropText, ChoosesTheShownTextByDisplayType) {
  // The placeholder test is case-sensitive.
  const FormatCase cases[] = {
      // clang-format off
      {1, "", "<Value>"}, {1, "<Value>", "<Value>"}, {1, "10k", "10k"}, {1, "<value>", "<value>"},
      {2, "", "Value = "}, {2, "<Value>", "Value = "}, {2, "10k", "Value = 10k"},
      {3, "", "Value"}, {3, "10k", "Value"},
      {4, "", "prior"}, {4, "<Value>", "prior"}, {4, "<value>", "Value = <value>"},
      {4, "10k", "Value = 10k"},
      {0, "<Value>", "<Value>"}, {7, "", ""}, {-1, "10k", "10k"},
      // clang-format on
  };
  for (const FormatCase& c : cases) {
    std::string out = "prior";
    FormatDisplayPropText("Value", c.value, c.type, out);
    EXPECT_EQ(out, c.shown) << "type " << c.type << ", value \"" << c.value << '"';
  }
}

}  // namespace
}  // namespace kalmor
