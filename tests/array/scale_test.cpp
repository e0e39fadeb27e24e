#include "support/testing.hpp"

namespace fathom::test {
namespace {

using ArrayRoutine = AnalysisStatus (*)(const double*, int32_t, double*, double*, double*);
using MatrixRoutine = AnalysisStatus (*)(const double*, int32_t, int32_t, double*, double*,
                                         double*);

// (x - centre) multiplied by the reciprocal of the divisor; both are results too.
void expectScaled(ArrayRoutine array, MatrixRoutine matrix, const Values& x, double centre,
                  double divisor) {
  const double reciprocal = 1.0 / divisor;
  Values expected;
  for (const double v : x) expected.push_back((v - centre) * reciprocal);
  const int32_t n = count(x), rows = n % 2 == 0 ? 2 : 1;
  double first = kNan, second = kNan;
  expectBits(x, expected, [&](auto in, auto out) { return array(in, n, out, &first, &second); });
  EXPECT_TRUE(SameBits({first, second}, Values{centre, divisor})) << n;
  first = second = kNan;
  expectBits(x, expected,
             [&](auto in, auto out) { return matrix(in, rows, n / rows, out, &first, &second); });
  EXPECT_TRUE(SameBits({first, second}, Values{centre, divisor})) << n;
}

// By the largest magnitude: the centre is zero.
AnalysisStatus array(const double* x, int32_t n, double* y, double* centre, double* largest) {
  *centre = 0.0;
  return QScale1D(x, n, y, largest);
}
AnalysisStatus matrix(const double* x, int32_t rows, int32_t columns, double* y, double* centre,
                      double* largest) {
  *centre = 0.0;
  return QScale2D(x, rows, columns, y, largest);
}

TEST(Scale, MultipliesByTheReciprocal) {
  for (std::size_t n : sizes({96, 127, 128, 129, 300})) {
    Values x = uniform(n, n);
    for (double& v : x) v *= 0.3;  // full mantissas: the sum of the extremes is rounded
    const auto [minimum, maximum] = std::minmax_element(x.begin(), x.end());
    const double scale = (*maximum - *minimum) * 0.5;
    expectScaled(Scale1D, Scale2D, x, *minimum + scale, scale);
    double mean, deviation, largest = 0.0;
    StdDev(x.data(), count(x), &mean, &deviation);
    expectScaled(Normal1D, Normal2D, x, mean, deviation);
    if (n % 4 == 0) x[n / 2] = kNan;  // passed over
    for (const double v : x) largest = std::fabs(v) > largest ? std::fabs(v) : largest;
    expectScaled(array, matrix, x, 0.0, largest);
  }
  // Nothing to divide by, or too little.
  expectScaled(Scale1D, Scale2D, {7, 7, 7}, 7, 0);
  expectScaled(Normal1D, Normal2D, {5, 5}, 5, 0);
  expectScaled(array, matrix, {0.0}, 0, 0);
  expectScaled(array, matrix, {kDenormal}, 0, kDenormal);
}

}  // namespace
}  // namespace fathom::test
