#include "text/font_metrics.h"

#include "text/freetype_metrics.h"

namespace kalmor {
namespace {

FontMetricsSource* g_installed = nullptr;

}  // namespace

FontMetricsSource& CurrentFontMetrics() {
  if (g_installed != nullptr) {
    return *g_installed;
  }
  // Made on first use, so that a process that never measures never loads a font.
  static FreeTypeFontMetrics system;
  return system;
}

ScopedFontMetrics::ScopedFontMetrics(FontMetricsSource& source) : previous_(g_installed) {
  g_installed = &source;
}

ScopedFontMetrics::~ScopedFontMetrics() {
  g_installed = previous_;
}

}  // namespace kalmor
