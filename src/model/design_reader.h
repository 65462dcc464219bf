#pragma once

// Reads a JSON design document into the in-memory design database. Nothing is half-loaded: an
// invalid document raises DesignDocumentError naming the document, the JSON path and, where
// known, the line and column; a font that cannot be loaded to measure its texts raises
// EnvironmentError.

#include <memory>
#include <string>
#include <string_view>

#include "kalmor/errors.h"

namespace kalmor::model {

class Design;

class DesignDocumentError : public DocumentError {
 public:
  using DocumentError::DocumentError;
};

std::unique_ptr<Design> ReadDesignDocument(std::string_view json, std::string_view documentName);
std::unique_ptr<Design> LoadDesignDocument(const std::string& path);

}  // namespace kalmor::model
