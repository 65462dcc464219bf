#pragma once

// The system's fonts as a metrics source: faces found through fontconfig, measured with FreeType
// the way a screen at 100 per cent shows them (whole-pixel hinted advances, no kerning).

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "kalmor/errors.h"
#include "text/font_metrics.h"

namespace kalmor {

// Where the glyphs of a logical font live.
struct FontFile {
  std::string path;
  int index = 0;          // face within a collection file
  bool embolden = false;  // the face is lighter than asked for: bold is simulated
};

// The file fontconfig picks for the font's weight and italic flag in the family that stands in
// for its face name (text/face_substitution.h: "Tahoma" measures in Liberation Sans, and so does
// a face that no installed font has).
FontFile ResolveFontFile(const LogFont& font);

class FreeTypeFontMetrics final : public FontMetricsSource {
 public:
  // Maps a logical font to its file; it may look only at the face name, weight and italic flag,
  // since its answers are cached by those.
  using Resolver = std::function<FontFile(const LogFont&)>;

  FreeTypeFontMetrics();  // resolves through fontconfig
  explicit FreeTypeFontMetrics(Resolver resolver);
  ~FreeTypeFontMetrics() override;
  FreeTypeFontMetrics(const FreeTypeFontMetrics&) = delete;
  FreeTypeFontMetrics& operator=(const FreeTypeFontMetrics&) = delete;

  // Both throw EnvironmentError when the font's file cannot be found or loaded (the message names
  // the file and the reason). A font of height 0 has no metrics and measures 0 x 0.
  bool GetTextMetrics(const LogFont& font, TextMetrics& metrics) override;
  TextExtent GetTextExtent(const LogFont& font, std::string_view line) override;
  void PrepareFont(const LogFont& font) override;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kalmor
