#pragma once

// Reading a design document into the in-memory design, through either cursor: the careful one
// (TapeReader, over the parsed text), whose complaints are exact, and the fast one (TextReader,
// straight over the text), which leaves anything unusual to the careful one. Both read with the
// same code, so they make the same design of the same document.

#include <cstddef>
#include <memory>
#include <string_view>

#include "model/design_data.h"

namespace kalmor::model::detail {

class TapeReader;
class TextReader;

// Reads the document at `in` into `data` and links its hierarchy; throws DocumentFault (or, for
// the fast cursor, LeftToCarefulReader) when it cannot.
template <typename In>
void ReadDesign(In& in, DesignData& data);

extern template void ReadDesign<TapeReader>(TapeReader& in, DesignData& data);
extern template void ReadDesign<TextReader>(TextReader& in, DesignData& data);

// The two readings of a whole text. The fast one reads a text followed by `padding` readable
// bytes, the first of them zero (fewer, or another, and it reads nothing), and gives nothing when
// it leaves the document to the careful one (a fault, or anything it does not read exactly as that
// would); the careful one throws DesignDocumentError.
std::unique_ptr<DesignData> ReadFast(std::string_view json, std::size_t padding);
std::unique_ptr<DesignData> ReadCarefully(std::string_view json, std::string_view documentName);

}  // namespace kalmor::model::detail
