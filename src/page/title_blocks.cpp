#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslateTitleBlocks(PageContext& /*page*/) {}

}  // namespace kalmor
