#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Maximum and its place, minimum and its place.
Values plainScan(const Values& x) {
  Values found = {x[0], 0.0, x[0], 0.0};
  for (std::size_t i = 0; i < x.size(); ++i) {
    const auto place = static_cast<double>(i);
    if (x[i] > found[0]) {
      found[0] = x[i], found[1] = place;
    } else if (!(x[i] >= found[2])) {
      found[2] = x[i], found[3] = place;
    }
  }
  return found;
}

void expectPlainScan(const Values& x) {
  const int32_t n = count(x), columns = n % 7 == 0 ? 7 : n;
  double maximum, minimum;
  int32_t row, column, row2, column2;
  ASSERT_EQ(MaxMin1D(x.data(), n, &maximum, &column, &minimum, &column2), FATHOM_OK);
  ASSERT_TRUE(SameBits({maximum, 1.0 * column, minimum, 1.0 * column2}, plainScan(x)));
  ASSERT_EQ(
      MaxMin2D(x.data(), n / columns, columns, &maximum, &row, &column, &minimum, &row2, &column2),
      FATHOM_OK);
  ASSERT_TRUE(column < columns && column2 < columns);
  ASSERT_TRUE(
      SameBits({maximum, 1.0 * (row * columns + column), minimum, 1.0 * (row2 * columns + column2)},
               plainScan(x)));
}

TEST(Reduce, ExtremesMatchThePlainScan) {
  for (std::size_t n = 1; n < 1000; n += n < 70 ? 1 : 7) {
    SCOPED_TRACE(n);
    Values x = uniform(n), ramp(n), zeros(n), ties(n);
    expectPlainScan(x);
    for (std::size_t i = 0; i < n; ++i) {
      ramp[i] = static_cast<double>(i);
      zeros[i] = i % 3 == 0 ? 0.0 : -0.0;
      ties[i] = std::trunc(x[i] * 4);
    }
    for (const Values& v : {ramp, zeros, ties, Values(n, kNan)}) expectPlainScan(v);
    // A NaN anywhere, the first place included, then several.
    for (const std::size_t at : {std::size_t{0}, n / 2, n - 1}) {
      Values broken = x;
      broken[at] = kNan;
      expectPlainScan(broken);
      broken[n / 3] = kInf;
      broken[n / 5] = -kInf;
      expectPlainScan(broken);
    }
    for (std::size_t i = 0; i < n; i += 50) x[i] = kNan;
    expectPlainScan(x);
  }
}

TEST(Reduce, SumsAndProductsRunFromTheFirstElement) {
  for (const Values& x : {uniform(1), uniform(2), uniform(9), uniform(1000), Values{-0.0}}) {
    double sum = 0.0, product = 1.0, result = kNan;
    for (const double v : x) {
      sum += v;
      product *= v;
    }
    EXPECT_EQ(Sum1D(x.data(), count(x), &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, sum));
    EXPECT_EQ(Sum2D(x.data(), 1, count(x), &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, sum));
    EXPECT_EQ(Prod1D(x.data(), count(x), &result), FATHOM_OK);
    EXPECT_TRUE(SameBits(result, product));
  }
}

}  // namespace
}  // namespace fathom::test
