#include <complex>
#include <numbers>

#include "filter/iir/iir.hpp"

namespace fathom::test {
namespace {

// Figures of scipy.signal.butter, SciPy 1.10.1, to twelve digits; frequencies relative to half fs.
TEST(Butterworth, DirectFormsAreThePublishedOnes) {
  struct {
    int32_t type, order;
    double low, high;
    Values a, b;
  } const cases[] = {
      {0,
       4,
       0.2,
       9,
       {1, -2.36951300718, 2.31398841442, -1.05466540588, 0.187379492368},
       {0.00482434335772, 0.0192973734309, 0.0289460601463, 0.0192973734309, 0.00482434335772}},
      {1, 3, 0.5, 9, {1, 0, 1.0 / 3, 0}, {1.0 / 6, -0.5, 0.5, -1.0 / 6}},
      {2,
       2,
       0.2,
       0.5,
       {1, -1.40006851617, 1.27221493793, -0.65841849439, 0.272214937925},
       {0.131106439917, 0, -0.262212879833, 0, 0.131106439917}},
      {3,
       3,
       0.3,
       0.4,
       {1, -2.47020022214, 4.41874429732, -4.52286759412, 3.58345564043, -1.62053207037,
        0.532075368312},
       {0.729440722639, -2.01172259258, 4.03769693039, -4.59015470146, 4.03769693039,
        -2.01172259258, 0.729440722639}},
      {0,
       2,
       0.5,
       9,
       {1, 0, (2 - std::sqrt(2)) / (2 + std::sqrt(2))},
       {1 / (2 + std::sqrt(2)), 2 / (2 + std::sqrt(2)), 1 / (2 + std::sqrt(2))}},
      {0, 1, 0.5, 9, {1, 0}, {0.5, 0.5}}};
  for (const auto& c : cases) {
    Guarded a(c.a.size()), b(c.b.size());
    ASSERT_EQ(Bw_Coef(c.type, c.order, 2, c.low, c.high, a, count(c.a), b, count(c.b)), FATHOM_OK);
    for (std::size_t i = 0; i < c.a.size(); ++i) {
      EXPECT_NEAR(a[i], c.a[i], 1e-11);
      EXPECT_NEAR(b[i], c.b[i], 1e-11);
    }
    EXPECT_TRUE(a.intact() && b.intact());
  }
}

// The response of the sections, against 1 / (1 + v^2N) with v the warped frequency of the band.
TEST(Butterworth, CascadesAreMaximallyFlat) {
  using std::tan, std::numbers::pi;
  for (int32_t type = 0; type < 4; ++type) {
    for (int32_t order = 1; order <= 12; ++order) {
      for (const auto& [low, high] : {std::pair(0.1, 0.2), {0.02, 0.4}, {0.24, 0.26}}) {
        Record r(type, order);
        ASSERT_EQ(Bw_CascadeCoef(1, low, high, r), FATHOM_OK);
        const int32_t m = type < FATHOM_BANDPASS ? 2 : 4;
        for (double f = 0.005; f < 0.5; f += 0.0137) {
          const std::complex<double> z = std::polar(1.0, -2 * pi * f);
          double gain = 0.0;
          for (int32_t s = 0; s < r->na / m; ++s) {
            std::complex<double> up = 0, down = 0;
            for (int32_t j = m; j >= 0; --j) {
              up = up * z + r->b[s * (m + 1) + j];
              down = down * z + (j > 0 ? r->a[s * m + j - 1] : 1.0);
            }
            gain += 10 * std::log10(std::norm(up / down));
          }
          const double w = tan(pi * f), l = tan(pi * low), h = tan(pi * high);
          const double band = (w * w - l * h) / (w * (h - l));
          const double v = type == 0 ? w / l : type == 1 ? l / w : type == 2 ? band : 1 / band;
          const double expected = -10 * std::log10(1 + std::pow(v * v, order));
          EXPECT_NEAR(gain, expected,
                      expected > -60 ? 1e-9 : 1e-6 + std::pow(10, -expected / 20 - 9))
              << type << ' ' << order << ' ' << f;
        }
      }
    }
  }
}

constexpr int32_t kOk = FATHOM_OK, kOrder = FATHOM_ERR_ORDER, kBand = FATHOM_ERR_BAND,
                  kNyquist = FATHOM_ERR_NYQUIST, kRecord = FATHOM_ERR_FILTER_RECORD,
                  kSize = FATHOM_ERR_ARRAY_SIZE, kSelection = FATHOM_ERR_SELECTION;

// Every later fault is there as well, so that the status tells the order of the checks.
TEST(Butterworth, ChecksRunInOrder) {
  struct {
    int32_t type, order;
    double fs, low, high;
    int32_t room;  // of the arrays, and whether the record has it
    AnalysisStatus cascade, direct, once;
  } const cases[] = {
      {2, 0, 0, 0, 0, 0, kOrder, kOrder, kOrder},
      {2, 3, 0, 0, 0, 0, kBand, kBand, kBand},
      {2, 3, 1, kNan, 0.9, 0, kBand, kBand, kBand},
      {2, 3, 1, 0.3, kNan, 0, kBand, kBand, kBand},
      {2, 3, kNan, 0.3, 0.4, 0, kBand, kBand, kBand},
      {2, 3, 1, 0.9, 0.8, 0, kBand, kBand, kBand},
      {2, 3, 1, 0.3, 0.3, 0, kBand, kBand, kBand},
      {3, 3, 1, 0.3, 0.6, 0, kNyquist, kNyquist, kNyquist},
      {3, 3, 1, 0.3, 0.5, 0, kRecord, kSize, kOk},
      {2, 3, 1, 0.3, 0.4, 7, kOk, kOk, kOk},
      {0, 3, 1, 0.5, 0, 0, kBand, kBand, kOk},  // the stand-in for high is not above it
      {1, 3, 1, 0.6, 0, 0, kBand, kBand, kNyquist},
      {1, 3, 1, kInf, 0, 0, kBand, kBand, kNyquist},
      {0, 3, 1, -0.3, 0, 0, kBand, kBand, kBand},
      {0, 3, 0, 0.3, 0.4, 0, kBand, kBand, kBand},
      {0, 3, 1, 0.4, 0, 3, kRecord, kSize, kOk},
      {1, 3, 1, 0.4, kNan, 4, kOk, kOk, kOk},
      {4, 3, 1, 0.3, 0.4, 0, kOk, kSize, kOk},
      {4, 3, 1, 0.3, 0.4, 7, kOk, kSelection, kOk},
      {-1, 3, 1, 0.3, 0.4, 4, kOk, kSelection, kOk},
      {-1, 3, 1, 0.5, 9, 0, kNyquist, kBand, kOk},
      {0, INT32_MAX, 1, 0.3, 0, 7, kRecord, kSize, kOk},
      {3, INT32_MAX, 1, 0.3, 0.4, 7, kRecord, kSize, kOk}};
  for (const auto& c : cases) {
    Guarded a(20), b(20), state(20), y(4);
    const int32_t na = c.room == 0 ? 3 : c.room == 3 ? 3 : 8, nb = c.room == 0 ? 6 : 10;
    IIRFilter filter = {c.type, c.order, 1, na, a, nb, b, 8, state};
    EXPECT_EQ(Bw_CascadeCoef(c.fs, c.low, c.high, &filter), c.cascade) << c.type << ' ' << c.low;
    EXPECT_TRUE(state.untouched() && filter.reset == 1);
    const bool designed = c.cascade == kOk && c.type >= 0 && c.type < 4;
    EXPECT_EQ(a.untouched() && b.untouched(), !designed);
    Guarded a2(7), b2(7);
    for (const bool first : {true, false}) {
      EXPECT_EQ(Bw_Coef(c.type, c.order, c.fs, c.low, c.high, a2, first ? c.room : 7, b2,
                        first ? 7 : c.room),
                c.direct)
          << c.type << ' ' << c.low;
    }
    EXPECT_EQ(a2.untouched() && b2.untouched(), c.direct != kOk);
    if (c.type < 0 || c.type > 3 || c.order > 3) continue;
    const double x[4] = {1, 2, 3, 4};
    const auto once = [&](int32_t n) {
      return c.type < 2 ? (c.type == 0 ? Bw_LPF : Bw_HPF)(x, n, c.fs, c.low, c.order, y)
                        : (c.type == 2 ? Bw_BPF : Bw_BSF)(x, n, c.fs, c.low, c.high, c.order, y);
    };
    EXPECT_EQ(once(0), FATHOM_ERR_NO_SAMPLES);
    EXPECT_EQ(once(4), c.once) << c.type << ' ' << c.low;
    EXPECT_EQ(y.untouched(), c.once != kOk);
  }
}

}  // namespace
}  // namespace fathom::test
