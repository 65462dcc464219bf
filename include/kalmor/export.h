#pragma once

// The two entry points of the export: a whole design, one file per schematic page, or one page
// to a named or chosen file. Failures leave both uncaught, for the caller to report, as the
// errors of kalmor/errors.h:
// - EnvironmentError: a font the pages' texts need cannot be found or opened. Fonts are loaded
//   before any page file is opened (by DesignToDXF, before the first), so nothing is written;
// - FileError: a page file cannot be created or written; files already written stay, and so
//   does a partial file;
// - DocumentError: a page holds what cannot be drawn (a frame with no zones).

#include <cstdint>
#include <functional>
#include <string>

#include "kalmor/api.h"
#include "kalmor/dbo.h"
#include "kalmor/user_interface.h"

namespace kalmor {

inline constexpr char kCompleteCaption[] = "KALMOR V1.15 COMPLETE";

// 1 while DesignToDXF walks a design, which silences the per-page message of PageToDXF. An
// export that ends with a FileError (or DocumentError) leaves it at 1 until the next design
// export completes; one stopped by a missing font has not set it.
KALMOR_API extern uint8_t g_inDesignExport;

// Writes every page of every schematic of `design`, each schematic once, to
// <stem>_<schematic>_<page>.dxf, where the stem is `path` less a final ".dxf". A null design
// does nothing. `unused` is handed to PageToDXF, which ignores it. Every page file stays open,
// locked against other exports, until the completion message has been shown, so that no page
// reported complete was replaced in between. A link or a named pipe at a file is refused.
KALMOR_API void DesignToDXF(const DboDesign* design, std::string path, int32_t unused,
                            int32_t frame, int32_t titleBlocks);

// Writes `page` to `fileName`, or to the file the user picks when it is empty (nothing at all
// when the user cancels). `occurrence` may be null. `unused` is accepted and ignored. A null
// page is the caller's mistake, not a failure of the export: std::invalid_argument.
KALMOR_API void PageToDXF(const DboPage* page, const DboInstOccurrence* occurrence,
                          std::string fileName, int32_t unused, int32_t frame, int32_t titleBlocks);

// What PageToDXF asks the save dialog for.
KALMOR_API SaveFileDialogSettings DxfSaveDialogSettings();

using DesignPageVisitor = std::function<void(
    const DboPage& page, const DboInstOccurrence* occurrence, const std::string& schematicName)>;

// Visits the pages a design export writes, in its order: the schematics reached through the
// hierarchy first (with the occurrence that first reached each), then the remaining schematic
// views (with no occurrence). Each schematic name is visited once; names compare exactly.
KALMOR_API void VisitDesignPages(const DboDesign& design, DboState& state,
                                 const DesignPageVisitor& visit);

}  // namespace kalmor
