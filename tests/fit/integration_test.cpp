#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// One group of intervals after the other; the factors 1/3 and 1/45 in long double.
double plain(const Values& v, double dt, int32_t method) {
  const double h = std::fabs(dt), *x = v.data(), *const end = &v.back();
  double sum = method == 0 ? 0.5 * (x[0] + end[0]) : 0.0;
  for (; end - x > method; x += method + 1) {
    if (method == 0 && x + 1 < end) sum += x[1];
    if (method == 1) sum += 4 * x[1] + x[0] + x[2];
    if (method == 2) sum += 3 * x[0] + 9 * x[1] + 9 * x[2] + 3 * x[3];
    if (method == 3) sum += 14 * x[0] + 64 * x[1] + 24 * x[2] + 64 * x[3] + 14 * x[4];
  }
  const double main[] = {h * sum, static_cast<double>(1 / 3.0L * h * sum), h * 0.125 * sum,
                         static_cast<double>(h * sum * (1 / 45.0L))};
  const double last = x[0] + end[0];
  if (end - x == 1) return main[method] + (method == 3 ? last * 0.5 * h : 0.5 * h * last);
  if (end - x == 2) {
    const double three = 4 * x[1] + end[method == 2 ? -2 : 0] + end[method == 2 ? 0 : -2];
    return main[method] + static_cast<double>(three * h * (1 / 3.0L));
  }
  if (end - x == 3) return main[method] + (last * 3 + (x[2] + x[1]) * 9) * h * 0.125;
  return main[method];
}

// The degree up to which a method is exact, by the number of intervals left over.
constexpr int kDegrees[4][4] = {{1}, {3, 1}, {3, 1, 3}, {5, 1, 3, 3}};

TEST(Integration, AddsInOrderAndIsExactOnPolynomials) {
  for (const std::size_t n : sizes({257, 1000})) {
    for (int32_t method = 0; method < 4; ++method) {
      const bool enough = n > method + 1u;
      for (std::uint64_t seed = 0; seed < 4; ++seed) {
        const Values x = seed == 0 ? awkward(n, n) : seed == 1 ? Values(n, -0.0) : uniform(n, seed);
        const double dt = seed == 2 ? 5 * kDenormal : uniform(1, seed + n)[0];
        Guarded r(1), s(1);
        if (enough) s[0] = plain(x, dt, method);
        if (method > 0 && !HardExtended::kAvailable) continue;
        expectSame(NumericIntegration(x.data(), count(x), dt, method, r), r,
                   enough ? FATHOM_OK : FATHOM_ERR_ARRAY_SIZE, s);
      }
      Guarded r(1);
      EXPECT_EQ(NumericIntegration(nullptr, 0, 1, method - 4, r), FATHOM_ERR_SELECTION);
      EXPECT_EQ(NumericIntegration(nullptr, 0, 1, method + 4, r), FATHOM_ERR_SELECTION);
      for (int degree = 0; enough && degree <= kDegrees[method][(n - 1) % (method + 1u)];
           ++degree) {
        Values x(n);
        for (std::size_t i = 0; i < n; ++i) x[i] = std::pow(static_cast<double>(i), degree);
        const double exact = 0.5 * std::pow(static_cast<double>(n - 1), degree + 1) / (degree + 1);
        NumericIntegration(x.data(), count(x), -0.5, method, r);
        EXPECT_NEAR(r[0], exact, 1e-13 * exact) << method << ' ' << n << ' ' << degree;
      }
    }
  }
}

}  // namespace
}  // namespace fathom::test
