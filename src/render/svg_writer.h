#pragma once

// Draws a read DXF drawing as an SVG document: white page, y axis up as in the drawing, one
// colour per layer and a legend. Every drawn element carries data-layer="NAME".

#include <array>
#include <string>
#include <string_view>

#include "render/dxf_reader.h"

namespace kalmor {

// Indexed like kDrawingLayers.
inline constexpr std::array<std::string_view, 7> kLayerColours = {"#202020",   // TITLE
                                                                  "#1f4fbf",   // PARTS
                                                                  "#7a3fb0",   // PARTTEXT
                                                                  "#178a2a",   // WIRE
                                                                  "#b06000",   // WIRETEXT
                                                                  "#c0282d",   // COMMENTS
                                                                  "#0a8a8a"};  // BITMAPS

std::string WriteSvg(const DxfDrawing& drawing, std::string_view title);

// A coordinate as the SVG holds it: at most four decimals, no trailing zeros, no "-0".
std::string SvgNumber(double value);

}  // namespace kalmor
