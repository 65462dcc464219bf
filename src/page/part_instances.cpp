#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslatePartInsts(PageContext& /*page*/) {}

}  // namespace kalmor
