#include "dxf/detail/real_format.h"

#include <charconv>
#include <cstring>

namespace kalmor::dxf_detail {

namespace {
constexpr std::ptrdiff_t kFieldWidth = 8;
}  // namespace

char* AppendReal(char* out, double value) {
  // to_chars rounds the exact binary value, so ties and large magnitudes come out as the C
  // library prints them; only the padding is ours.
  const auto [end, ec] =
      std::to_chars(out, out + kMaxRealChars, value, std::chars_format::fixed, 4);
  (void)ec;  // kMaxRealChars holds every double
  const std::ptrdiff_t length = end - out;
  if (length >= kFieldWidth) {
    return end;
  }
  const std::ptrdiff_t pad = kFieldWidth - length;
  std::memmove(out + pad, out, static_cast<std::size_t>(length));
  std::memset(out, ' ', static_cast<std::size_t>(pad));
  return out + kFieldWidth;
}

}  // namespace kalmor::dxf_detail
