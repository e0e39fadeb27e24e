#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;

// Ordinary values, and every kind that must come through the fast loops as through the plain ones.
std::vector<double> arguments(std::size_t n) {
  std::vector<double> x = test::uniform(n, n);
  const double awkward[] = {-0.0, test::kInf, test::kNan, test::kDenormal, -test::kInf, 1e200, 0.0};
  for (std::size_t i = 5, k = 0; i < n; i += 11, ++k) x[i] = awkward[k % 7];
  return x;
}

std::vector<std::size_t> sizes() {
  std::vector<std::size_t> n = {1000, 4097};
  for (std::size_t i = 1; i <= 70; ++i) n.push_back(i);
  return n;
}

TEST(Evaluate, LineHasTheBitsOfOneProductAndOneSum) {
  for (std::size_t n : sizes()) {
    const std::vector<double> x = arguments(n);
    std::vector<double> expected = x;
    for (double& v : expected) v = v * 1.1 + -0.3;
    Guarded y(n);
    ASSERT_EQ(LinEv1D(x.data(), static_cast<int32_t>(n), 1.1, -0.3, y), FATHOM_OK);
    ASSERT_TRUE(SameBits(y.values(), expected) && y.intact()) << n;
    Guarded same(x);
    ASSERT_EQ(LinEv2D(same, 1, static_cast<int32_t>(n), 1.1, -0.3, same), FATHOM_OK);
    ASSERT_TRUE(SameBits(same.values(), expected) && same.intact()) << n;
  }
}

TEST(Evaluate, PolynomialAddsItsTermsFromTheConstantUpward) {
  std::vector<double> c = test::uniform(40, 9);
  c[0] = -0.0;  // must not become +0.0 on the way
  for (std::size_t n : sizes()) {
    const std::vector<double> x = arguments(n);
    for (int32_t m : {1, 2, 3, 9, 40}) {
      std::vector<double> expected;
      for (double at : x) {
        double sum = c[0];
        double power = 1.0;
        for (int32_t j = 1; j < m; ++j) {
          power = power * at;
          sum = sum + c[static_cast<std::size_t>(j)] * power;
        }
        expected.push_back(sum);
      }
      Guarded y(n);
      ASSERT_EQ(PolyEv1D(x.data(), static_cast<int32_t>(n), c.data(), m, y), FATHOM_OK);
      ASSERT_TRUE(SameBits(y.values(), expected) && y.intact()) << n << ' ' << m;
      Guarded same(x);
      ASSERT_EQ(PolyEv2D(same, static_cast<int32_t>(n), 1, c.data(), m, same), FATHOM_OK);
      ASSERT_TRUE(SameBits(same.values(), expected) && same.intact()) << n << ' ' << m;
    }
  }
}

TEST(Evaluate, KnownPolynomial) {
  const double c[] = {1, 2, 3};
  const double x[] = {2, -1, 0, 10, 0.5, 3};
  double y[6];
  ASSERT_EQ(PolyEv2D(x, 2, 3, c, 3, y), FATHOM_OK);
  EXPECT_EQ(std::vector<double>(y, y + 6), (std::vector<double>{17, 2, 1, 321, 2.75, 34}));
}

}  // namespace
}  // namespace fathom
