#include "filter/iir/response.hpp"

namespace fathom {
namespace {

using namespace test;

// The level at the extremum of f between lower and upper, by golden section.
template <typename F>
Level extremum(F f, Real lower, Real upper, int sign) {
  const Real ratio = (std::sqrt(Real{5}) - 1) / 2;
  Real p = upper - ratio * (upper - lower), q = lower + ratio * (upper - lower);
  Level fp = f(p), fq = f(q);
  for (int i = 0; i < 26; ++i) {
    if (sign * fp.db > sign * fq.db) {
      upper = q, q = p, fq = fp, p = upper - ratio * (upper - lower), fp = f(p);
    } else {
      lower = p, p = q, fp = fq, q = lower + ratio * (upper - lower), fq = f(q);
    }
  }
  return fp;
}

void expectLevel(const Wanted& w, const Level& level, double db) {
  EXPECT_LE(std::fabs(level.db - db), 1e-9L + 3 * level.slack)
      << w.type << " " << w.order << " " << w.low << " " << w.ripple << " " << w.attenuation;
}

// Compares the levels of all extrema, in the stop band of maxima only, and returns their number.
// They crowd towards the edge at 1, from which t departs: omega is 1 - exp(-t) or the inverse.
int checkExtrema(const Wanted& w, const IIRFilter& r, bool stop, int side) {
  const Warp warp(w);
  const auto at = [&](Real t) {
    const Real omega = 1 - std::exp(-t);
    return levelOf(r, warp(side * (stop ? 1 / omega : omega)));
  };
  const auto after = [](Real t) { return t + std::min(t * 0.08L, 0.03L); };
  int found = 0;
  Real t0 = 1e-3L, t1 = after(t0);
  Level y0 = at(t0), y1 = at(t1);
  while (t1 < 15) {
    const Real t2 = after(t1);
    const Level y2 = at(t2);
    const int sign = y1.db > y0.db && y1.db >= y2.db ? 1 : y1.db < y0.db && y1.db <= y2.db ? -1 : 0;
    if (sign != 0 && (sign > 0 || !stop)) {
      expectLevel(w, extremum(at, t0, t2, sign), stop ? -w.attenuation : sign > 0 ? 0 : -w.ripple);
      ++found;
    }
    t0 = t1, t1 = t2, y0 = y1, y1 = y2;
  }
  return found;
}

TEST(Elliptic, RipplesAreEqualInBothBands) {
  const auto check = [](const Wanted& w) {
    const Record r(w.type, w.order);
    ASSERT_EQ(Elp_CascadeCoef(1, w.low, w.high, w.ripple, w.attenuation, r), FATHOM_OK);
    const Warp warp(w);
    const bool even = w.order % 2 == 0;
    expectLevel(w, levelOf(*r, warp(1e-30L)), even ? -w.ripple : 0.0);
    expectLevel(w, levelOf(*r, warp(1)), -w.ripple);
    if (even) expectLevel(w, levelOf(*r, warp(1e30L)), -w.attenuation);
    for (int side = 1; side >= (w.type < FATHOM_BANDPASS ? 1 : -1); side -= 2) {
      EXPECT_EQ(checkExtrema(w, *r, false, side), w.order - 1) << w.order << " " << w.attenuation;
      EXPECT_EQ(checkExtrema(w, *r, true, side), (w.order - 1) / 2) << w.order;
    }
  };
  const double lows[] = {0.001, 0.02, 0.2, 0.49};
  std::size_t turn = 0;
  for (int32_t order = 1; order <= 12; ++order) {
    for (double attenuation : {20.0, 60.0, 120.0}) {
      for (double ripple : {0.01, 0.5, 3.0}) {
        ++turn;  // each type has each of the edges in turn
        for (int32_t type = 0; type < 4; ++type) {
          const double low = lows[(turn + static_cast<std::size_t>(type)) % 4];
          check({type, order, low, low + 0.4 * (0.5 - low), ripple, attenuation});
        }
      }
    }
  }
}

// ellip(6, 0.25, 80, 0.25, output="zpk") of SciPy 1.10.1, one of each pair, by pole angle.
TEST(Elliptic, PublishedPolesAndZeros) {
  const std::complex<double> zeros[] = {{0.1635002144259595, 0.9865432985341624},
                                        {-0.1158463905302523, 0.9932671412067916},
                                        {-0.7968293549669717, 0.6042044182749078}};
  const std::complex<double> poles[] = {{0.6565102086226484, 0.6806637865701769},
                                        {0.6712970019772154, 0.494001473345181},
                                        {0.7132066025194673, 0.1857027033260695}};
  const Record r(FATHOM_LOWPASS, 6);
  ASSERT_EQ(Elp_CascadeCoef(2, 0.25, 0, 0.25, 80, r), FATHOM_OK);
  double gain = 1.0;
  for (std::size_t s = 0; s < 3; ++s) {
    const double *a = r->a + 2 * s, *b = r->b + 3 * s;
    EXPECT_NEAR(a[0], -2.0 * poles[s].real(), 1e-14) << s;
    EXPECT_NEAR(a[1], std::norm(poles[s]), 1e-14) << s;
    EXPECT_NEAR(b[1] / b[0], -2.0 * zeros[s].real(), 1e-14) << s;
    EXPECT_EQ(b[2], b[0]);
    gain *= b[0];
  }
  EXPECT_NEAR(gain / 0.0017301127985172226, 1.0, 1e-13);
}

TEST(Elliptic, Extremes) {
  const auto coefficients = [](int32_t type, int32_t order, double ripple, double attenuation) {
    const Record r(type, order);
    const bool good = ripple > 0 && attenuation > 0 && attenuation > ripple;
    EXPECT_EQ(Elp_CascadeCoef(1, 0.1, 0.2, ripple, attenuation, r) == FATHOM_OK, good);
    return Values(r->a, r->a + r->na + r->nb);
  };
  const double extremes[] = {kDenormal, 1e-300, 1e-15, 1e-6, 300, 3080, 1e6, 1.7e308, kInf};
  for (int32_t type = 0; type < 4; ++type) {
    // The real pole of order 1 follows from the ripple alone.
    EXPECT_TRUE(SameBits(coefficients(type, 1, 1, 2), coefficients(type, 1, 1, 150)));
    for (int32_t order = 2; order <= 12; ++order) {
      for (double ripple : extremes) {
        for (double attenuation : extremes) coefficients(type, order, ripple, attenuation);
        coefficients(type, order, ripple, std::nextafter(ripple, kInf));
      }
      for (double v : coefficients(type, order, 1e-6, 3000)) EXPECT_TRUE(std::isfinite(v));
      // Zeros at infinity: a Chebyshev filter.
      const Record chebyshev(type, order);
      ASSERT_EQ(Ch_CascadeCoef(1, 0.1, 0.2, 1, chebyshev), FATHOM_OK);
      const Values limit = coefficients(type, order, 1, 5000);
      for (std::size_t i = 0; i < limit.size(); ++i)
        EXPECT_NEAR(limit[i], chebyshev->a[i], 2e-14) << type << " " << order << " " << i;
    }
  }
}

}  // namespace
}  // namespace fathom
