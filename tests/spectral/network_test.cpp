#include <gtest/gtest.h>

#include <cmath>
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

// A circular convolution, the response of the system `h` to x.
std::vector<double> respond(const std::vector<double>& x, const std::vector<double>& h) {
  std::vector<double> y(x.size(), 0.0);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < h.size(); ++j) y[(i + j) % x.size()] += x[i] * h[j];
  }
  return y;
}

TEST(Network, RecoversTheSystem) {
  const std::vector<double> h = {0.5, -0.25, 0.125, 2.0};
  for (std::int32_t n = 4; n <= 512; n *= 2) {
    const auto size = static_cast<std::size_t>(n);
    std::vector<double> x = test::uniform(size, 11);
    x[0] += 40.0;  // keeps every stimulus bin well away from zero
    const std::vector<double> y = respond(x, h);
    Guarded impulse(size), magnitude(size / 2), phase(size / 2);
    double df = 0.0;
    ASSERT_EQ(ImpulseResponse(x.data(), y.data(), n, impulse), FATHOM_OK);
    ASSERT_EQ(TransferFunction(x.data(), y.data(), n, 0.5, magnitude, phase, &df), FATHOM_OK);
    EXPECT_EQ(df, 2.0 / n);
    EXPECT_TRUE(impulse.intact() && magnitude.intact() && phase.intact()) << n;
    for (std::size_t i = 0; i < size; ++i) {
      EXPECT_NEAR(impulse.data()[i], i < 4 ? h[i] : 0.0, 1e-13) << n << ' ' << i;
    }
    for (std::size_t k = 0; k < size / 2; ++k) {
      const double w = 2.0 * 3.141592653589793 * static_cast<double>(k) / n;
      double re = 0.0, im = 0.0;
      for (std::size_t m = 0; m < 4; ++m) {
        re += h[m] * std::cos(w * static_cast<double>(m));
        im -= h[m] * std::sin(w * static_cast<double>(m));
      }
      EXPECT_NEAR(magnitude.data()[k] * std::cos(phase.data()[k]), re, 1e-12) << n << ' ' << k;
      EXPECT_NEAR(magnitude.data()[k] * std::sin(phase.data()[k]), im, 1e-12) << n << ' ' << k;
    }
  }
}

// The quotient written out over the packed transforms: the same bits at every size.
TEST(Network, OneRecordKeepsTheBits) {
  for (std::int32_t n = 2; n <= 1024; n *= 2) {
    const auto size = static_cast<std::size_t>(n), half = size / 2;
    std::vector<double> x = test::uniform(size, 15), y = test::uniform(size, 16);
    std::vector<double> magnitude(half), phase(half), impulse(size), h(size);
    double df = 0.0;
    TransferFunction(x.data(), y.data(), n, 1.0, magnitude.data(), phase.data(), &df);
    ImpulseResponse(x.data(), y.data(), n, impulse.data());
    PackedRealFFT(x.data(), n, Log2Size(n));
    PackedRealFFT(y.data(), n, Log2Size(n));
    for (std::size_t k : {std::size_t{0}, half}) h[k] = y[k] / x[k];
    for (std::size_t k = 1; k < half; ++k) {
      const double xr = x[k], xi = x[size - k], yr = y[k], yi = y[size - k];
      const double d = 1.0 / (xr * xr + xi * xi);
      h[k] = (yr * xr + yi * xi) * d;
      h[size - k] = (yi * xr - yr * xi) * d;
    }
    for (std::size_t k = 0; k < half; ++k) {
      const double im = k == 0 ? 0.0 : h[size - k];
      ASSERT_TRUE(SameBits(magnitude[k], std::sqrt(h[k] * h[k] + im * im))) << n << ' ' << k;
      ASSERT_TRUE(SameBits(phase[k], std::atan2(im, h[k]))) << n << ' ' << k;
    }
    PackedRealInvFFT(h.data(), n, Log2Size(n));
    ASSERT_TRUE(SameBits(impulse, h)) << n;
  }
}

TEST(Network, TheSmallestRecords) {
  const double x = 4.0, y = -2.0;
  Guarded a(1), b(1);
  double df = 0.0;
  EXPECT_EQ(ImpulseResponse(&x, &y, 1, a), FATHOM_OK);
  EXPECT_EQ(a.data()[0], -0.5);
  EXPECT_EQ(TransferFunction(&x, &y, 1, 1.0, a, b, &df), FATHOM_OK);
  EXPECT_EQ(a.data()[0], 0.5);
  EXPECT_EQ(b.data()[0], 3.141592653589793);
  EXPECT_TRUE(a.intact() && b.intact());
  const std::vector<double> x2 = {3.0, 1.0}, y2 = {5.0, 1.0};
  Guarded h(2);
  EXPECT_EQ(ImpulseResponse(x2.data(), y2.data(), 2, h), FATHOM_OK);
  EXPECT_EQ(h.data()[0], (6.0 / 4.0 + 4.0 / 2.0) / 2);
  EXPECT_EQ(h.data()[1], (6.0 / 4.0 - 4.0 / 2.0) / 2);
  EXPECT_TRUE(h.intact());

  Guarded magnitude(0), phase(0), crossMagnitude(1), crossPhase(1), coherence(1), impulse(1);
  EXPECT_EQ(NetworkFunctions(&x, &y, 1, 1, 1.0, crossMagnitude, crossPhase, magnitude, phase,
                             coherence, impulse, &df),
            FATHOM_OK);
  EXPECT_EQ(crossMagnitude.data()[0], 8.0);
  EXPECT_EQ(crossPhase.data()[0], 3.141592653589793);
  EXPECT_EQ(coherence.data()[0], 1.0);
  EXPECT_EQ(impulse.data()[0], -0.5);
  EXPECT_TRUE(magnitude.intact() && phase.intact());
}

