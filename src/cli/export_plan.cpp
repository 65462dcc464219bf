#include "cli/export_plan.h"

#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string_view>
#include <unordered_map>

#include "cli/terminal_ui.h"
#include "export/output_names.h"
#include "host/dbo_reading.h"
#include "kalmor/export.h"

namespace kalmor::cli {
namespace {

std::string PageLabel(const PlannedPage& page) {
  return "schematic \"" + Shortened(page.schematicName) + "\", page \"" + Shortened(page.pageName) +
         "\"";
}

// The longest file name (one component) the folder of `path` takes; 255 on Linux's own file
// systems, and when the folder cannot be asked (it does not exist yet: the open will say so).
std::size_t LongestComponent(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  const long longest = ::pathconf(folder.empty() ? "." : folder.c_str(), _PC_NAME_MAX);
  return longest > 0 ? static_cast<std::size_t>(longest) : 255;
}

// Why the system would refuse `file` for its length, if it would.
std::string LengthProblem(std::string_view file, std::size_t longestComponent) {
  if (file.size() >= PATH_MAX) {
    return "its path would be " + std::to_string(file.size()) +
           " bytes long, and the system takes " + std::to_string(PATH_MAX - 1);
  }
  std::size_t longest = 0;
  for (std::size_t start = 0; start <= file.size();) {
    const std::size_t end = std::min(file.find('/', start), file.size());
    longest = std::max(longest, end - start);
    start = end + 1;
  }
  if (longest > longestComponent) {
    return "its file name would be " + std::to_string(longest) +
           " bytes long, and the file system takes " + std::to_string(longestComponent);
  }
  return {};
}

}  // namespace

std::vector<PlannedPage> PlanPageFiles(const DboDesign& design, const std::string& stem) {
  std::vector<PlannedPage> pages;
  DboState state;
  VisitDesignPages(
      design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string& schematic) {
        pages.push_back(
            {schematic, NameOf(page), MakePageFileName(stem, schematic, page), occurrence});
      });
  return pages;
}

std::vector<std::string> FindFileNameRefusals(const std::vector<PlannedPage>& pages) {
  std::vector<std::string> refusals;
  const std::size_t longestComponent = pages.empty() ? 255 : LongestComponent(pages.front().file);
  for (const PlannedPage& page : pages) {
    if (const std::string problem = LengthProblem(page.file, longestComponent); !problem.empty()) {
      refusals.push_back(PageLabel(page) + ": " + problem);
    }
  }
  // Names compare as Linux's file systems compare them: byte for byte.
  std::unordered_map<std::string_view, const PlannedPage*> firstByFile;
  firstByFile.reserve(pages.size());
  for (const PlannedPage& page : pages) {
    const auto [first, isNew] = firstByFile.emplace(page.file, &page);
    if (!isNew) {
      refusals.push_back(PageLabel(page) + ": would be written to the same file as " +
                         PageLabel(*first->second) + ", " + Shortened(page.file));
    }
  }
  return refusals;
}

}  // namespace kalmor::cli
