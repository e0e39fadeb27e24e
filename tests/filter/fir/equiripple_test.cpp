#include "filter/fir/exchange.hpp"
#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

struct Design {
  Values edges, desired, weights;
  int32_t type, n;

  AnalysisStatus make(double* h, double* deviation) const {
    return Equi_Ripple(count(desired), desired.data(), weights.data(), 1.0, edges.data(), type, n,
                       h, deviation);
  }
  int32_t terms() const { return n / 2 + (type == 1 ? n % 2 : 0); }
};

struct Point {
  double f, desired, weight;
};

// The design's grid, or with `finer` > 1 one of equal steps within the bands.
std::vector<Point> gridOf(const Design& d, int finer) {
  const double step = 0.5 / (16 * d.terms());
  std::vector<Point> grid;
  for (std::size_t band = 0; band < d.desired.size(); ++band) {
    const auto put = [&](double f) {
      const bool slope = d.type == 2;
      grid.push_back({f, slope ? d.desired[band] * f : d.desired[band],
                      slope && d.desired[band] >= 0.0001 ? d.weights[band] / f : d.weights[band]});
    };
    double f = d.edges[2 * band];
    const double upper = d.edges[2 * band + 1];
    if (band == 0 && d.type != 1) f = std::max(f, step);
    put(f);
    for (f += step / finer; f <= upper; f += step / finer) put(f);
    grid.pop_back();
    put(upper);
  }
  while ((d.type == 1) == (d.n % 2 == 0) && grid.back().f > 0.5 - step) grid.pop_back();
  return grid;
}

double amplitude(const Values& h, int32_t type, double f) {
  const std::size_t n = h.size();
  double sum = n % 2 == 1 && type == 1 ? h[n / 2] : 0.0;
  double c = std::cos(kPi * f * (n % 2 == 1 ? 2 : 1)), s = std::sin(kPi * f * (n % 2 == 1 ? 2 : 1));
  const double cosine = std::cos(kTwoPi * f), sine = std::sin(kTwoPi * f);
  for (std::size_t k = n / 2; k-- > 0;) {
    sum += 2.0 * h[k] * (type == 1 ? c : s);
    const double next = c * cosine - s * sine;
    s = s * cosine + c * sine;
    c = next;
  }
  return sum;
}

struct Ripple {
  double largest = 0.0;  // weighted error, less what rounding is allowed
  int alternations = 0;  // of errors that reach the deviation but for 1e-5
};

Ripple rippleOf(const Design& d, const Values& h, double deviation, int finer) {
  Ripple ripple;
  double last = 0.0;
  for (const Point& p : gridOf(d, finer)) {
    const double a = amplitude(h, d.type, p.f), error = p.weight * (p.desired - a);
    const double rounding = 1e-13 * p.weight * (1.0 + std::fabs(p.desired));
    ripple.largest = std::max(ripple.largest, std::fabs(error) - rounding);
    if (std::fabs(error) + rounding < deviation * (1 - 1e-5)) continue;
    if (ripple.alternations == 0 || error * last < 0.0) ++ripple.alternations;
    last = error;
  }
  return ripple;
}

class Random {
 public:
  double between(double low, double high) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return low + (high - low) * static_cast<double>(state_ >> 11) * 0x1p-53;
  }
  int below(int n) { return static_cast<int>(between(0, n)); }

 private:
  std::uint64_t state_ = 6;
};

// One to ten bands with transitions from 1 / n on; the ends as the type demands.
Design randomDesign(Random& random) {
  Design d;
  d.type = 1 + random.below(3);
  d.n = static_cast<int32_t>(3 * std::exp(random.between(0.0, std::log(401.9 / 3))));
  const auto margin = [&] { return std::min(0.15, random.between(0.1, 1.0) / d.n); };
  const double first = d.type == 3 ? margin() : 0.0;
  const double last = d.type != 1 && d.n % 2 == 1 ? 0.5 - std::max(0.01, margin()) : 0.5;
  Values gaps, widths = {random.between(0.1, 1.0)};
  double room = 0.7 * (last - first), wide = widths[0];
  for (int bands = 1 + random.below(10); static_cast<int>(widths.size()) < bands;) {
    gaps.push_back((1.0 + (random.below(2) == 0 ? 0.0 : random.between(0.0, 2.0))) / d.n);
    if (gaps.back() > room) {
      gaps.pop_back();
      break;
    }
    room -= gaps.back();
    wide += widths.emplace_back(random.between(0.1, 1.0));
  }
  gaps.push_back(0.0);
  const double unit = (room + 0.3 * (last - first)) / wide;
  double f = first;
  for (std::size_t band = 0; band < widths.size(); ++band) {
    d.edges.insert(d.edges.end(), {f, f + widths[band] * unit});
    f = d.edges.back() + gaps[band];
    d.weights.push_back(std::pow(10.0, random.between(-3.0, 3.0)));
    d.desired.push_back(random.below(3) == 0 ? random.between(0.0, 2.0) : (band + 1) % 2);
  }
  d.edges.back() = last;
  if (d.type == 1 && d.n % 2 == 0) d.desired.back() = 0.0;
  return d;
}

