#include <ctime>

#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// A routine as a function of its inputs.
template <auto kRoutine>
constexpr auto kValue = [](double x, auto... df) {
  double result = -7.0;
  EXPECT_EQ(kRoutine(x, df..., &result), FATHOM_OK);
  return result;
};
constexpr auto normal = kValue<N_Dist>;
constexpr auto inverseNormal = kValue<InvN_Dist>;
constexpr auto student = kValue<T_Dist>;
constexpr auto inverseT = kValue<InvT_Dist>;
constexpr auto fisher = kValue<F_Dist>;
constexpr auto inverseF = kValue<InvF_Dist>;
constexpr auto chiSquare = kValue<XX_Dist>;
constexpr auto inverseXX = kValue<InvXX_Dist>;

// The sums in full, one term after another.
double chiSquarePlainly(double x, int32_t df) {
  const bool odd = df % 2 == 1;
  const double e = fathom::exp(-x * 0.5), root = std::sqrt(x), upper = 1 - normal(root);
  double power = odd ? 1 / root : 1, product = 1, sum = odd ? 0 : 1;
  for (int32_t k = odd ? 1 : 2; k < df; k += 2) sum += (power *= x) / (product *= k);
  if (df == 1) return 1 - 2 * upper;
  return odd ? 1 - 2 * (0.3989422 * e * sum + upper) : 1 - e * sum;
}

// Every step of the bisection.
template <typename Distribution, typename... D>
double bisectPlainly(double lo, double hi, double p, Distribution distribution, D... df) {
  while (std::fabs(hi - lo) > 1e-4) {
    const double mid = (lo + hi) * 0.5;
    (distribution(mid, df...) < p ? lo : hi) = mid;
  }
  return lo;
}

TEST(Distribution, PublishedQuantilesAndValues) {
  const auto near = [](double tolerance, const Values& actual, const Values& expected) {
    for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], tolerance);
  };
  near(2e-4,
       {inverseNormal(0.975), inverseT(0.95, 1), inverseT(0.005, 5), inverseF(0.95, 5, 10),
        inverseF(0.99, 1, 8), inverseXX(0.95, 2), inverseXX(0.95, 100)},
       {1.960395, 6.3138, -4.0321, 3.3258, 11.2586, 5.9915, 124.3421});
  near(1e-3, {inverseXX(0.95, 5), inverseNormal(0.5)}, {11.0705, -1.01e-7});
  // In 60 digits, the approximations as ratios of unscaled convergents; two stop at step 100.
  near(1e-13,
       {normal(0), student(-1.75, 100), student(-1.5, 8), student(2.5, 3), fisher(1, 7, 9),
        fisher(0.5, 40, 2000)},
       {0.5000001555492, 0.041592844289411, 0.08600164597555, 0.95614667649894, 0.51203183094546,
        0.0036242365731174});
  near(1e-8, {fisher(1, 100000, 100000), fisher(1, 1000000, 1000000)},
       {0.50000257107666, 0.51737032316868});
  for (double x : {0.01, 0.7, 800.0}) EXPECT_TRUE(SameBits(normal(-x), 1 - normal(x)));
}

TEST(Distribution, EndsOfTheDomain) {
  EXPECT_TRUE(
      SameBits(Values{normal(-kInf), normal(kInf), student(-kInf, 3), student(1e300, 3),
                      fisher(kInf, 3, 4), fisher(0, 3, 4), fisher(-1, 3, 4), fisher(kNan, 3, 4),
                      chiSquare(kInf, 2), chiSquare(-1, 3), chiSquare(kNan, 3), inverseT(kNan, 3),
                      inverseF(kNan, 3, 4), inverseXX(kNan, 3)},
               Values{0, 1, 0, 1, 1, 0, 0, 0, 1, 0, 0, -1e4, 1e-6, 0}));
  for (double nan : {normal(kNan), student(kNan, 3), chiSquare(kInf, 4), chiSquare(kInf, 5),
                     inverseNormal(7e-155)})
    EXPECT_TRUE(std::isnan(nan));
  for (int32_t df : {1, 2, 7, 100, 1000000, INT32_MAX}) EXPECT_EQ(student(0, df), 0.5);
  EXPECT_TRUE(inverseT(1 - 1e-9, 1) < 1e4 && inverseT(1 - 1e-9, 1) > 1e4 - 1e-4);
  EXPECT_TRUE(inverseT(1e-9, 1) == -1e4 && inverseF(1e-9, 1, 1) == 1e-6);
  double r = -7.0;
  for (double p : {0.0, -1.0, 1.0, 1.5, kInf, -kInf}) {
    EXPECT_TRUE(InvN_Dist(p, &r) == -20053 && InvXX_Dist(p, 0, &r) == -20053);
    EXPECT_TRUE(InvT_Dist(p, 0, &r) == -20052 && InvT_Dist(p, 1, &r) == -20053);
    EXPECT_TRUE(InvF_Dist(p, 1, 0, &r) == -20052 && InvF_Dist(p, 1, 1, &r) == -20053);
  }
  EXPECT_TRUE(InvN_Dist(kNan, &r) == FATHOM_ERR_PROBABILITY && r == -7.0);
}

