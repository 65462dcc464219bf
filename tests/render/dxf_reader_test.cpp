#include "render/dxf_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "render_fixtures.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor {
namespace {

using test::DxfPage;

// tests/render/data/bad_pages.json: each case is a whole "text", or the "entities" of a page, and
// the error names the line and the record.
TEST(DxfReader, RefusesWithTheLineAndTheRecord) {
  const nlohmann::json cases = nlohmann::json::parse(
      test::ReadFileBytes(test::SourceDir() / "tests/render/data/bad_pages.json"));
  ASSERT_GT(cases.size(), 20u);
  for (const nlohmann::json& c : cases) {
    SCOPED_TRACE(c["what"].get<std::string>());
    const std::string dxf = c.contains("text") ? c["text"].get<std::string>()
                                               : DxfPage(c["entities"].get<std::string>());
    const auto e = test::Thrown<DxfReadError>([&] { ReadDxf(dxf, "t.dxf"); });
    ASSERT_TRUE(e) << "read without an error";
    const std::size_t line = c["line"];
    EXPECT_EQ(e->what(), "t.dxf:" + std::to_string(line) + ": " + c["says"].get<std::string>());
    EXPECT_EQ(std::make_pair(e->line(), e->record()),
              std::make_pair(line, c["record"].get<std::string>()));
  }
}

std::string SmallPage() {
  return kalmor::test::ReadFileBytes(kalmor::test::SourceDir() /
                                     "tests/render/data/small_page.dxf");
}

TEST(DxfReader, ReadsLfAndCrLfPagesAlike) {
  const std::string crlf = SmallPage();
  std::string lf;
  for (const char c : crlf) {
    if (c != '\r') {
      lf += c;
    }
  }
  ASSERT_EQ(crlf.size() - lf.size(),
            static_cast<std::size_t>(std::count(lf.begin(), lf.end(), '\n')));
  EXPECT_EQ(RenderDxfToSvg(lf, "p.dxf"), RenderDxfToSvg(crlf, "p.dxf"));
}

// Cut anywhere before its EOF record, a page is refused, never read in part or crashed on.
TEST(DxfReader, RefusesEveryTruncationOfAPage) {
  const std::string page = SmallPage();
  const std::size_t whole = ReadDxf(page, "p.dxf").entities.size();
  ASSERT_EQ(page.substr(page.size() - 5), "EOF\r\n");
  for (std::size_t size = 0; size < page.size(); ++size) {
    const std::string_view prefix = std::string_view(page).substr(0, size);
    if (size >= page.size() - 2) {
      EXPECT_EQ(ReadDxf(prefix, "p.dxf").entities.size(), whole) << size;
    } else {
      EXPECT_THROW(ReadDxf(prefix, "p.dxf"), DxfReadError) << size;
    }
  }
}

}  // namespace
}  // namespace kalmor
