#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <set>
#include <vector>

#include "fathom.h"
#include "frame/extended.hpp"
#include "support/bits.hpp"
#include "support/guarded.hpp"

namespace fathom {
namespace {

using test::SameBits;
using Samples = std::vector<double>;

// One draw after another, each step as it is defined.
struct Plain {
  int32_t s1 = 1234, s2 = 2345, s3 = 3456;

  void restart(int32_t seed) {
    s1 = seed == 0 ? 32767 : seed;
    s2 = static_cast<int32_t>(static_cast<uint32_t>(s1) * 8191u & 0x3FFFu);
    s3 = static_cast<int32_t>(static_cast<uint32_t>(s2) * 8191u & 0x3FFFu);
  }
  int32_t next() {
    s1 = static_cast<int32_t>(171u * static_cast<uint32_t>(s1)) % 30269;
    s2 = 172 * s2 % 30307;
    s3 = 170 * s3 % 30323;
    const double u =
        s1 * 3.3037100664045725e-05 + s2 * 3.2995677566238825e-05 + s3 * 3.297826732183491e-05;
    const double f = u - static_cast<int32_t>(u);
    return static_cast<int32_t>(f * 32768.0);
  }
  double white(double amplitude) { return (next() - 16383) * (amplitude * 6.103515625e-05); }
  double gauss(double deviation) {
    int32_t sum = 0;
    for (int i = 0; i < 12; ++i) sum += next();
    return (sum - 196596) * (deviation * 3.0517578125e-05);
  }
  double uniform() {
    constexpr Extended kReciprocal{extendedReciprocal(32767)};
    return (static_cast<double>(next()) * kReciprocal).toDouble();
  }
};

// Drawn as the program starts, before any test.
const Samples kAtLoad = [] {
  Samples y(4);
  Uniform(4, -1, y.data());
  return y;
}();

TEST(Noise, StartsFromTheSeedsAtLoad) {
  Plain plain;
  for (double y : kAtLoad) EXPECT_TRUE(SameBits(y, plain.uniform()));
}

enum Kind { kWhite, kGauss, kUniform };

// A call of the library and the same draws of `plain`, whose state must be the library's.
void compare(Kind kind, int32_t n, double scale, int32_t seed, Plain& plain) {
  test::Guarded y(static_cast<std::size_t>(n));
  const AnalysisStatus status = kind == kWhite   ? WhiteNoise(n, scale, seed, y)
                                : kind == kGauss ? GaussNoise(n, scale, seed, y)
                                                 : Uniform(n, seed, y);
  ASSERT_EQ(status, FATHOM_OK);
  if (seed >= 0) plain.restart(seed);
  Samples expected(static_cast<std::size_t>(n));
  for (double& v : expected) {
    v = kind == kWhite ? plain.white(scale) : kind == kGauss ? plain.gauss(scale) : plain.uniform();
  }
  ASSERT_TRUE(SameBits(y.values(), expected))
      << "kind " << kind << ", n " << n << ", seed " << seed;
  ASSERT_TRUE(y.intact());
}

// Zero second and third seeds, the last product that fits 32 bits, products that wrap to seeds of
// either sign, and first seeds that become zero.
const int32_t kSeeds[] = {0,        1,        5,        16384,      32767,     30269,
                          12558383, 12558384, 12588234, 1999994880, 2147483647};

TEST(Noise, EqualsOneDrawAfterAnother) {
  Plain plain;
  bool negative = false;
  for (int32_t seed : kSeeds) {
    for (int32_t n = 1; n <= 200; ++n) {
      for (Kind kind : {kWhite, kGauss, kUniform}) {
        ASSERT_NO_FATAL_FAILURE(compare(kind, n, n % 7 == 0 ? -0.0 : 1.7, seed, plain));
        // What the call left behind: continued by each routine, in a block and out of it.
        const auto next = static_cast<Kind>(n % 3);
        ASSERT_NO_FATAL_FAILURE(compare(next, 1 + 5 * (n % 11), -0.3, -n, plain));
        negative |= plain.s1 < 0;
      }
    }
  }
  EXPECT_TRUE(negative);
}

// Every draw from either sign of the first seed, against the product at extended precision.
TEST(Noise, UniformRoundsTheExtendedProductOnce) {
  for (int32_t seed : {1, 1999994880}) {
    Plain plain;
    ASSERT_NO_FATAL_FAILURE(compare(kUniform, 1'000'000, 0.0, seed, plain));
    std::set<int32_t> draws;
    for (int i = 0; i < 1'000'000; ++i) draws.insert(plain.next());
    EXPECT_GE(draws.size(), seed == 1 ? 32768u : 30268u) << seed;
  }
}

TEST(Noise, FailedCallsDrawNothing) {
  Plain plain;
  double y[3];
  ASSERT_NO_FATAL_FAILURE(compare(kUniform, 3, 0.0, 77, plain));
  EXPECT_EQ(WhiteNoise(0, 1.0, 5, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(GaussNoise(-1, 1.0, 5, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Uniform(0, 5, y), FATHOM_ERR_NO_SAMPLES);
  compare(kUniform, 3, 0.0, -1, plain);
}

// The reference itself: the stated mean and spread.
TEST(Noise, MomentsAreThoseStated) {
  constexpr std::size_t kCount = 100'000;
  Samples y(kCount);
  GaussNoise(kCount, 2.0, 9, y.data());
  const double mean = std::accumulate(y.begin(), y.end(), 0.0) / kCount;
  const double square = std::inner_product(y.begin(), y.end(), y.begin(), 0.0) / kCount;
  EXPECT_NEAR(mean, 0.0, 0.03);
  EXPECT_NEAR(square, 4.0, 0.06);
}

}  // namespace
}  // namespace fathom
