#pragma once

// The one way in for names and texts: every string the design takes from a document (names,
// values, ids, texts, face names, occurrence paths) passes through DesignText, so that what the
// design holds is decided in one place, whichever reader found it.

#include <string>
#include <string_view>

namespace kalmor::model::detail {

// The design's text for the bytes of a document string, escapes already resolved. Today the
// bytes as they are.
inline std::string DesignText(std::string_view bytes) {
  return std::string(bytes);
}

}  // namespace kalmor::model::detail
