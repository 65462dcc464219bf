#pragma once

// Everything an in-memory design holds. The reader fills one completely before a Design is
// made of it, so no caller ever sees a design half loaded.

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "model/design_storage.h"
#include "model/graphics.h"
#include "model/occurrences.h"
#include "model/page_objects.h"

namespace kalmor::model::detail {

struct DesignData {
  // The memory of the schematics, their objects, symbols and fonts (each distinct font once),
  // made within a scope of it; it goes last.
  Arena arena;

  std::string name;
  List<Schematic> schematics;       // in document order
  bool propsMeasured = false;       // every display property has its extent already
  const Schematic* root = nullptr;  // null when there are no schematics

  std::vector<Occurrence> occurrences;        // depth-first; the id is the index + 1
  std::vector<const Occurrence*> childTable;  // the root's children first

  // Each schematic's parts by id, made for a schematic the first time a path passes through it.
  mutable std::unordered_map<const Schematic*, std::unordered_map<std::string_view, uint32_t>>
      partOrdinals;
};

}  // namespace kalmor::model::detail
