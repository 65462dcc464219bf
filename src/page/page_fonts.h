#pragma once

// The fonts a page's walk measures texts in: the comment texts of the symbols placed on it.
// Loading them before a page file is opened means that a missing font stops an export before
// it has written anything, rather than leaving a file cut off in the middle.

#include <unordered_set>

#include "kalmor/dbo.h"

namespace kalmor {

class PageFonts {
 public:
  // Loads the fonts of the symbols placed on `page` (title blocks only when they are written);
  // throws EnvironmentError when one cannot be found or opened. Symbols met before are skipped.
  void Prepare(const DboPage& page, int titleBlocks);

 private:
  void PrepareSymbol(const DboGraphicInstance& instance);

  DboState state_;
  std::unordered_set<const DboGraphicObject*> seen_;
};

}  // namespace kalmor
