#include "cli/unusable_names.h"

#include "host/dbo_reading.h"
#include "kalmor/export.h"

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

std::vector<UnusableName> FindUnusableNames(const DboDesign& design) {
  std::vector<UnusableName> unusable;
  DboState state;
  VisitDesignPages(
      design, state,
      [&](const DboPage& page, const DboInstOccurrence*, const std::string& schematic) {
        const std::string pageName = NameOf(page);
        if (const auto reason = UnusableNameReason(schematic)) {
          unusable.push_back({schematic, pageName, "the schematic name " + *reason});
        }
        if (const auto reason = UnusableNameReason(pageName)) {
          unusable.push_back({schematic, pageName, "the page name " + *reason});
        }
      });
  return unusable;
}

}  // namespace kalmor::cli
