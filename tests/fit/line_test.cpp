#include <cstring>

#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// The sums in index order, over y or its logarithms, and what follows from them, written where the
// routine would: r holds the two coefficients and the error.
AnalysisStatus plain(const double* x, const double* y, std::size_t n, bool exponential,
                     double* fitted, double* r) {
  const double points = static_cast<double>(n), sign = exponential && y[0] < 0 ? -1 : 1;
  double sx = 0, sxx = 0, sy = 0, sxy = 0;
  if (exponential) r[0] = r[1] = 0;
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  for (std::size_t i = 0; i < n; ++i) {
    const double u = sign * y[i], v = exponential ? fathom::log(u) : u;
    const bool fits = sign * y[0] > 0 ? u > 0 : u <= 0;
    if (exponential && i > 0 && !fits) return FATHOM_ERR_SIGN_OF_ARRAY;
    sx = sx + x[i];
    sxx = sxx + x[i] * x[i];
    sy = sy + v;
    sxy = sxy + x[i] * v;
  }
  if (exponential) {
    r[1] = (points * sxy - sx * sy) / (points * sxx - sx * sx);
    r[0] = fathom::exp((sy - r[1] * sx) / points) * sign;
  } else {
    r[0] = (sx * sy - points * sxy) / (sx * sx - points * sxx);
    r[1] = (sx * sxy - sy * sxx) / (sx * sx - points * sxx);
  }
  r[2] = 0;
  for (std::size_t i = 0; i < n; ++i) {
    fitted[i] = exponential ? fathom::exp(r[1] * x[i]) * r[0] : r[0] * x[i] + r[1];
    r[2] += (fitted[i] - y[i]) * (fitted[i] - y[i]);
  }
  r[2] /= points;
  return FATHOM_OK;
}

// Into an array of its own, over x, and over y, which leaves no error.
void expectPlain(const Values& x, const Values& y, bool exponential) {
  const std::size_t n = x.size();
  for (const int place : {0, 1, 2}) {
    Guarded a[] = {Guarded(n), Guarded(x), Guarded(y)}, b[] = {a[0], a[1], a[2]}, r(3), s(3);
    const auto status = exponential ? ExpFit(a[1], a[2], count(x), a[place], r, r + 1, r + 2)
                                    : LinFit(a[1], a[2], count(x), a[place], r, r + 1, r + 2);
    expectSame(status, r, plain(b[1], b[2], n, exponential, b[place], s), s);
    for (const int i : {0, 1, 2}) expectSame(status, a[i], status, b[i]);
    EXPECT_TRUE(place == 2 || std::memcmp(a[2], y.data(), n * sizeof(double)) == 0);
  }
}

TEST(LineFits, BitsOfThePlainSums) {
  for (const std::size_t n : sizes({255, 256, 257, 1000})) {
    const Values x = uniform(n, n), y = uniform(n, 2 * n);
    expectPlain(x, y, false);
    expectPlain(awkward(n, n), awkward(n, n + 1), false);
    for (const double sign : {1.0, -1.0}) {
      Values v = y;
      for (double& element : v) element = sign * (std::fabs(element) + 1e-3);
      expectPlain(x, v, true);
      if (n > 4) v[3] = sign * kInf;
      expectPlain(x, v, true);
    }
  }
}

// A zero in front, or NaN, asks for no logarithm that there is. Whatever the status, y keeps its
// bits.
TEST(LineFits, TheSignOfTheFirstOrdinateDecides) {
  const Values fitting[] = {{kNan, -1, 0}, {0, -1, -2}, {-0.0, -1, 0.0}, {-kDenormal, -kInf, -1}};
  const Values others[] = {{1, 2, -1},    {1, 0, 2},    {1, 2, kNan},  {kNan, 1, 2},   {-1, -2, 3},
                           {-1, -0.0, 1}, {-1, 0.0, 1}, {0, -1, kNan}, {0, -1, 1e-300}};
  for (const Values& y : fitting) expectPlain({1, 2, 4}, y, true);
  for (const Values& y : others) expectPlain({1, 2, 4}, y, true);
}

TEST(LineFits, KnownCurves) {
  const double e = std::exp(1.0);
  Values x = {0, 1, 2}, line = {1, 3, 5}, curve = {-2, -2 * e, -2 * e * e}, fitted(3);
  double a, b, error;
  LinFit(x.data(), line.data(), 3, fitted.data(), &a, &b, &error);
  EXPECT_TRUE(a == 2 && b == 1 && error == 0 && fitted == line);
  ExpFit(x.data(), curve.data(), 3, fitted.data(), &a, &b, &error);
  EXPECT_TRUE(std::fabs(a + 2) < 1e-14 && std::fabs(b - 1) < 1e-14);
}

}  // namespace
}  // namespace fathom::test
