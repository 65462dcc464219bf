#include "render/svg_render.h"

#include "render/dxf_reader.h"
#include "render/svg_writer.h"

namespace kalmor {

std::string RenderDxfToSvg(ByteSource& dxf, std::string_view sourceName) {
  return WriteSvg(ReadDxf(dxf, sourceName), sourceName);
}

std::string RenderDxfToSvg(std::string_view dxf, std::string_view sourceName) {
  return WriteSvg(ReadDxf(dxf, sourceName), sourceName);
}

}  // namespace kalmor
