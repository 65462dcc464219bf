#pragma once

// The one way in for names and texts: every string the design takes from a document (names,
// values, ids, texts, face names, occurrence paths) passes through DesignText, so that what the
// design holds is decided in one place, whichever reader found it.

#include <string>
#include <string_view>

#include "kalmor/host_text.h"

namespace kalmor::model::detail {

enum class TextRole {
  kName,   // names files and the hierarchy, or finds a symbol: kept as the document writes it
  kShown,  // shown in the drawing: the host's text (see kalmor/host_text.h)
};

// The design's text for the UTF-8 of a document string, escapes already resolved.
inline std::string DesignText(std::string_view utf8, TextRole role) {
  return role == TextRole::kShown ? HostTextFromUtf8(utf8) : std::string(utf8);
}

}  // namespace kalmor::model::detail
