#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::SameBits;

int32_t count(const std::vector<double>& x) {
  return static_cast<int32_t>(x.size());
}

// 1, 2, ..., n: mean (n + 1) / 2, population variance (n^2 - 1) / 12, all sums exact.
TEST(Descriptive, FirstIntegers) {
  for (int32_t n : {1, 2, 7, 64, 1001}) {
    std::vector<double> x;
    for (int32_t i = n; i >= 1; --i) x.push_back(i);
    double mean = 0, variance = 0, deviation = 0, rms = 0, median = 0, moment = 7;
    ASSERT_EQ(Mean(x.data(), n, &mean), FATHOM_OK);
    EXPECT_EQ(mean, (n + 1) / 2.0);
    ASSERT_EQ(Variance(x.data(), n, &mean, &variance), FATHOM_OK);
    EXPECT_EQ(mean, (n + 1) / 2.0);
    EXPECT_NEAR(variance, (1.0 * n * n - 1) / 12, 1e-9);
    ASSERT_EQ(StdDev(x.data(), n, &mean, &deviation), FATHOM_OK);
    EXPECT_TRUE(SameBits(deviation, std::sqrt(variance)));
    ASSERT_EQ(RMS(x.data(), n, &rms), FATHOM_OK);
    EXPECT_NEAR(rms, std::sqrt((n + 1) * (2.0 * n + 1) / 6), 1e-12 * rms);
    ASSERT_EQ(Median(x.data(), n, &median), FATHOM_OK);
    EXPECT_EQ(median, (n + 1) / 2.0);
    ASSERT_EQ(Moment(x.data(), n, 1, &moment), FATHOM_OK);
    EXPECT_EQ(moment, 0.0);
    ASSERT_EQ(Moment(x.data(), n, 3, &moment), FATHOM_OK);
    EXPECT_EQ(moment, 0.0);
    ASSERT_EQ(Moment(x.data(), n, 4, &moment), FATHOM_OK);
    EXPECT_NEAR(moment, (1.0 * n * n - 1) * (3.0 * n * n - 7) / 240, 1e-12 * moment);
  }
}

TEST(Descriptive, SumsRunInIndexOrder) {
  for (std::size_t n = 1; n <= 70; ++n) {
    std::vector<double> x = test::uniform(n, n);
    if (n > 9) x[n / 2] = 1e9;
    double sum = 0.0, squares = 0.0;
    for (double v : x) {
      sum += v;
      squares += v * v;
    }
    const auto divisor = static_cast<double>(n);
    double mean = 0, variance = 0, other = 0, deviation = 0;
    Variance(x.data(), count(x), &mean, &variance);
    ASSERT_TRUE(SameBits(mean, sum / divisor));
    ASSERT_TRUE(SameBits(variance, squares / divisor - mean * mean));
    StdDev(x.data(), count(x), &other, &deviation);
    ASSERT_TRUE(SameBits(other, mean));
    ASSERT_TRUE(SameBits(deviation, std::sqrt(std::fabs(variance))));
    Mean(x.data(), count(x), &other);
    ASSERT_TRUE(SameBits(other, mean));
    RMS(x.data(), count(x), &other);
    ASSERT_TRUE(SameBits(other, std::sqrt(squares / divisor)));
  }
}

// The one-pass formula can round below zero: Variance says so, StdDev takes the magnitude.
TEST(Descriptive, VarianceOfAConstantMayRoundBelowZero) {
  int negative = 0;
  for (int32_t n = 2; n < 40; ++n) {
    const std::vector<double> x(static_cast<std::size_t>(n), 1e8 + 0.1);
    double mean = 0, variance = 0, deviation = -1;
    Variance(x.data(), n, &mean, &variance);
    StdDev(x.data(), n, &mean, &deviation);
    negative += variance < 0 ? 1 : 0;
    EXPECT_EQ(deviation, std::sqrt(std::fabs(variance)));
  }
  EXPECT_GT(negative, 0);
}

double momentPlainly(const std::vector<double>& x, int32_t order) {
  double mean = 0.0;
  Mean(x.data(), count(x), &mean);
  double sum = 0.0;
  for (double v : x) {
    const double d = v - mean;
    double power = d;
    for (int32_t k = 1; k < order; ++k) power *= d;
    sum += power;
  }
  return sum / static_cast<double>(x.size());
}

TEST(Descriptive, MomentsHaveTheBitsOfRepeatedMultiplication) {
  for (std::size_t n : {1u, 2u, 3u, 31u, 32u, 33u, 63u, 64u, 65u, 70u, 1000u}) {
    for (double scale : {1.0, 1.7, 1e-3, 1e3}) {
      std::vector<double> x = test::uniform(n, n);
      for (double& v : x) v *= scale;
      for (int32_t order :
           {1, 2, 3, 4, 5, 16, 17, 32, 33, 34, 35, 64, 65, 66, 98, 500, 1001, 5000}) {
        double moment = 0;
        ASSERT_EQ(Moment(x.data(), count(x), order, &moment), FATHOM_OK);
        ASSERT_TRUE(SameBits(moment, momentPlainly(x, order))) << n << ' ' << scale << ' ' << order;
      }
    }
  }
}

// Powers that settle (0, 1, infinity, the smallest denormal), with their signs, take no 2^31 steps.
TEST(Descriptive, MomentsOfHugeOrderEnd) {
  struct {
    std::vector<double> x;
    double even, odd;
  } const cases[] = {
      {{1, -1}, 1, 0},
      {{-1, -1, -1, 3}, test::kInf, test::kInf},
      {{1, 1, 1, -3}, test::kInf, -test::kInf},
      {{0.25, -0.25}, 0, 0},
      {{-0.75, -0.75, 1.5, 0}, test::kInf, test::kInf},
      {{test::kInf, 1}, test::kNan, test::kNan},
      {{5}, 0, 0},
  };
  for (const auto& c : cases) {
    double moment = 0;
    ASSERT_EQ(Moment(c.x.data(), count(c.x), INT32_MAX - 1, &moment), FATHOM_OK);
    EXPECT_TRUE(SameBits(moment, c.even));
    ASSERT_EQ(Moment(c.x.data(), count(c.x), INT32_MAX, &moment), FATHOM_OK);
    EXPECT_TRUE(SameBits(moment, c.odd));
  }
}

TEST(Descriptive, MedianKeepsItsInputAndStatuses) {
  std::vector<double> x = {4, 1, 3, 2};
  double median = 0;
  ASSERT_EQ(Median(x.data(), 4, &median), FATHOM_OK);
  EXPECT_EQ(median, 2.5);
  EXPECT_EQ(x, (std::vector<double>{4, 1, 3, 2}));
  ASSERT_EQ(Median(x.data(), 3, &median), FATHOM_OK);
  EXPECT_EQ(median, 3.0);
  double moment = 7;
  EXPECT_EQ(Moment(x.data(), 0, 0, &moment), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Moment(x.data(), 1, 0, &moment), FATHOM_ERR_ORDER);
  EXPECT_EQ(Moment(x.data(), 1, -1, &moment), FATHOM_ERR_ORDER);
  EXPECT_EQ(moment, 7);
}

}  // namespace
}  // namespace fathom
