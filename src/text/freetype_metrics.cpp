#include "text/freetype_metrics.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_SIZES_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <list>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "kalmor/host_text.h"
#include "text/face_substitution.h"
#include "text/saturate.h"

namespace kalmor {
namespace text_detail {
namespace {

// FreeType's own texts for its error codes.
struct FreeTypeErrorText {
  int code;
  const char* text;
};
// clang-format off
#undef FTERRORS_H_
#define FT_ERRORDEF(e, v, s) {e, s},
#define FT_ERROR_START_LIST {
#define FT_ERROR_END_LIST {0, nullptr}}
constexpr FreeTypeErrorText kFreeTypeErrorTexts[] =
#include FT_ERRORS_H
;
// clang-format on

std::string FreeTypeReason(FT_Error error) {
  for (const FreeTypeErrorText& entry : kFreeTypeErrorTexts) {
    if (entry.text != nullptr && entry.code == error) {
      return entry.text;
    }
  }
  return "FreeType error " + std::to_string(error);
}

std::string FaceName(const LogFont& font) {
  return {font.lfFaceName, strnlen(font.lfFaceName, sizeof font.lfFaceName)};
}

// Texts come in the host's code page, with escapes for the characters it lacks.
template <typename Visit>
void ForEachCharacter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const TextCharacter c = DecodeHostText(text);
    visit(c.code);
    text.remove_prefix(c.length);
  }
}

int64_t RoundToPixels(double value) {
  return std::llround(value);
}

// FreeType keeps a size's pixels per em in 16 bits (FT_Size_Metrics' x_ppem and y_ppem) and
// refuses to set up a larger size. A larger font is measured at this size and its metrics and
// advances scaled up to its own: outlines scale linearly, and at this size hinting moves nothing
// by a whole pixel.
constexpr int64_t kLargestFreeTypeSize = 0xFFFF;

// |height| in pixels: after normalisation the height names the character (em) height.
int64_t PixelSize(const LogFont& font) {
  return std::abs(static_cast<int64_t>(font.lfHeight));
}

}  // namespace

// One face of a font file, opened once however many sizes are measured in it.
class OpenFace {
 public:
  OpenFace(FT_Library library, const FontFile& file) {
    if (const FT_Error error = FT_New_Face(library, file.path.c_str(), file.index, &face_)) {
      face_ = nullptr;
      throw EnvironmentError("cannot open font file \"" + file.path + "\" (face " +
                             std::to_string(file.index) + "): " + FreeTypeReason(error));
    }
  }
  ~OpenFace() { FT_Done_Face(face_); }
  OpenFace(const OpenFace&) = delete;
  OpenFace& operator=(const OpenFace&) = delete;

  FT_Face get() const { return face_; }

 private:
  FT_Face face_ = nullptr;
};

// An open face at one pixel size (a size object of its own, made current before each use, so
// that a design with thousands of sizes opens each file once), with what has been measured at
// that size so far.
class SizedFace {
 public:
  SizedFace(FT_Face face, const FontFile& file, int64_t pixelSize)
      : face_(face),
        file_(file),
        sizedAt_(std::min(pixelSize, kLargestFreeTypeSize)),
        scale_(static_cast<double>(pixelSize) / static_cast<double>(sizedAt_)) {
    if (const FT_Error error = FT_New_Size(face_, &size_)) {
      size_ = nullptr;
      throw EnvironmentError("cannot size font file \"" + file.path + "\" at " +
                             std::to_string(sizedAt_) + " pixels: " + FreeTypeReason(error));
    }
    FT_Activate_Size(size_);
    if (const FT_Error error = FT_Set_Pixel_Sizes(face_, 0, static_cast<FT_UInt>(sizedAt_))) {
      FT_Done_Size(size_);
      size_ = nullptr;
      throw EnvironmentError("cannot size font file \"" + file.path + "\" at " +
                             std::to_string(sizedAt_) + " pixels: " + FreeTypeReason(error));
    }
    latinAdvances_.fill(-1);
    ReadMetrics(pixelSize);
  }
  ~SizedFace() {
    if (size_ != nullptr) {
      FT_Done_Size(size_);
    }
  }
  SizedFace(const SizedFace&) = delete;
  SizedFace& operator=(const SizedFace&) = delete;

  const TextMetrics& Metrics() const { return metrics_; }

  int64_t Width(std::string_view line) {
    int64_t width = 0;
    ForEachCharacter(line, [&](char32_t cp) { width += Advance(cp); });
    return width;
  }

