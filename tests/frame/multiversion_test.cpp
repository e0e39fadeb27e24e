#include "frame/multiversion.hpp"

#include "support/testing.hpp"

namespace fathom::test {
namespace {

FATHOM_MULTIVERSION void fast(const double* a, const double* b, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = a[i] * b[i] + y[i];
}

// One element at a time: the compiler cannot vectorise what it must store at once.
void plain(const double* a, const double* b, std::size_t n, double* y) {
  for (std::size_t i = 0; i < n; ++i) {
    const volatile double product = a[i] * b[i];
    y[i] = product + y[i];
  }
}

// The variant that this processor gets fuses nothing, and in-place operands are as good as others.
TEST(Multiversion, GivesTheBitsOfThePlainLoop) {
  for (std::size_t n = 0; n < 70; ++n) {
    const Values a = uniform(n, 1), b = uniform(n, 2);
    Values x = a, y = a;
    fast(x.data(), b.data(), n, x.data());
    plain(y.data(), b.data(), n, y.data());
    EXPECT_TRUE(SameBits(x, y)) << n;
  }
}

}  // namespace
}  // namespace fathom::test
