#include "support/testing.hpp"

namespace fathom::test {
namespace {

// By number of samples, a digest of what each method gives, computed in Python one documented
// operation after another: doubles, and x87 numbers for the factors 1/3 and 1/45.
constexpr std::uint64_t kDigests[] = {
#include "fit/integration.dat"
};

// The degree up to which a method is exact, by the number of intervals left over.
constexpr int kDegrees[4][4] = {{1}, {3, 1}, {3, 1, 3}, {5, 1, 3, 3}};

TEST(Integration, AddsInOrderAndIsExactOnPolynomials) {
  for (const std::uint64_t* row = kDigests; row != std::end(kDigests); row += 5) {
    const std::size_t n = row[0];
    for (int32_t method = 0; method < 4; ++method) {
      Digest digest;
      for (std::uint64_t seed = 0; seed < 4; ++seed) {
        const Values x = seed == 0 ? awkward(n, n) : seed == 1 ? Values(n, -0.0) : uniform(n, seed);
        Guarded integral(1);
        add(digest,
            NumericIntegration(x.data(), count(x), uniform(1, seed + n)[0], method, integral),
            integral);
      }
      EXPECT_TRUE(digest.value() == row[1 + method]) << method << ' ' << n;
      Guarded r(1);
      EXPECT_EQ(NumericIntegration(nullptr, 0, 1, method - 4, r), FATHOM_ERR_SELECTION);
      EXPECT_EQ(NumericIntegration(nullptr, 0, 1, method + 4, r), FATHOM_ERR_SELECTION);
      if (n < method + 2u) continue;
      for (int degree = 0; degree <= kDegrees[method][(n - 1) % (method + 1u)]; ++degree) {
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
