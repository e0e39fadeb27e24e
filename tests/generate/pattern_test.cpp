#include <gtest/gtest.h>

#include <cmath>
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
using Samples = std::vector<double>;

TEST(Pattern, AnglesEqualThePlainLoop) {
  for (int32_t n : {1, 2, 3, 63, 64, 65, 128, 1001}) {
    for (double f : {0.3, -1.0, 0.0, 1e5, test::kInf, test::kNan}) {
      Guarded sine(static_cast<std::size_t>(n)), chirp = sine, sinc = sine;
      Samples sineExpected, chirpExpected, sincExpected;
      const double cycles = f > n ? n : f;
      const bool number = f == f;
      EXPECT_EQ(SinePattern(n, 2.5, 30.0, cycles, sine), number ? FATHOM_OK : FATHOM_ERR_CYCLES);
      EXPECT_EQ(Chirp(n, 2.5, 0.01, f, chirp), FATHOM_OK);
      EXPECT_EQ(Sinc(n, -2.5, f * 0.5, 0.25, sinc), FATHOM_OK);
      double phi = 30.0 * 0.017453292519943295;
      for (int32_t i = 0; i < n; ++i) {
        sineExpected.push_back(2.5 * std::sin(phi));
        phi += kTwoPi * cycles / n;
        const double k = (f - 0.01) * kPi / n;
        chirpExpected.push_back(2.5 * std::sin((i * k + kTwoPi * 0.01) * i));
        const double x = (i * 0.25 - f * 0.5) * kPi;
        sincExpected.push_back(x == 0.0 ? -2.5 : std::sin(x) / x * -2.5);
      }
      EXPECT_TRUE(number ? SameBits(sine.values(), sineExpected)
                         : ::testing::AssertionResult(sine.untouched()));
      EXPECT_TRUE(SameBits(chirp.values(), chirpExpected)) << n << ' ' << f;
      EXPECT_TRUE(SameBits(sinc.values(), sincExpected)) << n << ' ' << f;
      EXPECT_TRUE(sine.intact() && chirp.intact() && sinc.intact());
    }
  }
}

TEST(Pattern, RampAccumulatesAndDoesNotPinItsEnd) {
  for (int32_t n : {2, 3, 10, 11, 200}) {
    Guarded y(static_cast<std::size_t>(n));
    ASSERT_EQ(Ramp(n, 0.1, -0.7, y), FATHOM_OK);
    Samples expected = {0.1};
    for (int32_t k = 1; k < n; ++k) expected.push_back(expected.back() + (-0.7 - 0.1) / (n - 1));
    EXPECT_TRUE(SameBits(y.values(), expected)) << n;
    EXPECT_NEAR(expected.back(), -0.7, 1e-13);
    EXPECT_TRUE(y.intact());
  }
}

TEST(Pattern, TriangleRisesAndFallsFromBothEnds) {
  const std::vector<Samples> expected = {
      {0, 6}, {0, 6, 0}, {0, 3, 6, 3}, {0, 3, 6, 3, 0}, {0, 2, 4, 6, 4, 2}, {0, 2, 4, 6, 4, 2, 0}};
  for (const Samples& shape : expected) {
    Guarded y(shape.size());
    ASSERT_EQ(Triangle(static_cast<int32_t>(shape.size()), 6.0, y), FATHOM_OK);
    EXPECT_TRUE(SameBits(y.values(), shape)) << shape.size();
    EXPECT_TRUE(y.intact());
  }
  Samples tenths(20);
  Triangle(20, 1.0, tenths.data());
  double sum = 0.0;
  for (int i = 0; i < 10; ++i) sum += 0.1;
  EXPECT_TRUE(SameBits(tenths[10], sum));  // not 1
}

TEST(Pattern, PositionsAndTheirChecks) {
  struct Row {
    int32_t delay, width;
    AnalysisStatus status;
  };
  for (const Row& row : {Row{0, 0, FATHOM_OK},
                         {2, 3, FATHOM_OK},
                         {0, 5, FATHOM_OK},
                         {5, 0, FATHOM_OK},
                         {3, 3, FATHOM_ERR_DELAY_WIDTH},
                         {-1, 3, FATHOM_ERR_DELAY_WIDTH},
                         {3, -1, FATHOM_ERR_DELAY_WIDTH},
                         {INT32_MAX, INT32_MAX, FATHOM_ERR_DELAY_WIDTH}}) {
    Guarded y(5);
    ASSERT_EQ(Pulse(5, 7.0, row.delay, row.width, y), row.status);
    EXPECT_EQ(y.untouched(), row.status != FATHOM_OK);
    for (int32_t i = 0; i < 5 && row.status == FATHOM_OK; ++i) {
      const bool high = i >= row.delay && i < row.delay + row.width;
      EXPECT_TRUE(SameBits(y.data()[i], high ? 7.0 : 0.0)) << row.delay << ' ' << row.width;
    }
    EXPECT_TRUE(y.intact());
  }
  for (int32_t index : {-1, 0, 4, 5}) {
    Guarded y(5);
    const bool inside = index >= 0 && index < 5;
    EXPECT_EQ(Impulse(5, 7.0, index, y), inside ? FATHOM_OK : FATHOM_ERR_INDEX);
    EXPECT_EQ(y.untouched(), !inside);
    for (int32_t i = 0; inside && i < 5; ++i) EXPECT_EQ(y.data()[i], i == index ? 7.0 : 0.0);
  }
}

TEST(Pattern, BoundsOfCyclesAndInterval) {
  Guarded y(4);
  for (double cycles : {4.5, test::kInf, test::kNan}) {
    EXPECT_EQ(SinePattern(4, 1.0, 0.0, cycles, y), FATHOM_ERR_CYCLES);
  }
  for (double dt : {0.0, -1.0, test::kNan}) {
    EXPECT_EQ(Sinc(4, 1.0, 0.0, dt, y), FATHOM_ERR_INTERVAL);
  }
  EXPECT_TRUE(y.untouched());
  EXPECT_EQ(SinePattern(4, 1.0, 0.0, 4.0, y), FATHOM_OK);
  EXPECT_EQ(SinePattern(4, 1.0, 90.0, 0.0, y), FATHOM_OK);
  for (double v : y.values()) EXPECT_EQ(v, 1.0);
}

}  // namespace
}  // namespace fathom
