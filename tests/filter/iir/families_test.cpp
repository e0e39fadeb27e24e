#include <algorithm>
#include <string>

#include "filter/iir/response.hpp"

namespace fathom {
namespace {

using namespace test;

struct Call {
  Wanted w;
  double fs = 1.0;
  int32_t n = 5, capacity = 25, nb = 10;
};
bool isBand(const Call& c) {
  return c.w.type >= FATHOM_BANDPASS;
}

struct Family {
  const char* name;
  std::vector<std::pair<double, double>> levels;  // ripple and attenuation to try, dB
  // Of the lowpass prototype, |H|^2.
  Real (*squared)(const Wanted&, Real);
  AnalysisStatus (*record)(const Call&, IIRFilterPtr);
  AnalysisStatus (*direct)(const Call&, double*, double*);
  AnalysisStatus (*once)(const Call&, const double*, int32_t, double*);
  // Faults in the order in which the record, the direct form, and the one-shot filters with one
  // edge and with two report them.
  const char *ofRecord, *ofDirect, *ofOneEdge, *ofBand;
};

Real chebyshev(int n, Real x) {
  return x <= 1 ? std::cos(n * std::acos(x)) : std::cosh(n * std::acosh(x));
}
Real ratio(double db) {
  return std::pow(Real{10}, Real{db} / 10);
}

// The four filters of a family; `...` are its own parameters.
#define ONCE(family, ...)                                                                          \
  [](const Call& c, const double* x, int32_t n, double* y) -> AnalysisStatus {                     \
    const Wanted& w = c.w;                                                                         \
    if (w.type == FATHOM_LOWPASS) return family##_LPF(x, n, c.fs, w.low, __VA_ARGS__ w.order, y);  \
    if (w.type == FATHOM_HIGHPASS) return family##_HPF(x, n, c.fs, w.low, __VA_ARGS__ w.order, y); \
    const auto band = w.type == FATHOM_BANDPASS ? family##_BPF : family##_BSF;                     \
    return band(x, n, c.fs, w.low, w.high, __VA_ARGS__ w.order, y);                                \
  }
#define FORMS(family, ...)                                                                       \
  [](const Call& c, IIRFilterPtr r) {                                                            \
    [[maybe_unused]] const Wanted& w = c.w;                                                      \
    return family##_CascadeCoef(c.fs, c.w.low, c.w.high, __VA_ARGS__ r);                         \
  },                                                                                             \
      [](const Call& c, double* a, double* b) {                                                  \
        const Wanted& w = c.w;                                                                   \
        return family##_Coef(w.type, w.order, c.fs, w.low, w.high, __VA_ARGS__ a, c.capacity, b, \
                             c.capacity);                                                        \
      }

const Family kFamilies[] = {
    {"Butterworth",
     {{0, 0}},
     [](const Wanted& w, Real v) { return 1 / (1 + std::pow(v, 2 * w.order)); },
     FORMS(Bw, ),
     ONCE(Bw, ),
     "olhbfN#",
     "olhfbNct",
     "nolfN",
     "nolhfbN"},
    {"Chebyshev",
     {{0.01, 0}, {0.5, 0}, {3, 0}},
     [](const Wanted& w, Real v) {
       const Real t = chebyshev(w.order, v);
       const bool any = w.order == 1 && w.type >= FATHOM_BANDPASS;  // without regard to the ripple
       return 1 / (1 + (any ? 1 : ratio(w.ripple) - 1) * t * t);
     },
     FORMS(Ch, w.ripple, ),
     ONCE(Ch, w.ripple, ),
     "olhbfNr#",
     "olhfrbNct",
     "nolfrN",
     "nolhfbrN"},
    {"inverse Chebyshev",
     {{0, 20}, {0, 80}, {0, 120}},
     [](const Wanted& w, Real v) {
       const Real t = chebyshev(w.order, 1 / v);
       return 1 / (1 + (ratio(w.attenuation) - 1) / (t * t));
     },
     FORMS(InvCh, w.attenuation, ),
     ONCE(InvCh, w.attenuation, ),
     "olhbfaN#",
     "olhfbaNct",
     "nolfaN",
     "nolhfbaN"},
    {"elliptic",
     {{0.5, 60}},
     nullptr,
     FORMS(Elp, w.ripple, w.attenuation, ),
     ONCE(Elp, w.ripple, w.attenuation, ),
     "olhbfNr#ad",
     "olhfrbNctad",
     "nolfrNad",
     "nolhfbrNad"},
    {"Bessel",
     {{0, 0}},
     [](const Wanted& w, Real v) {
       std::complex<Real> h = 1;
       if (w.order % 2 != 0) h /= std::complex<Real>(1, v);
       for (int k = 0; k < w.order / 2; ++k) {
         const Real c = 1 - (2 * k + 1) / Real(w.order), s = std::sqrt(1 - c * c);
         h /= std::complex<Real>(1 - v * v, 2 * s * v);
       }
       return std::norm(h);
     },
     FORMS(Bessel, ),
     nullptr,
     "olhbfN#",
     "olhfbNct",
     "",
     ""}};

// Every family, band, order from 1 to 12 and pair of edges.
template <typename Visit>
void forEveryDesign(std::initializer_list<double> lows, Visit visit) {
  for (const Family& f : kFamilies) {
    for (int32_t type : {FATHOM_LOWPASS, FATHOM_HIGHPASS, FATHOM_BANDPASS, FATHOM_BANDSTOP}) {
      for (int32_t order = 1; order <= 12; ++order) {
        for (double low : lows) {
          const double high = type < FATHOM_BANDPASS ? kNan : low + 0.4 * (0.5 - low);
          for (const auto& [ripple, attenuation] : f.levels)
            visit(f, Wanted{type, order, low, high, ripple, attenuation});
        }
      }
    }
  }
}

// To 1e-9 dB and what the rounding of the coefficients can make, which is less than 1e-9 dB in the
// pass and transition bands except close to 0 and fs / 2. The direct form is compared as long as
// that is below 0.01 dB: for orders above about 8 with edges at 0.02, it no longer says anything.
TEST(IirFamilies, ResponsesAreThoseOfTheWarpedPrototypes) {
  const double omegas[] = {1e-3, 0.1, 0.5, 0.9, 0.99, 1.0, 1.01, 1.1, 2.0, 10.0, 1e3};
  forEveryDesign({0.001, 0.02, 0.2, 0.4, 0.49}, [&](const Family& f, const Wanted& w) {
    if (f.squared == nullptr) return;  // elliptic filters have a test of their own
    const Record r(w.type, w.order);
    Values a(25), b(25);
    ASSERT_EQ(f.record({w}, r), FATHOM_OK);
    ASSERT_EQ(f.direct({w}, a.data(), b.data()), FATHOM_OK);
    const Warp warp(w);
    const int degree = w.order * (w.type < FATHOM_BANDPASS ? 1 : 2);
    for (double omega : omegas) {
      for (int side = 1; side >= (w.type < FATHOM_BANDPASS ? 1 : -1); side -= 2) {
        const Real db = 10 * std::log10(f.squared(w, omega)), x = warp(side * omega);
        for (const Level& level : {levelOf(*r, x), levelOf(a.data() + 1, b.data(),
                                                           static_cast<std::size_t>(degree), x)}) {
          if (level.slack > 0.01L || (db < -200 && level.db < -200)) continue;
          EXPECT_LE(std::fabs(level.db - db), 1e-9L + 3 * level.slack)
              << f.name << " type " << w.type << " order " << w.order << " at " << w.low
              << " times " << side * omega;
        }
      }
    }
  });
}

// Where rounding in the two structures stays small: beyond these orders and edges it grows alike.
TEST(IirFamilies, OneShotFiltersAreTheCascade) {
  constexpr std::size_t n = 1500;
  Values impulse(n), step(n, 1.0), noise = uniform(n);
  impulse[0] = 1.0;
  forEveryDesign({0.1, 0.2}, [&](const Family& f, const Wanted& w) {
    if (f.once == nullptr || w.order > 8 || w.attenuation > 60 || w.ripple > 0.5) return;
    const Record r(w.type, w.order);
    ASSERT_EQ(f.record({w}, r), FATHOM_OK);
    for (const Values& x : {impulse, step, noise}) {
      Values y(n), expected(n);
      ResetIIRFilter(r);
      ASSERT_EQ(IIRCascadeFiltering(x.data(), n, r, expected.data()), FATHOM_OK);
      ASSERT_EQ(f.once({w}, x.data(), n, y.data()), FATHOM_OK);
      double error = 0.0;
      for (std::size_t i = 0; i < n; ++i) error = std::max(error, std::fabs(y[i] - expected[i]));
      EXPECT_LE(error, 3e-14) << f.name << " type " << w.type << " order " << w.order;
    }
  });
}

// What is wrong with a call, and the status of that.
const struct Fault {
  char letter;
  AnalysisStatus status;
  void (*make)(Call&);
} kFaults[] = {
    {'n', FATHOM_ERR_NO_SAMPLES, [](Call& c) { c.n = 0; }},
    {'o', FATHOM_ERR_ORDER, [](Call& c) { c.w.order = 0; }},
    {'l', FATHOM_ERR_BAND, [](Call& c) { c.w.low = kNan; }},
    {'h', FATHOM_ERR_BAND, [](Call& c) { c.w.high = kNan; }},
    {'f', FATHOM_ERR_BAND, [](Call& c) { c.fs = -1.0; }},
    {'b', FATHOM_ERR_BAND, [](Call& c) { c.w.low = c.w.high + 0.05; }},
    {'N', FATHOM_ERR_NYQUIST, [](Call& c) { (isBand(c) ? c.w.high : c.w.low) = 0.7; }},
    {'r', FATHOM_ERR_RIPPLE, [](Call& c) { c.w.ripple = kNan; }},
    {'a', FATHOM_ERR_ATTENUATION, [](Call& c) { c.w.attenuation = 0.0; }},
    {'d', FATHOM_ERR_ATTENUATION_BELOW_RIPPLE, [](Call& c) { c.w.attenuation = c.w.ripple; }},
    {'c', FATHOM_ERR_ARRAY_SIZE, [](Call& c) { c.capacity = 6; }},
    {'t', FATHOM_ERR_SELECTION, [](Call& c) { c.w.type = 4; }},
    {'#', FATHOM_ERR_FILTER_RECORD, [](Call& c) { c.nb = 9; }}};

// Each fault alone, and with all that are reported after it, which are made before it.
void expectOrder(const Family& f, std::string faults, int32_t type, auto run) {
  for (std::size_t first = 0; first < faults.size(); ++first) {
    for (std::size_t end : {first + 1, faults.size()}) {
      Call c = {{type, 3, 0.1, 0.4, 1.0, 60.0}};
      AnalysisStatus expected = FATHOM_OK;
      for (std::size_t i = end; i-- > first;) {
        const Fault& fault = *std::ranges::find(kFaults, faults[i], &Fault::letter);
        fault.make(c);
        expected = fault.status;
      }
      Guarded a(25), b(25);
      EXPECT_EQ(run(c, a, b), expected) << f.name << " " << faults << " " << first;
      EXPECT_TRUE(a.untouched() && b.untouched()) << f.name << " " << faults << " " << first;
    }
  }
}

TEST(IirFamilies, FaultsAreReportedInEachFamilysOrder) {
  for (const Family& f : kFamilies) {
    const auto byRecord = [&](const Call& c, double* a, double* b) {
      IIRFilter r = {c.w.type, c.w.order, 0, 8, a, c.nb, b, 8, nullptr};
      return f.record(c, &r);
    };
    const auto once = [&](const Call& c, double* a, double* b) { return f.once(c, b, c.n, a); };
    for (int32_t type : {FATHOM_BANDPASS, FATHOM_BANDSTOP}) {
      expectOrder(f, f.ofRecord, type, byRecord);
      expectOrder(f, f.ofDirect, type, f.direct);
      expectOrder(f, f.ofBand, type, once);
    }
    Values a(25), b(25);
    for (int32_t type : {FATHOM_LOWPASS, FATHOM_HIGHPASS}) {
      expectOrder(f, f.ofOneEdge, type, once);
      // A cutoff of half the rate or more leaves no room for the edge that is put above it.
      for (double low : {0.5, 0.7}) {
        const Call c = {{type, 3, low, 0, 1, 60}};
        EXPECT_EQ(byRecord(c, a.data(), b.data()), FATHOM_ERR_BAND) << f.name;
        EXPECT_EQ(f.direct(c, a.data(), b.data()), FATHOM_ERR_BAND) << f.name;
        if (f.once == nullptr) continue;
        EXPECT_EQ(once(c, a.data(), b.data()), low > 0.5 ? FATHOM_ERR_NYQUIST : FATHOM_OK);
      }
    }
    // Families without ripples put an edge above the cutoff for every type below bandpass.
    const bool every = f.levels.front() == std::pair(0.0, 0.0);
    EXPECT_EQ(f.direct({{-1, 3, 0.1, kNan, 1, 60}}, a.data(), b.data()),
              every ? FATHOM_ERR_SELECTION : FATHOM_ERR_BAND);
    std::ranges::fill(a, 7.0);  // nothing is designed for other types
    EXPECT_EQ(byRecord({{4, 3, 0.1, 0.4, 1, 60}}, a.data(), a.data()), FATHOM_OK) << f.name;
    EXPECT_TRUE(SameBits(a, Values(25, 7.0)));
  }
}

// Figures of SciPy 1.10.1 (cheby1, cheby2, ellip).
TEST(IirFamilies, PublishedDesigns) {
  const struct {
    int family;
    Wanted w;
    Values b, a;
  } designs[] = {{1,
                  {FATHOM_BANDSTOP, 3, 0.1, 0.2, 0.5},
                  {0.518247734622491, -1.92176828753601, 3.93017944426534, -4.82227013152146,
                   3.93017944426534, -1.92176828753601, 0.518247734622491},
                  {1, -2.9329265521539, 4.67277045403407, -4.58548441705589, 2.99602476746876,
                   -1.14739573738369, 0.228059136272841}},
                 {2,
                  {FATHOM_BANDPASS, 2, 0.1, 0.2, 0, 30},
                  {0.0341841894703897, -0.0697752298537042, 0.087653778157776, -0.0697752298537042,
                   0.0341841894703897},
                  {1, -2.33194486348292, 3.1368497054289, -2.08102814850673, 0.797004113411528}},
                 {3,
                  {FATHOM_HIGHPASS, 4, 0.3, 0, 1, 40},
                  {0.0619275783709644, -0.110315932927851, 0.152135130713744, -0.110315932927851,
                   0.0619275783709644},
                  {1, 1.50352401010152, 1.73197723928598, 0.985787459481738, 0.314553451127824}},
                 {3,
                  {FATHOM_BANDPASS, 2, 0.1, 0.2, 0.1, 50},
                  {0.164743365975867, -0.00368818429461285, -0.321239701155433,
                   -0.00368818429461302, 0.164743365975867},
                  {1, -1.61509459353202, 1.33409486980236, -0.717517966755643, 0.273845255184168}}};
  for (const auto& d : designs) {
    Values a(d.a.size()), b(a.size());
    Call c = {d.w};
    c.capacity = count(a);
    ASSERT_EQ(kFamilies[d.family].direct(c, a.data(), b.data()), FATHOM_OK);
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_NEAR(a[i], d.a[i], 3e-14) << kFamilies[d.family].name << " " << i;
      EXPECT_NEAR(b[i], d.b[i], 3e-14) << kFamilies[d.family].name << " " << i;
    }
  }
}

