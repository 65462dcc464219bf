#include <filesystem>
#include <iostream>
#include <vector>

#include "cli/commands.h"
#include "cli/files.h"
#include "cli/loaded_design.h"
#include "cli/terminal_ui.h"
#include "cli/unusable_names.h"
#include "kalmor/export.h"
#include "render/svg_render.h"

namespace kalmor::cli {
namespace {

// Where the files of DESIGN go: -o as given, inside it when it is a folder, else beside DESIGN.
std::string OutputPath(const ExportOptions& options) {
  namespace fs = std::filesystem;
  const fs::path designStem = fs::path(options.design).stem();
  if (options.output.empty()) {
    return fs::path(options.design).replace_extension(".dxf").string();
  }
  std::error_code error;
  if (fs::is_directory(options.output, error)) {
    return (fs::path(options.output) / designStem).string() + ".dxf";
  }
  return options.output;
}

std::string SvgPathFor(const std::string& dxfPath) {
  return std::filesystem::path(dxfPath).replace_extension(".svg").string();
}

}  // namespace

int RunExport(const ExportOptions& options) {
  // Installed first: loading measures the design's texts, which may have something to report.
  TerminalUserInterface ui(/*recordFiles=*/options.svg);
  const ScopedUserInterface scoped(ui);
  const LoadedDesign loaded(options.design);
  if (!options.rawNames) {
    const std::vector<UnusableName> refusals = FindUnusableNames(loaded.design());
    if (!refusals.empty()) {
      for (const UnusableName& refusal : refusals) {
        std::cerr << "kalmor: " << Printable(DescribeUnusableName(refusal)) << "\n";
      }
      std::cerr << "kalmor: nothing written; --raw-names takes the names as they are" << std::endl;
      return kInvalidInput;
    }
  }

  DesignToDXF(&loaded.design(), OutputPath(options), 0, options.noFrame ? 0 : 1,
              options.noTitleBlocks ? 0 : 1);

  if (options.svg) {
    for (const std::string& dxfPath : ui.AnnouncedFiles()) {
      WriteWholeFile(SvgPathFor(dxfPath), RenderDxfToSvg(ReadWholeFile(dxfPath), dxfPath));
    }
  }
  return kDone;
}

}  // namespace kalmor::cli
