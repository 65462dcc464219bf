#pragma once

// Which installed family stands in for a face name that a design asks for. Windows shows the
// common sans-serif faces, and any face it does not have, in an Arial-like face; here they all
// measure in the metric-compatible Liberation families, so that a text is as wide as it is
// there whatever fonts the machine happens to have.
//
//   Liberation Sans: Arial, Helvetica, MS Sans Serif, Microsoft Sans Serif, Segoe UI, Tahoma
//   Liberation Sans Narrow: Arial Narrow
//   Liberation Serif: Times New Roman, Times, MS Serif
//   Liberation Mono: Courier New, Courier
//   any other face (Symbol and Wingdings among them): its own family when a font of it is
//   installed, else Liberation Sans
//
// Face names compare without regard to ASCII case, as Windows compares them.

#include <string_view>

namespace kalmor::text_detail {

inline constexpr std::string_view kFallbackFamily = "Liberation Sans";

// The family that the table above gives for `face`, or `face` itself when the table has no
// entry for it (the caller then falls back when no font of that family is installed).
std::string_view SubstituteFace(std::string_view face);

}  // namespace kalmor::text_detail
