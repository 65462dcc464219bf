#include "cli/loaded_design.h"

#include <iostream>

#include "cli/commands.h"
#include "cli/terminal_ui.h"
#include "kicad/kicad_reader.h"
#include "model/design.h"
#include "model/design_reader.h"

namespace kalmor::cli {

namespace {

std::string ReadDocument(const std::string& path, FileIdentity& identity) {
  InputFile file(path);
  identity = file.identity();
  return file.ReadAll(model::kDocumentPadding);  // so that it is read in place
}

// A design document or a KiCad schematic, told apart by their content.
std::unique_ptr<model::Design> ReadDesign(const std::string& path, FileIdentity& identity) {
  std::string text = ReadDocument(path, identity);
  if (!kicad::IsKiCadSchematic(text)) {
    return model::ReadDesignDocumentInPlace(std::move(text), path);
  }
  kicad::KiCadDesign read = kicad::ReadKiCadSchematic(text, path, kicad::DiskFiles());
  for (const std::string& warning : read.warnings) {
    std::cerr << "kalmor: " << Escaped(warning) << "\n";
  }
  std::cerr << std::flush;
  return std::move(read.design);
}

}  // namespace

LoadedDesign::LoadedDesign(const std::string& path) : design_(ReadDesign(path, identity_)) {}

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

const std::string& LoadedDesign::RootSchematic() const {
  return design_->rootName();
}

std::vector<model::BlockOccurrence> LoadedDesign::Blocks() const {
  return design_->BlockOccurrences();
}

}  // namespace kalmor::cli
