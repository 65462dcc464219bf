#include "support/page_fixture.h"

#include <stdexcept>

#include "model/design_reader.h"
#include "page/page_walk.h"
#include "support/paths.h"

namespace kalmor::test {

std::string OnePageDesign(std::string_view pageMembers, std::string_view symbols) {
  std::string page = R"({"name": "P")";
  if (!pageMembers.empty()) {
    page += ", ";
    page += pageMembers;
  }
  page += "}";
  return R"({"kalmor_design": 1, "name": "D", "symbols": )" + std::string(symbols) +
         R"(, "schematics": [{"name": "S", "pages": [)" + page + "]}]}";
}

std::string PagesDocument(const std::vector<std::vector<std::string>>& schematics,
                          std::string_view pageMembers, std::string_view name) {
  const std::string members = pageMembers.empty() ? "" : ", " + std::string(pageMembers);
  std::string json =
      R"({"kalmor_design": 1, "name": ")" + std::string(name) + R"(", "schematics": [)";
  for (const std::vector<std::string>& schematic : schematics) {
    json += (json.back() == '[' ? R"({"name": ")" : R"(, {"name": ")") + schematic.at(0) +
            R"(", "pages": [)";
    for (std::size_t p = 1; p < schematic.size(); ++p) {
      json += (p == 1 ? R"({"name": ")" : R"(, {"name": ")") + schematic[p] + '"' + members + "}";
    }
    json += "]}";
  }
  return json + "]}";
}

std::string HierarchyDocument() {
  return ReadFileBytes(SourceDir() / "tests/support/data/hierarchy.json");
}

PageFixture::PageFixture(std::string_view designJson, std::string_view schematic,
                         std::string_view page)
    : design_(model::ReadDesignDocument(designJson, "test.json")) {
  page_ = design_->FindPage(schematic, page);
  if (page_ == nullptr) {
    throw std::invalid_argument("no page " + std::string(page) + " in " + std::string(schematic));
  }
  context_.emplace(OpenPageContext(sink_, state_, *page_, nullptr));
  context_->pinToPinScaleFactor = page_->GetPinToPinScaleFactor(state_);
}

PageFixture::~PageFixture() = default;

void PageFixture::SetOccurrence(std::string_view path) {
  const DboInstOccurrence* occurrence = nullptr;
  if (!path.empty()) {
    occurrence = design_->FindOccurrence(path);
    if (occurrence == nullptr) {
      throw std::invalid_argument("the design has no occurrence " + std::string(path));
    }
  }
  context_->occurrence = occurrence;
}

}  // namespace kalmor::test
