#include "page/translators.h"

namespace kalmor {

// Not translated yet: write nothing.
void TranslateGlobals(PageContext& /*page*/) {}
void TranslatePorts(PageContext& /*page*/) {}
void TranslateOffPageConnectors(PageContext& /*page*/) {}

}  // namespace kalmor
