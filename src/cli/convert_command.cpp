#include <iostream>

#include "cli/commands.h"
#include "cli/files.h"
#include "cli/loaded_design.h"
#include "cli/terminal_ui.h"
#include "model/design_writer.h"

namespace kalmor::cli {

int RunConvert(const std::string& design, const std::string& output) {
  const LoadedDesign loaded(design);
  RefuseSameFile(output, loaded.identity(), design);
  WriteWholeFile(output, model::WriteDesignDocument(loaded.model()));
  std::cout << Escaped(design + " converted to " + output) << std::endl;
  return kDone;
}

}  // namespace kalmor::cli
