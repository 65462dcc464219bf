#pragma once

// Which text a display property shows, and how large it is drawn. The export goes by this rule,
// and a host answers DboDisplayProp::GetBoundingBox by it, so that both agree on every text.
// Names and values are host texts (kalmor/host_text.h).

#include <string>

#include "kalmor/api.h"
#include "kalmor/types.h"

namespace kalmor {

// Chooses the shown text by display type: 1 value (or "<name>" when missing), 2 "name = value",
// 3 name, 4 "name = value" only when the value is set, anything else the raw value. A value is
// missing when empty or exactly "<name>" (case matters). Type 4 with a missing value leaves
// `out` as it was.
KALMOR_API void FormatDisplayPropText(const std::string& name, const std::string& value,
                                      DisplayTypeT displayType, std::string& out);

// The extent of the text shown for `value`, drawn in `font`, as a rectangle at the origin (the
// empty rectangle when nothing is shown). Throws EnvironmentError when no font can be loaded.
KALMOR_API CRect MeasureDisplayPropText(const std::string& name, const std::string& value,
                                        DisplayTypeT displayType, const LogFont& font);

}  // namespace kalmor
