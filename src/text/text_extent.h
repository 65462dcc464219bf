#pragma once

// The size of a text drawn in a logical font, as a rectangle at the origin.

#include <string>

#include "kalmor/types.h"

namespace kalmor {

CRect MeasureTextExtent(const std::string& text, const LogFont& font);

}  // namespace kalmor
