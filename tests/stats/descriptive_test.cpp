#include "support/testing.hpp"

namespace fathom::test {
namespace {

// The one-pass formula can round below zero: Variance says so, StdDev takes the magnitude.
TEST(Descriptive, SumsRunInIndexOrder) {
  int negative = 0;
  for (std::size_t n = 1; n <= 70; ++n) {
    Values uneven = uniform(n, n);
    if (n > 9) uneven[n / 2] = 1e9;
    for (const Values& x : {uneven, Values(n, 1e8 + 0.1)}) {
      double sum = 0.0, squares = 0.0;
      for (const double v : x) {
        sum += v;
        squares += v * v;
      }
      const auto divisor = static_cast<double>(n);
      double mean = 0, mean2 = 0, mean3 = 0, variance = 0, deviation = 0, rms = 0;
      Mean(x.data(), count(x), &mean);
      Variance(x.data(), count(x), &mean2, &variance);
      StdDev(x.data(), count(x), &mean3, &deviation);
      RMS(x.data(), count(x), &rms);
      const double expected = squares / divisor - mean * mean;
      EXPECT_TRUE(SameBits({mean, mean2, mean3}, Values(3, sum / divisor))) << n;
      EXPECT_TRUE(SameBits({variance, deviation, rms}, {expected, std::sqrt(std::fabs(expected)),
                                                        std::sqrt(squares / divisor)}))
          << n;
      negative += variance < 0 ? 1 : 0;
    }
  }
  EXPECT_GT(negative, 0);
}

double momentPlainly(const Values& x, int32_t order) {
  double mean = 0.0, sum = 0.0;
  Mean(x.data(), count(x), &mean);
  for (const double v : x) {
    double power = v - mean;
    for (int32_t k = 1; k < order; ++k) power *= v - mean;
    sum += power;
  }
  return sum / static_cast<double>(x.size());
}

TEST(Descriptive, MomentsHaveTheBitsOfRepeatedMultiplication) {
  for (std::size_t n : {1u, 2u, 3u, 31u, 32u, 33u, 63u, 64u, 65u, 70u, 1000u}) {
    for (double scale : {1.0, 1.7, 1e-3, 1e3}) {
      Values x = uniform(n, n);
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
    Values x;
    double even, odd;
  } const cases[] = {{{1, -1}, 1, 0},
                     {{-1, -1, -1, 3}, kInf, kInf},
                     {{5}, 0, 0},
                     {{1, 1, 1, -3}, kInf, -kInf},
                     {{0.25, -0.25}, 0, 0},
                     {{-0.75, -0.75, 1.5, 0}, kInf, kInf},
                     {{kInf, 1}, kNan, kNan}};
  for (const auto& c : cases) {
    double even = 7, odd = 7;
    EXPECT_EQ(Moment(c.x.data(), 0, 0, &even), FATHOM_ERR_NO_SAMPLES);
    EXPECT_EQ(Moment(c.x.data(), count(c.x), INT32_MAX - 1, &even), FATHOM_OK);
    EXPECT_EQ(Moment(c.x.data(), count(c.x), INT32_MAX, &odd), FATHOM_OK);
    EXPECT_TRUE(SameBits({even, odd}, Values{c.even, c.odd}));
  }
}

TEST(Descriptive, MedianOfTheFirstIntegersKeepsItsInput) {
  for (int32_t n : {1, 2, 3, 4, 7, 64, 1001}) {
    Values x;
    for (int32_t i = n; i >= 1; --i) x.push_back(i);
    std::rotate(x.begin(), x.begin() + 1, x.end());
    const Values before = x;
    double median = 0;
    ASSERT_EQ(Median(x.data(), n, &median), FATHOM_OK);
    EXPECT_EQ(median, (n + 1) / 2.0);
    EXPECT_EQ(x, before);
  }
}

}  // namespace
}  // namespace fathom::test
