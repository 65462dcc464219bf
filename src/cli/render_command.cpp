#include "cli/commands.h"
#include "cli/files.h"
#include "render/svg_render.h"

namespace kalmor::cli {

int RunRender(const std::string& input, const std::string& output) {
  WriteWholeFile(output, RenderDxfToSvg(ReadWholeFile(input), input));
  return kDone;
}

}  // namespace kalmor::cli
