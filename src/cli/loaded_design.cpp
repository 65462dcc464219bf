#include "cli/loaded_design.h"

#include <cstdio>
#include <iostream>

#include "cli/terminal_ui.h"
#include "kicad/kicad_reader.h"
#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor::cli {
namespace {

// The start of a file, enough to tell a KiCad schematic from a design document; empty when the
// file cannot be opened (its reader then says why).
std::string Beginning(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  std::string start(256, '\0');
  if (file == nullptr) {
    return {};
  }
  start.resize(std::fread(start.data(), 1, start.size(), file.get()));
  return start;
}

std::unique_ptr<model::Design> Load(const std::string& path) {
  if (!kicad::IsKiCadSchematic(Beginning(path))) {
    return model::LoadDesignDocument(path);
  }
  kicad::KiCadDesign read = kicad::LoadKiCadSchematic(path);
  for (const std::string& warning : read.warnings) {
    std::cerr << "kalmor: " << Printable(warning) << "\n";
  }
  std::cerr << std::flush;
  return std::move(read.design);
}

}  // namespace

LoadedDesign::LoadedDesign(const std::string& path) : design_(Load(path)) {}

LoadedDesign::~LoadedDesign() = default;

const DboDesign& LoadedDesign::design() const {
  return *design_;
}

const model::Design& LoadedDesign::model() const {
  return *design_;
}

const DboInstOccurrence* LoadedDesign::FindOccurrence(const std::string& path) const {
  return design_->FindOccurrence(path);
}

}  // namespace kalmor::cli
