#pragma once

#include <string_view>

// The seven layers every entity goes on. Readers create them on first use.
namespace kalmor::layer {

inline constexpr std::string_view kTitle = "TITLE";
inline constexpr std::string_view kParts = "PARTS";
inline constexpr std::string_view kPartText = "PARTTEXT";
inline constexpr std::string_view kWire = "WIRE";
inline constexpr std::string_view kWireText = "WIRETEXT";
inline constexpr std::string_view kComments = "COMMENTS";
inline constexpr std::string_view kBitmaps = "BITMAPS";

}  // namespace kalmor::layer
