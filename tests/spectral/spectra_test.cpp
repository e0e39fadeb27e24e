#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "spectral/packed_real.hpp"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;
using Complex = std::complex<long double>;

constexpr double kPi = 3.141592653589793;

// The transform's sum of n points, term by term; samples past the end are zero.
std::vector<Complex> slowTransform(const std::vector<double>& x, std::size_t n) {
  std::vector<Complex> bins(n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t m = 0; m < x.size(); ++m) {
      const long double angle = -2.0L * 3.14159265358979323846L *
                                static_cast<long double>(k * m % n) / static_cast<long double>(n);
      bins[k] += static_cast<long double>(x[m]) * std::polar(1.0L, angle);
    }
  }
  return bins;
}

std::vector<double> awkward(std::size_t n, std::uint64_t seed) {
  std::vector<double> x = test::uniform(n, seed);
  for (std::size_t i = 0; i < n; i += 5) x[i] = i % 2 == 0 ? 1e-160 : -0.0;
  return x;
}

// Every result against the sum of the definition, from one sample up.
TEST(Spectra, AgreeWithTheTransformsSum) {
  for (std::int32_t n = 1; n <= 256; n *= 2) {
    const auto size = static_cast<std::size_t>(n);
    const std::size_t half = size / 2;
    const std::size_t bins = std::max<std::size_t>(half, 1);
    const std::vector<double> x = test::uniform(size, 3), y = test::uniform(size, 4);
    const std::vector<Complex> slowX = slowTransform(x, size), slowY = slowTransform(y, size);
    const long double square = static_cast<long double>(n) * n;
    Guarded two(x), power(half), amplitude(bins), phase(bins), crossMagnitude(bins),
        crossPhase(bins);
    double df = 0.0;
    ASSERT_EQ(Spectrum(two, n), FATHOM_OK);
    ASSERT_EQ(AutoPowerSpectrum(x.data(), n, 0.25, power, &df), FATHOM_OK);
    EXPECT_EQ(df, 4.0 / n);
    ASSERT_EQ(AmpPhaseSpectrum(x.data(), n, 0, 0.25, amplitude, phase, &df), FATHOM_OK);
    EXPECT_EQ(df, 4.0 / n);
    ASSERT_EQ(CrossPowerSpectrum(x.data(), y.data(), n, 0.25, crossMagnitude, crossPhase, &df),
              FATHOM_OK);
    EXPECT_EQ(df, 4.0 / n);
    for (const Guarded* g : {&two, &power, &amplitude, &phase, &crossMagnitude, &crossPhase}) {
      EXPECT_TRUE(g->intact()) << n;
    }
    for (std::size_t k = 0; k < size; ++k) {
      EXPECT_NEAR(two.data()[k], static_cast<double>(std::norm(slowX[k]) / square), 1e-15);
    }
    for (std::size_t k = 0; k < bins; ++k) {
      const long double sides = k == 0 ? 1.0L : 2.0L;
      const Complex cross = std::conj(slowX[k]) * slowY[k] / square;
      if (k < half) {
        EXPECT_NEAR(power.data()[k], static_cast<double>(sides * std::norm(slowX[k]) / square),
                    1e-15);
      }
      EXPECT_NEAR(amplitude.data()[k],
                  static_cast<double>(std::sqrt(sides) * std::abs(slowX[k]) / n), 1e-14);
      EXPECT_NEAR(crossMagnitude.data()[k], static_cast<double>(sides * std::abs(cross)), 1e-15);
      const Complex turned = std::polar<long double>(std::abs(slowX[k]), phase.data()[k]);
      EXPECT_NEAR(static_cast<double>(std::abs(turned - slowX[k])), 0.0, 1e-12) << n << ' ' << k;
      const Complex turnedCross = std::polar<long double>(std::abs(cross), crossPhase.data()[k]);
      EXPECT_NEAR(static_cast<double>(std::abs(turnedCross - cross)), 0.0, 1e-14) << n << ' ' << k;
    }
  }
}

// The packed transform unpacked one bin after another: the same bits at every size.
TEST(Spectra, VectorFormsKeepTheBits) {
  for (std::int32_t n = 1; n <= 1024; n *= 2) {
    const auto size = static_cast<std::size_t>(n);
    const std::vector<double> x = awkward(size, 5), y = awkward(size, 6);
    std::vector<double> px = x, py = y;
    PackedRealFFT(px.data(), n, Log2Size(n));
    PackedRealFFT(py.data(), n, Log2Size(n));
    const double s = 1.0 / (static_cast<double>(n) * n);
    std::vector<double> two = x, re(size), im(size), power(size), amplitude(size), magnitude(size),
                        phase(size);
    double df = 0.0;
    Spectrum(two.data(), n);
    AutoPowerSpectrum(x.data(), n, 1.0, power.data(), &df);
    CrossSpectrum(x.data(), y.data(), n, re.data(), im.data());
    AmpPhaseSpectrum(x.data(), n, 0, 1.0, amplitude.data(), phase.data(), &df);
    CrossPowerSpectrum(x.data(), y.data(), n, 1.0, magnitude.data(), phase.data(), &df);
    for (std::size_t k = 0; k <= size / 2 && k < size; ++k) {
      const bool real = k == 0 || k == size / 2;
      const double xr = px[k], yr = py[k];
      const double xi = real ? 0.0 : px[size - k], yi = real ? 0.0 : py[size - k];
      const double p = real ? xr * xr * s : (xr * xr + xi * xi) * s;
      const double cr = real ? xr * yr * s : (xr * yr + xi * yi) * s;
      const double ci = real ? 0.0 : (xr * yi - xi * yr) * s;
      ASSERT_TRUE(SameBits(two[k], p)) << n << ' ' << k;
      ASSERT_TRUE(SameBits(two[(size - k) % size], p));
      ASSERT_TRUE(SameBits(re[k], cr));
      ASSERT_TRUE(SameBits(im[k], ci));
      ASSERT_TRUE(SameBits(re[(size - k) % size], cr));
      ASSERT_TRUE(SameBits(im[(size - k) % size], real ? 0.0 : -ci));
      if (k == 0 || k >= size / 2) continue;
      ASSERT_TRUE(SameBits(power[k], p * 2.0));
      ASSERT_TRUE(SameBits(amplitude[k], std::sqrt(2.0) * std::sqrt(xr * xr + xi * xi) / n));
      ASSERT_TRUE(SameBits(magnitude[k], 2.0 * std::sqrt(cr * cr + ci * ci)));
    }
  }
}

