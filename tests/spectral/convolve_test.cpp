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

// Now and then a value that a product too many, or in another order, would show.
std::vector<double> awkward(std::size_t n, std::uint64_t seed) {
  std::vector<double> x = test::uniform(n, seed);
  const double rare[] = {-0.0, 0.0, test::kInf, -0.0, test::kNan, 1e300, test::kDenormal};
  for (std::size_t i = seed % 5; i < n; i += 3 + i % 7) x[i] = rare[(i + seed) % 7];
  return x;
}

// Both routines beside their double loops.
void compare(const std::vector<double>& x, const std::vector<double>& y) {
  const std::size_t nx = x.size(), ny = y.size();
  std::vector<double> convolution(nx + ny - 1), correlation(nx + ny - 1);
  for (std::size_t i = 0; i < nx; ++i) {
    for (std::size_t j = 0; j < ny; ++j) convolution[i + j] += x[i] * y[j];
  }
  for (std::size_t j = 0; j < ny; ++j) {
    for (std::size_t i = 0; i < nx; ++i) correlation[j + i] += x[nx - 1 - i] * y[j];
  }
  const auto n = static_cast<std::int32_t>(nx), m = static_cast<std::int32_t>(ny);
  Guarded convolved(nx + ny - 1), correlated(nx + ny - 1);
  ASSERT_EQ(Convolve(x.data(), n, y.data(), m, convolved), FATHOM_OK);
  ASSERT_EQ(Correlate(x.data(), n, y.data(), m, correlated), FATHOM_OK);
  ASSERT_TRUE(convolved.intact() && correlated.intact()) << nx << ' ' << ny;
  ASSERT_TRUE(SameBits(convolved.values(), convolution)) << nx << ' ' << ny;
  ASSERT_TRUE(SameBits(correlated.values(), correlation)) << nx << ' ' << ny;
}

TEST(Convolve, KeepsTheBitsOfTheDoubleLoop) {
  std::vector<std::size_t> sizes;
  for (std::size_t n = 1; n <= 40; ++n) sizes.push_back(n);
  sizes.insert(sizes.end(), {63, 64, 65, 95, 128, 129, 500, 1023});
  for (std::size_t nx : sizes) {
    for (std::size_t ny : sizes) {
      ASSERT_NO_FATAL_FAILURE(compare(test::uniform(nx, nx), test::uniform(ny, 1000 + ny)));
      ASSERT_NO_FATAL_FAILURE(compare(awkward(nx, nx), awkward(ny, 1000 + ny)));
    }
  }
}

TEST(Convolve, CorrelationPeaksAtLagZero) {
  const std::vector<double> x = {1, -2, 3}, expected = {3, -8, 14, -8, 3};
  Guarded result(5);
  ASSERT_EQ(Correlate(x.data(), 3, x.data(), 3, result), FATHOM_OK);
  EXPECT_EQ(result.values(), expected);
}

}  // namespace
}  // namespace fathom
