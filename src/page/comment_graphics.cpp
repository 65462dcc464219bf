#include "page/translators.h"

namespace kalmor {

// Not translated yet: writes nothing.
void TranslateCommentGraphics(PageContext& /*page*/) {}

}  // namespace kalmor
