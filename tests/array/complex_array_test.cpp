#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kInf;
using test::kNan;
using test::SameBits;
using Values = std::vector<double>;
using Pair = std::array<double, 2>;

// One element by its definition: a + ib and c + id.
Pair plain(char operation, double a, double b, double c, double d) {
  const double m = c * c + d * d;
  if (operation == '+') return {a + c, b + d};
  if (operation == '-') return {a - c, b - d};
  if (operation == '*') return {a * c - b * d, a * d + b * c};
  if (operation == '/') return {(a * c + b * d) / m, (b * c - a * d) / m};
  if (operation == 'l') return {(a * 0.7 - b * -1.9) + -0.3, (a * -1.9 + b * 0.7) + 1e3};
  if (operation == 'r') return {std::cos(b) * a, std::sin(b) * a};
  if ((std::isnan(a) || a == 0.0) && (std::isnan(b) || b == 0.0)) return {0.0, 0.0};
  return {std::sqrt(a * a + b * b), std::atan2(b, a)};
}

// Routines of one operand, called as those of two.
template <auto routine>
AnalysisStatus array(const double* a, const double* b, const double*, const double*, int32_t n,
                     double* y, double* z) {
  return routine(a, b, n, y, z);
}
AnalysisStatus line(const double* a, const double* b, int32_t n, double* y, double* z) {
  return CxLinEv1D(a, b, n, 0.7, -1.9, -0.3, 1e3, y, z);
}

struct Operation {
  char name;
  decltype(&CxAdd1D) array;
  std::vector<std::array<std::size_t, 2>> outputs;  // the four inputs, or 4 and 5
};
const Operation kOperations[] = {
    {'+', CxAdd1D, {{4, 5}, {0, 1}, {2, 3}, {0, 3}, {2, 1}}},
    {'-', CxSub1D, {{4, 5}, {0, 1}, {2, 3}, {0, 3}, {2, 1}}},
    {'*', CxMul1D, {{4, 5}, {0, 1}}},
    {'/', CxDiv1D, {{4, 5}, {0, 1}}},
    {'l', array<line>, {{4, 5}, {0, 1}}},
    {'p', array<ToPolar1D>, {{4, 5}, {0, 1}, {1, 0}}},
    {'r', array<ToRect1D>, {{4, 5}, {0, 1}, {1, 0}}},
};

// Awkward values begin anywhere, or nowhere; the first divisor whose square is zero or NaN ends the
// division: what came before it is written, the rest is left.
TEST(ComplexArray, MatchesThePlainLoopSeparateAndInPlace) {
  const double special[] = {0.0, -0.0, kInf, 1.7e308, test::kDenormal, kNan, -0.0, kNan};
  for (const Operation& o : kOperations) {
    for (std::size_t n = 1; n <= 1000; n += n < 140 ? 1 : 31) {
      std::array<Values, 4> in;
      for (std::size_t p = 0; p < 4; ++p) {
        in[p] = test::uniform(n, p + n);
        for (std::size_t i = n * n / 3 % (n + 5); i < n; i += 7)
          in[p][i] = special[(i + p * p) % 8];
      }
      Values expected[2];
      for (std::size_t i = 0; i < n; ++i) {
        const double square = in[2][i] * in[2][i] + in[3][i] * in[3][i];
        if (o.name == '/' && (square == 0.0 || std::isnan(square))) break;
        const Pair y = plain(o.name, in[0][i], in[1][i], in[2][i], in[3][i]);
        for (std::size_t k : {0u, 1u}) expected[k].push_back(y[k]);
      }
      const bool stops = expected[0].size() < n;
      for (const auto& output : o.outputs) {
        Guarded part[] = {Guarded(in[0]), Guarded(in[1]), Guarded(in[2]),
                          Guarded(in[3]), Guarded(n),     Guarded(n)};
        Values wanted[] = {part[output[0]].values(), part[output[1]].values()};
        EXPECT_EQ(o.array(part[0], part[1], part[2], part[3], static_cast<int32_t>(n),
                          part[output[0]], part[output[1]]),
                  stops ? FATHOM_ERR_DIVIDE_BY_ZERO : FATHOM_OK);
        for (std::size_t k : {0u, 1u}) {
          std::copy(expected[k].begin(), expected[k].end(), wanted[k].begin());
          ASSERT_TRUE(SameBits(part[output[k]].values(), wanted[k])) << o.name << ' ' << n;
          EXPECT_TRUE(part[output[k]].intact());
        }
      }
    }
  }
}

}  // namespace
}  // namespace fathom
