#include "support/testing.hpp"

namespace fathom::test {
namespace {

// One product and one sum; or the terms added from the constant upward.
TEST(Evaluate, LineAndPolynomialHaveTheBitsOfThePlainLoop) {
  Values c = uniform(40, 9);
  c[0] = -0.0;  // must not become +0.0 on the way
  for (std::size_t size : sizes({1000, 4097})) {
    const Values x = awkward(size, size);
    const int32_t n = count(x);
    Values line;
    for (const double at : x) line.push_back(at * 1.1 + -0.3);
    expectBits(x, line, [n](auto in, auto out) { return LinEv1D(in, n, 1.1, -0.3, out); });
    expectBits(x, line, [n](auto in, auto out) { return LinEv2D(in, 1, n, 1.1, -0.3, out); });
    for (int32_t m : {1, 2, 3, 9, 40}) {
      Values sums;
      for (const double at : x) {
        double sum = c[0], power = 1.0;
        for (std::size_t j = 1; j < static_cast<std::size_t>(m); ++j) {
          power = power * at;
          sum = sum + c[j] * power;
        }
        sums.push_back(sum);
      }
      expectBits(x, sums, [&](auto in, auto out) { return PolyEv1D(in, n, c.data(), m, out); });
      expectBits(x, sums, [&](auto in, auto out) { return PolyEv2D(in, n, 1, c.data(), m, out); });
    }
  }
}

}  // namespace
}  // namespace fathom::test
