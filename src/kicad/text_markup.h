#pragma once

// KiCad's text markup and text variables, turned into the plain texts the design holds.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kalmor::kicad::detail {

// Every text that enters the design from a KiCad file passes through here last: KiCad's UTF-8
// becomes the host's text (see kalmor/host_text.h). Names that only make file names, ids and
// messages stay UTF-8.
std::string HostText(std::string text);

// The value of a text variable by name, or nothing when it is unknown.
using VariableLookup = std::function<std::optional<std::string>(std::string_view name)>;

// Replaces each ${NAME} whose value `lookup` knows, also inside substituted values (a few levels
// deep, so that variables naming each other end); unknown ones stay as written.
std::string ExpandVariables(std::string_view text, const VariableLookup& lookup);

// The text as shown: overbars (~{..}), subscripts (_{..}) and superscripts (^{..}) lose their
// markup, and the escapes KiCad writes in net names ({slash}, {lt}, ...) become their characters.
std::string PlainText(std::string_view text);

// A pin name as shown, with its overbars in the pin-name convention of the design: a backslash
// after each barred character. KiCad's "~" alone is a pin without a name.
std::string PinNameText(std::string_view text);

}  // namespace kalmor::kicad::detail
