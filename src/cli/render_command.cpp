#include "cli/commands.h"
#include "cli/files.h"
#include "cli/interruption.h"
#include "cli/terminal_ui.h"
#include "render/svg_render.h"

namespace kalmor::cli {

int RunRender(const std::string& input, const std::string& output) {
  InputFile dxf(input);
  RefuseSameFile(output, dxf.identity(), input);
  const std::string svg = RenderDxfToSvg(dxf, input);
  const OutputTracking tracking;
  BeginOutput({output,
               false,
               "kalmor: interrupted while writing " + Shortened(output, kLongestPathShown) +
                   ", which was removed\n",
               {}});
  WriteWholeFile(output, svg);
  return kDone;
}

}  // namespace kalmor::cli
