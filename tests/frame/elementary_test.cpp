#include "frame/elementary.hpp"

#include <cmath>

#include "frame/running_sum.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// A function of one value or two beside its form for arrays.
struct Forms {
  const char* name;
  double (*one)(double, double);
  void (*array)(const double*, const double*, std::size_t, double*);
};

double sineOfPair(double x, double) {
  double s = 0.0, c = 0.0;
  sincos(x, s, c);
  return s;
}
double cosineOfPair(double x, double) {
  double s = 0.0, c = 0.0;
  sincos(x, s, c);
  return c;
}

#define FATHOM_FORMS(NAME)                                                                         \
  {                                                                                                \
#NAME, [](double x, double) { return fathom::NAME(x); },                                       \
                                                          [](const double* x, const double*,       \
                                                             std::size_t n,                        \
                                                             double* y) { fathom::NAME(x, n, y); } \
  }

constexpr Forms kForms[] = {
    FATHOM_FORMS(sin),
    FATHOM_FORMS(cos),
    FATHOM_FORMS(tan),
    FATHOM_FORMS(exp),
    FATHOM_FORMS(log),
    FATHOM_FORMS(log10),
    {"atan2", [](double y, double x) { return fathom::atan2(y, x); },
     [](const double* y, const double* x, std::size_t n, double* z) { fathom::atan2(y, x, n, z); }},
    {"pow", [](double x, double y) { return fathom::pow(x, y); },
     [](const double* x, const double* y, std::size_t n, double* z) { fathom::pow(x, y, n, z); }},
    {"pow of one exponent", [](double x, double) { return fathom::pow(x, 1.7); },
     [](const double* x, const double*, std::size_t n, double* z) { fathom::pow(x, 1.7, n, z); }},
    {"sin of sincos", sineOfPair,
     [](const double* x, const double*, std::size_t n, double* s) {
       Values c(n);
       fathom::sincos(x, n, s, c.data());
     }},
    {"cos of sincos", cosineOfPair,
     [](const double* x, const double*, std::size_t n, double* c) {
       Values s(n);
       fathom::sincos(x, n, s.data(), c);
     }},
};

// Of values for the fast paths, of some for the slow ones at every place, and of those alone.
std::vector<Values> arrays(std::size_t n, std::uint64_t seed) {
  Values ordinary = uniform(n, seed);
  for (double& v : ordinary) v = v * 30.0 + 35.0;
  Values mixed = ordinary;
  const Values other = awkward(n, seed);
  for (std::size_t i = seed % 3; i < n; i += 3) mixed[i] = other[i];
  std::vector<Values> all = {ordinary, mixed, awkward(n, seed)};
  for (double slow : {1e300, -1e-310, 700.5, 1.0}) all.push_back(Values(n, slow));
  return all;
}

TEST(Elementary, ArraysGiveTheBitsOfSingleValues) {
  for (std::size_t n : sizes({0, 127, 128, 129, 257, 1000})) {
    const Values y = awkward(n, n + 1);
    for (const Values& x : arrays(n, n)) {
      for (const Forms& f : kForms) {
        Values expected(n);
        for (std::size_t i = 0; i < n; ++i) expected[i] = f.one(x[i], y[i]);
        Guarded result(n), overFirst(x), overSecond(y);
        f.array(x.data(), y.data(), n, result);
        f.array(overFirst, y.data(), n, overFirst);
        f.array(x.data(), overSecond, n, overSecond);
        for (const Guarded* r : {&result, &overFirst, &overSecond}) {
          ASSERT_TRUE(SameBits(r->values(), expected) && r->intact()) << f.name << ' ' << n;
        }
      }
    }
  }
}

// They start at 0, at the step and anywhere, pass zeros of both functions, with steps down to those
// of the angles themselves, and leave the range of the rotation. The transforms put another angle
// in the place of 0.
TEST(Elementary, EvenlySpacedAnglesGiveTheBitsOfSingleValues) {
  std::vector<double> steps = {0.0, 1e-300, 1e-9, 0.0369 / 8, 0.0371 / 8, 0.3, 1e300};
  for (int n : {64, 1000, 1001, 2048, 4096, 30000, 65536}) steps.push_back(kPi / n);
  for (int power = -54; power < -30; power += 3) steps.push_back(1.3 * std::ldexp(1.0, power));
  constexpr double kInPlaceOf0[] = {kPi, kNan, -0.0, 0.05};
  for (double step : steps) {
    for (std::size_t n : sizes({0, 7, 8, 63, 64, 255, 256, 257, 512, 2000})) {
      const AngleSpacing spacing(step);
      for (double first : {0.0, step, 1.5, 7.9, 700.0, kPi - 300 * step, 1.5 * kPi - 1000 * step}) {
        Values x(n);
        runningSum(first, step, n, x.data());
        if (first == 0.0 && n > 0) x[0] = kInPlaceOf0[n % std::size(kInPlaceOf0)];
        Values sine(n), cosine(n);
        for (std::size_t i = 0; i < n; ++i) fathom::sincos(x[i], sine[i], cosine[i]);
        Guarded s(n), c(n), pairSine(n), overSine(x), overCosine(x);
        sin(spacing, x.data(), n, s);
        cos(spacing, x.data(), n, c);
        sin(spacing, overSine, n, overSine);
        sincos(spacing, overCosine, n, pairSine, overCosine);
        for (const Guarded* r : {&s, &pairSine, &overSine}) {
          ASSERT_TRUE(SameBits(r->values(), sine) && r->intact()) << step << " " << first;
        }
        for (const Guarded* r : {&c, &overCosine}) {
          ASSERT_TRUE(SameBits(r->values(), cosine) && r->intact()) << step << " " << first;
        }
      }
    }
  }
}

TEST(Elementary, PairIsSineAndCosine) {
  for (double x : awkward(1000, 1)) {
    for (double scale : {1.0, 1e3, 1e10}) {
      EXPECT_TRUE(SameBits(sineOfPair(x * scale, 0.0), fathom::sin(x * scale)));
      EXPECT_TRUE(SameBits(cosineOfPair(x * scale, 0.0), fathom::cos(x * scale)));
    }
  }
}

TEST(Elementary, ConstantsAreTheNearestDoubles) {
  EXPECT_EQ(kPi, fathom::acos(-1.0));
  EXPECT_EQ(kTwoPi, 2.0 * kPi);
  EXPECT_EQ(kRadiansPerDegree, kPi / 180.0);
}

}  // namespace
}  // namespace fathom::test
