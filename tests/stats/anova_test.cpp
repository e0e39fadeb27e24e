#include "support/testing.hpp"

namespace fathom::test {
namespace {

using Levels = std::vector<int32_t>;

struct Design {
  Values y;
  std::vector<Levels> level;  // of each factor
};

// Observations divided by 7, in an order that visits the levels of all factors out of turn.
Design design(const Levels& levels, int32_t n) {
  Design d{{}, std::vector<Levels>(levels.size())};
  for (int32_t i = 0; i < n; ++i) {
    int32_t rest = i * 11 % n;
    d.y.push_back((7 * rest * rest + 3 * rest) % 23 / 7.0);
    for (std::size_t f = levels.size(); f-- > 0; rest /= levels[f]) {
      d.level[f].push_back(rest % levels[f]);
    }
  }
  return d;
}

struct Outcome {
  AnalysisStatus status;
  Values table, p;
};

// As many factors as there are numbers of levels. Results of one factor go where those of more are.
Outcome analyse(const Design& d, int32_t n, int32_t replicates, const Levels& k) {
  const auto level = [&](std::size_t f) { return d.level[f].data(); };
  Guarded table(std::size_t{4} << k.size()), p((std::size_t{1} << k.size()) - 1);
  double *const t = table, *const s = p, *const q = s + 3;
  const double* y = d.y.data();
  const AnalysisStatus status =
      k.size() == 1 ? ANOVA1Way(y, level(0), n, k[0], t, t + 2, t + 3, s, t + 4, t + 6, t + 7)
      : k.size() == 2
          ? ANOVA2Way(y, level(0), level(1), n, replicates, k[0], k[1], t, s, s + 1, s + 2)
          : ANOVA3Way(y, level(0), level(1), level(2), n, replicates, k[0], k[1], k[2], t, s, s + 1,
                      s + 2, q, q + 1, q + 2, q + 3);
  EXPECT_TRUE(status == FATHOM_OK || (table.untouched() && p.untouched()));
  return {status, table.values(), p.values()};
}

double upperTail(double f, double df1, double df2) {
  double p = -7;
  F_Dist(f, static_cast<int32_t>(df1), static_cast<int32_t>(df2), &p);
  return 1.0 - p;
}

// Sums of squares to the last bit; exact rational arithmetic agrees with each to 6e-14. The row to
// test against follows from the expected mean squares: an effect's holds a component of every
// effect that adds random factors to it.
TEST(Anova, EveryModelOfTwoAndThreeFactors) {
  const Values degrees[] = {{2, 3, 6, 24}, {2, 3, 0, 6}, {1, 2, 3, 2, 3, 6, 6, 24}};
  const Values squares[] = {
      {2.7222222222222285, 2.7891156462584945, 11.078231292517003, 12.231292517006821},
      {2.785714285714281, 2.1411564625850232, 0.0, 4.057823129251716},
      {1.741496598639472, 3.5059523809524222, 2.9166666666667, 0.8937074829931504,
       0.13605442176867655, 10.187925170067984, 2.2491496598640026, 19.795918367346914}};
  for (std::size_t t : {0, 1, 2}) {
    const Levels levels = t < 2 ? Levels{3, 4} : Levels{2, 3, 4};
    const int32_t n = t == 0 ? 36 : t == 1 ? 12 : 48, replicates = t == 0 ? 3 : t == 1 ? 1 : 2;
    const Values &df = degrees[t], &ss = squares[t];
    const std::size_t factors = levels.size(), error = ss.size() - 1;
    const std::size_t effects[] = {1, 2, factors == 3 ? 4u : 3u, 3, 5, 6, 7};  // sets of factors
    for (std::size_t random = 0; random >> (replicates > 1 ? factors : 0) == 0; ++random) {
      Levels k = levels;
      for (std::size_t f = 0; f < factors; ++f) k[f] *= (random >> f & 1) != 0 ? -1 : 1;
      const Outcome o = analyse(design(levels, n), n, replicates, k);
      ASSERT_EQ(o.status, FATHOM_OK);
      const auto ms = [&](std::size_t r) { return df[r] == 0 ? 0.0 : ss[r] / df[r]; };
      for (std::size_t r = 0; r <= error; ++r) {
        const std::size_t outside = r < error ? random & ~effects[r] : 0;
        const auto over = static_cast<std::size_t>(
            std::find(effects, effects + error, outside == 0 ? 0 : effects[r] | outside) - effects);
        double f = ms(r) / ms(over);
        double p = upperTail(f, df[r], df[factors == 2 ? error : over]);
        if (df[r] == 0) f = p = 0.0;                       // the interaction serves as error
        if ((outside & (outside - 1)) != 0) f = p = -1.0;  // two random factors: no exact test
        if (r == error) f = factors == 2 ? Guarded::kFill : 0.0;
        EXPECT_TRUE(SameBits({&o.table[4 * r], &o.table[4 * r] + 4}, {ss[r], df[r], ms(r), f}) &&
                    (r == error || SameBits(o.p[r], p)))
            << "model " << random << " row " << r;
      }
    }
  }
}

// The one-way sets of NIST's Statistical Reference Datasets: the certified F, what one pass makes
// of it in the stated order of operations, and the digits that it keeps.
TEST(Anova, ReferenceDatasets) {
  const std::string silver =  // four digits of each observation, to be added to the base
      "156814651572178514461903152614941616158715191486141915691508167213851518166214241360"
      "133316101477107913441513119716041385164213651151108215171448119814821334160911011512"
      "146913601254126114501368";
  const std::string silicon =
      "405222402890356944034042482526694257142223033005388913432811379527482494248508853119"
      "2051285010523090";
  const struct {
    int32_t k, perLevel;
    double base, scale, certified, f, digits;
  } sets[] = {{2, 24, 107868e4, 1e7, 15.9467335677930, 14.0, 0.9},
              {5, 5, 1959e3, 1e4, 1.18046237440255, 1.1804623861732513, 7.9},
              {9, 21, 14, 10, 21, 21.000000000000426, 13.6},
              {9, 201, 14, 10, 201, 200.99999999919177, 11.3},
              {9, 2001, 14, 10, 2001, 2000.9999999971053, 11.8},
              {9, 21, 1e7 + 4, 10, 21, 17.763157894736842, 0.8},
              {9, 201, 1e7 + 4, 10, 201, -616.3043478260869, -0.7},
              {9, 2001, 1e7 + 4, 10, 2001, -354.8756544502618, -0.1},
              {9, 21, 1e13 + 4, 10, 21, -60.0, -0.6},
              {9, 201, 1e13 + 4, 10, 201, 1045.5882352941176, -0.7},
              {9, 2001, 1e13 + 4, 10, 2001, 6692.877291960507, -0.4}};
  for (const auto& set : sets) {
    Design d{{}, {{}}};
    const int32_t n = set.k * set.perLevel;
    for (int32_t i = 0; i < n; ++i) {
      const int32_t j = i / set.perLevel, within = i % set.perLevel;
      const auto side = [](int32_t m) { return m == 0 ? 0 : m % 2 == 1 ? -1 : 1; };
      const std::string& text = set.k == 2 ? silver : silicon;
      const int32_t last = set.k == 9 ? side(j) + side(within)
                                      : std::stoi(text.substr(4 * static_cast<std::size_t>(i), 4));
      d.y.push_back((set.base + last) / set.scale);
      d.level[0].push_back(j);
    }
    const Outcome o = analyse(d, n, 0, {set.k});
    const Values& t = o.table;
    EXPECT_TRUE(SameBits(t[3], set.f)) << set.base << ' ' << set.perLevel;
    EXPECT_GE(-std::log10(std::fabs(set.f / set.certified - 1.0)), set.digits);
    EXPECT_TRUE(SameBits({t[4], t[2], t[6], t[3], o.p[0]},
                         {t[7] - t[0], t[0] / (set.k - 1), t[4] / (n - set.k), t[2] / t[6],
                          upperTail(t[3], set.k - 1, n - set.k)}));
  }
}

TEST(Anova, StatusesInOrder) {
  constexpr int32_t kLeast = INT32_MIN;
  const struct {
    AnalysisStatus status;
    int32_t n, replicates;
    std::vector<Levels> levels;
  } cases[] = {{FATHOM_ERR_TOTAL_POINTS, 0, 1, {{kLeast, 2}, {kLeast, kLeast, 4}}},  // 2^32, 2^64
               {FATHOM_ERR_EMPTY_LEVEL, 0, 0, {{kLeast, kLeast}, {kLeast, kLeast, kLeast}}},
               {FATHOM_ERR_LEVEL_COUNT, kLeast, -1, {{kLeast, -1}}},
               {FATHOM_ERR_EMPTY_LEVEL, -24, -6, {{2, -2}}},
               {FATHOM_ERR_EMPTY_LEVEL, 36, 1, {{35}, {1, 4, 9}}},
               {FATHOM_ERR_LEVEL_COUNT, 36, 2, {{1}, {36}, {1, 18}, {1, 6, 3}}},
               {FATHOM_ERR_FACTOR_LEVEL, 36, 2, {{2}, {2, 9}, {9, 2}, {2, 3, 3}, {3, 2, 3}}},
               {FATHOM_ERR_UNBALANCED, 36, 2, {{3, 6}, {3, 3, 2}}},
               {FATHOM_ERR_UNBALANCED, 36, 1, {{-3, 12}}}};
  Design d = design({3, 3}, 36);
  d.level.emplace_back(36, 1);
  for (const auto& t : cases) {
    for (const Levels& k : t.levels) EXPECT_EQ(analyse(d, t.n, t.replicates, k).status, t.status);
  }
  d.level[2].back() = -1;
  EXPECT_EQ(analyse(d, 36, 2, {3, 3, 2}).status, FATHOM_ERR_FACTOR_LEVEL);
  for (const Levels& k : {Levels{-3, 4}, {3, -4}}) {
    EXPECT_EQ(analyse(design({3, 4}, 12), 12, 1, k).status, FATHOM_ERR_FIXED_EFFECT);
  }
}

}  // namespace
}  // namespace fathom::test
