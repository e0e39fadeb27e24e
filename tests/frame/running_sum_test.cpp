// Running sums have the bits of one addition after another.
#include "frame/running_sum.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

void expectSums(double value, double step, std::size_t n) {
  std::vector<double> y(n);
  const double end = runningSum(value, step, n, y.data());
  double sum = value;
  for (std::size_t i = 0; i <= n; ++i) {
    ASSERT_TRUE(test::sameBits(i < n ? y[i] : end, sum) || std::isnan(sum))
        << value << " + " << i << " x " << step;
    sum += step;
  }
}

// Steps of any size beside the value, among them those halfway between two sums' neighbours.
TEST(RunningSum, HasTheBitsOfAdditions) {
  const std::vector<double> x = test::uniform(4 * 5000);
  for (std::size_t i = 0; i < x.size(); i += 4) {
    const int exponent = static_cast<int>(x[i] * 30.0);
    const double value = i % 3 == 0 ? std::floor(x[i + 1] * 9.0) : x[i + 1];
    const double step = i % 5 == 0 ? std::floor(x[i + 2] * 9.0) : x[i + 2];
    const int ratio = i % 2 == 0 ? -53 : -30 + static_cast<int>(x[i + 3] * 30.0);
    expectSums(std::ldexp(value, exponent), std::ldexp(step, exponent + ratio),
               static_cast<std::size_t>(350.0 + x[i + 3] * 350.0));
  }
  for (const double value : {0.0, -0.0, 1.0, -1e308, 5e-324, 1e-300, test::kInf}) {
    for (const double step : {0.0, -0.0, 1e306, 5e-324, -1e-305, -1e-5, test::kInf, -test::kInf}) {
      expectSums(value, step, 300);
    }
  }
}

TEST(RunningSum, DoubledSumsAreThoseOfDoubledSteps) {
  for (const std::size_t most : {1, 2, 64}) {
    const double first = 0.3, step = 2.0 / 3.0;
    std::vector<double> y(2 * most), expected(most);
    runningSum(first, step, most, y.data() + most);
    doubleSums(most, y.data());
    for (std::size_t count = most; count > 1; count /= 2) {
      const auto factor = static_cast<double>(most / count);
      runningSum(first * factor, step * factor, count, expected.data());
      for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(y[count + i], expected[i]) << count;
    }
  }
}

}  // namespace
}  // namespace fathom
