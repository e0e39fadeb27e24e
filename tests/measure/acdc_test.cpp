#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Three periods of a sine on a constant: the steps bit by bit, and the levels of the sine.
TEST(ACDC, LevelsOfASine) {
  for (std::size_t n : sizes({1000})) {
    Values x(n);
    for (double& v : x) v = 3 + 2 * std::sin(18.84955592153876 / count(x) * double(&v - x.data()));
    double mean, m, v, ac, dc;
    ACDCEstimator(x.data(), count(x), &ac, &dc);
    EXPECT_NEAR(ac, std::sqrt(2.0), n > 8 ? 1e-12 : 9) << n;
    EXPECT_NEAR(dc, 3.0, n > 8 ? 1e-12 : 9) << n;
    Mean(x.data(), count(x), &mean);
    for (double& sample : x) sample -= mean;
    HanWin(x.data(), count(x));
    Variance(x.data(), count(x), &m, &v);
    v = (SoftExtended({0xAAAAAAAAAAAAAAABu, -62}) * (v - 0.5 * (m * m))).toDouble();
    EXPECT_TRUE(SameBits({ac, dc}, {std::sqrt(v), 2.0 * m + mean})) << n;
  }
}

}  // namespace
}  // namespace fathom::test
