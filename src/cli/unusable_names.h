#pragma once

// Schematic and page names that the export command refuses to turn into file names: the
// library takes names as given, but a command writing into a folder must not let a name leave it.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/export_plan.h"

namespace kalmor::cli {

// Why a schematic or page name would put a file outside its folder or make an unusable name
// (a separator, "." or "..", a control character, nothing at all), as a phrase such as
// "holds a '/'"; nothing when it is usable.
std::optional<std::string> UnusableNameReason(std::string_view name);

struct UnusableName {
  std::string schematicName;
  std::string pageName;
  std::string reason;  // which of the two names, and why: "the page name is empty"
};

// Every page of `pages` (a design export's, in its order) whose schematic or page name is
// unusable.
std::vector<UnusableName> FindUnusableNames(const std::vector<PlannedPage>& pages);

}  // namespace kalmor::cli
