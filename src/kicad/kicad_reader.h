#pragma once

// Reads a KiCad schematic (a .kicad_sch file of KiCad 6 to 9, and every sheet file it uses) into
// the in-memory design database, the same design a design document describes: each distinct
// sheet file becomes a schematic of one page, each sheet a block, each symbol a part.

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kalmor/errors.h"

namespace kalmor::model {
class Design;
}

namespace kalmor::kicad {

// A file that cannot be read as a KiCad schematic; the message reads FILE:LINE:COL: what.
class KiCadError : public DocumentError {
 public:
  using DocumentError::DocumentError;
};

// True for text that claims to be a KiCad schematic: "(kicad_sch" after optional blanks, or
// KiCad 5's "EESchema Schematic File Version" (which the reader then refuses by name).
bool IsKiCadSchematic(std::string_view text);

// Reads the file at `path` into `text`; false with a reason in `error` when it cannot.
using FileSource =
    std::function<bool(const std::string& path, std::string& text, std::string& error)>;

// A file source over the file system.
FileSource DiskFiles();

struct KiCadDesign {
  std::unique_ptr<model::Design> design;
  std::vector<std::string> warnings;  // FILE:LINE:COL: warning: ... for what was left out
};

// Reads the root schematic `text` found at `path`; its sheet files are read through `files`,
// relative to the file that names them, then to the root's folder. The project file beside the
// root (same name, .kicad_pro), when there is one, gives the text variables. Throws KiCadError.
KiCadDesign ReadKiCadSchematic(std::string_view text, const std::string& path,
                               const FileSource& files);

// The same for a file on disk.
KiCadDesign LoadKiCadSchematic(const std::string& path);

}  // namespace kalmor::kicad
