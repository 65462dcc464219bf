#include "kalmor/display_text.h"

#include "text/text_extent.h"

namespace kalmor {
namespace {

constexpr char kOpen[] = "<";
constexpr char kClose[] = ">";
constexpr char kEquals[] = " = ";

}  // namespace

void FormatDisplayPropText(const std::string& name, const std::string& value,
                           DisplayTypeT displayType, std::string& out) {
  const std::string placeholder = kOpen + name + kClose;
  const bool missing = value.empty() || value == placeholder;
  switch (displayType) {
    case 1:
      out = missing ? placeholder : value;
      break;
    case 2:
      out = name + kEquals + (missing ? std::string() : value);
      break;
    case 3:
      out = name;
      break;
    case 4:
      if (!missing) {
        out = name + kEquals + value;
      }
      break;
    default:
      out = value;
      break;
  }
}

CRect MeasureDisplayPropText(const std::string& name, const std::string& value,
                             DisplayTypeT displayType, const LogFont& font) {
  std::string shown;
  FormatDisplayPropText(name, value, displayType, shown);
  return MeasureTextExtent(shown, font);
}

}  // namespace kalmor
