#pragma once

// How one path becomes the names of every page file of a design export, and which names could
// not safely become part of a file name.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kalmor/dbo.h"

namespace kalmor {

// The path less a final ".dxf" in any letter case; any other extension stays.
std::string MakeOutputStem(const std::string& path);

// stem "_" schematic "_" page ".dxf", names exactly as the host gives them.
std::string MakePageFileName(const std::string& stem, const std::string& schematicName,
                             const DboPage& page);

// Why a schematic or page name would put a file outside its folder or make an unusable name
// (a separator, "." or "..", a control character, nothing at all), as a phrase such as
// "holds a '/'"; nothing when it is usable.
std::optional<std::string> UnusableNameReason(std::string_view name);

struct UnusableName {
  std::string schematicName;
  std::string pageName;
  std::string reason;  // which of the two names, and why: "the page name is empty"
};

// Every page a design export would write whose schematic or page name is unusable, in export
// order.
std::vector<UnusableName> FindUnusableNames(const DboDesign& design);

}  // namespace kalmor
