#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "frame/extended.hpp"
#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

TEST(ACDC, SinesAndConstants) {
  double ac = 0.0, dc = 0.0;
  for (double periods : {3.0, 10.0, 10.3, 25.5}) {
    std::vector<double> x(1000);
    for (std::size_t i = 0; i < x.size(); ++i) {
      x[i] = 3.0 + 2.0 * std::sin(6.283185307179586e-3 * periods * static_cast<double>(i) + 0.4);
    }
    ASSERT_EQ(ACDCEstimator(x.data(), 1000, &ac, &dc), FATHOM_OK);
    const double tolerance = periods == std::floor(periods) ? 1e-12 : 2e-3;
    EXPECT_NEAR(ac, std::sqrt(2.0), tolerance) << periods;
    EXPECT_NEAR(dc, 3.0, tolerance) << periods;
  }
  const std::vector<double> constant(100, 0.75), inexact(100, 0.1);
  ACDCEstimator(constant.data(), 100, &ac, &dc);
  EXPECT_EQ(ac, 0.0);
  EXPECT_EQ(dc, 0.75);
  ACDCEstimator(inexact.data(), 100, &ac, &dc);
  EXPECT_TRUE(std::isnan(ac));
}

TEST(ACDC, BitsOfTheSteps) {
  const SoftExtended eightThirds({0xAAAAAAAAAAAAAAABu, -62});
  for (std::int32_t n : {1, 2, 3, 5, 8, 13, 100, 1001}) {
    const std::vector<double> x = test::uniform(static_cast<std::size_t>(n));
    std::vector<double> y = x;
    double mean = 0.0, m = 0.0, v = 0.0, ac = 0.0, dc = 0.0;
    Mean(x.data(), n, &mean);
    for (double& sample : y) sample -= mean;
    HanWin(y.data(), n);
    Variance(y.data(), n, &m, &v);
    ACDCEstimator(x.data(), n, &ac, &dc);
    EXPECT_TRUE(test::SameBits(ac, std::sqrt(((v - 0.5 * (m * m)) * eightThirds).toDouble()))) << n;
    EXPECT_TRUE(test::SameBits(dc, 2.0 * m + mean)) << n;
  }
}

}  // namespace
}  // namespace fathom
