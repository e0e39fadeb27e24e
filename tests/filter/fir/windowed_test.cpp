#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// The ideal response with the stated order of operations; `sign` is that of the band's first edge.
Values plain(int32_t type, double fs, double low, double high, int32_t n) {
  constexpr Extended kOneOverPi{extendedReciprocal(kPi)};
  const bool one = type < 2;
  const double w1 = 6.283185307179586 * low / fs, w2 = 6.283185307179586 * high / fs;
  double t1 = -w1 * (n - 1) * 0.5, t2 = -w2 * (n - 1) * 0.5, d = (n - 1) * -kPi * 0.5;
  Values h(static_cast<std::size_t>(n));
  for (std::size_t k = 0; k < h.size() / 2; ++k, t1 += w1, t2 += w2, d += kPi) {
    double numerator = one ? fathom::sin(t1) : fathom::sin(t2) - fathom::sin(t1);
    if (type % 2 == 1) numerator = one ? -fathom::sin(t1) : fathom::sin(t1) - fathom::sin(t2);
    h[k] = h[h.size() - 1 - k] = numerator / d;
  }
  const double share = ((one ? w1 : w2 - w1) * kOneOverPi).toDouble();
  if (n % 2 != 0) h[h.size() / 2] = type % 2 == 1 ? 1.0 - share : share;
  return h;
}

AnalysisStatus windowed(int32_t type, double fs, double low, double high, int32_t n, double* h,
                        int32_t window) {
  if (type == FATHOM_LOWPASS) return Wind_LPF(fs, low, n, h, window);
  if (type == FATHOM_HIGHPASS) return Wind_HPF(fs, low, n, h, window);
  return (type == FATHOM_BANDPASS ? Wind_BPF : Wind_BSF)(fs, low, high, n, h, window);
}

AnalysisStatus kaiser(int32_t type, double fs, double low, double high, int32_t n, double* h,
                      double beta) {
  if (type == FATHOM_LOWPASS) return Ksr_LPF(fs, low, n, h, beta);
  if (type == FATHOM_HIGHPASS) return Ksr_HPF(fs, low, n, h, beta);
  return (type == FATHOM_BANDPASS ? Ksr_BPF : Ksr_BSF)(fs, low, high, n, h, beta);
}

TEST(WindowedFir, EqualsTheIdealResponseTimesTheWindow) {
  const double fs = 48000.0, low = 5000.3, high = 11000.7;
  const double beta = 6.5;
  const struct {
    AnalysisStatus (*shape)(double*, int32_t);
    Values selectors;
  } windows[] = {{nullptr, {1}},
                 {TriWin, {2}},
                 {HanWin, {3}},
                 {HamWin, {4, 0, 9, -1}},
                 {BkmanWin, {5}},
                 {[](double* x, int32_t n) { return KsrWin(x, n, 6.5); }, {}},
                 {[](double* x, int32_t n) { return KsrWin(x, n, 4.5); }, {}}};
  for (std::size_t size : sizes({255, 1000, 1001})) {
    for (int32_t type = 0; type < 4; ++type) {
      const auto n = static_cast<int32_t>(size);
      Guarded h(size);
      if (type % 2 == 1 && n % 2 == 0) {
        ASSERT_EQ(FIR_Coef(type, fs, low, high, n, h), FATHOM_ERR_ODD_COEFFICIENTS);
        ASSERT_TRUE(h.untouched());
        continue;
      }
      const Values ideal = plain(type, fs, low, high, n);
      ASSERT_EQ(FIR_Coef(type, fs, low, high, n, h), FATHOM_OK);
      ASSERT_TRUE(SameBits(h.values(), ideal) && h.intact()) << type << ' ' << n;
      for (std::size_t i = 0; i < std::size(windows); ++i) {
        Values w(size, 1.0), expected(size);
        const bool shaped = windows[i].shape != nullptr;
        const AnalysisStatus status = shaped ? windows[i].shape(w.data(), n - 1) : FATHOM_OK;
        EXPECT_EQ(status, shaped && n == 1 ? FATHOM_ERR_NO_SAMPLES : FATHOM_OK);
        w.back() = w.front();
        for (std::size_t k = 0; k < size; ++k) expected[k] = ideal[k] * w[k];
        const auto expect = [&](AnalysisStatus returned) {
          ASSERT_EQ(returned, status);
          ASSERT_TRUE(SameBits(h.values(), expected) && h.intact()) << type << ' ' << n << ' ' << i;
        };
        for (double selector : windows[i].selectors) {
          expect(windowed(type, fs, low, high, n, h, static_cast<int32_t>(selector)));
        }
        if (i == 5) expect(kaiser(type, fs, low, high, n, h, beta));
        if (i == 6) expect(kaiser(type, fs, low, high, n, h, -1.0));
      }
    }
  }
}

TEST(WindowedFir, HasItsGain) {
  for (int32_t type = 0; type < 4; ++type) {
    Values h(201);
    ASSERT_EQ(windowed(type, 1.0, 0.1, 0.3, count(h), h.data(), FATHOM_FIR_HAMMING), FATHOM_OK);
    for (double f : {0.0, 0.05, 0.1, 0.2, 0.3, 0.4, 0.5}) {
      double gain = 0.0;
      for (int k = 0; k < 201; ++k)
        gain += h[static_cast<std::size_t>(k)] * std::cos(kTwoPi * f * (k - 100));
      double passes = f < 0.1 ? 0.0 : f == 0.1 ? 0.5 : 1.0;  // above the lower edge
      if (type >= 2 && f >= 0.3) passes = f == 0.3 ? 0.5 : 0.0;
      EXPECT_NEAR(gain, type == 0 || type == 3 ? 1.0 - passes : passes, 0.0025) << type << ' ' << f;
    }
  }
  double only = 0.0;
  EXPECT_EQ(FIR_Coef(FATHOM_LOWPASS, 8.0, 1.0, 0.0, 1, &only), FATHOM_OK);
  EXPECT_EQ(only, 0.25);
}

TEST(WindowedFir, ChecksInOrder) {
  const struct {
    int32_t type;
    double fs, low, high;
    int32_t n;
    AnalysisStatus status;
  } rows[] = {
      {4, -1, 9, 9, 0, FATHOM_ERR_SELECTION},  {-1, 1, 0.1, 0.2, 3, FATHOM_ERR_SELECTION},
      {1, -1, 9, 9, 0, FATHOM_ERR_ORDER},      {1, 1, 0.6, 0, 4, FATHOM_ERR_NYQUIST},
      {3, 1, 0.1, 0.6, 4, FATHOM_ERR_NYQUIST}, {0, 0, -1, 0, 3, FATHOM_ERR_BAND},
      {0, 1, 0, 0, 3, FATHOM_ERR_BAND},        {0, 1, kNan, 0, 3, FATHOM_ERR_BAND},
      {0, kNan, 0.1, 0, 3, FATHOM_ERR_BAND},   {2, 1, 0.1, kNan, 3, FATHOM_ERR_BAND},
      {3, 1, 0.2, 0.2, 4, FATHOM_ERR_BAND},    {3, 1, 0.2, 0.5, 4, FATHOM_ERR_ODD_COEFFICIENTS},
      {0, 1, 0.5, kNan, 4, FATHOM_OK}};
  for (const auto& row : rows) {
    Guarded h(4);
    EXPECT_EQ(FIR_Coef(row.type, row.fs, row.low, row.high, row.n, h), row.status);
    EXPECT_EQ(h.untouched(), row.status != FATHOM_OK) << row.status;
  }
}

}  // namespace
}  // namespace fathom::test
