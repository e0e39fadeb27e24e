#include "support/testing.hpp"

namespace fathom::test {
namespace {

// By number of points, a digest of what PolyInterp, RatInterp, Spline and SpInterp give, computed
// in Python one documented operation after another: doubles, and x87 numbers for the factor 1/6.
constexpr std::uint64_t kDigests[] = {
#include "fit/interpolation.dat"
};

// Random tables, ascending ones, with a repeated abscissa, with awkward values: statuses, results
// and what a failing call leaves behind.
TEST(Interpolation, BitsOfThePlainSchemes) {
  for (const std::uint64_t* row = kDigests; row != std::end(kDigests); row += 5) {
    const std::size_t n = row[0];
    Digest poly, rational, spline, value;
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
      const bool wild = seed == 4 || seed == 5;
      Values x = wild ? awkward(n, seed) : uniform(n, seed + n), z = uniform(n, seed);
      const Values y = seed >= 6 ? awkward(n, seed) : uniform(n, seed + 2 * n);
      if (seed % 4 == 3) x[n * seed / 13] = x[n * (seed - 1) / 13];
      if (seed % 2 == 0 && !wild) std::sort(x.begin(), x.end());
      const double ends[] = {1e30, 9.9e29, -2.0, kNan};
      for (int i = 0; i < 16; ++i) {
        Guarded r(n);
        add(spline, Spline(x.data(), y.data(), count(x), ends[i / 4], ends[i % 4], r), r);
      }
      for (double x0 : {0.3, -2.0, kNan, kInf, 0.5 * (x[0] + x[n - 1]), x[0], x[n - 1], x[n / 2]}) {
        Guarded p(2), q(2), v(1);
        add(poly, PolyInterp(x.data(), y.data(), count(x), x0, p, p.data() + 1), p);
        add(rational, RatInterp(x.data(), y.data(), count(x), x0, q, q.data() + 1), q);
        add(value, SpInterp(x.data(), y.data(), z.data(), count(x), x0, v), v);
      }
    }
    EXPECT_TRUE(poly.value() == row[1] && rational.value() == row[2] && spline.value() == row[3] &&
                value.value() == row[4])
        << n << (poly.value() == row[1]) << (rational.value() == row[2])
        << (spline.value() == row[3]);
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
  Guarded z(5), w(5);
  Spline(x.data(), y.data(), 5, 1e30, 1e30, z);
  Spline(x.data(), y.data(), 5, 0.5, -2, w);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(z[i], natural[i], 1e-14);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(w[i], clamped[i], 1e-14);
  Spline(x.data(), cubic.data(), 5, -1, 143, z);
  for (double v = -4, y0, p0, error; v < 10; v += 0.5) {
    SpInterp(x.data(), cubic.data(), z, 5, v, &y0);
    PolyInterp(x.data(), cubic.data(), 5, v, &p0, &error);
    EXPECT_NEAR(y0, v * v * v - 4 * v, 1e-11);
    EXPECT_NEAR(p0, v * v * v - 4 * v, 1e-11);
  }
}

}  // namespace
}  // namespace fathom::test
