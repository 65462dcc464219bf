#pragma once

// The printed size of an image KiCad embeds in a schematic (base64 PNG, or JPEG), from its
// pixel size and resolution; KiCad takes 300 pixels per inch when the image names none.

#include <optional>
#include <string_view>

namespace kalmor::kicad::detail {

struct ImageSize {
  double widthMillimetres = 0;
  double heightMillimetres = 0;
};

// Nothing for data that is not a PNG or JPEG image this reader can size.
std::optional<ImageSize> ImageSizeOf(std::string_view base64);

}  // namespace kalmor::kicad::detail