TEST(Distribution, ChiSquareStopsWhereNoTermChangesTheSum) {
  std::vector<int32_t> degrees = {100000, 100001, 1000000, 1000001};
  for (int32_t df = 1; df <= 2000; ++df) degrees.push_back(df);
  for (int32_t df : degrees) {
    Values xs = {kDenormal, 1e-300, 1e-100, 1e-3, 0.5,   1 - 0x1p-53, 1,   1 + 0x1p-52, 1 + 1e-6,
                 1.001,     1.1,    1.5,    2,    7,     30,          100, 256,         260,
                 1250,      1500,   1e4,    1e9,  1e100, 1.7e308,     kInf};
    // the last x whose power stays finite, and its neighbours
    double last = std::exp(709.782712893384 / std::ceil(df / 2.0));
    for (int k = 0; k < 4; ++k) last = std::nextafter(last, 0.0);
    for (int k = 0; k < 8; ++k) xs.push_back(last = std::nextafter(last, kInf));
    for (double x : xs) ASSERT_TRUE(SameBits(chiSquare(x, df), chiSquarePlainly(x, df))) << df;
  }
}

TEST(Distribution, InversesAreTheBisectionsStepForStep) {
  const int32_t degrees[] = {1, 2, 3, 4, 7, 30, 100, 204, 999, 9999, 10000, 10001, 300000};
  const Values points = uniform(400, 3);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const int32_t df = degrees[i % 13], df2 = degrees[i / 13 % 13];
    const double u = points[i] * 0.5 + 0.5, tiny = std::exp(-40 * u);
    // also a value of the distribution at one of the points, which is not less than itself
    for (double p : {u, tiny, 1 - tiny, 0.5 + 1e-9 * u, std::round(1000 * u) / 1000,
                     student(625.0 * std::round(1e4 * u) / 0x1p23, df), fisher(u, df, df2)}) {
      if (!(p > 0 && p < 1)) continue;
      ASSERT_TRUE(SameBits(inverseT(p, df), bisectPlainly(-1e4, 1e4, p, student, df)));
      ASSERT_TRUE(SameBits(inverseF(p, df, df2), bisectPlainly(1e-6, 1e4, p, fisher, df, df2)));
      ASSERT_TRUE(SameBits(inverseXX(p, df), bisectPlainly(0, 1e4, p, chiSquare, df)));
    }
  }
}

// Summed in full, the largest degrees of freedom would take seconds a value.
TEST(Distribution, LargestDegreesOfFreedomTakeNoLonger) {
  const std::clock_t start = std::clock();
  for (int32_t df : {INT32_MAX - 1, INT32_MAX}) {
    for (double x : {1e-300, 1e-3, 0.5, 1.0, 1.0 + 1e-7, 1.0 + 1e-6, 1.5, 1e3, 1e9, kInf}) {
      const double p = chiSquare(x, df);
      EXPECT_TRUE(x > 1.0 + 5e-7 ? std::isnan(p) : std::fabs(p) < 2e-5) << x;
      EXPECT_NEAR(student(x, df), normal(x), 2e-5) << x;
      fisher(x, df, df);
    }
    for (double p : {1e-9, 0.1, 0.6, 0.999}) {
      EXPECT_NEAR(inverseT(p, df), inverseNormal(p), 1e-3) << p;
      EXPECT_TRUE(inverseF(p, df, df) < 1.01 && inverseXX(p, df) < 1.01) << p;
    }
  }
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 2);
}

}  // namespace
}  // namespace fathom::test
