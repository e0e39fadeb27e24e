#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kInf;
using test::kNan;

constexpr double kRate = 1000.0;
const double kCosines[8][4] = {{1.0},
                               {0.5, 0.5},
                               {0.54, 0.46},
                               {0.42323, 0.49755, 0.07922},
                               {0.4265907136715391, 0.4965606190885641, 0.07684866723989682},
                               {0.42, 0.5, 0.08},
                               {0.2810638602, 0.5208971735, 0.1980389663},
                               {0.35875, 0.48829, 0.14128, 0.01168}};

struct Tone {
  double bin, amplitude;
};

struct Analysis {
  explicit Analysis(const std::vector<double>& s, std::size_t harmonics)
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
      std::vector<double> s(kPoints / 2);
      for (std::size_t k = 0; k < s.size(); ++k) {
        for (int h = 1; h <= 2; ++h) {
          const double centre = h == 1 ? 100.0 + offset : 200.0 + offset / 2;
          const auto apart = static_cast<double>(k) - centre;
          if (std::fabs(apart) > 5.0) continue;
          const auto v =
              static_cast<double>(windowAt(static_cast<std::size_t>(window), kPoints, apart) *
                                  (h == 1 ? 5000.0L : 250.0L));
          s[k] = v * v;
        }
      }
      Analysis a(s, 2);
      ASSERT_EQ(a.run(window, 100.0), FATHOM_OK);
      for (std::size_t h = 0; h < 2; ++h) {
        EXPECT_NEAR(a.amplitudes.data()[h] / (h == 0 ? 5000.0 : 250.0), 1.0, 1e-6)
            << window << ' ' << offset << ' ' << h;
        const double bin = h == 0 ? 100.0 + offset : 200.0 + offset / 2;
        EXPECT_NEAR(a.frequencies.data()[h] * kPoints / kRate, bin, 1e-6)
            << window << ' ' << offset;
      }
      EXPECT_NEAR(a.thd.data()[0], 5.0, 1e-5);
    }
  }
}

// Powers of single bins, all read back as they are: no neighbour differs by more than 1e-7.
std::vector<double> comb(std::size_t n, const std::vector<Tone>& tones) {
  std::vector<double> s(n);
  for (const Tone& t : tones) s[static_cast<std::size_t>(t.bin)] = t.amplitude;
  return s;
}

TEST(Harmonic, EqualNeighboursGiveTheBinItself) {
  std::vector<double> s = comb(256, {{0, 50.0}, {30, 9.0}, {60, 4.0}, {90, 1.0}, {200, 16.0 / 9}});
  s[30] = 16.0;
  const double expected[] = {16.0, 4.0, 1.0, 0.0, 0.0, 0.0, 0.0};
  Analysis a(s, 10);
  ASSERT_EQ(a.run(1, kRate / 15), FATHOM_OK);  // seven of the ten fit below half the rate
  for (std::size_t h = 0; h < 10; ++h) {
    EXPECT_EQ(a.amplitudes.data()[h], h < 7 ? expected[h] : 0.0) << h;
    const double bin = h < 3 ? 30.0 * (static_cast<double>(h) + 1) : 0.0;
    if (h >= 3 && h < 7) continue;  // where nothing is, any bin of the band will do
    EXPECT_NEAR(a.frequencies.data()[h], bin * kRate / 512, 1e-10) << h;
  }
  EXPECT_DOUBLE_EQ(a.thd.data()[0], std::sqrt(17.0) * (100.0 / 16.0));
  EXPECT_DOUBLE_EQ(a.thdNoise.data()[0], std::sqrt((5.0 + 16.0 / 9) / 1.5) * (100.0 / 16.0));
  for (std::size_t k = 0; k < 4; ++k) s[k] = 0.0;
  EXPECT_TRUE(test::SameBits(a.spectrum.values(), s));

  // The size of the transform only scales the frequencies.
  Analysis b(s, 1);
  ASSERT_EQ(b.run(1, 60.0, 1024), FATHOM_OK);
  EXPECT_NEAR(b.frequencies.data()[0], 30.0 * kRate / 1024, 1e-10);

  // Neighbours 5e-7 apart at place 3 or 1 of the band: the difference is divided by the place.
  s[31] = 5e-7;
  Analysis above(s, 1);
  ASSERT_EQ(above.run(1, 60.0), FATHOM_OK);
  EXPECT_NEAR(above.amplitudes.data()[0], 4.0, 1e-3);  // interpolated: an amplitude
  s[31] = 2.9e-7;
  Analysis equal(s, 1);
  ASSERT_EQ(equal.run(1, 60.0), FATHOM_OK);
  EXPECT_EQ(equal.amplitudes.data()[0], 16.0);
  std::swap(s[29], s[31]);
  Analysis below(s, 1);
  ASSERT_EQ(below.run(1, 60.0), FATHOM_OK);
  EXPECT_NEAR(below.amplitudes.data()[0], 4.0, 1e-3);
}

