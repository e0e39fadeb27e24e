#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// The plain schemes: each gives its status and writes what the routine would, to the bit.
AnalysisStatus neville(const Values& x, const Values& y, double x0, bool rational, double* r) {
  const std::size_t n = x.size();
  std::size_t row = 0;
  double correction = 0;
  Values c = y, d = y;
  for (std::size_t i = 0; i < n; ++i) {
    if (rational && x0 - x[i] == 0) return r[0] = y[i], r[1] = 0, FATHOM_OK;
    if (rational) d[i] += 1e-10;
    if (std::fabs(x0 - x[i]) < std::fabs(x0 - x[row])) row = i;
  }
  r[0] = y[row];
  for (std::size_t m = 1; m < n; ++m) {
    for (std::size_t i = 0; i + m < n; ++i) {
      const double near = x[i] - x0, far = x[i + m] - x0, w = c[i + 1] - d[i];
      const double t = near * d[i] / far, pole = t - c[i + 1], span = x[i] - x[i + m];
      if (!rational && x[i] == x[i + m]) return FATHOM_ERR_DISTINCT_X;
      if (rational && pole == 0) return FATHOM_ERR_POLE;
      d[i] = rational ? c[i + 1] * (w / pole) : far * w / span;
      c[i] = rational ? t * (w / pole) : near * w / span;
    }
    r[0] += correction = 2 * row < n - m ? c[row] : d[--row];
  }
  r[1] = correction;
  return FATHOM_OK;
}

AnalysisStatus spline(const Values& x, const Values& y, double first, double last, double* z) {
  const std::size_t n = x.size();
  const auto slope = [&](std::size_t i) { return (y[i + 1] - y[i]) / (x[i + 1] - x[i]); };
  const auto three = [&](std::size_t i) { return 3 / (x[i + 1] - x[i]); };
  Values u(n);
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  z[0] = first > 9.9e29 ? 0 : -0.5;
  u[0] = first > 9.9e29 ? 0 : three(0) * (slope(0) - first);
  for (std::size_t i = 1; i + 1 < n; ++i) {
    const double both = x[i + 1] - x[i - 1], share = (x[i] - x[i - 1]) / both;
    if (x[i + 1] == x[i - 1] || x[i] == x[i - 1] || x[i + 1] == x[i]) return FATHOM_ERR_DISTINCT_X;
    const double p = share * z[i - 1] + 2;
    z[i] = (share - 1) / p;
    u[i] = (6 * (slope(i) - slope(i - 1)) / both - share * u[i - 1]) / p;
  }
  const bool natural = last > 9.9e29;
  const double end = natural ? 0 : three(n - 2) * (last - slope(n - 2)), q = natural ? 0 : 0.5;
  z[n - 1] = (end - q * u[n - 2]) / (q * z[n - 2] + 1);
  for (std::size_t k = n - 1; k-- > 0;) z[k] = z[k] * z[k + 1] + u[k];
  return FATHOM_OK;
}

AnalysisStatus value(const Values& x, const Values& y, const Values& z, double x0, double* r) {
  std::size_t lo = 0, hi = x.size() - 1;
  while (hi - lo > 1) (x[(lo + hi) / 2] > x0 ? hi : lo) = (lo + hi) / 2;
  const double h = x[hi] - x[lo], a = (x[hi] - x0) / h, b = (x0 - x[lo]) / h;
  if (h == 0) return FATHOM_ERR_DISTINCT_X;
  const double bent = ((a * a * a - a) * z[lo] + (b * b * b - b) * z[hi]) * (h * h);
  r[0] = a * y[lo] + b * y[hi] + static_cast<double>(bent * (1 / 6.0L));
  return FATHOM_OK;
}

