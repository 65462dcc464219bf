#include "page/instance_placement.h"

#include <cmath>
#include <limits>
#include <utility>

#include "page/symbol_graphics.h"

namespace kalmor {

int32_t TruncateToInt(double value) {
  constexpr double kMin = std::numeric_limits<int32_t>::min();
  constexpr double kMax = std::numeric_limits<int32_t>::max();
  if (std::isnan(value)) {
    return 0;
  }
  if (value <= kMin) {
    return std::numeric_limits<int32_t>::min();
  }
  if (value >= kMax) {
    return std::numeric_limits<int32_t>::max();
  }
  return static_cast<int32_t>(value);
}

CRect PlaceInstanceBox(CRect box, RotationT rotation, CPoint location, int32_t pageHeight) {
  if (rotation == 1 || rotation == 3) {
    std::swap(box.right, box.bottom);
  }
  const int64_t top = int64_t{box.top} + location.y;
  const int64_t bottom = int64_t{box.bottom} + location.y;
  return {Wrap32(int64_t{box.left} + location.x), Wrap32(pageHeight - top),
          Wrap32(int64_t{box.right} + location.x), Wrap32(pageHeight - bottom)};
}

InstancePlacement PlaceGraphicInstance(const DboGraphicInstance& instance, int32_t pageHeight,
                                       DboState& state) {
  InstancePlacement placement;
  placement.rotation = instance.GetRotation(state);
  placement.symbol = instance.GetDefiningGraphicObject(state);
  const CRect box = placement.symbol != nullptr ? placement.symbol->GetBoundingBox(state) : CRect{};
  placement.location = instance.GetLocation(state);
  placement.mirror = instance.GetMirror(state);
  placement.rect = PlaceInstanceBox(box, placement.rotation, placement.location, pageHeight);
  return placement;
}

void DrawSymbolVectors(const PageContext& page, std::string_view layer,
                       const DboGraphicObject* symbol, const InstancePlacement& placement,
                       double sizeFactor) {
  if (symbol == nullptr) {
    return;
  }
  const CRect& r = placement.rect;
  ForEachDbo(symbol->NewVectorsIter(0, page.state), &DboGraphicObjectVectorsIter::NextVector,
             page.state, [&](const DboBaseObject& vector) {
               SymbolGraphicsRenderer(page.out, layer, &vector, page.state, page.s, r.left, r.top,
                                      r.right, r.bottom, placement.rotation, placement.mirror,
                                      sizeFactor);
             });
}

}  // namespace kalmor
