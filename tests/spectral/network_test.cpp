#include "frame/elementary.hpp"
#include "spectral/packed_real.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// A circular convolution, the response of the system `h` to x.
Values respond(const Values& x, const Values& h) {
  Values y(x.size(), 0.0);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < h.size(); ++j) y[(i + j) % x.size()] += x[i] * h[j];
  }
  return y;
}

// The system comes back, with the bits of the quotient written out over the packed transforms.
TEST(Network, OneRecordGivesTheSystem) {
  for (std::int32_t n = 1; n <= 1024; n *= 2) {
    const auto size = static_cast<std::size_t>(n), half = size / 2;
    const std::size_t bins = std::max<std::size_t>(half, 1);
    Values x = uniform(size, 15), pulse(size);
    x[0] += 40.0;  // keeps every stimulus bin well away from zero
    pulse[0] = 1.0;
    const Values system = respond(pulse, {-0.5, 0.25, -0.125, -2.0});
    Values y = respond(x, system), h(size);
    Guarded magnitude(bins), phase(bins), impulse(size), inPlace(x);
    double df = 0.0;
    ASSERT_EQ(TransferFunction(x.data(), y.data(), n, 0.5, magnitude, phase, &df), FATHOM_OK);
    ASSERT_EQ(ImpulseResponse(x.data(), y.data(), n, impulse), FATHOM_OK);
    ASSERT_EQ(ImpulseResponse(inPlace, y.data(), n, inPlace), FATHOM_OK);
    EXPECT_EQ(df, 2.0 / n);
    EXPECT_TRUE(impulse.intact() && magnitude.intact() && phase.intact()) << n;
    PackedRealFFT(x.data(), n, Log2Size(n));
    PackedRealFFT(y.data(), n, Log2Size(n));
    for (std::size_t k : {std::size_t{0}, half}) h[k] = y[k] / x[k];
    for (std::size_t k = 1; k < half; ++k) {
      const double xr = x[k], xi = x[size - k], yr = y[k], yi = y[size - k];
      const double d = 1.0 / (xr * xr + xi * xi);
      h[k] = (yr * xr + yi * xi) * d;
      h[size - k] = (yi * xr - yr * xi) * d;
    }
    for (std::size_t k = 0; k < bins; ++k) {
      const double im = k == 0 ? 0.0 : h[size - k];
      ASSERT_TRUE(SameBits(magnitude[k], std::sqrt(h[k] * h[k] + im * im))) << n << ' ' << k;
      ASSERT_TRUE(SameBits(phase[k], fathom::atan2(im, h[k]))) << n << ' ' << k;
    }
    PackedRealInvFFT(h.data(), n, Log2Size(n));
    ASSERT_TRUE(SameBits(impulse.values(), h) && SameBits(inPlace.values(), h)) << n;
    for (std::size_t i = 0; i < size; ++i) EXPECT_NEAR(h[i], system[i], 1e-13) << n << ' ' << i;
  }
}

struct Network {
  explicit Network(std::size_t n) : impulse(n), df(1) {
    const std::size_t half = n / 2, bins = std::max<std::size_t>(half, 1);
    for (const std::size_t size : {bins, bins, bins, half, half}) spectra.emplace_back(size);
  }
  AnalysisStatus measure(const Values& x, const Values& y, std::int32_t n, std::int32_t frames) {
    return NetworkFunctions(x.data(), y.data(), n, frames, 0.125, spectra[0], spectra[1],
                            spectra[3], spectra[4], spectra[2], impulse, df);
  }
  // Cross magnitude and phase, coherence, magnitude and phase.
  std::vector<Guarded> spectra;
  Guarded impulse, df;
};

// The averages put together from the exported spectra, two-sided, one frame after another.
TEST(Network, AveragesKeepTheBitsOfTheSpectra) {
  for (std::int32_t n : {1, 2, 4, 8, 64, 256}) {
    for (std::int32_t frames : {1, 3, 5}) {
      const auto size = static_cast<std::size_t>(n);
      const Values x = uniform(size * static_cast<std::size_t>(frames), 12);
      Values y = uniform(x.size(), 13);
      for (std::size_t i = 0; i < size; ++i) y[i] = x[i];  // frame 0: no imaginary part at all
      Network network(size);
      ASSERT_EQ(network.measure(x, y, n, frames), FATHOM_OK);
      Values re(size), im(size), px(size), py(size), a(size), b(size);
      for (std::size_t f = 0; f < static_cast<std::size_t>(frames); ++f) {
        CrossSpectrum(&x[f * size], &y[f * size], n, a.data(), b.data());
        for (std::size_t k = 0; k < size; ++k) re[k] += a[k], im[k] += b[k];
        a.assign(&x[f * size], &x[f * size] + size);
        b.assign(&y[f * size], &y[f * size] + size);
        Spectrum(a.data(), n);
        Spectrum(b.data(), n);
        for (std::size_t k = 0; k < size; ++k) px[k] += a[k], py[k] += b[k];
      }
      for (std::size_t k = 0; k < size; ++k) a[k] = re[k] / px[k], b[k] = im[k] / px[k];
      for (std::size_t k = 0; k < network.spectra[0].size(); ++k) {
        const double square = re[k] * re[k] + im[k] * im[k];
        const double sides = k == 0 ? 1.0 : 2.0;
        const double expected[] = {sides * (1.0 / frames) * std::sqrt(square),
                                   fathom::atan2(im[k], re[k]), square / (px[k] * py[k]),
                                   std::sqrt(a[k] * a[k] + b[k] * b[k]), fathom::atan2(b[k], a[k])};
        for (std::size_t i = 0; i < 5 && k < network.spectra[i].size(); ++i) {
          ASSERT_TRUE(SameBits(network.spectra[i][k], expected[i]))
              << n << ' ' << frames << " bin " << k << " output " << i;
        }
      }
      InvFFT(a.data(), b.data(), n);
      ASSERT_TRUE(SameBits(network.impulse.values(), a)) << n << ' ' << frames;
      EXPECT_EQ(network.df[0], 8.0 / n);
      for (const Guarded& g : network.spectra) EXPECT_TRUE(g.intact());
      EXPECT_TRUE(network.impulse.intact() && network.df.intact());
    }
  }
}

TEST(Network, ChecksAndRequests) {
  const Values x = uniform(16, 17);
  Network network(8);
  EXPECT_EQ(network.measure(x, x, 12, -1), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(network.measure(x, x, 6, 2), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(TransferFunction(x.data(), x.data(), 6, 1.0, network.spectra[0], network.spectra[1],
                             network.df),
            FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(ImpulseResponse(x.data(), x.data(), 6, network.impulse), FATHOM_ERR_POWER_OF_TWO);
  for (const Guarded& g : network.spectra) EXPECT_TRUE(g.untouched());
  EXPECT_TRUE(network.impulse.untouched() && network.df.untouched());
  const FailingMalloc requests(0);
  network.measure(x, x, 8, 2);
  EXPECT_EQ(requests.requests(), 6);  // and no more, however many frames
}

}  // namespace
}  // namespace fathom::test
