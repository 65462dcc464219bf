#include "page/display_props.h"

#include <cstdlib>

#include "page/instance_placement.h"

namespace kalmor {
namespace {

// The text's extent, normalised.
void ExtentOf(const DboDisplayProp& prop, DboState& state, int64_t& width, int64_t& height) {
  const CRect box = prop.GetBoundingBox(state);
  width = std::abs(int64_t{box.right} - box.left);
  height = std::abs(int64_t{box.bottom} - box.top);
}

// The rotation table shared by both anchors, in whatever arithmetic the caller's location has.
template <typename T>
bool AnchorFor(RotationT rotation, T x0, T y0, T lx, T ly, int64_t width, int64_t height, T& x,
               T& y) {
  switch (rotation) {
    case 0:
      x = x0 + lx;
      y = y0 - ly;
      return true;
    case 1:
      x = x0 + lx;
      y = y0 - height - ly;
      return true;
    case 2:
      x = x0 + lx + width;
      y = y0 - height - ly;
      return true;
    case 3:
      x = x0 + lx + width;
      y = y0 - ly;
      return true;
    default:
      return false;
  }
}

}  // namespace

std::string ReadDisplayPropValue(const DboDisplayProp& prop, const DboInstOccurrence* occurrence,
                                 DboState& state) {
  std::string value;
  if (occurrence != nullptr) {
    DboInstOccurrencePtrProxy proxy;
    proxy.SetPtr(occurrence);
    prop.GetValueStringForOccurrence(proxy.GetDWORDDesignOccurrenceId(), value, state);
  } else {
    prop.GetValueString(value, nullptr, state);
  }
  return value;
}

bool GetDisplayPropText(const DboDisplayProp& prop, const DboInstOccurrence* occurrence,
                        std::string& out) {
  DboState state;
  const DisplayTypeT type = prop.GetDisplayType(state);
  if (!state.OK()) {
    return false;
  }
  std::string name;
  prop.GetName(name, state);
  const std::string value = ReadDisplayPropValue(prop, occurrence, state);
  FormatDisplayPropText(name, value, type, out);
  return true;
}

CPoint DisplayPropAnchor(const DboDisplayProp& prop, const CRect& ownerRect) {
  DboState state;
  const CPoint location = prop.GetLocation(state);
  int64_t width = 0;
  int64_t height = 0;
  ExtentOf(prop, state, width, height);
  int64_t x = 0;
  int64_t y = 0;
  if (!AnchorFor<int64_t>(prop.GetRotation(state), ownerRect.left, ownerRect.top, location.x,
                          location.y, width, height, x, y)) {
    return CPoint{0, 0};
  }
  return CPoint{Wrap32(x), Wrap32(y)};
}

CPoint ScaledDisplayPropAnchor(const DboDisplayProp& prop, int32_t x0, int32_t y0,
                               int32_t /*ignoredX*/, int32_t /*ignoredY*/, double scale) {
  DboState state;
  const CPoint location = prop.GetLocation(state);
  int64_t width = 0;
  int64_t height = 0;
  ExtentOf(prop, state, width, height);
  double x = 0.0;
  double y = 0.0;
  if (!AnchorFor<double>(prop.GetRotation(state), x0, y0, location.x * scale, location.y * scale,
                         width, height, x, y)) {
    return CPoint{0, 0};
  }
  return CPoint{TruncateToInt(x), TruncateToInt(y)};
}

LogFont ScaledFont(LogFont font, double factor) {
  font.lfHeight = TruncateToInt(font.HeightOrDefault() * factor);
  font.lfWidth = TruncateToInt(font.lfWidth * factor);
  return font;
}

}  // namespace kalmor
