#include "text/vel_gdi_cache.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "text/font_metrics.h"

namespace kalmor {
namespace {

// Height, width, escapement, orientation, weight and the eight style and precision bytes.
constexpr std::size_t kNumericBytes = 28;
static_assert(offsetof(LogFont, lfFaceName) == kNumericBytes);

}  // namespace

// Two records match when their numeric fields are equal byte for byte and their faces are
// equal up to the terminator (a face may fill all 32 bytes without one): exactly when their
// identities are equal.
CVelGdiCache::Identity CVelGdiCache::IdentityOf(const LogFont& font) {
  CVelGdiCache::Identity identity{};
  std::memcpy(identity.data(), &font, kNumericBytes);
  std::memcpy(identity.data() + kNumericBytes, font.lfFaceName,
              strnlen(font.lfFaceName, sizeof font.lfFaceName));
  return identity;
}

std::size_t CVelGdiCache::IdentityHash::operator()(const Identity& identity) const {
  return std::hash<std::string_view>{}(std::string_view(identity.data(), identity.size()));
}

int32_t CVelGdiCache::Lookup(const LogFont& font) {
  LogFont copy = font;
  if (copy.lfWidth == 0) {
    TextMetrics metrics;
    if (CurrentFontMetrics().GetTextMetrics(copy, metrics)) {
      copy.lfWidth = metrics.averageCharWidth;
    }
  }
  const auto [found, added] = index_.try_emplace(IdentityOf(copy), Count());
  if (added) {
    fonts_.push_back(copy);
  }
  return found->second;
}

const LogFont& CVelGdiCache::GetLogFont(int32_t slot, int32_t index) const {
  // Text shapes only ever use slot 0.
  if (slot != 0 || index < 0 || static_cast<std::size_t>(index) >= fonts_.size()) {
    throw std::out_of_range("font cache: no font at slot " + std::to_string(slot) + ", index " +
                            std::to_string(index) + " (the cache holds " +
                            std::to_string(fonts_.size()) + ")");
  }
  return fonts_[static_cast<std::size_t>(index)];
}

CVelGdiCache& ApplicationGdiCache() {
  static CVelGdiCache cache;
  return cache;
}

}  // namespace kalmor
