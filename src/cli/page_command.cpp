#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/files.h"
#include "cli/interruption.h"
#include "cli/loaded_design.h"
#include "cli/terminal_ui.h"
#include "host/dbo_reading.h"
#include "kalmor/export.h"

namespace kalmor::cli {
namespace {

const DboSchematic& FindSchematic(const DboDesign& design, const std::string& name) {
  DboState state;
  const DboSchematic* found = nullptr;
  std::vector<std::string> known;
  ForEachSchematicView(design, state, [&](const DboView& view) {
    std::string viewName = NameOf(view);
    if (found == nullptr && viewName == name) {
      found = view.AsSchematic();
    }
    known.push_back(std::move(viewName));
  });
  if (found != nullptr) {
    return *found;
  }
  throw UsageError("the design has no schematic \"" + Shortened(name) +
                   "\" (it has: " + ListedNames(known) + ")");
}

const DboPage& FindPage(const DboSchematic& schematic, const std::string& name) {
  DboState state;
  const DboPage* found = nullptr;
  std::vector<std::string> known;
  ForEachPage(schematic, state, [&](const DboPage& page) {
    std::string pageName = NameOf(page);
    if (found == nullptr && pageName == name) {
      found = &page;
    }
    known.push_back(std::move(pageName));
  });
  if (found != nullptr) {
    return *found;
  }
  throw UsageError("schematic \"" + Shortened(NameOf(schematic)) + "\" has no page \"" +
                   Shortened(name) + "\" (it has: " + ListedNames(known) + ")");
}

// The occurrence at `path`, which must show `schematic`.
const DboInstOccurrence* FindOccurrence(const LoadedDesign& loaded, const std::string& path,
                                        const DboSchematic& schematic) {
  const DboInstOccurrence* occurrence = loaded.FindOccurrence(path);
  if (occurrence == nullptr) {
    throw UsageError("the design has no occurrence \"" + Shortened(path) + "\"");
  }
  DboState state;
  const DboView* contents = occurrence->GetContents(state);
  if (contents == nullptr || NameOf(*contents) != NameOf(schematic)) {
    throw UsageError("occurrence \"" + Shortened(path) + "\" does not show schematic \"" +
                     Shortened(NameOf(schematic)) + "\"");
  }
  return occurrence;
}

}  // namespace

int RunPage(const PageOptions& options) {
  TerminalUserInterface ui;  // before loading, as for export
  const ScopedUserInterface scoped(ui);
  const LoadedDesign loaded(options.design);
  const DboSchematic& schematic = FindSchematic(loaded.design(), options.schematic);
  const DboPage& page = FindPage(schematic, options.page);
  const DboInstOccurrence* occurrence =
      options.occurrence.empty() ? nullptr : FindOccurrence(loaded, options.occurrence, schematic);

  ui.ShortenInMessages(options.page);
  ui.RefuseInput(loaded.identity(), options.design);
  const OutputTracking tracking;
  if (!options.output.empty()) {
    RefuseSameFile(options.output, loaded.identity(), options.design);
    TrackPageFile(options.output);
  }
  PageToDXF(&page, occurrence, options.output, 0, options.noFrame ? 0 : 1,
            options.noTitleBlocks ? 0 : 1);
  return kDone;
}

}  // namespace kalmor::cli
