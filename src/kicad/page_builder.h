#pragma once

// One schematic file drawn as one page of the design: its symbols as parts, its sheets as
// blocks, its wires, labels, texts and graphics, and the drawing sheet around them.

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "kicad/sheet_file.h"
#include "model/design_data.h"

namespace kalmor::kicad::detail {

// One appearance of a schematic file in the hierarchy, and the names it is known by.
struct SheetOccurrence {
  std::string uuidPath;    // the path KiCad 7 and later key instances by: "/ROOT/S1/S2"
  std::string legacyPath;  // KiCad 6's: "/S1/S2", empty for the root
  std::string designPath;  // the design's occurrence path of the block showing it; "" for root
  std::string sheetPath;   // the sheet names: "/" for the root, "/AMP/FILTER/" below
  std::string sheetName;
  std::string pageNumber;
};

// What every page of one design shares.
struct DesignContext {
  std::map<std::string, std::string, std::less<>> projectVariables;
  std::string unitSeparator;  // between a reference and its unit letter
  char firstUnitLetter = 'A';
  std::size_t pageCount = 1;
  // KiCad 6's references, kept in the root file, by "/SHEET.../SYMBOL" uuid path.
  std::unordered_map<std::string_view, const SymbolInstance*> legacySymbols;
};

// The design's fonts, each distinct record once, made in the design's arena.
class FontTable {
 public:
  const LogFont* Intern(const LogFont& font);

 private:
  std::unordered_map<std::string, const LogFont*> index_;
};

// What the page needs to know of each sheet the file places: the block's part id and the
// schematic (file) it shows.
struct SheetLink {
  std::string blockId;
  std::string schematicName;
};

struct PageSources {
  const SheetFile* file = nullptr;
  std::vector<const SheetOccurrence*> occurrences;  // at least one; the first is drawn plain
  std::vector<SheetLink> sheets;                    // one per sheet of the file
};

// Fills `page` from the file, making its objects in the current design arena; `blockParts`
// receives the indices of the parts that are blocks.
// `warnings` receives notes about what could not be drawn.
void BuildPage(const PageSources& sources, const DesignContext& design, FontTable& fonts,
               model::detail::Page& page, std::vector<std::size_t>& blockParts,
               std::vector<SyntaxFault>& warnings);

}  // namespace kalmor::kicad::detail
