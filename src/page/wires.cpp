#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslateWires(PageContext& /*page*/) {}

}  // namespace kalmor
