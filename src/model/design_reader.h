#pragma once

// Reads a JSON design document into the in-memory design database. Nothing is half-loaded: an
// invalid document raises DesignDocumentError naming the document, the JSON path and, where
// known, the line and column.

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kalmor::model {

class Design;

class DesignDocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::unique_ptr<Design> ReadDesignDocument(std::string_view json, std::string_view documentName);
std::unique_ptr<Design> LoadDesignDocument(const std::string& path);

}  // namespace kalmor::model
