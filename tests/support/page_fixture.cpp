#include "support/page_fixture.h"

#include <stdexcept>

#include "model/design_data.h"
#include "model/design_reader.h"
#include "page/page_walk.h"

namespace kalmor::testing {

std::string DocumentError(const std::string& json, std::string_view documentName,
                          std::string_view whenAccepted) {
  try {
    model::ReadDesignDocument(json, documentName);
  } catch (const model::DesignDocumentError& error) {
    return error.what();
  }
  return std::string(whenAccepted);
}

std::string Crlf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  for (char c : text) {
    if (c == '\n') {
      out += '\r';
    }
    out += c;
  }
  return out;
}

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

PageFixture::PageFixture(std::string_view designJson, std::string_view schematic,
                         std::string_view page)
    : design_(model::ReadDesignDocument(designJson, "test.json")) {
  const auto& schematics = design_->data().schematics;
  std::string schematicName(schematic);
  if (schematicName.empty() && !schematics.empty()) {
    schematicName = schematics.front().name.str();
  }
  std::string pageName(page);
  for (const model::detail::Schematic& own : schematics) {
    if (own.name == schematicName && pageName.empty() && !own.pages.empty()) {
      pageName = own.pages.front().name.str();
    }
  }
  page_ = design_->FindPage(schematicName, pageName);
  if (page_ == nullptr) {
    throw std::invalid_argument("the design has no page " + pageName + " in schematic " +
                                schematicName);
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

}  // namespace kalmor::testing
