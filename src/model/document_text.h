#pragma once

// The one way in for names and texts: every string the design takes from a document (names,
// values, ids, texts, face names, occurrence paths) passes through DesignText, so that what the
// design holds is decided in one place, whichever reader found it.

#include <string>
#include <string_view>

#include "kalmor/host_text.h"
#include "model/design_storage.h"

namespace kalmor::model::detail {

enum class TextRole {
  kName,   // names files and the hierarchy, or finds a symbol: kept as the document writes it
  kShown,  // shown in the drawing: the host's text (see kalmor/host_text.h)
};

// The design's text for the UTF-8 of a document string, escapes already resolved. ASCII, most
// of any design, is the same in the host's text.
inline Text DesignText(std::string_view utf8, TextRole role) {
  if (role == TextRole::kShown) {
    for (const char c : utf8) {
      if (static_cast<unsigned char>(c) >= 0x80) {
        return Text(HostTextFromUtf8(utf8));
      }
    }
  }
  return Text(utf8);
}

// A name (TextRole::kName) as the design holds it, for use outside of the design's memory: a
// key, a word to compare, a message.
inline std::string DesignName(std::string_view utf8) {
  return std::string(utf8);
}

}  // namespace kalmor::model::detail
