#include <complex>

#include "frame/elementary.hpp"
#include "spectral/packed_real.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

using Complex = std::complex<long double>;

// The transform's sum of n points, term by term; samples past the end are zero.
std::vector<Complex> slowTransform(const Values& x, std::size_t n) {
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

// The packed transform unpacked one bin after another: the same bits at every size.
TEST(Spectra, KeepTheBitsOfThePackedTransform) {
  for (std::int32_t n = 1; n <= 1024; n *= 2) {
    const auto size = static_cast<std::size_t>(n), half = size / 2;
    const std::size_t bins = std::max<std::size_t>(half, 1);
    Values x = uniform(size, 5), y = uniform(size, 6);
    for (std::size_t i = 0; i < size; i += 5) x[i] = y[i] = i % 2 == 0 ? 1e-160 : -0.0;
    x[0] = n % 3 == 1 ? 40.0 : -40.0;  // a constant of either sign
    y[0] = 40.0;
    Values px = x, py = y;
    PackedRealFFT(px.data(), n, Log2Size(n));
    PackedRealFFT(py.data(), n, Log2Size(n));
    Guarded two(x), re(x), im(y), power(half), inPlace(x), amplitude(bins), phase(bins),
        unwrapped(bins), magnitude(bins), crossPhase(bins);
    double df[4] = {};
    ASSERT_EQ(Spectrum(two, n), FATHOM_OK);
    ASSERT_EQ(CrossSpectrum(re, im, n, re, im), FATHOM_OK);
    ASSERT_EQ(AutoPowerSpectrum(x.data(), n, 0.25, power, &df[0]), FATHOM_OK);
    ASSERT_EQ(AutoPowerSpectrum(inPlace, n, 0.25, inPlace, &df[1]), FATHOM_OK);
    ASSERT_EQ(AmpPhaseSpectrum(x.data(), n, -1, 0.25, amplitude, unwrapped, &df[2]), FATHOM_OK);
    ASSERT_EQ(AmpPhaseSpectrum(x.data(), n, 0, 0.25, amplitude, phase, &df[2]), FATHOM_OK);
    ASSERT_EQ(CrossPowerSpectrum(x.data(), y.data(), n, 0.25, magnitude, crossPhase, &df[3]),
              FATHOM_OK);
    for (const double d : df) EXPECT_EQ(d, 4.0 / n);
    for (const Guarded* g : {&two, &re, &im, &power, &inPlace, &amplitude, &phase, &unwrapped,
                             &magnitude, &crossPhase}) {
      EXPECT_TRUE(g->intact()) << n;
    }
    const double s = 1.0 / (static_cast<double>(n) * n);
    for (std::size_t k = 0; k <= half && k < size; ++k) {
      const bool real = k == 0 || k == half;
      const double xr = px[k], yr = py[k];
      const double xi = real ? 0.0 : px[size - k], yi = real ? 0.0 : py[size - k];
      const double p = (xr * xr + xi * xi) * s, cr = (xr * yr + xi * yi) * s;
      const double ci = real ? 0.0 : (xr * yi - xi * yr) * s;
      const std::size_t mirror = (size - k) % size;
      ASSERT_TRUE(SameBits({two[k], two[mirror], re[k], re[mirror], im[k], im[mirror]},
                           Values{p, p, cr, cr, ci, real ? 0.0 : -ci}))
          << n << ' ' << k;
      if (k >= bins) continue;
      const double sides = k == 0 ? 1.0 : 2.0;
      const double a = std::sqrt(sides) * std::sqrt(xr * xr + xi * xi) / n;
      const double m = sides * std::sqrt(cr * cr + ci * ci);
      ASSERT_TRUE(SameBits({amplitude[k], phase[k], magnitude[k], crossPhase[k]},
                           Values{a, fathom::atan2(xi, xr), m, fathom::atan2(ci, cr)}))
          << n << ' ' << k;
      if (k >= half) continue;
      ASSERT_TRUE(SameBits({power[k], inPlace[k]}, Values(2, p * sides))) << n << ' ' << k;
    }
    UnWrap1D(phase, n / 2);
    EXPECT_TRUE(SameBits(unwrapped.values(), phase.values())) << n;
  }
}

TEST(Spectra, CrossSpectrumIsTheDefinitionsPaddedToAPowerOfTwo) {
  for (std::int32_t n : {1, 2, 3, 5, 8, 13, 31, 32, 33, 100, 256}) {
    const auto size = static_cast<std::size_t>(n);
    std::size_t padded = 1;
    while (padded < size) padded *= 2;
    const Values x = uniform(size, 7), y = uniform(size, 8);
    const std::vector<Complex> slowX = slowTransform(x, padded), slowY = slowTransform(y, padded);
    Guarded re(padded), im(padded);
    ASSERT_EQ(CrossSpectrum(x.data(), y.data(), n, re, im), FATHOM_OK);
    EXPECT_TRUE(re.intact() && im.intact()) << n;
    for (std::size_t k = 0; k < padded; ++k) {
      const Complex cross =
          std::conj(slowX[k]) * slowY[k] / static_cast<long double>(padded * padded);
      EXPECT_NEAR(re[k], static_cast<double>(cross.real()), 1e-15) << n << ' ' << k;
      EXPECT_NEAR(im[k], static_cast<double>(cross.imag()), 1e-15) << n << ' ' << k;
    }
  }
}

// Sizes whose transform no call can address fail without being asked of the heap.
TEST(Spectra, CrossSpectrumRefusesToPadBeyondTheCount) {
  const double x = 1.0;
  Guarded re(1), im(1);
  const FailingMalloc requests(1);
  for (std::int32_t n : {(1 << 30) + 1, INT32_MAX}) {
    EXPECT_EQ(CrossSpectrum(&x, &x, n, re, im), FATHOM_ERR_MEMORY);
  }
  EXPECT_EQ(requests.requests(), 0);
  EXPECT_EQ(CrossSpectrum(&x, &x, 1 << 30, re, im), FATHOM_ERR_MEMORY);
  EXPECT_EQ(requests.requests(), 1);
  EXPECT_TRUE(re.untouched() && im.untouched());
}

TEST(Spectra, SizesArePowersOfTwo) {
  const Values x(12, 1.0);
  Guarded a(x), b(12), df(1);
  EXPECT_EQ(Spectrum(a, 12), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_TRUE(SameBits(a.values(), x));
  EXPECT_EQ(AutoPowerSpectrum(a, 12, 1.0, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(CrossPowerSpectrum(a, a, 12, 1.0, b, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(AmpPhaseSpectrum(a, 12, 0, 1.0, b, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_TRUE(b.untouched() && df.untouched());
}

}  // namespace
}  // namespace fathom::test