// Denominators of prototypes as textbooks tabulate them (L. Weinberg, Network Analysis and
// Synthesis, 1962), from s^0 on: relative to the level at 0, the response is their inverse.
TEST(IirFamilies, TabulatedPrototypes) {
  const std::pair<double, Values> tables[] = {
      {0.0, {1.0, 3.2360680, 5.2360680, 5.2360680, 3.2360680, 1.0}},
      {0.5, {0.7156938, 1.5348954, 1.2529130, 1.0}},
      {1.0, {0.2756276, 0.7426194, 1.4539248, 0.9528114, 1.0}}};
  for (const auto& [ripple, powers] : tables) {
    const Wanted w = {FATHOM_LOWPASS, count(powers) - 1, 0.1, 0.0, ripple};
    const Record r(w.type, w.order);
    ASSERT_EQ(kFamilies[ripple > 0.0 ? 1 : 0].record({w}, r), FATHOM_OK);
    for (double omega : {0.3, 0.7, 1.0, 2.0}) {
      std::complex<double> p = 0.0;
      for (std::size_t i = powers.size(); i-- > 0;) p = p * std::complex(0.0, omega) + powers[i];
      const Real db = levelOf(*r, Warp(w)(omega)).db - levelOf(*r, 0).db;
      EXPECT_NEAR(static_cast<double>(db), 20 * std::log10(powers[0] / std::abs(p)), 2e-6);
    }
  }
}

TEST(IirFamilies, FirstChebyshevSectionsOfBandFilters) {
  for (int32_t order : {1, 3}) {  // redesigned: what is not written stays
    const Record r(FATHOM_BANDSTOP, order);
    std::fill_n(r->b, r->nb, 7.0);
    ASSERT_EQ(Ch_CascadeCoef(1, 0.1, 0.2, 1, r), FATHOM_OK);
    const double kept = order == 1 ? 0.0 : 7.0;
    EXPECT_TRUE(r->b[3] == kept && r->b[4] == kept && r->a[2] == 0.0 && r->a[3] == 0.0);
  }
  for (int32_t type : {FATHOM_BANDPASS, FATHOM_BANDSTOP}) {
    const Record butterworth(type, 1), r(type, 1);
    ASSERT_EQ(Bw_CascadeCoef(1, 0.1, 0.2, butterworth), FATHOM_OK);
    for (double ripple : {0.01, 3.0}) {
      ASSERT_EQ(Ch_CascadeCoef(1, 0.1, 0.2, ripple, r), FATHOM_OK);
      EXPECT_TRUE(SameBits(Values(r->a, r->a + 9), Values(butterworth->a, butterworth->a + 9)));
    }
  }
}

}  // namespace
}  // namespace fathom
