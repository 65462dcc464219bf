#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslateBusEntries(PageContext& /*page*/) {}

}  // namespace kalmor
