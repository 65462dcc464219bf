#include "text/vel_text.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "kalmor/host_text.h"
#include "kalmor/user_interface.h"
#include "text/font_metrics.h"
#include "text/saturate.h"
#include "text/vel_gdi_cache.h"

namespace kalmor {
namespace {

constexpr uint8_t kOutPrecisionTrueTypeOnly = 7;
constexpr uint8_t kClipPrecisionStroke = 2;
constexpr uint8_t kQualityDraft = 1;

constexpr int64_t kLargestRealisticExtent = 32767;
constexpr TextExtent kStandInExtent = {3, 3};
constexpr std::string_view kUnrealisticExtentText =
    "Internal Device Error: TextExtent returned unrealistic values.\n";
// The box is the framework's own complaint, so it carries the application's name.
constexpr std::string_view kUnrealisticExtentCaption = "KALMOR";

bool g_unrealisticExtentShown = false;

// The rectangle while it is laid out: wide enough that no text can overflow it.
struct WideRect {
  int64_t left = 0;
  int64_t top = 0;
  int64_t right = 0;
  int64_t bottom = 0;

  void Normalise() {
    if (left > right) {
      std::swap(left, right);
    }
    if (top > bottom) {
      std::swap(top, bottom);
    }
  }
};

TextExtent CheckedTextExtent(FontMetricsSource& source, const LogFont& font,
                             std::string_view line) {
  const TextExtent extent = source.GetTextExtent(font, line);
  if (std::abs(int64_t{extent.cx}) <= kLargestRealisticExtent &&
      std::abs(int64_t{extent.cy}) <= kLargestRealisticExtent) {
    return extent;
  }
  std::string message(kUnrealisticExtentText);
  message += Utf8FromHostText(line);  // messages are UTF-8, as the names in the others are
  UserInterface& ui = CurrentUserInterface();
  ui.AppendToSessionLog(message);  // dropped when no log is open
  if (!g_unrealisticExtentShown) {
    g_unrealisticExtentShown = true;
    ui.MessageBox(kUnrealisticExtentCaption, message, 0);
  }
  return kStandInExtent;
}

// Lays the text out from `anchor` in the cached font at `fontIndex`: the anchor is the corner
// that the angle names (left and top at 0, turning counter-clockwise with the text).
CRect LayOut(std::string_view text, CPoint anchor, int32_t angle, int32_t fontIndex) {
  // A copy: the cache may move its records when it grows.
  const LogFont font = ApplicationGdiCache().GetLogFont(0, fontIndex);
  FontMetricsSource& source = CurrentFontMetrics();

  int64_t lineHeight = 0;
  int64_t descent = 0;
  if (TextMetrics metrics; source.GetTextMetrics(font, metrics)) {
    lineHeight = metrics.height;
    descent = metrics.descent;
  } else {
    lineHeight = std::abs(int64_t{font.lfHeight});
  }

  // Lines end at carriage returns; line feeds take no room anywhere in the text.
  int64_t lines = 1;
  int64_t width = 0;
  std::string line;
  bool first = true;
  const auto measureLine = [&] {
    const int64_t cx = CheckedTextExtent(source, font, line).cx;
    width = first ? cx : std::max(width, cx);
    first = false;
    line.clear();
  };
  for (const char c : text) {
    if (c == '\r') {
      measureLine();
      ++lines;
    } else if (c != '\n') {
      line += c;
    }
  }
  measureLine();

  const int64_t height = lineHeight * lines;
  const int64_t x = anchor.x;
  const int64_t y = anchor.y;
  WideRect laid;
  switch (angle) {
    case 0:
      laid = {x, y, x + width, y + height};
      laid.Normalise();
      laid.bottom -= descent;
      break;
    case 900:
      laid = {x, y, x + height, y - width};
      laid.Normalise();
      laid.right -= descent;
      break;
    case 1800:
      laid = {x, y, x - width, y - height};
      laid.Normalise();
      laid.top += descent;
      break;
    case 2700:
      laid = {x, y, x - height, y + width};
      laid.Normalise();
      laid.left += descent;
      break;
    default:
      // Only the four right angles are measured.
      break;
  }
  return {text_detail::SaturateToInt32(laid.left), text_detail::SaturateToInt32(laid.top),
          text_detail::SaturateToInt32(laid.right), text_detail::SaturateToInt32(laid.bottom)};
}

CRect Normalised(const CRect& rect) {
  return {std::min(rect.left, rect.right), std::min(rect.top, rect.bottom),
          std::max(rect.left, rect.right), std::max(rect.top, rect.bottom)};
}

}  // namespace

LogFont NormaliseTextFont(const LogFont& font) {
  LogFont normal = font;
  normal.lfEscapement = 0;
  normal.lfWidth = 0;
  normal.lfOutPrecision = kOutPrecisionTrueTypeOnly;
  normal.lfClipPrecision = kClipPrecisionStroke;
  normal.lfQuality = kQualityDraft;
  normal.lfHeight = font.HeightOrDefault();
  if (normal.lfHeight > 0) {
    normal.lfHeight = -normal.lfHeight;
  }
  return normal;
}

void PrepareTextFont(const LogFont& font) {
  CurrentFontMetrics().PrepareFont(NormaliseTextFont(font));
}

CVelText::CVelText(std::string_view text, CPoint anchor, const LogFont& font) {
  const int32_t fontIndex = ApplicationGdiCache().Lookup(NormaliseTextFont(font));
  CRect rect = LayOut(text, anchor, font.lfEscapement, fontIndex);
  // Both dimensions are made even, so that the text's centre falls on a whole unit.
  const int64_t width = int64_t{rect.right} - rect.left;
  const int64_t height = int64_t{rect.bottom} - rect.top;
  rect.right = text_detail::SaturateToInt32(rect.right + int64_t{width % 2 != 0});
  rect.bottom = text_detail::SaturateToInt32(rect.bottom + int64_t{height % 2 != 0});
  rect_ = Normalised(rect);
}

}  // namespace kalmor
