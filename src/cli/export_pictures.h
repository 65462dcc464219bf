#pragma once

// What an export draws beside its page files: an SVG picture of every page and, when asked, the
// gallery STEM.html that shows them all.

#include <string>

#include "cli/commands.h"
#include "cli/loaded_design.h"

namespace kalmor::cli {

// The gallery of an export to `stem`.
std::string GalleryPathFor(const std::string& stem);

// Draws every page file that exporting `loaded` to `stem` has just written, and with
// `options.html` writes the gallery. Throws InputError or DxfReadError when a page file cannot
// be read back, FileError when a picture cannot be written.
void WritePictures(const LoadedDesign& loaded, const ExportOptions& options,
                   const std::string& stem);

}  // namespace kalmor::cli
