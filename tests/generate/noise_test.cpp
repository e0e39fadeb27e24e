#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "fathom.h"
#include "frame/extended.hpp"
#include "support/guarded.hpp"

namespace fathom {
namespace {

enum Kind { kWhite, kGauss, kUniform };

// One draw after another, each step as it is defined.
struct Plain {
  int32_t s1 = 1234, s2 = 2345, s3 = 3456;

  void restart(int32_t seed) {
    s1 = seed == 0 ? 32767 : seed;
    s2 = static_cast<int32_t>(static_cast<uint32_t>(s1) * 8191u & 0x3FFFu);
    s3 = s2 * 8191 & 0x3FFF;
  }
  int32_t draw() {
    s1 = static_cast<int32_t>(171u * static_cast<uint32_t>(s1)) % 30269;
    s2 = 172 * s2 % 30307;
    s3 = 170 * s3 % 30323;
    const double u =
        s1 * 3.3037100664045725e-05 + s2 * 3.2995677566238825e-05 + s3 * 3.297826732183491e-05;
    return static_cast<int32_t>((u - static_cast<int32_t>(u)) * 32768.0);
  }
  double sample(Kind kind, double scale) {
    if (kind == kWhite) return (draw() - 16383) * (scale * 6.103515625e-05);
    constexpr Extended kUnit{extendedReciprocal(32767)};
    if (kind == kUniform) return (draw() * kUnit).toDouble();
    int32_t sum = 0;
    for (int i = 0; i < 12; ++i) sum += draw();
    return (sum - 196596) * (scale * 3.0517578125e-05);
  }
};

AnalysisStatus call(Kind kind, int32_t n, double scale, int32_t seed, double* y) {
  if (kind == kWhite) return WhiteNoise(n, scale, seed, y);
  return kind == kGauss ? GaussNoise(n, scale, seed, y) : Uniform(n, seed, y);
}

// A call of the library beside the same samples of `plain`, whose state must be the library's.
void compare(Kind kind, int32_t n, double scale, int32_t seed, Plain& plain) {
  test::Guarded y(static_cast<std::size_t>(n));
  ASSERT_EQ(call(kind, n, scale, seed, y), FATHOM_OK);
  if (seed >= 0) plain.restart(seed);
  std::vector<double> expected(y.size());
  for (double& v : expected) v = plain.sample(kind, scale);
  ASSERT_TRUE(test::SameBits(y.values(), expected)) << kind << ", n " << n << ", seed " << seed;
  ASSERT_TRUE(y.intact());
}

double atLoad[4];  // drawn as the program starts, before any test
[[maybe_unused]] const AnalysisStatus drawnAtLoad = Uniform(4, -1, atLoad);

TEST(Noise, StartsFromTheSeedsAtLoad) {
  Plain plain;
  for (double y : atLoad) EXPECT_TRUE(test::SameBits(y, plain.sample(kUniform, 0.0)));
}

// With first seeds that step to zero, fit their product in 32 bits just so, wrap around to either
// sign or to zero, and with the other two seeds zero.
TEST(Noise, EqualsOneDrawAfterAnother) {
  Plain plain;
  double unused = 5.0;
  for (int32_t seed :
       {0, 1, 5, 16384, 32767, 30269, 12558383, 12558384, 12588234, 1999994880, 2147483647}) {
    for (int32_t n = 1; n <= 200; ++n) {
      for (Kind kind : {kWhite, kGauss, kUniform}) {
        ASSERT_NO_FATAL_FAILURE(compare(kind, n, n % 7 == 0 ? -0.0 : 1.7, seed, plain));
        // What that left behind: no failed call changes it, and each routine continues from it.
        ASSERT_EQ(call(kind, n - 200, 1.0, 9, &unused), FATHOM_ERR_NO_SAMPLES);
        ASSERT_NO_FATAL_FAILURE(
            compare(static_cast<Kind>(n % 3), 1 + 5 * (n % 11), -0.3, -n, plain));
      }
    }
  }
}

// Every draw that either sign of the first seed gives, and so every product that is rounded.
TEST(Noise, UniformRoundsTheExtendedProduct) {
  for (int32_t seed : {1, 1999994880}) {
    Plain plain;
    ASSERT_NO_FATAL_FAILURE(compare(kUniform, 1'000'000, 0.0, seed, plain));
    std::vector<bool> drawn(65536);
    plain.restart(seed);
    for (int i = 0; i < 1'000'000; ++i) *(drawn.begin() + 32768 + plain.draw()) = true;
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), true), seed == 1 ? 32768 : 30268);
  }
}

}  // namespace
}  // namespace fathom
