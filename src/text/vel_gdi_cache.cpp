#include "text/vel_gdi_cache.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "text/font_metrics.h"

namespace kalmor {
namespace {

// Height, width, escapement, orientation, weight and the eight style and precision bytes.
constexpr std::size_t kNumericBytes = 28;
static_assert(offsetof(LogFont, lfFaceName) == kNumericBytes);

bool SameFace(const LogFont& a, const LogFont& b) {
  // A face may fill all 32 bytes without a terminator.
  return std::strncmp(a.lfFaceName, b.lfFaceName, sizeof a.lfFaceName) == 0;
}

}  // namespace

int32_t CVelGdiCache::Lookup(const LogFont& font) {
  LogFont copy = font;
  if (copy.lfWidth == 0) {
    TextMetrics metrics;
    if (CurrentFontMetrics().GetTextMetrics(copy, metrics)) {
      copy.lfWidth = metrics.averageCharWidth;
    }
  }
  for (std::size_t i = 0; i < fonts_.size(); ++i) {
    if (SameFace(fonts_[i], copy) && std::memcmp(&fonts_[i], &copy, kNumericBytes) == 0) {
      return static_cast<int32_t>(i);
    }
  }
  fonts_.push_back(copy);
  return static_cast<int32_t>(fonts_.size() - 1);
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
