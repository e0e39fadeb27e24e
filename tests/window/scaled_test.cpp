#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Coherent gain and noise bandwidth as published to two decimals (Harris 1978, table 1; Nuttall
// 1981 for the three-term and four-term sums), and as found in the samples themselves.
TEST(ScaledWindow, PropertiesAreThoseOfTheSamplesAndOfTheLiterature) {
  const struct {
    int32_t window;
    double bandwidth, gain;
  } rows[] = {{FATHOM_WINDOW_RECTANGULAR, 1.00, 1.00},
              {FATHOM_WINDOW_HANNING, 1.50, 0.50},
              {FATHOM_WINDOW_HAMMING, 1.36, 0.54},
              {FATHOM_WINDOW_BLACKMAN_HARRIS, 1.71, 0.42},
              {FATHOM_WINDOW_EXACT_BLACKMAN, 1.69, 0.43},
              {FATHOM_WINDOW_BLACKMAN, 1.73, 0.42},
              {FATHOM_WINDOW_FLAT_TOP, 2.97, 0.28},
              {FATHOM_WINDOW_FOUR_TERM_BLACKMAN_HARRIS, 2.00, 0.36},
              {FATHOM_WINDOW_SEVEN_TERM_BLACKMAN_HARRIS, 2.63, 0.27}};
  constexpr int32_t kSize = 1024;
  for (const auto& row : rows) {
    Values w(kSize, 1.0);
    WindowProperties empty = {}, properties = {};
    EXPECT_EQ(ScaledWindow(w.data(), 0, row.window, &empty), FATHOM_OK);
    EXPECT_EQ(w[0], 1.0);
    ASSERT_EQ(ScaledWindow(w.data(), kSize, row.window, &properties), FATHOM_OK);
    EXPECT_EQ(empty.equivalentNoiseBandwidth, properties.equivalentNoiseBandwidth);
    EXPECT_EQ(empty.coherentGain, properties.coherentGain);
    double sum = 0.0, squares = 0.0;
    for (const double v : w) {
      sum += v;
      squares += v * v;
    }
    EXPECT_NEAR(sum / kSize, 1.0, 1e-7) << row.window;  // divided by the right gain
    const double tolerance = row.window == FATHOM_WINDOW_HAMMING ? 3e-3 : 2e-6;
    EXPECT_NEAR(properties.equivalentNoiseBandwidth, kSize * squares / (sum * sum), tolerance);
    EXPECT_NEAR(properties.equivalentNoiseBandwidth, row.bandwidth, 0.0051) << row.window;
    EXPECT_NEAR(properties.coherentGain, row.gain, 0.0051) << row.window;
  }
}

TEST(ScaledWindow, MultipliesByTheReciprocalOfTheGain) {
  const Values data = uniform(77);
  Values x = data, expected = data;
  WindowProperties properties;
  ScaledWindow(x.data(), 77, FATHOM_WINDOW_BLACKMAN_HARRIS, &properties);
  BlkHarrisWin(expected.data(), 77);
  for (double& v : expected) v *= 1.0 / 0.42323;
  EXPECT_TRUE(SameBits(x, expected));
  for (int32_t other : {9, -1, INT32_MIN, INT32_MAX}) {
    x = data;
    ScaledWindow(x.data(), 77, other, &properties);
    EXPECT_TRUE(SameBits(x, data)) << other;
    EXPECT_EQ(properties.equivalentNoiseBandwidth, 1.0);
  }
}

}  // namespace
}  // namespace fathom::test
