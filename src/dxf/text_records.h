#pragma once

// TEXT records, and the helpers for the overbar notation of pin names. Texts are the host's
// (kalmor/host_text.h) and go out byte for byte; a value holds at most 250 bytes, cut before the
// first character that would not fit whole.

#include <cstdint>
#include <string>
#include <string_view>

#include "dxf/byte_sink.h"
#include "kalmor/types.h"

namespace kalmor {

// Text height in drawing units for a host font height and a scale.
double DxfTextHeight(int32_t fontHeight, double scale);

// A text at a host anchor (x, y already flipped, unscaled) in a host font.
void DxfText(ByteSink& out, std::string_view layer, std::string text, const LogFont& font,
             RotationT rotation, double scale, int32_t x, int32_t y);
// A text at a ready position, height and angle (drawing units, degrees).
void DxfTextAt(ByteSink& out, std::string_view layer, double angle, std::string text, double x,
               double y, double height);
// A possibly multi-line text laid out in a host box, one TEXT record per line.
void DxfTextBox(ByteSink& out, std::string_view layer, std::string text, const LogFont& font,
                RotationT rotation, double scale, int32_t x1, int32_t x2, int32_t y1, int32_t y2);

// "R\E\S\E\T\" -> "%%oRESET%%o": backslash-marked characters become overscored runs. An escape
// of a host text (kalmor/host_text.h) is one character, and its backslash no mark.
std::string OverlineToDxf(const std::string& text);
// Characters that show once the backslash marks are gone.
int32_t VisibleTextLength(const std::string& text);

}  // namespace kalmor
