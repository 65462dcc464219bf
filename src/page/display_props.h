#pragma once

// The text a display property shows through an occurrence, and the point its TEXT record is
// anchored at. Which text a value gives is the public rule of kalmor/display_text.h.

#include <cstdint>
#include <string>

#include "kalmor/dbo.h"
#include "kalmor/display_text.h"

namespace kalmor {

// The property's value: through the occurrence's design id when there is one, else the plain
// value. A failed read gives the empty string.
std::string ReadDisplayPropValue(const DboDisplayProp& prop, const DboInstOccurrence* occurrence,
                                 DboState& state);

// Reads and formats the property's text into `out`. False, with `out` untouched, only when the
// display type cannot be read.
bool GetDisplayPropText(const DboDisplayProp& prop, const DboInstOccurrence* occurrence,
                        std::string& out);

// The anchor relative to the owner's placed corner (its left and top, top already flipped):
// the location is subtracted in y, and the text's extent shifts the anchor for rotations 1 to 3.
// An unknown rotation anchors at the origin.
CPoint DisplayPropAnchor(const DboDisplayProp& prop, const CRect& ownerRect);

// As DisplayPropAnchor with the location scaled by `scale`, truncated at the end. `ignoredX`
// and `ignoredY` take no part; callers pass the owner's location.
CPoint ScaledDisplayPropAnchor(const DboDisplayProp& prop, int32_t x0, int32_t y0, int32_t ignoredX,
                               int32_t ignoredY, double scale);

// The font with its height and width multiplied by `factor` and truncated toward zero.
LogFont ScaledFont(LogFont font, double factor);

}  // namespace kalmor
