#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "dxf/detail/real_format.h"

namespace kalmor {
namespace {

std::string Ours(double value) {
  char buffer[dxf_detail::kMaxRealChars];
  return std::string(buffer, dxf_detail::AppendReal(buffer, value));
}

std::string CLibrary(double value) {
  char buffer[400];
  const int n = std::snprintf(buffer, sizeof buffer, "%8.4f", value);
  return std::string(buffer, static_cast<std::size_t>(n));
}

// Counts the values of a sweep (and their negatives) formatted unlike the C library's own
// "%8.4f", reporting the first few.
class Sweep {
 public:
  ~Sweep() { EXPECT_EQ(mismatches_, 0u); }
  void Check(double value) {
    for (const double v : {value, -value}) {
      char ours[dxf_detail::kMaxRealChars];
      char theirs[400];
      const auto n = static_cast<std::size_t>(std::snprintf(theirs, sizeof theirs, "%8.4f", v));
      const char* end = dxf_detail::AppendReal(ours, v);
      ++checked_;
      if ((static_cast<std::size_t>(end - ours) != n || std::memcmp(ours, theirs, n) != 0) &&
          ++mismatches_ <= 10) {
        ADD_FAILURE() << v << ": '" << Ours(v) << "' instead of '" << CLibrary(v) << "'";
      }
    }
  }
  // k / 10000 as the nearest double and its neighbours, and the rounding point half a
  // ten-thousandth above it with its neighbours.
  void CheckAround(int64_t k) {
    for (const double v :
         {static_cast<double>(k) / 10000.0, (static_cast<double>(k) + 0.5) / 10000.0}) {
      Check(v);
      Check(std::nextafter(v, 0.0));
      Check(std::nextafter(v, 1e300));
    }
  }
  std::size_t checked() const { return checked_; }

 private:
  std::size_t checked_ = 0;
  std::size_t mismatches_ = 0;
};

// The sanitizer build runs every sweep, thinned.
#if defined(__SANITIZE_ADDRESS__)
constexpr int64_t kThinning = 16;
#else
constexpr int64_t kThinning = 1;
#endif

TEST(RealFormat, FieldsOfNotableValues) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    double value;
    const char* expected;
  } cases[] = {
      // clang-format off
      {1.5, "  1.5000"}, {-123.25, "-123.2500"}, {12345.678, "12345.6780"}, {0.0, "  0.0000"},
      {-0.0, " -0.0000"}, {-1e-300, " -0.0000"}, {4.9e-324, "  0.0000"},
      {100000.0, "100000.0000"}, {99999.99996, "100000.0000"}, {1e17, "100000000000000000.0000"},
      {0.03125, "  0.0312"}, {0.09375, "  0.0938"}, {-2.71875, " -2.7188"},  // ties to even
      {nan, "     nan"}, {-nan, "    -nan"}, {inf, "     inf"}, {-inf, "    -inf"},
      // clang-format on
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Ours(c.value), c.expected) << "value " << c.value;
  }
  const std::string widest = Ours(-DBL_MAX);
  EXPECT_EQ(widest.size(), dxf_detail::kMaxRealChars);
  EXPECT_EQ(widest, CLibrary(-DBL_MAX));
}

// Every kind of double the writer can meet, against the C library's own "%8.4f".
TEST(RealFormat, MatchesTheCLibraryOnVariedValues) {
  std::mt19937_64 random(20240611);
  Sweep sweep;
  const auto check = [&](double value) { sweep.Check(value); };
  for (int i = 0; i < 60000; ++i) {  // random bit patterns: every exponent, denormals, NaNs
    const uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    check(value);
  }
  std::uniform_int_distribution<int64_t> digits(1, 999999999);
  for (int exponent = -21; exponent <= 11; ++exponent) {  // random decimals at every magnitude
    for (int i = 0; i < 1500; ++i) {
      check(static_cast<double>(digits(random)) * std::pow(10.0, exponent));
    }
  }
  for (int64_t k = 0; k < 20000; ++k) {  // around the rounding points of the fourth decimal
    const double boundary =
        (static_cast<double>(k) + 0.5) / 10000.0 + static_cast<double>(k % 7) * 1e3;
    check(boundary);
    check(std::nextafter(boundary, 0.0));
    check(std::nextafter(boundary, 1e300));
    check(static_cast<double>(digits(random)) * 1e8);  // integers up to 1e17
  }
  for (int m = 1; m <= 24; ++m) {  // exact binary ties: odd k / 2^m, times powers of ten
    for (int64_t k = 1; k < 1500; k += 2) {
      for (int64_t scaled = k, n = 0; n <= 6; ++n, scaled *= 10) {
        check(std::ldexp(static_cast<double>(scaled), -m));
      }
    }
  }
  EXPECT_GT(sweep.checked(), 300000u);
}

// Every value of the form k / 10000 for |k| < 10^9, one ulp either side of it and of the
// rounding point above it: all of them up to 2^20, then a dense sample, with every exact tie
// (an odd multiple of 1/32) below 10^5.
TEST(RealFormat, MatchesTheCLibraryAtEveryTenThousandth) {
  Sweep sweep;
  for (int64_t k = 0; k < (int64_t{1} << 20); k += kThinning) {
    sweep.CheckAround(k);
  }
  std::mt19937_64 random(977);
  const int64_t step = 1000 * kThinning;
  for (int64_t base = int64_t{1} << 20; base < 1'000'000'000; base += step) {
    sweep.CheckAround(base + static_cast<int64_t>(random() % static_cast<uint64_t>(step)));
  }
  for (int64_t m = 1; m < 3'200'000; m += 2 * kThinning) {
    sweep.Check(static_cast<double>(m) / 32.0);
  }
  EXPECT_GT(sweep.checked(), 24'000'000u / kThinning);
}

}  // namespace
}  // namespace kalmor