TEST(Spectra, CrossSpectrumPadsToAPowerOfTwo) {
  for (std::int32_t n : {1, 2, 3, 5, 8, 13, 31, 33, 100}) {
    const auto size = static_cast<std::size_t>(n);
    std::size_t padded = 1;
    while (padded < size) padded *= 2;
    const std::vector<double> x = test::uniform(size, 7), y = test::uniform(size, 8);
    const std::vector<Complex> slowX = slowTransform(x, padded), slowY = slowTransform(y, padded);
    Guarded re(padded), im(padded);
    ASSERT_EQ(CrossSpectrum(x.data(), y.data(), n, re, im), FATHOM_OK);
    EXPECT_TRUE(re.intact() && im.intact()) << n;
    for (std::size_t k = 0; k < padded; ++k) {
      const Complex cross =
          std::conj(slowX[k]) * slowY[k] / static_cast<long double>(padded * padded);
      EXPECT_NEAR(re.data()[k], static_cast<double>(cross.real()), 1e-15) << n << ' ' << k;
      EXPECT_NEAR(im.data()[k], static_cast<double>(cross.imag()), 1e-15) << n << ' ' << k;
    }
    EXPECT_TRUE(SameBits(im.data()[0], 0.0));
  }
}

// Sizes whose transform no call can address fail without being asked of the heap.
TEST(Spectra, CrossSpectrumRefusesToPadBeyondTheCount) {
  const double x = 1.0;
  Guarded re(1), im(1);
  const test::FailingMalloc requests(1);
  for (std::int32_t n : {(1 << 30) + 1, INT32_MAX}) {
    EXPECT_EQ(CrossSpectrum(&x, &x, n, re, im), FATHOM_ERR_MEMORY);
  }
  EXPECT_EQ(requests.requests(), 0);
  EXPECT_EQ(CrossSpectrum(&x, &x, 1 << 30, re, im), FATHOM_ERR_MEMORY);
  EXPECT_EQ(requests.requests(), 1);
  EXPECT_TRUE(re.untouched() && im.untouched());
}

TEST(Spectra, PhaseIsUnwrappedOnRequest) {
  std::vector<double> x(32, 0.0);
  x[9] = 1.0;  // a delay: phase falls by 9/32 of a turn from bin to bin
  std::vector<double> amplitude(16), wrapped(16), unwrapped(16);
  double df = 0.0;
  AmpPhaseSpectrum(x.data(), 32, 0, 1.0, amplitude.data(), wrapped.data(), &df);
  AmpPhaseSpectrum(x.data(), 32, -1, 1.0, amplitude.data(), unwrapped.data(), &df);
  EXPECT_NEAR(unwrapped[15], -15 * 9 * 2.0 * kPi / 32, 1e-12);
  UnWrap1D(wrapped.data(), 16);
  EXPECT_TRUE(SameBits(unwrapped, wrapped));
}

TEST(Spectra, TheConstantsSignIsInItsPhase) {
  const std::vector<double> minus(8, -2.0), plus(8, 2.0);
  std::vector<double> magnitude(4), phase(4);
  double df = 0.0;
  AmpPhaseSpectrum(minus.data(), 8, 0, 1.0, magnitude.data(), phase.data(), &df);
  EXPECT_EQ(magnitude[0], 2.0);
  EXPECT_EQ(phase[0], kPi);
  CrossPowerSpectrum(minus.data(), plus.data(), 8, 1.0, magnitude.data(), phase.data(), &df);
  EXPECT_EQ(magnitude[0], 4.0);
  EXPECT_EQ(phase[0], kPi);
}

TEST(Spectra, ResultsMayReplaceTheInputs) {
  const std::vector<double> x = test::uniform(64, 9), y = test::uniform(64, 10);
  std::vector<double> re(64), im(64), a = x, b = y, power(32);
  CrossSpectrum(x.data(), y.data(), 64, re.data(), im.data());
  CrossSpectrum(a.data(), b.data(), 64, a.data(), b.data());
  EXPECT_TRUE(SameBits(a, re));
  EXPECT_TRUE(SameBits(b, im));
  double df = 0.0;
  AutoPowerSpectrum(x.data(), 64, 1.0, power.data(), &df);
  a = x;
  AutoPowerSpectrum(a.data(), 64, 1.0, a.data(), &df);
  a.resize(32);
  EXPECT_TRUE(SameBits(a, power));
}

TEST(Spectra, SizesArePowersOfTwo) {
  const std::vector<double> x(12, 1.0);
  Guarded a(x), b(12), df(1);
  EXPECT_EQ(Spectrum(a, 12), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_TRUE(SameBits(a.values(), x));
  EXPECT_EQ(AutoPowerSpectrum(a, 12, 1.0, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(CrossPowerSpectrum(a, a, 12, 1.0, b, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(AmpPhaseSpectrum(a, 12, 0, 1.0, b, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_TRUE(b.untouched() && df.untouched());
}

}  // namespace
}  // namespace fathom