TEST(Harmonic, EqualBinsLeaveTheAmplitudeInfinite) {
  std::vector<double> s = comb(128, {{20, 4.0}, {21, 4.0}});
  Analysis a(s, 1);
  ASSERT_EQ(a.run(1, 80.0), FATHOM_OK);
  EXPECT_EQ(a.amplitudes.data()[0], kInf);
  EXPECT_NEAR(a.frequencies.data()[0], 20.5 * kRate / 256, 1e-10);
  EXPECT_EQ(a.thdNoise.data()[0], 0.0);
}

// A harmonic whose largest bin is the first or the last of its band.
TEST(Harmonic, PeaksAtTheEdgesOfTheBand) {
  std::vector<double> first = comb(256, {{30, 16.0}, {58, 4.0}, {59, 1.0}});
  std::vector<double> last = comb(256, {{30, 16.0}, {61, 1.0}, {62, 4.0}, {63, 3.0}});
  Analysis a(first, 2), b(last, 2);
  ASSERT_EQ(a.run(1, 60.0), FATHOM_OK);
  ASSERT_EQ(b.run(1, 60.0), FATHOM_OK);
  // Both are tones with a second bin of half the amplitude: exactly on a Hanning window's bin.
  EXPECT_NEAR(a.amplitudes.data()[1], 2.0, 1e-3);
  EXPECT_NEAR(a.frequencies.data()[1] * 512 / kRate, 58.0, 1e-3);
  EXPECT_NEAR(b.amplitudes.data()[1], 2.0, 1e-3);
  EXPECT_NEAR(b.frequencies.data()[1] * 512 / kRate, 62.0, 1e-3);
}

TEST(Harmonic, TheArgumentNamesTheBinOfTinyTransformsOnly) {
  std::vector<double> s = comb(64, {{20, 4.0}});
  for (std::int32_t fftSize : {2, 3}) {  // bin 1, whose band would begin below the first
    Analysis a(s, 1);
    EXPECT_EQ(a.run(1, 0.4 * kRate, fftSize), fftSize == 3 ? FATHOM_ERR_NO_SAMPLES : FATHOM_OK);
    EXPECT_TRUE(a.intact());
  }
}

TEST(Harmonic, FailuresLeaveWhatWasMeasured) {
  const std::vector<double> s = comb(100, {{30, 16.0}, {60, 4.0}});
  for (std::int32_t window : {-1, 8}) {
    Analysis a(s, 2);
    EXPECT_EQ(a.run(window, 60.0), FATHOM_ERR_SELECTION);
    EXPECT_TRUE(test::SameBits(a.spectrum.values(), s) && a.noResults());
  }
  // The third harmonic's band reaches past the spectrum.
  const std::vector<double> late = comb(92, {{30, 16.0}, {60, 4.0}});
  Analysis a(late, 4);
  EXPECT_EQ(a.run(1, 100.0), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_EQ(a.amplitudes.data()[1], 4.0);
  EXPECT_EQ(a.amplitudes.data()[2], Guarded::kFill);
  EXPECT_TRUE(a.thd.untouched() && a.thdNoise.untouched() && a.intact());
  // Silence: bin 0 is the largest and has no band.
  Analysis silent(std::vector<double>(100, 0.0), 2);
  EXPECT_EQ(silent.run(1, 100.0), FATHOM_ERR_NO_SAMPLES);
  // No element at all, or fewer than are cleared.
  Analysis none(std::vector<double>{}, 2), few(std::vector<double>(3, 1.0), 2);
  EXPECT_EQ(none.run(1, 100.0), FATHOM_ERR_NO_SAMPLES);
  EXPECT_NE(few.run(7, 100.0), FATHOM_OK);
  EXPECT_TRUE(none.intact() && few.intact());
}

TEST(Harmonic, RequestsForMemory) {
  std::vector<double> s = comb(128, {{20, 16.0}, {21, 9.0}, {19, 4.0}});
  for (int request = 1; request <= 5; ++request) {
    Analysis a(s, 1);
    const test::FailingMalloc failing(request);
    const bool none = request == 2 || request == 5;  // four are made
    EXPECT_EQ(a.run(1, 80.0), none ? FATHOM_OK : FATHOM_ERR_MEMORY) << request;
    EXPECT_EQ(a.noResults(), request < 5);
    EXPECT_TRUE(a.intact());
  }
}

// Whatever the scalars are: a status, and no memory but the caller's own.
TEST(Harmonic, AnyScalarIsSafe) {
  const std::vector<double> spectra[] = {comb(64, {{20, 4.0}, {21, 3.9}}),
                                         std::vector<double>(64, kNan),
                                         std::vector<double>(64, -1.0), comb(64, {{63, kInf}})};
  const double scalars[] = {0.0, -0.0, 1.0, -80.0, 1e-300, 1e300, kInf, -kInf, kNan};
  for (const std::vector<double>& s : spectra) {
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
  EXPECT_EQ(a.amplitudes.values(), std::vector<double>(3, 0.0));
  EXPECT_TRUE(std::isnan(a.thd.data()[0]));
}

}  // namespace
}  // namespace fathom