#if defined(FATHOM_DISPATCH) && defined(__OPTIMIZE__)
constexpr int kDesigns = 2100;
#else  // under the checkers, or without optimisation
constexpr int kDesigns = 150;
#endif

// Every design either alternates evenly on its grid, one error more than its series has terms, or
// is refused.
TEST(Equiripple, AlternatesOrIsRefused) {
  Random random;
  int even = 0, rounding = 0, refused = 0, between[3] = {};
  for (int i = 0; i < kDesigns; ++i) {
    const Design d = randomDesign(random);
    Values h(static_cast<std::size_t>(d.n), kNan);
    double deviation = kNan;
    const AnalysisStatus status = d.make(h.data(), &deviation);
    ASSERT_EQ(status == FATHOM_OK ? FATHOM_ERR_FILTER_DESIGN : status, FATHOM_ERR_FILTER_DESIGN);
    if (status != FATHOM_OK) {
      ++refused;
      continue;
    }
    for (std::size_t k = 0; k < h.size(); ++k) {
      ASSERT_EQ(h[k], d.type == 1 ? h[h.size() - 1 - k] : -h[h.size() - 1 - k]) << i;
    }
    const Ripple ripple = rippleOf(d, h, deviation, 1);
    ASSERT_LE(ripple.largest, deviation * (1 + 1e-5)) << "design " << i;
    const double floor = 1e-8 * *std::max_element(d.weights.begin(), d.weights.end());
    ++(deviation > floor ? even : rounding);
    if (deviation <= floor) continue;
    ASSERT_GT(ripple.alternations, d.terms()) << "design " << i;
    if (i % 4 != 0) continue;
    const double excess = rippleOf(d, h, deviation, 16).largest / deviation - 1;
    ++between[excess < 0.01 ? 0 : excess < 0.1 ? 1 : 2];
  }
  std::printf(
      "%d designs: %d alternate, %d within 1e-8 of their weights, %d refused\n"
      "excess of the error between grid points: %d below 1%%, %d below 10%%, %d above\n",
      kDesigns, even, rounding, refused, between[0], between[1], between[2]);
  EXPECT_LT(refused, kDesigns / 100);
}

TEST(Equiripple, EqualsPublishedDesigns) {
  Values h(24);
  double deviation = 0.0;
  ASSERT_EQ(EquiRpl_LPF(1.0, 0.08, 0.16, 24, h.data(), &deviation), FATHOM_OK);
  EXPECT_NEAR(deviation, 0.01243364, 5e-9);  // McClellan, Parks and Rabiner, 1973
  const struct {
    Design design;
    Values half;
  } rows[] = {
      // SciPy 1.10.1, signal.remez with grid_density=16
      {{{0, .2, .28, .5}, {1, 0}, {1, 10}, 1, 15},
       {0.01172810734, 0.05709058713, 0.05265726108, -0.03250068911, -0.09303584949, 0.03746362377,
        0.3133435758, 0.4606982991}},
      {{{0, .1, .2, .5}, {1, 0}, {1, 1}, 1, 14},
       {0.005199390564, -0.0399743715, -0.04632990225, -0.01188102502, 0.08149208544, 0.2023400115,
        0.2879626262}},
      {{{0, .1, .18, .3, .38, .5}, {0, 1, 0}, {2, 1, 5}, 1, 15},
       {0.02390602112, 0.01398864483, 0.00565081563, 0.1027394085, -0.04652335805, -0.2866970677,
        0.02746116873, 0.3889130501}},
      {{{0, .4}, {1}, {1}, 2, 15},
       {0.00178016325, -0.005616036882, 0.01139130847, -0.02120364125, 0.03763856349,
        -0.06853024147, 0.1533841716, 0}},
      {{{0, .5}, {1}, {1}, 2, 14},
       {0.001849970066, -0.003096524924, 0.002907213662, -0.004379262631, 0.008296388597,
        -0.02268536606, 0.2028043465}},
      {{{.05, .45}, {1}, {1}, 3, 15},
       {0.05299399741, 5.588724484e-06, 0.08823147638, -5.127950952e-05, 0.1868592464,
        1.719547615e-05, 0.6278650031, 0}},
      {{{.05, .5}, {1}, {1}, 3, 14},
       {0.04557926649, 0.03595245927, 0.05181678545, 0.07563598564, 0.1160114543, 0.2052965444,
        0.6343204897}},
  };
  for (const auto& row : rows) {
    ASSERT_EQ(row.design.make(h.data(), &deviation), FATHOM_OK);
    for (std::size_t k = 0; k < row.half.size(); ++k) {
      EXPECT_NEAR(h[k], row.half[k], 1e-7) << row.design.type << ' ' << row.design.n << ' ' << k;
    }
  }
}