 private:
  // The screen's metrics: the Windows ascent and descent of the OS/2 table where there is one,
  // each rounded to whole pixels.
  void ReadMetrics(int64_t pixelSize) {
    const double units = face_->units_per_EM;
    const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face_, FT_SFNT_OS2));
    const double size = static_cast<double>(pixelSize);
    int64_t ascent = 0;
    int64_t descent = 0;
    if (os2 != nullptr && os2->version != 0xFFFF && units > 0) {
      ascent = RoundToPixels(os2->usWinAscent * size / units);
      descent = RoundToPixels(os2->usWinDescent * size / units);
    } else {
      ascent = RoundToPixels(size_->metrics.ascender / 64.0 * scale_);
      descent = RoundToPixels(-size_->metrics.descender / 64.0 * scale_);
    }
    metrics_.height = SaturateToInt32(ascent + descent);
    metrics_.descent = SaturateToInt32(descent);
    if (os2 != nullptr && os2->version != 0xFFFF && os2->xAvgCharWidth > 0 && units > 0) {
      metrics_.averageCharWidth = SaturateToInt32(RoundToPixels(os2->xAvgCharWidth * size / units) +
                                                  (file_.embolden ? 1 : 0));
    } else {
      metrics_.averageCharWidth = SaturateToInt32(Advance(U'x'));
    }
  }

  int64_t Advance(char32_t cp) {
    if (cp < latinAdvances_.size() && latinAdvances_[cp] >= 0) {
      return latinAdvances_[cp];
    }
    if (const auto known = otherAdvances_.find(cp); known != otherAdvances_.end()) {
      return known->second;
    }
    FT_Activate_Size(size_);
    const FT_UInt glyph = FT_Get_Char_Index(face_, cp);  // 0, the missing glyph, when absent
    int64_t advance = 0;
    if (FT_Load_Glyph(face_, glyph, FT_LOAD_DEFAULT) == 0) {
      // Hinted advances are whole pixels already; round in case a driver left a fraction.
      advance = (face_->glyph->advance.x + 32) >> 6;
      if (scale_ != 1.0) {
        advance = RoundToPixels(static_cast<double>(advance) * scale_);
      }
    }
    // A simulated bold face is one pixel wider per character.
    advance += file_.embolden ? 1 : 0;
    if (cp < latinAdvances_.size()) {
      latinAdvances_[cp] = advance;
    } else {
      otherAdvances_.emplace(cp, advance);
    }
    return advance;
  }

  FT_Face face_;
  FT_Size size_ = nullptr;
  FontFile file_;
  int64_t sizedAt_;  // the size FreeType measures at
  double scale_;     // from that size to the font's own
  TextMetrics metrics_;
  std::array<int64_t, 256> latinAdvances_{};
  std::unordered_map<char32_t, int64_t> otherAdvances_;
};

}  // namespace text_detail

