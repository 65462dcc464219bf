#pragma once

// Writes an in-memory design as a design document: reading the document back gives the same
// design, field for field, so that both export to the same bytes.

#include <string>

namespace kalmor::model {

class Design;

// The document, UTF-8 JSON. Symbols used by more than one instance are written once under
// `symbols`; the others stand inline where they are used. Texts are written byte for byte.
std::string WriteDesignDocument(const Design& design);

}  // namespace kalmor::model
