#include "support/testing.hpp"

namespace fathom::test {
namespace {

constexpr double kRate = 1000.0;
const double kCosines[8][4] = {{1.0},
                               {0.5, 0.5},
                               {0.54, 0.46},
                               {0.42323, 0.49755, 0.07922},
                               {0.4265907136715391, 0.4965606190885641, 0.07684866723989682},
                               {0.42, 0.5, 0.08},
                               {0.2810638602, 0.5208971735, 0.1980389663},
                               {0.35875, 0.48829, 0.14128, 0.01168}};

struct Analysis {
  explicit Analysis(const Values& s, std::size_t harmonics)
      : spectrum(s), amplitudes(harmonics), frequencies(harmonics), thd(1), thdNoise(1) {}
  AnalysisStatus run(std::int32_t window, double f0, std::int32_t fftSize = 0,
                     double rate = kRate) {
    return HarmonicAnalyzer(spectrum, static_cast<std::int32_t>(spectrum.size()), fftSize,
                            static_cast<std::int32_t>(amplitudes.size()), window, rate, f0,
                            amplitudes, frequencies, thd, thdNoise);
  }
  bool intact() const {
    return spectrum.intact() && amplitudes.intact() && frequencies.intact() && thd.intact() &&
           thdNoise.intact();
  }
  bool noResults() const {
    return amplitudes.untouched() && frequencies.untouched() && thd.untouched() &&
           thdNoise.untouched();
  }
  // Of harmonic h, as a bin of a transform of `points`.
  double bin(std::size_t h, double points) const {
    return frequencies.values()[h] * points / kRate;
  }
  Guarded spectrum, amplitudes, frequencies, thd, thdNoise;
};

// A window's own spectrum, the Dirichlet kernel summed with its neighbours' in long double.
long double windowAt(std::size_t row, long double n, long double bins) {
  const auto dirichlet = [n](long double u) {
    const long double pi = 3.14159265358979323846L;
    const auto ratio = [pi](long double v) { return v == 0 ? 1.0L : std::sin(pi * v) / (pi * v); };
    return ratio(u) / ratio(u / n);
  };
  long double sum = kCosines[row][0] * dirichlet(bins);
  for (int j = 1; j < 4; ++j) {
    sum += kCosines[row][j] * (dirichlet(bins - j) + dirichlet(bins + j)) / 2;
  }
  return sum / kCosines[row][0];
}

// Windows 3 and up take the coefficients of the cosine table's own row, whatever their other table
// says: the spectrum is that row's.
TEST(Harmonic, EachWindowsOwnSpectrumComesBackExactly) {
  constexpr std::size_t kPoints = 1024;
  for (std::int32_t window = 0; window < 8; ++window) {
    for (double offset : {-0.499, -0.25, -0.01, 0.001, 0.125, 0.4}) {
      const double bins[] = {100.0 + offset, 200.0 + offset / 2}, levels[] = {5000.0, 250.0};
      Values s(kPoints / 2);
      for (std::size_t k = 0; k < s.size(); ++k) {
        for (std::size_t h = 0; h < 2; ++h) {
          const double apart = static_cast<double>(k) - bins[h];
          if (std::fabs(apart) > 5.0) continue;
          const auto v = static_cast<double>(
              windowAt(static_cast<std::size_t>(window), kPoints, apart) * levels[h]);
          s[k] = v * v;
        }
      }
      Analysis a(s, 2);
      ASSERT_EQ(a.run(window, 100.0), FATHOM_OK);
      for (std::size_t h = 0; h < 2; ++h) {
        EXPECT_NEAR(a.amplitudes[h] / levels[h], 1.0, 1e-6) << window << ' ' << offset;
        EXPECT_NEAR(a.bin(h, kPoints), bins[h], 1e-6) << window << ' ' << offset;
      }
      EXPECT_NEAR(a.thd[0], 5.0, 1e-5);
    }
  }
}

// Powers of single bins, all read back as they are: no neighbour differs by more than 1e-7.
Values comb(std::size_t n, const std::vector<std::pair<std::size_t, double>>& powers) {
  Values s(n);
  for (const auto& [bin, power] : powers) s[bin] = power;
  return s;
}

TEST(Harmonic, EqualNeighboursGiveTheBinItself) {
  Values s = comb(256, {{0, 50.0}, {30, 9.0}, {60, 4.0}, {90, 1.0}, {200, 16.0 / 9}});
  s[30] = 16.0;
  const double expected[] = {16.0, 4.0, 1.0, 0.0, 0.0, 0.0, 0.0};
  Analysis a(s, 10);
  ASSERT_EQ(a.run(1, kRate / 15), FATHOM_OK);  // seven of the ten fit below half the rate
  for (std::size_t h = 0; h < 10; ++h) {
    EXPECT_EQ(a.amplitudes[h], h < 7 ? expected[h] : 0.0) << h;
    if (h >= 3 && h < 7) continue;  // where nothing is, any bin of the band will do
    EXPECT_NEAR(a.bin(h, 512), h < 3 ? 30.0 * (static_cast<double>(h) + 1) : 0.0, 1e-10) << h;
  }
  EXPECT_DOUBLE_EQ(a.thd[0], std::sqrt(17.0) * (100.0 / 16.0));
  EXPECT_DOUBLE_EQ(a.thdNoise[0], std::sqrt((5.0 + 16.0 / 9) / 1.5) * (100.0 / 16.0));
  for (std::size_t k = 0; k < 4; ++k) s[k] = 0.0;
  EXPECT_TRUE(SameBits(a.spectrum.values(), s));

  // The size of the transform only scales the frequencies.
  Analysis b(s, 1);
  ASSERT_EQ(b.run(1, 60.0, 1024), FATHOM_OK);
  EXPECT_NEAR(b.bin(0, 1024), 30.0, 1e-10);

  // Neighbours apart at place 3 or 1 of the band: the difference is divided by the place. Beyond
  // 1e-7 the bins are interpolated, to an amplitude.
  const double neighbours[][3] = {{0.0, 5e-7, 4.0}, {0.0, 2.9e-7, 16.0}, {2.9e-7, 0.0, 4.0}};
  for (const auto& [below, above, amplitude] : neighbours) {
    s[29] = below, s[31] = above;
    Analysis c(s, 1);
    ASSERT_EQ(c.run(1, 60.0), FATHOM_OK);
    EXPECT_NEAR(c.amplitudes[0], amplitude, amplitude == 16.0 ? 0.0 : 1e-3);
  }
}

TEST(Harmonic, EqualBinsLeaveTheAmplitudeInfinite) {
  Analysis a(comb(128, {{20, 4.0}, {21, 4.0}}), 1);
  ASSERT_EQ(a.run(1, 80.0), FATHOM_OK);
  EXPECT_EQ(a.amplitudes[0], kInf);
  EXPECT_NEAR(a.bin(0, 256), 20.5, 1e-10);
  EXPECT_EQ(a.thdNoise[0], 0.0);
}

// A harmonic whose largest bin is the first or the last of its band.
TEST(Harmonic, PeaksAtTheEdgesOfTheBand) {
  // Both are tones with a second bin of half the amplitude: exactly on a Hanning window's bin.
  for (const auto& [s, bin] :
       {std::pair{comb(256, {{30, 16.0}, {58, 4.0}, {59, 1.0}}), 58.0},
        std::pair{comb(256, {{30, 16.0}, {61, 1.0}, {62, 4.0}, {63, 3.0}}), 62.0}}) {
    Analysis a(s, 2);
    ASSERT_EQ(a.run(1, 60.0), FATHOM_OK);
    EXPECT_NEAR(a.amplitudes[1], 2.0, 1e-3);
    EXPECT_NEAR(a.bin(1, 512), bin, 1e-3);
  }
}

TEST(Harmonic, TheArgumentNamesTheBinOfTinyTransformsOnly) {
  for (std::int32_t fftSize : {2, 3}) {  // bin 1, whose band would begin below the first
    Analysis a(comb(64, {{20, 4.0}}), 1);
    EXPECT_EQ(a.run(1, 0.4 * kRate, fftSize), fftSize == 3 ? FATHOM_ERR_NO_SAMPLES : FATHOM_OK);
    EXPECT_TRUE(a.intact());
  }
}

TEST(Harmonic, FailuresLeaveWhatWasMeasured) {
  const Values s = comb(100, {{30, 16.0}, {60, 4.0}});
  for (std::int32_t window : {-1, 8}) {
    Analysis a(s, 2);
    EXPECT_EQ(a.run(window, 60.0), FATHOM_ERR_SELECTION);
    EXPECT_TRUE(SameBits(a.spectrum.values(), s) && a.noResults());
  }
  // The third harmonic's band reaches past the spectrum.
  Analysis a(comb(92, {{30, 16.0}, {60, 4.0}}), 4);
  EXPECT_EQ(a.run(1, 100.0), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_EQ(a.amplitudes[1], 4.0);
  EXPECT_EQ(a.amplitudes[2], Guarded::kFill);
  EXPECT_TRUE(a.thd.untouched() && a.thdNoise.untouched() && a.intact());
  // Silence: bin 0 is the largest and has no band.
  Analysis silent(Values(100, 0.0), 2);
  EXPECT_EQ(silent.run(1, 100.0), FATHOM_ERR_NO_SAMPLES);
  // No element at all, or fewer than are cleared.
  Analysis none(Values{}, 2), few(Values(3, 1.0), 2);
  EXPECT_EQ(none.run(1, 100.0), FATHOM_ERR_NO_SAMPLES);
  EXPECT_NE(few.run(7, 100.0), FATHOM_OK);
  EXPECT_TRUE(none.intact() && few.intact());
}

TEST(Harmonic, RequestsForMemory) {
  for (int request = 1; request <= 5; ++request) {
    Analysis a(comb(128, {{20, 16.0}, {21, 9.0}, {19, 4.0}}), 1);
    const FailingMalloc failing(request);
    const bool none = request == 2 || request == 5;  // four are made
    EXPECT_EQ(a.run(1, 80.0), none ? FATHOM_OK : FATHOM_ERR_MEMORY) << request;
    EXPECT_EQ(a.noResults(), request < 5);
    EXPECT_TRUE(a.intact());
  }
}

// Whatever the scalars are: a status, and no memory but the caller's own.
TEST(Harmonic, AnyScalarIsSafe) {
  const Values spectra[] = {comb(64, {{20, 4.0}, {21, 3.9}}), Values(64, kNan), Values(64, -1.0),
                            comb(64, {{63, kInf}})};
  const double scalars[] = {0.0, -0.0, 1.0, -80.0, 1e-300, 1e300, kInf, -kInf, kNan};
  for (const Values& s : spectra) {
    for (double f0 : scalars) {
      for (double rate : scalars) {
        for (std::int32_t fftSize : {INT32_MIN, 0, 1, 2, 3, INT32_MAX}) {
          Analysis a(s, 3);
          a.run(7, f0, fftSize, rate);
          EXPECT_TRUE(a.intact());
          Guarded none(1), results(2);
          EXPECT_LE(HarmonicAnalyzer(a.spectrum, 64, fftSize, -2, 1, rate, f0, none, none, results,
                                     results.data() + 1),
                    FATHOM_OK);
          EXPECT_TRUE(none.untouched() && results.intact());
        }
      }
    }
  }
  // No frequency, no harmonics: nothing was measured, and nothing divides by nothing.
  Analysis a(spectra[0], 3);
  EXPECT_EQ(a.run(1, -80.0), FATHOM_OK);
  EXPECT_EQ(a.amplitudes.values(), Values(3, 0.0));
  EXPECT_TRUE(std::isnan(a.thd[0]));
}

}  // namespace
}  // namespace fathom::test
