#pragma once

// What an export draws beside its page files: an SVG picture of every page and, when asked, the
// gallery STEM.html that shows them all.

#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/export_plan.h"
#include "cli/loaded_design.h"

namespace kalmor::cli {

std::string SvgPathFor(const std::string& dxfPath);
// The gallery of an export to `stem`.
std::string GalleryPathFor(const std::string& stem);

// Draws every page file that exporting `loaded` to `stem` has just written (`pages`), and with
// `options.html` writes the gallery. Throws InputError or DxfReadError when a page file cannot
// be read back, FileError when a picture cannot be written.
void WritePictures(const LoadedDesign& loaded, const ExportOptions& options,
                   const std::string& stem, const std::vector<PlannedPage>& pages);

}  // namespace kalmor::cli
