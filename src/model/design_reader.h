#pragma once

// Reads a JSON design document into the in-memory design database. Nothing is half-loaded: an
// invalid document raises DesignDocumentError naming the document, the JSON path and, where
// known, the line and column; a font that cannot be loaded to measure its texts raises
// EnvironmentError.

#include <cstddef>
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

// The reader reads a little past the end of the text, and copies a text given as a view to make
// that room. A document handed over as a string whose capacity holds this many bytes more is
// read in place.
inline constexpr std::size_t kDocumentPadding = 64;
std::unique_ptr<Design> ReadDesignDocumentInPlace(std::string json, std::string_view documentName);
std::unique_ptr<Design> LoadDesignDocument(const std::string& path);

}  // namespace kalmor::model
