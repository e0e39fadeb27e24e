#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

TEST(Calculus, StatusesInOrder) {
  double y = 7.0;
  for (const auto routine : {Integrate, Difference}) {
    for (const double dt : {0.0, -1.0, kNan}) {
      EXPECT_EQ(routine(&y, 0, dt, 0, 0, &y), FATHOM_ERR_NO_SAMPLES);
      EXPECT_EQ(routine(&y, 1, dt, 0, 0, &y), FATHOM_ERR_INTERVAL);
    }
  }
  EXPECT_EQ(Decimate(&y, 0, 0, 0, &y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Decimate(&y, 1, 2, 1, &y), FATHOM_ERR_DECIMATION);
  EXPECT_EQ(y, 7.0);
}

// Against the definition on an array with its conditions at the ends. dt / 6 rounded once is the
// extended product: the double 1/6 would lose bits.
TEST(Calculus, IntegralAndDifferencesAgainstTheDefinition) {
  for (std::size_t n : sizes({255, 256, 257, 511, 512, 513, 514, 1025, 5000})) {
    Values padded = uniform(n + 2, n);
    if (n == 1) padded = Values(3, -0.0);  // the first output is no sum with zero
    if (n > 4) padded[3] = 1e300;
    const Values x(padded.begin() + 1, padded.end() - 1);
    const double dt = 0.1 + static_cast<double>(n);
    Values integral, differences;
    for (std::size_t i = 1; i <= n; ++i) {
      const double step = (4.0 * padded[i] + padded[i - 1] + padded[i + 1]) * (dt / 6.0);
      integral.push_back(i == 1 ? step : integral.back() + step);
      differences.push_back((padded[i + 1] - padded[i - 1]) * (0.5 / dt));
    }
    expectBits(x, integral, [&](const double* in, double* out) {
      return Integrate(in, count(x), dt, padded.front(), padded.back(), out);
    });
    expectBits(x, differences, [&](const double* in, double* out) {
      return Difference(in, count(x), dt, padded.front(), padded.back(), out);
    });
  }
}

Values unwrapPlainly(Values x) {
  for (std::size_t i = 1; i < x.size() && x.size() != 2; ++i) {
    const double jump = x[i] - x[i - 1];
    if (!(std::fabs(jump) > kPi)) continue;
    for (std::size_t j = i; j < x.size(); ++j) x[j] += jump > 0 ? -kTwoPi : kTwoPi;
  }
  return x;
}

// Each correction is rounded: k of them at once, or another order, would give other bits.
TEST(Calculus, UnwrapsWithTheBitsOfOneCorrectionAfterAnother) {
  for (std::size_t n : sizes({127, 128, 129, 255, 256, 257, 1000, 4099})) {
    // Random phases, a falling phase folded into one turn, one far jump, a jump every other sample,
    // values that are no phases, jumps of exactly pi before a far one.
    std::vector<Values> signals(6, uniform(n, n));
    for (std::size_t i = 0; i < n; ++i) {
      const auto t = static_cast<double>(i);
      signals[0][i] *= 9.0;
      signals[1][i] = std::fmod(-2.9 * t, kTwoPi) + 1e-3 * signals[1][i];
      signals[2][i] += i < n / 2 ? 0.0 : 100.0;
      signals[3][i] += i % 4 < 2 ? 1e3 : 0.0;
      if (i % 7 == 3) signals[4][i] = i % 2 == 0 ? kInf : i % 3 == 0 ? kNan : 1e17;
      signals[5][i] = i == n - 1 ? 100.0 : i % 2 == 0 ? 0.0 : kPi;
    }
    for (const Values& x : signals) {
      Guarded y(x);
      ASSERT_EQ(UnWrap1D(y, count(x)), FATHOM_OK);
      ASSERT_TRUE(SameBits(y.values(), unwrapPlainly(x)) && y.intact()) << n;
    }
  }
}

TEST(Calculus, DecimatesOutOfPlaceAndInPlace) {
  for (int32_t n : {1, 2, 9, 10, 11, 64, 100}) {
    for (int32_t factor = 1; factor <= n; ++factor) {
      const int32_t outputs = (n + factor - 1) / factor;
      // Storage up to the next multiple of the factor, which the last mean reads.
      const Values x = uniform(std::size_t{1} * outputs * factor);
      for (int32_t averaging : {0, 1, -5}) {
        Values expected;
        for (int32_t k = 0; k < outputs; ++k) {
          double mean = x[std::size_t{1} * k * factor];
          if (averaging != 0) Mean(x.data() + k * factor, factor, &mean);
          expected.push_back(mean);
        }
        expectBits(x, expected, [=](const double* in, double* out) {
          return Decimate(in, n, factor, averaging, out);
        });
      }
    }
  }
}

}  // namespace
}  // namespace fathom::test
