#pragma once

// The files a design export will write, worked out before anything is written, and the file
// names the command refuses: longer than the file system takes, or shared by two pages that
// would overwrite each other.

#include <string>
#include <vector>

#include "kalmor/dbo.h"

namespace kalmor::cli {

struct PlannedPage {
  std::string schematicName;
  std::string pageName;
  std::string file;
  const DboInstOccurrence* occurrence = nullptr;  // whose property values the page shows
};

// Every page the export writes, in its order, with its file name from `stem`.
std::vector<PlannedPage> PlanPageFiles(const DboDesign& design, const std::string& stem);

// One line per page whose file name the system would refuse for its length, or that would be
// written to the same file as an earlier page, such as `schematic "S", page "P": ...`; in export
// order. Unlike unusable names (FindUnusableNames), these are refused even with --raw-names.
std::vector<std::string> FindFileNameRefusals(const std::vector<PlannedPage>& pages);

}  // namespace kalmor::cli
