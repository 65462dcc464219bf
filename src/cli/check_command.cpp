#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/export_plan.h"
#include "cli/loaded_design.h"
#include "cli/terminal_ui.h"
#include "cli/unusable_names.h"
#include "export/output_names.h"
#include "host/dbo_reading.h"

namespace kalmor::cli {
namespace {

// How many objects an iterator yields; a missing iterator yields none.
template <typename Iter, typename Object>
int CountOf(const std::unique_ptr<Iter>& iter, const Object* (Iter::*next)(DboState&),
            DboState& state) {
  int count = 0;
  ForEachDbo(iter, next, state, [&count](const Object&) { ++count; });
  return count;
}

std::string Counted(int count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string PageSummary(const DboPage& page, DboState& state) {
  struct Tally {
    int count;
    const char* one;
    const char* many;
  };
  const Tally tallies[] = {
      {CountOf(page.NewTitleBlocksIter(state), &DboPageTitleBlocksIter::NextTitleBlock, state),
       "title block", "title blocks"},
      {CountOf(page.NewPartInstsIter(state), &DboPagePartInstsIter::NextPartInst, state), "part",
       "parts"},
      {CountOf(page.NewWiresIter(1, state), &DboPageWiresIter::NextWire, state), "wire", "wires"},
      {CountOf(page.NewGlobalsIter(state), &DboPageGlobalsIter::NextGlobal, state), "global",
       "globals"},
      {CountOf(page.NewPortsIter(1, state), &DboPagePortsIter::NextPort, state), "port", "ports"},
      {CountOf(page.NewOffPageConnectorsIter(1, state),
               &DboPageOffPageConnectorsIter::NextOffPageConnector, state),
       "off-page connector", "off-page connectors"},
      {CountOf(page.NewBusEntriesIter(state), &DboPageBusEntriesIter::NextBusEntry, state),
       "bus entry", "bus entries"},
      {CountOf(page.NewCommentGraphicsIter(state), &DboPageCommentGraphicsIter::NextCommentGraphic,
               state),
       "graphic", "graphics"},
  };
  std::string summary;
  for (const Tally& tally : tallies) {
    summary += (summary.empty() ? "" : ", ") + Counted(tally.count, tally.one, tally.many);
  }
  return summary;
}

// One line a page, with its counts.
std::vector<std::string> PageLines(const DboSchematic& schematic, DboState& state) {
  std::vector<std::string> lines;
  ForEachPage(schematic, state, [&](const DboPage& page) {
    lines.push_back("  page " + Shortened(NameOf(page)) + ": " + PageSummary(page, state));
  });
  return lines;
}

// The file an export with no -o would begin its page files with.
std::string DefaultStem(const std::string& designPath) {
  return MakeOutputStem(std::filesystem::path(designPath).replace_extension(".dxf").string());
}

}  // namespace

int RunCheck(const std::string& designPath) {
  TerminalUserInterface ui;  // before loading, as for export
  const ScopedUserInterface scoped(ui);
  const LoadedDesign loaded(designPath);
  const DboDesign& design = loaded.design();
  DboState state;

  std::vector<std::string> lines;
  int schematicCount = 0;
  int pageCount = 0;
  ForEachSchematicView(design, state, [&](const DboView& view) {
    if (const DboSchematic* schematic = view.AsSchematic()) {
      const std::vector<std::string> pageLines = PageLines(*schematic, state);
      ++schematicCount;
      pageCount += static_cast<int>(pageLines.size());
      lines.push_back("schematic " + Shortened(NameOf(view)) + ": " +
                      Counted(static_cast<int>(pageLines.size()), "page", "pages"));
      lines.insert(lines.end(), pageLines.begin(), pageLines.end());
    }
  });

  std::cout << Escaped("design " + Shortened(NameOf(design)) + ": " +
                       Counted(schematicCount, "schematic", "schematics") + ", " +
                       Counted(pageCount, "page", "pages"))
            << "\n";
  for (const std::string& line : lines) {
    std::cout << Escaped(line) << "\n";
  }

  // Names that export would refuse are worth knowing before exporting.
  const std::vector<PlannedPage> pages = PlanPageFiles(design, DefaultStem(designPath));
  for (const UnusableName& refusal : FindUnusableNames(pages)) {
    std::cout << Escaped("note: export refuses " + DescribeUnusableName(refusal) +
                         " (--raw-names takes it)")
              << "\n";
  }
  for (const std::string& refusal : FindFileNameRefusals(pages)) {
    std::cout << Escaped("note: export refuses " + refusal) << "\n";
  }
  std::cout << std::flush;
  return kDone;
}

}  // namespace kalmor::cli
