#pragma once

// Writes an in-memory design as a design document: reading the document back gives the same
// design, field for field, so that both export to the same bytes.

#include <string>

namespace kalmor::model {

class Design;

// The document, JSON. Symbols used by more than one instance are written once under `symbols`;
// the others stand inline where they are used. Texts shown on the page go back from the host's
// code page to UTF-8; names are written byte for byte.
std::string WriteDesignDocument(const Design& design);

}  // namespace kalmor::model
