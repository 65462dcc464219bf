#pragma once

// How one path becomes the names of every page file of a design export.

#include <string>

#include "kalmor/dbo.h"

namespace kalmor {

// The path less a final ".dxf" in any letter case; any other extension stays.
std::string MakeOutputStem(const std::string& path);

// stem "_" schematic "_" page ".dxf", names exactly as the host gives them.
std::string MakePageFileName(const std::string& stem, const std::string& schematicName,
                             const DboPage& page);

}  // namespace kalmor
