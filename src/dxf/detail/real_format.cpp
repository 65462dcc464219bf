#include "dxf/detail/real_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace kalmor::dxf_detail {

namespace {

constexpr int kFieldWidth = 8;

// "00" to "99".
constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (int i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Values below 2^50 in magnitude have at most 16 integer digits, and ten thousand times them
// fits 64 bits: the fast path below holds them all.
constexpr int kFastExponentLimit = 50;

// The value in ten-thousandths, rounded exactly as the C library rounds a binary value to four
// decimals (to nearest, ties to even), for a finite |value| < 2^50. A double is m * 2^e with an
// integer m < 2^53; ten thousand times it is (625 * m) * 2^(e + 4), where 625 * m < 2^63.
uint64_t TenThousandths(uint64_t bits) {
  const auto biased = static_cast<int>((bits >> 52) & 0x7FF);
  uint64_t mantissa = bits & ((uint64_t{1} << 52) - 1);
  int exponent = -1074;  // subnormal
  if (biased != 0) {
    mantissa |= uint64_t{1} << 52;
    exponent = biased - 1075;
  }
  const uint64_t scaled = mantissa * 625;
  const int shift = -(exponent + 4);
  if (shift <= 0) {
    return scaled << -shift;
  }
  if (shift >= 64) {
    return 0;  // below half of one ten-thousandth, since scaled < 2^63
  }
  const uint64_t whole = scaled >> shift;
  const uint64_t rest = scaled & ((uint64_t{1} << shift) - 1);
  const uint64_t half = uint64_t{1} << (shift - 1);
  // Up when the rest is above half, or exactly half and the whole odd; as arithmetic, since
  // which way a value rounds is as good as random.
  return whole + static_cast<uint64_t>(rest + (whole & 1) > half);
}

// The number of decimal digits of `value`, at least one.
int DigitCount(uint64_t value) {
  int count = 1;
  for (; value >= 100; value /= 100) {
    count += 2;
  }
  return count + (value >= 10 ? 1 : 0);
}

// Two digits of `value` < 100 as the low 16 bits of a word that is stored little-endian.
uint64_t PairBits(uint32_t value) {
  uint16_t pair;
  std::memcpy(&pair, &kDigitPairs[2 * value], 2);
  return pair;
}

// The four digits of `value` < 10000, leading zeros included, first digit in the lowest byte.
// The division by 100 is a multiplication exact below 43,699 (compilers otherwise divide).
uint64_t FourDigitBits(uint32_t value) {
  const uint32_t high = (value * 5243) >> 19;
  return PairBits(high) | (PairBits(value - high * 100) << 16);
}

char* PadToField(char* out, char* end) {
  const std::ptrdiff_t length = end - out;
  if (length >= kFieldWidth) {
    return end;
  }
  const std::ptrdiff_t pad = kFieldWidth - length;
  std::memmove(out + pad, out, static_cast<std::size_t>(length));
  std::memset(out, ' ', static_cast<std::size_t>(pad));
  return out + kFieldWidth;
}

// A value of five to sixteen integer digits: as wide as it is, no padding.
char* AppendLong(char* out, bool negative, uint64_t whole, uint32_t fraction) {
  if (negative) {
    *out++ = '-';
  }
  char* end = out + DigitCount(whole);
  for (char* at = end; whole != 0; whole /= 10) {
    *--at = static_cast<char>('0' + whole % 10);
  }
  *end = '.';
  const uint64_t decimals = FourDigitBits(fraction);
  std::memcpy(end + 1, &decimals, 4);
  return end + 5;
}

// A value of at most four integer digits, built in two words without a branch on its length
// (which varies as good as randomly in a drawing) and stored with two writes: padding, sign and
// digits in one, the point and the decimals in the other. Bytes beyond the end are scratch in
// the room reserved for the value.
char* AppendShort(char* out, bool negative, uint32_t whole, uint32_t fraction) {
  // 1 + (whole > 9) + (whole > 99) + (whole > 999) in wrapping arithmetic, which compilers
  // leave without branches.
  const auto digits =
      static_cast<int>(1 + ((9 - whole) >> 31) + ((99 - whole) >> 31) + ((999 - whole) >> 31));
  uint64_t head = FourDigitBits(whole) >> (8 * (4 - digits));
  head = negative ? (head << 8) | '-' : head;
  const int length = digits + static_cast<int>(negative);
  const int width = std::max(length, kFieldWidth - 5);
  const int pad = width - length;
  head = (head << (8 * pad)) | (((uint64_t{1} << (8 * pad)) - 1) & 0x2020202020202020);
  const uint64_t tail = '.' | (FourDigitBits(fraction) << 8);
  std::memcpy(out, &head, 8);
  std::memcpy(out + width, &tail, 8);
  return out + width + 5;
}

}  // namespace

char* AppendReal(char* out, double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  const auto biased = static_cast<int>((bits >> 52) & 0x7FF);
  if (biased >= 1023 + kFastExponentLimit) {
    // Large magnitudes, infinities and NaN: to_chars rounds the exact binary value too, and
    // spells the rest as the C library does; only the padding is ours.
    const auto [end, ec] =
        std::to_chars(out, out + kMaxRealChars, value, std::chars_format::fixed, 4);
    (void)ec;  // kMaxRealChars holds every double
    return PadToField(out, end);
  }
  const uint64_t units = TenThousandths(bits);
  const uint64_t whole = units / 10000;
  const auto fraction = static_cast<uint32_t>(units % 10000);
  // A negative value keeps its sign even when it rounds to zero.
  const bool negative = (bits >> 63) != 0;
  if (whole >= 10000 || std::endian::native != std::endian::little) {
    return PadToField(out, AppendLong(out, negative, whole, fraction));
  }
  return AppendShort(out, negative, static_cast<uint32_t>(whole), fraction);
}

}  // namespace kalmor::dxf_detail