struct Network {
  explicit Network(std::size_t n)
      : crossMagnitude(n / 2),
        crossPhase(n / 2),
        magnitude(n / 2),
        phase(n / 2),
        coherence(n / 2),
        impulse(n),
        df(1) {}
  AnalysisStatus measure(const std::vector<double>& x, const std::vector<double>& y, std::int32_t n,
                         std::int32_t frames) {
    return NetworkFunctions(x.data(), y.data(), n, frames, 0.125, crossMagnitude, crossPhase,
                            magnitude, phase, coherence, impulse, df);
  }
  std::vector<Guarded*> outputs() {
    return {&crossMagnitude, &crossPhase, &magnitude, &phase, &coherence, &impulse, &df};
  }
  Guarded crossMagnitude, crossPhase, magnitude, phase, coherence, impulse, df;
};

// The averages put together from the exported spectra, two-sided, one frame after another.
TEST(Network, AveragesKeepTheBitsOfTheSpectra) {
  for (std::int32_t n : {2, 4, 8, 64, 256}) {
    for (std::int32_t frames : {1, 3, 5}) {
      const auto size = static_cast<std::size_t>(n);
      const std::vector<double> x = test::uniform(size * static_cast<std::size_t>(frames), 12);
      std::vector<double> y = test::uniform(x.size(), 13);
      for (std::size_t i = 0; i < size; ++i) y[i] = x[i];  // frame 0: no imaginary part at all
      Network network(size);
      ASSERT_EQ(network.measure(x, y, n, frames), FATHOM_OK);
      std::vector<double> re(size), im(size), px(size), py(size), a(size), b(size);
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
      for (std::size_t k = 0; k < size / 2; ++k) {
        const double square = re[k] * re[k] + im[k] * im[k];
        const double sides = k == 0 ? 1.0 : 2.0;
        const double expected[] = {sides * (1.0 / frames) * std::sqrt(square),
                                   std::atan2(im[k], re[k]), std::sqrt(a[k] * a[k] + b[k] * b[k]),
                                   std::atan2(b[k], a[k]), square / (px[k] * py[k])};
        for (std::size_t i = 0; i < 5; ++i) {
          ASSERT_TRUE(SameBits(network.outputs()[i]->data()[k], expected[i]))
              << n << ' ' << frames << " bin " << k << " output " << i;
        }
      }
      InvFFT(a.data(), b.data(), n);
      ASSERT_TRUE(SameBits(network.impulse.values(), a)) << n << ' ' << frames;
      EXPECT_EQ(network.df.data()[0], 8.0 / n);
      for (Guarded* g : network.outputs()) EXPECT_TRUE(g->intact());
    }
  }
}

TEST(Network, AWireIsCoherentAndImmediate) {
  const std::vector<double> x = test::uniform(256, 14);
  Network network(64);
  ASSERT_EQ(network.measure(x, x, 64, 4), FATHOM_OK);
  for (std::size_t k = 0; k < 32; ++k) {
    EXPECT_NEAR(network.coherence.data()[k], 1.0, 1e-13);
    EXPECT_NEAR(network.magnitude.data()[k], 1.0, 1e-13);
    EXPECT_NEAR(network.phase.data()[k], 0.0, 1e-13);
  }
  for (std::size_t i = 0; i < 64; ++i) {
    EXPECT_NEAR(network.impulse.data()[i], i == 0 ? 1.0 : 0.0, 1e-13);
  }
}

TEST(Network, ChecksAndRequests) {
  const std::vector<double> x = test::uniform(16, 17);
  struct Case {
    std::int32_t n, frames;
    AnalysisStatus status;
  };
  for (const Case& c : {Case{12, -1, FATHOM_ERR_NO_SAMPLES}, Case{6, 2, FATHOM_ERR_POWER_OF_TWO}}) {
    Network network(8);
    EXPECT_EQ(network.measure(x, x, c.n, c.frames), c.status);
    for (Guarded* g : network.outputs()) EXPECT_TRUE(g->untouched());
  }
  Guarded a(6), b(3), df(1);
  EXPECT_EQ(TransferFunction(x.data(), x.data(), 6, 1.0, b, b, df), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_EQ(ImpulseResponse(x.data(), x.data(), 6, a), FATHOM_ERR_POWER_OF_TWO);
  EXPECT_TRUE(a.untouched() && b.untouched() && df.untouched());
  Network network(8);
  const test::FailingMalloc requests(0);
  network.measure(x, x, 8, 2);
  EXPECT_EQ(requests.requests(), 6);  // and no more, however many frames
}

}  // namespace
}  // namespace fathom
