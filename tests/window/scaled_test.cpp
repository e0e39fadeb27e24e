#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::SameBits;

// Coherent gain and noise bandwidth as published to two decimals (Harris 1978, table 1; Nuttall
// 1981 for the three-term and four-term sums), and as found in the samples themselves.
TEST(ScaledWindow, PropertiesAreThoseOfTheSamplesAndOfTheLiterature) {
  struct Row {
    int32_t window;
    double bandwidth, gain;
  };
  const Row rows[] = {{FATHOM_WINDOW_RECTANGULAR, 1.00, 1.00},
                      {FATHOM_WINDOW_HANNING, 1.50, 0.50},
                      {FATHOM_WINDOW_HAMMING, 1.36, 0.54},
                      {FATHOM_WINDOW_BLACKMAN_HARRIS, 1.71, 0.42},
                      {FATHOM_WINDOW_EXACT_BLACKMAN, 1.69, 0.43},
                      {FATHOM_WINDOW_BLACKMAN, 1.73, 0.42},
                      {FATHOM_WINDOW_FLAT_TOP, 2.97, 0.28},
                      {FATHOM_WINDOW_FOUR_TERM_BLACKMAN_HARRIS, 2.00, 0.36},
                      {FATHOM_WINDOW_SEVEN_TERM_BLACKMAN_HARRIS, 2.63, 0.27}};
  constexpr int32_t kSize = 1024;
  for (const Row& row : rows) {
    std::vector<double> w(kSize, 1.0);
    WindowProperties properties = {};
    ASSERT_EQ(ScaledWindow(w.data(), kSize, row.window, &properties), FATHOM_OK);
    double sum = 0.0, squares = 0.0;
    for (double v : w) {
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
  const std::vector<double> data = test::uniform(77);
  std::vector<double> x(data), expected(data);
  WindowProperties properties;
  ScaledWindow(x.data(), 77, FATHOM_WINDOW_BLACKMAN_HARRIS, &properties);
  BlkHarrisWin(expected.data(), 77);
  for (double& v : expected) v *= 1.0 / 0.42323;
  EXPECT_TRUE(SameBits(x, expected));
  for (int32_t other : {9, -1, INT32_MIN, INT32_MAX}) {
    std::vector<double> same(data);
    ScaledWindow(same.data(), 77, other, &properties);
    EXPECT_TRUE(SameBits(same, data)) << other;
    EXPECT_EQ(properties.equivalentNoiseBandwidth, 1.0);
  }
}

TEST(ScaledWindow, AnEmptyArrayStillHasProperties) {
  double x = 3.0;
  WindowProperties properties = {};
  EXPECT_EQ(ScaledWindow(&x, 0, FATHOM_WINDOW_HANNING, &properties), FATHOM_OK);
  EXPECT_EQ(x, 3.0);
  EXPECT_EQ(properties.equivalentNoiseBandwidth, 1.5);
  EXPECT_EQ(properties.coherentGain, 0.5);
}

}  // namespace
}  // namespace fathom
