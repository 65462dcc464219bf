#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslateFrame(PageContext& /*page*/) {}

}  // namespace kalmor
