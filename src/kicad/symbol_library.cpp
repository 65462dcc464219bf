#include "kicad/symbol_library.h"

#include <algorithm>

#include "kicad/units.h"

namespace kalmor::kicad::detail {
namespace {

using model::detail::BoxShape;
using model::detail::GraphicList;
using model::detail::Symbol;

// Symbols that extend symbols that extend ... stop here (and so do loops of them).
constexpr int kMostExtends = 8;
// The placeholder for a symbol the file does not carry, in page units.
constexpr int32_t kMissingSide = 40;

CPoint PinDirection(double angle) {
  switch (((static_cast<int>(std::lround(angle / 90.0)) % 4) + 4) % 4) {
    case 1:
      return {0, -1};  // upward on the page
    case 2:
      return {-1, 0};
    case 3:
      return {0, 1};
    default:
      return {1, 0};
  }
}

bool Selected(const LibUnit& unit, int wantedUnit, int wantedStyle) {
  return (unit.unit == 0 || unit.unit == wantedUnit) &&
         (unit.style == 0 || unit.style == wantedStyle);
}

}  // namespace

SymbolLibrary::SymbolLibrary(const std::vector<LibSymbol>& symbols) {
  for (const LibSymbol& symbol : symbols) {
    byName_.emplace(symbol.name, &symbol);
  }
}

const LibSymbol* SymbolLibrary::Find(std::string_view name) const {
  const auto found = byName_.find(name);
  return found != byName_.end() ? found->second : nullptr;
}

const std::vector<LibUnit>& SymbolLibrary::UnitsOf(const LibSymbol& symbol) const {
  const LibSymbol* own = &symbol;
  for (int depth = 0; depth < kMostExtends && own->units.empty() && !own->extends.empty();
       ++depth) {
    const LibSymbol* parent = Find(own->extends);
    if (parent == nullptr) {
      break;
    }
    own = parent;
  }
  return own->units;
}

int SymbolLibrary::UnitCount(const LibSymbol& symbol) const {
  int count = 1;
  for (const LibUnit& unit : UnitsOf(symbol)) {
    count = std::max(count, unit.unit);
  }
  return count;
}

const BuiltSymbol& SymbolLibrary::Build(const LibSymbol& symbol, int unit, int style) {
  const auto key = std::make_tuple(&symbol, unit, style);
  if (const auto found = built_.find(key); found != built_.end()) {
    return found->second;
  }
  BuiltSymbol& built = built_[key];
  GraphicList graphics;
  const Frame frame{0, 0, -1};
  for (const LibUnit& part : UnitsOf(symbol)) {
    if (!Selected(part, unit, style)) {
      continue;
    }
    for (const Shape& shape : part.shapes) {
      AppendShape(shape, true, frame, graphics);
    }
    for (const TextBox& box : part.textBoxes) {
      if (box.border) {
        Shape outline;
        outline.kind = Shape::Kind::kRectangle;
        outline.points = {box.at, {box.at.x + box.size.x, box.at.y - box.size.y}};
        outline.width = box.width;
        AppendShape(outline, true, frame, graphics);
      }
      built.textBoxes.push_back(&box);
    }
    for (const Text& text : part.texts) {
      built.texts.push_back(&text);
    }
    for (const LibPin& pin : part.pins) {
      const CPoint direction = PinDirection(pin.angle);
      const CPoint at = LibraryPoint(pin.at);
      const int32_t length = ToUnits(pin.length);
      built.pins.push_back({at, {at.x + direction.x * length, at.y + direction.y * length}, &pin});
    }
  }

  CRect extent;
  bool any = false;
  for (const auto& primitive : graphics) {
    const CRect box = PrimitiveExtent(*primitive);
    if (!any) {
      extent = box;
      any = true;
    } else {
      extent = {std::min(extent.left, box.left), std::min(extent.top, box.top),
                std::max(extent.right, box.right), std::max(extent.bottom, box.bottom)};
    }
  }
  built.origin = {extent.left, extent.top};
  // Even sides: the page walk mirrors about the even part of a box.
  built.width = extent.right - extent.left;
  built.height = extent.bottom - extent.top;
  built.width += built.width % 2;
  built.height += built.height % 2;
  for (const auto& primitive : graphics) {
    Translate(*primitive, {-built.origin.x, -built.origin.y});
  }
  auto drawn = model::detail::New<Symbol>();
  drawn->bbox = {0, 0, built.width, built.height};
  drawn->vectors = std::move(graphics);
  built.symbol = drawn;
  return built;
}

const BuiltSymbol& SymbolLibrary::Missing() {
  const auto key = std::make_tuple(static_cast<const LibSymbol*>(nullptr), 0, 0);
  if (const auto found = built_.find(key); found != built_.end()) {
    return found->second;
  }
  BuiltSymbol& built = built_[key];
  auto box = model::detail::New<BoxShape>();
  box->rect = {0, 0, kMissingSide, kMissingSide};
  auto drawn = model::detail::New<Symbol>();
  drawn->bbox = box->rect;
  drawn->vectors.push_back(std::move(box));
  built.symbol = drawn;
  built.origin = {-kMissingSide / 2, -kMissingSide / 2};
  built.width = kMissingSide;
  built.height = kMissingSide;
  return built;
}

}  // namespace kalmor::kicad::detail