// Random tables, ascending ones, with a repeated abscissa, with awkward values: statuses, results
// and what a failing call leaves behind.
TEST(Interpolation, BitsOfThePlainSchemes) {
  for (const std::size_t n : sizes({200})) {
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
      const bool wild = seed == 4 || seed == 5;
      Values x = wild ? awkward(n, seed) : uniform(n, seed + n), z = uniform(n, seed);
      const Values y = seed >= 6 ? awkward(n, seed) : uniform(n, seed + 2 * n);
      if (seed % 4 == 3) x[n * seed / 13] = x[n * (seed - 1) / 13] = seed == 3 ? kInf : 0.25;
      if (seed % 2 == 0 && !wild) std::sort(x.begin(), x.end());
      const double ends[] = {1e30, 9.9e29, -2.0, kNan};
      for (int i = 0; i < 16; ++i) {
        const double first = ends[i / 4], last = ends[i % 4];
        Guarded r(n), s(n);
        expectSame(Spline(x.data(), y.data(), count(x), first, last, r), r,
                   spline(x, y, first, last, s), s);
      }
      for (double x0 : {0.3, -2.0, kNan, kInf, 0.5 * (x[0] + x[n - 1]), x[0], x[n - 1], x[n / 2]}) {
        Guarded r[3] = {Guarded(2), Guarded(2), Guarded(1)}, s[3] = {r[0], r[1], r[2]};
        expectSame(PolyInterp(x.data(), y.data(), count(x), x0, r[0], r[0] + 1), r[0],
                   neville(x, y, x0, false, s[0]), s[0]);
        expectSame(RatInterp(x.data(), y.data(), count(x), x0, r[1], r[1] + 1), r[1],
                   neville(x, y, x0, true, s[1]), s[1]);
        if (!HardExtended::kAvailable) continue;
        expectSame(SpInterp(x.data(), y.data(), z.data(), count(x), x0, r[2]), r[2],
                   value(x, y, z, x0, s[2]), s[2]);
      }
    }
  }
}

// Cotangents of 1 to 5 degrees at 2.5, the example of Stoer and Bulirsch, section 2.2: the rational
// function has five digits more than the polynomial. Then 1e10 / x at its pole, and beside it.
TEST(Interpolation, PublishedExampleAndPole) {
  const Values degrees = {1, 2, 3, 4, 5}, x = {-2, -1, 1, 2}, y = {-5e9, -1e10, 1e10, 5e9};
  const Values cot = {57.28996163, 28.63625328, 19.08113669, 14.30066626, 11.43005230};
  double y0, error = 7.0;
  EXPECT_EQ(RatInterp(x.data(), y.data(), 4, 0.0, &y0, &error), FATHOM_ERR_POLE);
  EXPECT_TRUE(y0 == -1e10 && error == 7.0);
  RatInterp(x.data(), y.data(), 4, 0.01, &y0, &error);
  EXPECT_NEAR(y0, 1e12, 1.0);
  RatInterp(degrees.data(), cot.data(), 5, 2.5, &y0, &error);
  EXPECT_NEAR(y0, 22.90376552, 5e-9);
  PolyInterp(degrees.data(), cot.data(), 5, 2.5, &y0, &error);
  EXPECT_NEAR(y0, 22.63519158, 5e-9);
}

// Moments of SciPy 1.10's CubicSpline. With its own slopes at the ends a cubic is its spline, and
// the polynomial through its points: at every abscissa, between and beyond them.
TEST(Interpolation, SplinesOfSciPyAndCubics) {
  const Values x = {-1, 0, 2, 3, 7}, y = {2, -1, 0.5, 4, -3}, cubic = {3, 0, 0, 15, 315};
  const Values natural = {0, 2.9761146496815285, 2.3216560509554123, -3.3821656050955413, 0};
  const Values clamped = {-13.205298013245033, 5.410596026490065, 1.620860927152317,
                          -4.04635761589404, 1.8356788079470192};
  Values z(5), w(5);
  Spline(x.data(), y.data(), 5, 1e30, 1e30, z.data());
  Spline(x.data(), y.data(), 5, 0.5, -2, w.data());
  EXPECT_GE(std::min(digits(z.data(), natural), digits(w.data(), clamped)), 14);
  Spline(x.data(), cubic.data(), 5, -1, 143, z.data());
  for (double v = -4, y0, p0, error; v < 10; v += 0.5) {
    SpInterp(x.data(), cubic.data(), z.data(), 5, v, &y0);
    PolyInterp(x.data(), cubic.data(), 5, v, &p0, &error);
    EXPECT_NEAR(y0, v * v * v - 4 * v, 1e-11);
    EXPECT_NEAR(p0, v * v * v - 4 * v, 1e-11);
  }
}

}  // namespace
}  // namespace fathom::test
