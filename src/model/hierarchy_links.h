#pragma once

// Ties a freshly read design together once every schematic is known: the root, the schematic
// behind each block, the derived occurrences, and the occurrence ids that per-occurrence texts
// are kept by.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/design_data.h"

namespace kalmor::model::detail {

// Where a block part stands in the document, to name it when its schematic is wrong.
struct BlockRef {
  std::size_t schematic, page, part;
  std::string Pointer() const;  // of its "schematic" field
};

// Refuses (with a DocumentFault) a root or block schematic that does not exist, a schematic
// that contains itself, a hierarchy too large, and per-occurrence texts for paths that name no
// occurrence of their object. A reader that knows no text is keyed by an occurrence path says
// so (`anyOccurrenceKeys` false), which spares a walk over every object of the design.
void LinkHierarchy(DesignData& data, const std::optional<std::string>& rootName,
                   const std::vector<BlockRef>& blocks, bool anyOccurrenceKeys = true);

}  // namespace kalmor::model::detail
