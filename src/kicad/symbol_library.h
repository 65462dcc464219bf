#pragma once

// The library symbols a schematic file carries, drawn as the design's symbols: one symbol per
// library symbol, unit and body style, its graphics moved so that their box is [0, 0, w, h] with
// w and h even (the page walk mirrors about the even part of a box), and everything it draws
// whole numbers of page units.

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "kicad/shape_primitives.h"
#include "kicad/sheet_file.h"
#include "model/design_data.h"

namespace kalmor::kicad::detail {

// A pin as the unit holds it, in the symbol's own units (y downward): `at` is the point wires
// connect to, `end` the end at the body.
struct LocalPin {
  CPoint at;
  CPoint end;
  const LibPin* pin = nullptr;
};

struct BuiltSymbol {
  const model::detail::Symbol* symbol = nullptr;
  CPoint origin;  // the point of the symbol's own units that the design symbol's (0, 0) stands for
  int32_t width = 0;
  int32_t height = 0;
  std::vector<LocalPin> pins;
  std::vector<const Text*> texts;  // library texts and text boxes are shown as the part's texts
  std::vector<const TextBox*> textBoxes;
};

class SymbolLibrary {
 public:
  explicit SymbolLibrary(const std::vector<LibSymbol>& symbols);

  // The symbol of that name, or null.
  const LibSymbol* Find(std::string_view name) const;
  // How many units the symbol has (at least 1).
  int UnitCount(const LibSymbol& symbol) const;
  // The drawing of one unit and body style, made once.
  const BuiltSymbol& Build(const LibSymbol& symbol, int unit, int style);
  // The drawing of a symbol the library lacks: an empty box, as a placeholder.
  const BuiltSymbol& Missing();

 private:
  // The units of a symbol, those of the symbol it extends when it has none of its own.
  const std::vector<LibUnit>& UnitsOf(const LibSymbol& symbol) const;

  std::map<std::string_view, const LibSymbol*> byName_;
  std::map<std::tuple<const LibSymbol*, int, int>, BuiltSymbol> built_;
};

}  // namespace kalmor::kicad::detail
