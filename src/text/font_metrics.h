#pragma once

// The platform's font services as text measurement needs them: the metrics of a logical font at
// 100 per cent, and the extent of one line of text in it, in pixels.

#include <cstdint>
#include <string_view>

#include "kalmor/types.h"

namespace kalmor {

struct TextMetrics {
  int32_t height = 0;  // ascent + descent
  int32_t descent = 0;
  int32_t averageCharWidth = 0;
};

struct TextExtent {
  int32_t cx = 0;
  int32_t cy = 0;
};

class FontMetricsSource {
 public:
  virtual ~FontMetricsSource() = default;
  // False when the font's metrics cannot be read.
  virtual bool GetTextMetrics(const LogFont& font, TextMetrics& metrics) = 0;
  virtual TextExtent GetTextExtent(const LogFont& font, std::string_view line) = 0;
  // Finds and loads what measuring in `font` needs, so that a font that cannot be had is known
  // before anything is written; throws EnvironmentError then. Sources that load nothing need
  // nothing.
  virtual void PrepareFont(const LogFont& /*font*/) {}
};

// The process-wide source (the system's fonts unless something else is installed).
FontMetricsSource& CurrentFontMetrics();

// Installs `source` for the lifetime of this object (tests use fixed metrics this way).
class ScopedFontMetrics {
 public:
  explicit ScopedFontMetrics(FontMetricsSource& source);
  ~ScopedFontMetrics();
  ScopedFontMetrics(const ScopedFontMetrics&) = delete;
  ScopedFontMetrics& operator=(const ScopedFontMetrics&) = delete;

 private:
  FontMetricsSource* previous_;
};

}  // namespace kalmor
