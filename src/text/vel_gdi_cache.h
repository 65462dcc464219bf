#pragma once

// The application's font cache: every logical font a text shape has asked for, kept as a
// normalised record under a stable index.

#include <cstdint>
#include <vector>

#include "kalmor/types.h"

namespace kalmor {

class CVelGdiCache {
 public:
  // The index of `font` in the cache, appending it when no record matches. A width of 0 is first
  // replaced by the font's average character width, when the current metrics source can read it.
  int32_t Lookup(const LogFont& font);

  // The cached record of `slot` and `index`; throws std::out_of_range for one never handed out.
  const LogFont& GetLogFont(int32_t slot, int32_t index) const;

  int32_t Count() const { return static_cast<int32_t>(fonts_.size()); }

 private:
  std::vector<LogFont> fonts_;
};

// The one cache of the application; it lives as long as the process and only grows.
CVelGdiCache& ApplicationGdiCache();

}  // namespace kalmor
