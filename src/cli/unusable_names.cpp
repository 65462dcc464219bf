#include "cli/unusable_names.h"

namespace kalmor::cli {

std::optional<std::string> UnusableNameReason(std::string_view name) {
  if (name.empty()) {
    return "is empty";
  }
  if (name == "." || name == "..") {
    return "is \"" + std::string(name) + "\"";
  }
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '/' || c == '\\') {
      return std::string("holds a '") + c + "'";
    }
    if (byte < 0x20 || byte == 0x7f) {
      return "holds a control character";
    }
  }
  return std::nullopt;
}

std::vector<UnusableName> FindUnusableNames(const std::vector<PlannedPage>& pages) {
  std::vector<UnusableName> unusable;
  for (const PlannedPage& page : pages) {
    if (const auto reason = UnusableNameReason(page.schematicName)) {
      unusable.push_back({page.schematicName, page.pageName, "the schematic name " + *reason});
    }
    if (const auto reason = UnusableNameReason(page.pageName)) {
      unusable.push_back({page.schematicName, page.pageName, "the page name " + *reason});
    }
  }
  return unusable;
}

}  // namespace kalmor::cli
