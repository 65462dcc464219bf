#pragma once

// A design loaded into the in-memory host database, as the subcommands use it: from a JSON design
// document or a KiCad schematic, told apart by their content.

#include <memory>
#include <string>
#include <vector>

#include "cli/files.h"
#include "kalmor/dbo.h"
#include "model/design.h"

namespace kalmor::cli {

class LoadedDesign {
 public:
  // Throws InputError when the file cannot be read (see InputFile), DesignDocumentError or
  // KiCadError when the design is invalid; prints the KiCad reader's warnings on standard error.
  explicit LoadedDesign(const std::string& path);
  ~LoadedDesign();
  LoadedDesign(const LoadedDesign&) = delete;
  LoadedDesign& operator=(const LoadedDesign&) = delete;

  const DboDesign& design() const;
  const model::Design& model() const;
  // The design file, which no output may replace.
  const FileIdentity& identity() const { return identity_; }
  // The occurrence at a path such as /BLK1, or null.
  const DboInstOccurrence* FindOccurrence(const std::string& path) const;
  // The schematic at the top of the hierarchy, and every block occurrence below it.
  std::string RootSchematic() const;
  std::vector<model::BlockOccurrence> Blocks() const;

 private:
  FileIdentity identity_;
  std::unique_ptr<model::Design> design_;
};

}  // namespace kalmor::cli
