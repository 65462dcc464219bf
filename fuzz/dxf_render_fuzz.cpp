// Any bytes given to the renderer come back as an SVG picture or as a DxfReadError; everything
// else (a crash, another exception, a sanitizer report, a hang) is a finding.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "render/svg_render.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view dxf(reinterpret_cast<const char*>(data), size);
  try {
    const std::string svg = kalmor::RenderDxfToSvg(dxf, "fuzz.dxf");
    // A drawing that was accepted is a whole document.
    if (svg.rfind("</svg>") == std::string::npos) {
      std::abort();
    }
  } catch (const kalmor::DxfReadError& error) {
    // Refusals must say where: the message starts with the source name and a line number.
    if (std::string_view(error.what()).substr(0, 9) != "fuzz.dxf:" || error.line() == 0) {
      std::abort();
    }
  }
  return 0;
}