TEST(Equiripple, StandardFiltersAreTheirBands) {
  using Make = std::function<AnalysisStatus(int32_t, double*, double*)>;
  const double a = 10, b = 14, c = 30, e = 33, fs = 100;
  const Values two = {0, a, b, 50}, three = {0, a, b, c, e, 50};
  const struct {
    Make make;
    Values edges, desired;
    bool oddOnly;
  } rows[] = {
      {[=](int n, auto h, auto d) { return EquiRpl_LPF(fs, a, b, n, h, d); }, two, {1, 0}, false},
      {[=](int n, auto h, auto d) { return EquiRpl_HPF(fs, a, b, n, h, d); }, two, {0, 1}, true},
      {[=](int n, auto h, auto d) { return EquiRpl_BPF(fs, a, b, c, e, n, h, d); },
       three,
       {0, 1, 0},
       false},
      {[=](int n, auto h, auto d) { return EquiRpl_BSF(fs, a, b, c, e, n, h, d); },
       three,
       {1, 0, 1},
       true},
  };
  const Values ones = {1, 1, 1};
  for (const auto& row : rows) {
    for (int32_t n : {31, 32}) {
      Guarded h(32), same(32);
      double deviation = -1.0, other = -1.0;
      const AnalysisStatus status = row.make(n, h, &deviation);
      if (row.oddOnly && n % 2 == 0) {
        EXPECT_EQ(status, FATHOM_ERR_ODD_COEFFICIENTS);
        EXPECT_TRUE(h.untouched() && deviation == -1.0);
        continue;
      }
      EXPECT_EQ(status, Equi_Ripple(count(row.desired), row.desired.data(), ones.data(), fs,
                                    row.edges.data(), 1, n, same, &other));
      EXPECT_TRUE(SameBits(h.values(), same.values()) && SameBits(deviation, other)) << n;
    }
    double h[3], deviation = kNan;
    EXPECT_EQ(row.make(1, h, &deviation), FATHOM_ERR_FILTER_DESIGN);
    EXPECT_EQ(deviation, 0.0);
  }
}

