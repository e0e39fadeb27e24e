#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;

int32_t count(const std::vector<double>& x) {
  return static_cast<int32_t>(x.size());
}

TEST(Calculus, StatusesInOrder) {
  double y = 7.0;
  for (const double dt : {0.0, -1.0, test::kNan}) {
    EXPECT_EQ(Integrate(&y, 0, dt, 0, 0, &y), FATHOM_ERR_NO_SAMPLES);
    EXPECT_EQ(Integrate(&y, 1, dt, 0, 0, &y), FATHOM_ERR_INTERVAL);
    EXPECT_EQ(Difference(&y, 0, dt, 0, 0, &y), FATHOM_ERR_NO_SAMPLES);
    EXPECT_EQ(Difference(&y, 1, dt, 0, 0, &y), FATHOM_ERR_INTERVAL);
  }
  EXPECT_EQ(Decimate(&y, 0, 0, 0, &y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Decimate(&y, 1, 0, 0, &y), FATHOM_ERR_DECIMATION);
  EXPECT_EQ(Decimate(&y, 1, 2, 1, &y), FATHOM_ERR_DECIMATION);
  EXPECT_EQ(y, 7.0);
}

// Both routines against the definition on an array with its conditions at the ends, out of place
// and in place. dt / 6 rounded once is the extended product: the double 1/6 would lose bits.
TEST(Calculus, IntegralAndDifferencesAgainstTheDefinition) {
  for (std::size_t n : {1u, 2u, 3u, 4u, 5u, 31u, 32u, 33u, 255u, 256u, 257u, 511u, 512u, 513u, 514u,
                        1025u, 5000u}) {
    std::vector<double> padded = test::uniform(n + 2, n);
    if (n > 4) padded[3] = 1e300;
    const std::vector<double> x(padded.begin() + 1, padded.end() - 1);
    const double dt = 0.1 + static_cast<double>(n);
    std::vector<double> integral, differences;
    for (std::size_t i = 1; i <= n; ++i) {
      const double step = (4.0 * padded[i] + padded[i - 1] + padded[i + 1]) * (dt / 6.0);
      integral.push_back(i == 1 ? step : integral.back() + step);
      differences.push_back((padded[i + 1] - padded[i - 1]) * (0.5 / dt));
    }
    Guarded y(n), z(n), inPlaceY(x), inPlaceZ(x);
    ASSERT_EQ(Integrate(x.data(), count(x), dt, padded[0], padded[n + 1], y), FATHOM_OK);
    ASSERT_EQ(Integrate(inPlaceY, count(x), dt, padded[0], padded[n + 1], inPlaceY), FATHOM_OK);
    ASSERT_EQ(Difference(x.data(), count(x), dt, padded[0], padded[n + 1], z), FATHOM_OK);
    ASSERT_EQ(Difference(inPlaceZ, count(x), dt, padded[0], padded[n + 1], inPlaceZ), FATHOM_OK);
    ASSERT_TRUE(SameBits(y.values(), integral) && y.intact()) << n;
    ASSERT_TRUE(SameBits(inPlaceY.values(), integral) && inPlaceY.intact()) << n;
    ASSERT_TRUE(SameBits(z.values(), differences) && z.intact()) << n;
    ASSERT_TRUE(SameBits(inPlaceZ.values(), differences) && inPlaceZ.intact()) << n;
  }
}

TEST(Calculus, IntegralOfOnesIsTheTime) {
  std::vector<double> x(5, 1.0);
  ASSERT_EQ(Integrate(x.data(), 5, 1.0, 1.0, 1.0, x.data()), FATHOM_OK);
  EXPECT_EQ(x, (std::vector<double>{1, 2, 3, 4, 5}));
  double zero = -0.0;  // the first output is the first step itself, not a sum with zero
  ASSERT_EQ(Integrate(&zero, 1, 1.0, -0.0, -0.0, &zero), FATHOM_OK);
  EXPECT_TRUE(SameBits(zero, -0.0));
}

std::vector<double> unwrapPlainly(std::vector<double> x) {
  if (x.size() == 2) return x;
  for (std::size_t i = 1; i < x.size(); ++i) {
    const double jump = x[i] - x[i - 1];
    const double correction = jump > 3.141592653589793    ? -6.283185307179586
                              : jump < -3.141592653589793 ? 6.283185307179586
                                                          : 0.0;
    if (correction == 0.0) continue;
    for (std::size_t j = i; j < x.size(); ++j) x[j] += correction;
  }
  return x;
}

// Each correction is rounded: k of them at once, or another order, would give other bits.
TEST(Calculus, UnwrapsWithTheBitsOfOneCorrectionAfterAnother) {
  std::vector<std::size_t> sizes = {127, 128, 129, 255, 256, 257, 1000, 4099};
  for (std::size_t n = 1; n <= 70; ++n) sizes.push_back(n);
  for (std::size_t n : sizes) {
    // Random phases, a falling phase folded into one turn, one far jump, a jump every other sample,
    // values that are no phases.
    std::vector<std::vector<double>> signals(5, test::uniform(n, n));
    for (std::size_t i = 0; i < n; ++i) {
      const auto t = static_cast<double>(i);
      signals[0][i] *= 9.0;
      signals[1][i] = fathom::fmod(-2.9 * t, kTwoPi) + 1e-3 * signals[1][i];
      signals[2][i] += i < n / 2 ? 0.0 : 100.0;
      signals[3][i] += i % 4 < 2 ? 1e3 : 0.0;
      if (i % 7 == 3) signals[4][i] = i % 2 == 0 ? test::kInf : i % 3 == 0 ? test::kNan : 1e17;
    }
    for (const std::vector<double>& x : signals) {
      Guarded y(x);
      ASSERT_EQ(UnWrap1D(y, count(x)), FATHOM_OK);
      ASSERT_TRUE(SameBits(y.values(), unwrapPlainly(x)) && y.intact()) << n;
    }
  }
}

TEST(Calculus, UnwrapLeavesTwoSamplesAndAJumpOfExactlyPi) {
  double two[] = {0, 6};
  ASSERT_EQ(UnWrap1D(two, 2), FATHOM_OK);
  EXPECT_EQ(two[1], 6.0);
  double x[] = {0, 3, -3, -3 - kPi, -3, -3 + kPi};
  x[3] = x[2] - kPi;
  ASSERT_EQ(UnWrap1D(x, 3), FATHOM_OK);
  EXPECT_EQ(x[2], -3 + kTwoPi);
  double exact[] = {0, kPi, 0};
  ASSERT_EQ(UnWrap1D(exact, 3), FATHOM_OK);
  EXPECT_EQ(std::vector<double>(exact, exact + 3), (std::vector<double>{0, kPi, 0}));
}

TEST(Calculus, DecimatesOutOfPlaceAndInPlace) {
  for (int32_t n : {1, 2, 9, 10, 11, 64, 100}) {
    for (int32_t factor = 1; factor <= n; ++factor) {
      const int32_t outputs = (n + factor - 1) / factor;
      // Storage up to the next multiple of the factor, which the last mean reads.
      const std::vector<double> x = test::uniform(std::size_t{1} * outputs * factor);
      for (int32_t averaging : {0, 1, -5}) {
        std::vector<double> expected;
        for (int32_t k = 0; k < outputs; ++k) {
          double mean = x[std::size_t{1} * k * factor];
          if (averaging != 0) Mean(x.data() + k * factor, factor, &mean);
          expected.push_back(mean);
        }
        Guarded y(static_cast<std::size_t>(outputs));
        ASSERT_EQ(Decimate(x.data(), n, factor, averaging, y), FATHOM_OK);
        ASSERT_TRUE(SameBits(y.values(), expected) && y.intact()) << n << ' ' << factor;
        std::vector<double> same = x;
        ASSERT_EQ(Decimate(same.data(), n, factor, averaging, same.data()), FATHOM_OK);
        same.resize(expected.size());
        ASSERT_TRUE(SameBits(same, expected)) << n << ' ' << factor;
      }
    }
  }
}

}  // namespace
}  // namespace fathom
