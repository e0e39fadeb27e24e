#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::kInf;
using test::kNan;
using test::SameBits;
using Values = std::vector<double>;

struct Found {
  double maximum = 0.0, minimum = 0.0;
  int32_t maximumAt = -1, minimumAt = -1;
};

Found plainScan(const Values& x) {
  Found f{x[0], x[0], 0, 0};
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] > f.maximum) {
      f.maximum = x[i];
      f.maximumAt = static_cast<int32_t>(i);
    } else if (!(x[i] >= f.minimum)) {
      f.minimum = x[i];
      f.minimumAt = static_cast<int32_t>(i);
    }
  }
  return f;
}

void expectPlainScan(const Values& x, const char* what) {
  const Found expected = plainScan(x);
  const auto n = static_cast<int32_t>(x.size());
  Found f;
  ASSERT_EQ(MaxMin1D(x.data(), n, &f.maximum, &f.maximumAt, &f.minimum, &f.minimumAt), FATHOM_OK);
  ASSERT_TRUE(SameBits(f.maximum, expected.maximum)) << what << ' ' << n;
  ASSERT_TRUE(SameBits(f.minimum, expected.minimum)) << what << ' ' << n;
  ASSERT_EQ(f.maximumAt, expected.maximumAt) << what << ' ' << n;
  ASSERT_EQ(f.minimumAt, expected.minimumAt) << what << ' ' << n;

  const int32_t columns = n % 7 == 0 ? 7 : n;
  int32_t maximumRow, maximumColumn, minimumRow, minimumColumn;
  ASSERT_EQ(MaxMin2D(x.data(), n / columns, columns, &f.maximum, &maximumRow, &maximumColumn,
                     &f.minimum, &minimumRow, &minimumColumn),
            FATHOM_OK);
  ASSERT_EQ(maximumRow * columns + maximumColumn, expected.maximumAt);
  ASSERT_EQ(minimumRow * columns + minimumColumn, expected.minimumAt);
  ASSERT_TRUE(maximumColumn < columns && minimumColumn < columns);
}

TEST(Reduce, ExtremesMatchThePlainScan) {
  for (std::size_t n = 1; n < 1000; n += n < 70 ? 1 : 7) {
    Values x = test::uniform(n);
    expectPlainScan(x, "uniform");
    Values ramp(n), zeros(n), coarse(n);
    for (std::size_t i = 0; i < n; ++i) {
      ramp[i] = static_cast<double>(i);
      zeros[i] = i % 3 == 0 ? 0.0 : -0.0;
      coarse[i] = static_cast<double>(static_cast<int>(x[i] * 4));  // ties
    }
    expectPlainScan(ramp, "ramp");
    expectPlainScan(zeros, "zeros");
    expectPlainScan(coarse, "ties");
    // A NaN anywhere, the first place included, then several.
    for (const std::size_t at : {std::size_t{0}, n / 2, n - 1}) {
      Values broken = x;
      broken[at] = kNan;
      expectPlainScan(broken, "one NaN");
      broken[n / 3] = kInf;
      broken[n / 5] = -kInf;
      expectPlainScan(broken, "NaN and infinities");
    }
    for (std::size_t i = 0; i < n; i += 50) x[i] = kNan;
    expectPlainScan(x, "NaNs");
    expectPlainScan(Values(n, kNan), "nothing but NaN");
  }
}

TEST(Reduce, TiesKeepTheFirstPlace) {
  expectPlainScan({3, 5, 5, 1, 1}, "ties");
  const Values x = {3, 5, 5, 1, 1, 2};
  double maximum, minimum;
  int32_t maximumRow, maximumColumn, minimumRow, minimumColumn;
  MaxMin2D(x.data(), 2, 3, &maximum, &maximumRow, &maximumColumn, &minimum, &minimumRow,
           &minimumColumn);
  EXPECT_EQ(maximum, 5.0);
  EXPECT_EQ(maximumRow, 0);
  EXPECT_EQ(maximumColumn, 1);
  EXPECT_EQ(minimum, 1.0);
  EXPECT_EQ(minimumRow, 1);
  EXPECT_EQ(minimumColumn, 0);
}

TEST(Reduce, SumsAndProductsRunFromTheFirstElement) {
  for (std::size_t n : {1u, 2u, 9u, 70u, 1000u}) {
    const Values x = test::uniform(n, 9);
    double sum = 0.0, product = 1.0;
    for (const double v : x) {
      sum += v;
      product *= v;
    }
    const auto count = static_cast<int32_t>(n);
    double result = kNan;
    EXPECT_EQ(Sum1D(x.data(), count, &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, sum));
    EXPECT_EQ(Sum2D(x.data(), 1, count, &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, sum));
    EXPECT_EQ(Prod1D(x.data(), count, &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, product));
  }
  const double absorbed[] = {1.0, 1e100, 1.0, -1e100};
  const double negativeZero[] = {-0.0};
  double sum;
  Sum1D(absorbed, 4, &sum);
  EXPECT_TRUE(SameBits(sum, 0.0));
  Sum1D(negativeZero, 1, &sum);
  EXPECT_TRUE(SameBits(sum, 0.0));
}

}  // namespace
}  // namespace fathom