TEST(Equiripple, ChecksInOrder) {
  const auto kDesign = FATHOM_ERR_FILTER_DESIGN;
  const auto kBand = FATHOM_ERR_BAND;
  const struct {
    int32_t bands;
    double fs;
    Values edges, desired, weights;
    int32_t type, n;
    AnalysisStatus status;
  } rows[] = {
      {0, 0, {}, {}, {}, 1, 2, kDesign},
      {0, 0, {}, {}, {}, 1, 3, FATHOM_ERR_NO_SAMPLES},
      {1, 0, {-1, 9}, {1}, {1}, 1, 9, kBand},
      {1, kNan, {0, 9}, {1}, {1}, 1, 9, kBand},
      {1, 1, {-1e-300, 9}, {1}, {1}, 1, 9, kBand},
      {1, 1, {0, 9}, {1}, {0}, 1, 9, kBand},
      {1, 1, {0, 9}, {1}, {kNan}, 1, 9, kBand},
      {1, 1, {0, 9}, {-1}, {1}, 1, 9, kBand},
      {1, 1, {9, 9}, {1}, {1}, 1, 9, FATHOM_ERR_NYQUIST},
      {1, 1, {0.5, 0.5}, {1}, {1}, 1, 9, kBand},
      {2, 1, {0, kNan, 0.3, 0.5}, {1, 0}, {1, 1}, 1, 9, kBand},
      {1, 1, {0, kNan}, {1}, {1}, 1, 9, kBand},
      {2, 1000, {0, 200, 300, 499.9995}, {1, 0}, {1, 1}, 1, 10, FATHOM_OK},
      {2, 1000, {0, 200, 300, 499.998}, {1, 0}, {1, 1}, 1, 10, kDesign},
      {2, 1, {0.1, 0.2, 0.3, 0.5}, {1, 1}, {1, 1}, 1, 10, kDesign},
      {2, 1, {0, 0.2, 0.3, 0.5}, {1, 1}, {1, 1}, 1, 2000, FATHOM_ERR_ODD_COEFFICIENTS},
      {1, 1, {0, 0.495}, {1}, {1}, 2, 9, kDesign},
      {1, 1, {0.1, 0.4}, {1}, {1}, 2, 9, kDesign},
      {1, 1, {0, 0.498}, {1}, {1}, 2, 10, kDesign},
      {1, 1, {0, 0.4}, {1}, {1}, 3, 9, kDesign},
      {1, 1, {0.1, 0.4995}, {1}, {1}, 3, 9, kDesign},
      {1, 1, {0.1, 0.49}, {1}, {1}, 3, 10, kDesign},
      {1, 1, {0, 0.49}, {1}, {1}, 4, 9, FATHOM_OK},
      {2, 1, {0, 0.2, 0.3, 0.5}, {1, 0}, {1, 1}, 1, 1019, FATHOM_ERR_MEMORY},
      {1, 1, {0.1, 0.4}, {1}, {1}, 3, 1020, FATHOM_ERR_FILTER_DESIGN},
      {1, 1, {0.1, 0.4}, {1}, {1}, 3, INT32_MAX, FATHOM_ERR_MEMORY},
      {2, 1, {0, 1e-300, 1e-299, 0.5}, {1, 0}, {1, 1}, 1, 9, kDesign},  // equal cosines
      {1, kInf, {0.1, kInf}, {1}, {1}, 0, 9, kDesign},
      {1, 1, {0.1, 0.4}, {kNan}, {1}, 3, 9, kDesign},
      {1, 1, {0.1, 0.4}, {kInf}, {1}, 3, 9, kDesign},
      {2, 1, {0, 0.2, 0.3, 0.5}, {1, 1}, {1, kInf}, 1, 9, kDesign},
  };
  for (const auto& row : rows) {
    Guarded h(10);
    double deviation = kNan;
    EXPECT_EQ(Equi_Ripple(row.bands, row.desired.data(), row.weights.data(), row.fs,
                          row.edges.data(), row.type, row.n, h, &deviation),
              row.status)
        << &row - rows;
    EXPECT_TRUE(row.status == FATHOM_OK || h.untouched()) << &row - rows;
  }
  // More bands than coefficients, each a point or two of the grid.
  Design d = {{}, Values(43, 1.0), Values(43, 1.0), 1, 5};
  for (int i = 0; i < 86; ++i) d.edges.push_back(i == 85 ? 0.5 : 0.005 * i);
  double h[5], deviation = kNan;
  ASSERT_EQ(d.make(h, &deviation), FATHOM_OK);
  EXPECT_NEAR(h[2], 1.0, 1e-12);
}

TEST(Equiripple, SearchKeepsTheLargestThatAlternate) {
  const struct {
    Values error;
    std::size_t wanted;
    std::vector<std::size_t> expected;
  } rows[] = {
      {{1, 2, -1, -3, 1, 4, -1}, 4, {1, 3, 5, 6}},
      {{1, 2, -1, -3, 1, 4, -1}, 3, {1, 3, 5}},  // the smaller end goes
      {{3, -5, 1, -2, 4, -6}, 4, {0, 1, 4, 5}},  // a pair goes from the middle
      {{-0.5, 3, -0.9, 2, -4}, 2, {1, 4}},       // below the deviation: no sign at all
      {{1, 2, 3}, 2, {}},
  };
  for (const auto& row : rows) {
    std::vector<std::size_t> extremal(row.wanted), peaks(row.error.size());
    const bool found = exchange(row.error.data(), row.error.size(), 1.0, extremal.data(),
                                row.wanted, peaks.data());
    EXPECT_EQ(found, !row.expected.empty());
    EXPECT_TRUE(!found || extremal == row.expected);
  }
}

// Differences so small or many that their products leave the range of a double.
TEST(Equiripple, InterpolatesWhereProductsLeaveTheRange) {
  for (double spread : {1.0, 1e-4, 1e-9}) {
    Interpolant p(300);
    for (std::size_t k = 0; k < 300; ++k) {
      p.x[k] = 0.25 + spread * std::cos(kPi * static_cast<double>(k) / 299);
    }
    const Values flat(300, 0.75), weight(300, 2.0);
    ASSERT_TRUE(barycentricWeights(p));
    EXPECT_NEAR(levelledDeviation(p, flat.data(), weight.data()), 0.0, 1e-12);
    setValues(p, flat.data(), weight.data(), 0.0);
    Values x(wholeTiles(40), 0.25 + 0.3 * spread), value(x.size());
    x[1] = p.x[7];
    evaluate(p, x.data(), 40, value.data());
    EXPECT_NEAR(value[0], 0.75, 1e-12);
    EXPECT_EQ(value[1], 0.75);
    p.x[5] = p.x[4];
    EXPECT_FALSE(barycentricWeights(p));
  }
}

}  // namespace
}  // namespace fathom::test
