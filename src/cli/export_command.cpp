#include <filesystem>
#include <iostream>
#include <vector>

#include "cli/commands.h"
#include "cli/export_pictures.h"
#include "cli/export_plan.h"
#include "cli/files.h"
#include "cli/interruption.h"
#include "cli/loaded_design.h"
#include "cli/terminal_ui.h"
#include "cli/unusable_names.h"
#include "export/output_names.h"
#include "host/dbo_reading.h"
#include "kalmor/export.h"

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

}  // namespace

int RunExport(const ExportOptions& options) {
  // Installed first: loading measures the design's texts, which may have something to report.
  TerminalUserInterface ui;
  const ScopedUserInterface scoped(ui);
  const LoadedDesign loaded(options.design);
  const std::string outputPath = OutputPath(options);
  const std::string stem = MakeOutputStem(outputPath);
  const std::vector<PlannedPage> pages = PlanPageFiles(loaded.design(), stem);

  // Refused all before anything is written, so that an export never stops half-way on them.
  std::vector<std::string> refusals;
  if (!options.rawNames) {
    for (const UnusableName& unusable : FindUnusableNames(pages)) {
      refusals.push_back(DescribeUnusableName(unusable));
    }
  }
  const bool unusableNames = !refusals.empty();
  for (std::string& refusal : FindFileNameRefusals(pages)) {
    refusals.push_back(std::move(refusal));
  }
  if (!refusals.empty()) {
    constexpr std::size_t kShown = 12;
    for (std::size_t i = 0; i < refusals.size() && i < kShown; ++i) {
      std::cerr << "kalmor: " << Escaped(refusals[i]) << "\n";
    }
    if (refusals.size() > kShown) {
      std::cerr << "kalmor: and " << refusals.size() - kShown << " more pages refused\n";
    }
    std::cerr << "kalmor: nothing written"
              << (unusableNames ? "; --raw-names takes the names as they are" : "") << std::endl;
    return kInvalidInput;
  }
  std::vector<std::string> outputs;
  outputs.reserve(pages.size() * ((options.svg || options.html) ? 2 : 1) + 1);
  for (const PlannedPage& page : pages) {
    outputs.push_back(page.file);
    if (options.svg || options.html) {
      outputs.push_back(SvgPathFor(page.file));
    }
  }
  if (options.html) {
    outputs.push_back(GalleryPathFor(stem));
  }
  RefuseSameFiles(outputs, loaded.identity(), options.design);

  ui.ShortenInMessages(NameOf(loaded.design()));
  const OutputTracking tracking;
  DesignToDXF(&loaded.design(), outputPath, 0, options.noFrame ? 0 : 1,
              options.noTitleBlocks ? 0 : 1);
  if (options.svg || options.html) {
    WritePictures(loaded, options, stem, pages);
  }
  if (options.html) {
    std::cout << "gallery: " << Escaped(GalleryPathFor(stem)) << std::endl;
  }
  return kDone;
}

}  // namespace kalmor::cli