namespace {

void EnsureFontconfig() {
  static const bool loaded = FcInit() == FcTrue;
  if (!loaded) {
    throw EnvironmentError("fontconfig cannot load its configuration");
  }
}

// FW_DONTCARE (0) stands for normal weight.
int FontconfigWeight(int32_t weight) {
  return FcWeightFromOpenType(weight <= 0 ? 400 : std::min(weight, 1000));
}

// fontconfig's best font for a family at the font's weight and slant: one of that family when
// one is installed, else whatever fontconfig offers in its place (null only without fonts).
FcPattern* MatchFamily(const std::string& family, const LogFont& font) {
  FcPattern* pattern = FcPatternCreate();
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  FcPatternAddInteger(pattern, FC_WEIGHT, FontconfigWeight(font.lfWeight));
  FcPatternAddInteger(pattern, FC_SLANT, font.lfItalic != 0 ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  FcPattern* match = FcFontMatch(nullptr, pattern, &result);
  FcPatternDestroy(pattern);
  return match;
}

bool IsOfFamily(FcPattern* match, const std::string& family) {
  FcChar8* name = nullptr;
  for (int i = 0; FcPatternGetString(match, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
    if (FcStrCmpIgnoreCase(name, reinterpret_cast<const FcChar8*>(family.c_str())) == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace

FontFile ResolveFontFile(const LogFont& font) {
  EnsureFontconfig();
  const std::string face = text_detail::FaceName(font);
  std::string family(text_detail::SubstituteFace(face));
  FcPattern* match = family.empty() ? nullptr : MatchFamily(family, font);
  if (match == nullptr || !IsOfFamily(match, family)) {
    if (match != nullptr) {
      FcPatternDestroy(match);
    }
    family = text_detail::kFallbackFamily;
    match = MatchFamily(family, font);
  }

  FcChar8* path = nullptr;
  if (match == nullptr || FcPatternGetString(match, FC_FILE, 0, &path) != FcResultMatch) {
    if (match != nullptr) {
      FcPatternDestroy(match);
    }
    throw EnvironmentError("no font file found for face \"" + face +
                           "\" (fontconfig has no fonts)");
  }
  FontFile file;
  file.path = reinterpret_cast<const char*>(path);
  int index = 0;
  if (FcPatternGetInteger(match, FC_INDEX, 0, &index) == FcResultMatch) {
    file.index = index;
  }
  FcBool embolden = FcFalse;
  if (FcPatternGetBool(match, FC_EMBOLDEN, 0, &embolden) == FcResultMatch) {
    file.embolden = embolden == FcTrue;
  }
  FcPatternDestroy(match);
  return file;
}

struct FreeTypeFontMetrics::Impl {
  explicit Impl(Resolver resolve) : resolve(std::move(resolve)) {
    if (const FT_Error error = FT_Init_FreeType(&library)) {
      throw EnvironmentError("FreeType cannot start: " + text_detail::FreeTypeReason(error));
    }
  }
  ~Impl() {
    // Sizes before their faces, faces before the library they belong to.
    sized.clear();
    recent.clear();
    faces.clear();
    FT_Done_FreeType(library);
  }

  // The face for a logical font at its size; null for a font of height 0. Every step is a
  // lookup in a map, so that a design of many distinct fonts costs each of them once.
  text_detail::SizedFace* Face(const LogFont& font) {
    const int64_t pixelSize = text_detail::PixelSize(font);
    if (pixelSize == 0) {
      return nullptr;
    }
    // A text is measured in its font with and without its width; the face is the same.
    if (last != nullptr && SameFace(lastFont, font)) {
      return last;
    }
    const Style style{text_detail::FaceName(font), font.lfWeight, font.lfItalic != 0};
    auto file = files.find(style);
    if (file == files.end()) {
      file = files.emplace(style, resolve(font)).first;
    }
    const FontFile& found = file->second;
    const FaceKey faceKey{found.path, found.index};
    const SizeKey sizeKey{faceKey, found.embolden, pixelSize};
    if (const auto known = sized.find(sizeKey); known != sized.end()) {
      recent.splice(recent.begin(), recent, known->second);
    } else {
      auto face = faces.find(faceKey);
      if (face == faces.end()) {
        face =
            faces.emplace(faceKey, std::make_unique<text_detail::OpenFace>(library, found)).first;
      }
      recent.push_front({sizeKey, std::make_unique<text_detail::SizedFace>(face->second->get(),
                                                                           found, pixelSize)});
      sized.emplace(sizeKey, recent.begin());
      if (recent.size() > kMostSizes) {
        sized.erase(recent.back().key);
        recent.pop_back();
      }
    }
    lastFont = font;
    last = recent.front().face.get();
    return last;
  }

  // Whether two fonts are drawn from the same face at the same size: a face is chosen by its
  // name, weight and slant, and sized by the height alone.
  static bool SameFace(const LogFont& a, const LogFont& b) {
    return a.lfHeight == b.lfHeight && a.lfWeight == b.lfWeight &&
           (a.lfItalic != 0) == (b.lfItalic != 0) &&
           std::strncmp(a.lfFaceName, b.lfFaceName, sizeof a.lfFaceName) == 0;
  }

  using Style = std::tuple<std::string, int32_t, bool>;  // face name, weight, italic
  using FaceKey = std::pair<std::string, int>;           // file, face within it
  using SizeKey = std::tuple<FaceKey, bool, int64_t>;    // face, embolden, pixel size
  struct Sized {
    SizeKey key;
    std::unique_ptr<text_detail::SizedFace> face;
  };

  // Each size holds FreeType's hinting state, some kilobytes: a design of thousands of sizes
  // keeps the most recently used ones and sizes the others again when they come back.
  static constexpr std::size_t kMostSizes = 256;

  Resolver resolve;
  FT_Library library = nullptr;
  std::map<Style, FontFile> files;
  std::map<FaceKey, std::unique_ptr<text_detail::OpenFace>> faces;
  std::list<Sized> recent;  // most recently used first
  std::map<SizeKey, std::list<Sized>::iterator> sized;
  LogFont lastFont;
  text_detail::SizedFace* last = nullptr;  // the face of lastFont, while it is the most recent
};

FreeTypeFontMetrics::FreeTypeFontMetrics() : FreeTypeFontMetrics(ResolveFontFile) {}

FreeTypeFontMetrics::FreeTypeFontMetrics(Resolver resolver)
    : impl_(std::make_unique<Impl>(std::move(resolver))) {}

FreeTypeFontMetrics::~FreeTypeFontMetrics() = default;

bool FreeTypeFontMetrics::GetTextMetrics(const LogFont& font, TextMetrics& metrics) {
  const text_detail::SizedFace* face = impl_->Face(font);
  if (face == nullptr) {
    return false;
  }
  metrics = face->Metrics();
  return true;
}

TextExtent FreeTypeFontMetrics::GetTextExtent(const LogFont& font, std::string_view line) {
  text_detail::SizedFace* face = impl_->Face(font);
  if (face == nullptr) {
    return {};
  }
  return {text_detail::SaturateToInt32(face->Width(line)), face->Metrics().height};
}

void FreeTypeFontMetrics::PrepareFont(const LogFont& font) {
  impl_->Face(font);
}

}  // namespace kalmor
