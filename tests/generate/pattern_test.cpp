#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

TEST(Pattern, AnglesEqualThePlainLoop) {
  for (int32_t n : {1, 2, 3, 63, 64, 65, 128, 1001}) {
    for (double f : {0.3, -1.0, 0.0, 1e5, kInf, kNan}) {
      Guarded sine(static_cast<std::size_t>(n)), chirp = sine, sinc = sine;
      Values sineExpected, chirpExpected, sincExpected;
      const double cycles = f > n ? n : f;
      const bool number = f == f;
      EXPECT_EQ(SinePattern(n, 2.5, 30.0, n + 0.5, sine), FATHOM_ERR_CYCLES);
      EXPECT_EQ(SinePattern(n, 2.5, 30.0, cycles, sine), number ? FATHOM_OK : FATHOM_ERR_CYCLES);
      EXPECT_EQ(Chirp(n, 2.5, 0.01, f, chirp), FATHOM_OK);
      EXPECT_EQ(Sinc(n, -2.5, f * 0.5, 0.25, sinc), FATHOM_OK);
      double phi = 30.0 * 0.017453292519943295;
      for (int32_t i = 0; i < n; ++i) {
        sineExpected.push_back(2.5 * fathom::sin(phi));
        phi += kTwoPi * cycles / n;
        const double k = (f - 0.01) * kPi / n;
        chirpExpected.push_back(2.5 * fathom::sin((i * k + kTwoPi * 0.01) * i));
        const double x = (i * 0.25 - f * 0.5) * kPi;
        sincExpected.push_back(x == 0.0 ? -2.5 : fathom::sin(x) / x * -2.5);
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
    Values expected = {0.1};
    for (int32_t k = 1; k < n; ++k) expected.push_back(expected.back() + (-0.7 - 0.1) / (n - 1));
    EXPECT_TRUE(SameBits(y.values(), expected) && y.intact()) << n;
  }
}

TEST(Pattern, TriangleRisesAndFallsFromBothEnds) {
  const std::vector<Values> expected = {{0, 6},          {0, 6, 0},          {0, 3, 6, 3},
                                        {0, 3, 6, 3, 0}, {0, 2, 4, 6, 4, 2}, {0, 2, 4, 6, 4, 2, 0}};
  for (const Values& shape : expected) {
    Guarded y(shape.size());
    ASSERT_EQ(Triangle(static_cast<int32_t>(shape.size()), 6.0, y), FATHOM_OK);
    EXPECT_TRUE(SameBits(y.values(), shape) && y.intact()) << shape.size();
  }
  Values tenths(20);
  Triangle(20, 1.0, tenths.data());
  double sum = 0.0;
  for (int i = 0; i < 10; ++i) sum += 0.1;
  EXPECT_TRUE(SameBits(tenths[10], sum));  // not 1
}

TEST(Pattern, PositionsAndTheirChecks) {
  const int32_t inside[][2] = {{0, 0}, {2, 3}, {0, 5}, {5, 0}};
  const int32_t outside[][2] = {{3, 3}, {-1, 3}, {3, -1}, {INT32_MAX, INT32_MAX}};
  Guarded unwritten(5);
  for (const auto& [delay, width] : inside) {
    Guarded y(5);
    Values expected(5, 0.0);
    std::fill_n(expected.begin() + delay, width, 7.0);
    EXPECT_EQ(Pulse(5, 7.0, delay, width, y), FATHOM_OK);
    EXPECT_TRUE(SameBits(y.values(), expected) && y.intact()) << delay << ' ' << width;
  }
  for (const auto& [delay, width] : outside) {
    EXPECT_EQ(Pulse(5, 7.0, delay, width, unwritten), FATHOM_ERR_DELAY_WIDTH);
  }
  for (double dt : {0.0, -1.0, kNan}) {
    EXPECT_EQ(Sinc(5, 1.0, 0.0, dt, unwritten), FATHOM_ERR_INTERVAL);
  }
  for (int32_t index : {-1, 5}) EXPECT_EQ(Impulse(5, 7.0, index, unwritten), FATHOM_ERR_INDEX);
  EXPECT_TRUE(unwritten.untouched());
  for (std::size_t index : {0u, 4u}) {
    Guarded y(5);
    Values expected(5, 0.0);
    expected[index] = 7.0;
    EXPECT_EQ(Impulse(5, 7.0, static_cast<int32_t>(index), y), FATHOM_OK);
    EXPECT_TRUE(SameBits(y.values(), expected) && y.intact()) << index;
  }
}

}  // namespace
}  // namespace fathom::test
