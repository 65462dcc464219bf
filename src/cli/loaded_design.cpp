#include "cli/loaded_design.h"

#include "model/design_reader.h"

namespace kalmor::cli {

namespace {

std::string ReadDocument(const std::string& path, FileIdentity& identity) {
  InputFile file(path);
  identity = file.identity();
  return file.ReadAll();
}

}  // namespace

LoadedDesign::LoadedDesign(const std::string& path)
    : design_(model::ReadDesignDocument(ReadDocument(path, identity_), path)) {}

LoadedDesign::~LoadedDesign() = default;

const DboDesign& LoadedDesign::design() const {
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
