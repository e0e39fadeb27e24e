// Network functions: what lies between a stimulus and the response to it.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "spectral/packed_bins.hpp"
#include "spectral/packed_real.hpp"

namespace {

void transform(const double* x, int32_t n, double* packed) {
  fathom::packedSpectrum(x, static_cast<std::size_t>(n), n, packed);
}

FATHOM_MULTIVERSION void divide(const double* x, double* y, std::size_t n) {
  y[0] = y[0] / x[0];
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    const double d = 1.0 / (x[k] * x[k] + x[n - k] * x[n - k]);
    const double re = (y[k] * x[k] + y[n - k] * x[n - k]) * d;
    const double im = (y[n - k] * x[k] - y[k] * x[n - k]) * d;
    y[k] = re;
    y[n - k] = im;
  }
  if (n > 1) y[n / 2] = y[n / 2] / x[n / 2];
}

// Sums over the frames, of bins 0 to n/2: cross spectrum and powers.
struct Sums {
  double* re;
  double* im;
  double* stimulus;
  double* response;
};

void addRealBin(const Sums& sums, double x, double y, double s, std::size_t k) {
  sums.re[k] += x * y * s;
  sums.stimulus[k] += x * x * s;
  sums.response[k] += y * y * s;
}

// Adds one frame, from its packed spectra.
FATHOM_MULTIVERSION void addFrame(const double* x, const double* y, std::size_t n,
                                  const Sums& sums) {
  const auto size = static_cast<double>(n);
  const double s = 1.0 / (size * size);
  double* const re = sums.re;
  double* const im = sums.im;
  double* const stimulus = sums.stimulus;
  double* const response = sums.response;
  addRealBin(sums, x[0], y[0], s, 0);
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    const double xr = x[k], xi = x[n - k];
    const double yr = y[k], yi = y[n - k];
    re[k] += (xr * yr + xi * yi) * s;
    im[k] += (xr * yi - xi * yr) * s;
    stimulus[k] += (xr * xr + xi * xi) * s;
    response[k] += (yr * yr + yi * yi) * s;
  }
  if (n > 1) addRealBin(sums, x[n / 2], y[n / 2], s, n / 2);
}

// All n bins of H from the lower ones. The upper imaginary parts are sums of their own, of negated
// terms: a zero among them is positive, so 0 - im and not -im.
void frequencyResponse(const Sums& sums, std::size_t n, double* re, double* im) {
  for (std::size_t k = 0; k <= n / 2; ++k) {
    re[k] = sums.re[k] / sums.stimulus[k];
    im[k] = sums.im[k] / sums.stimulus[k];
  }
  for (std::size_t k = 1; k < n / 2; ++k) {
    re[n - k] = re[k];
    im[n - k] = (0.0 - sums.im[k]) / sums.stimulus[k];
  }
}

}  // namespace

namespace fathom {

void packedQuotient(const double* x, double* y, int32_t n) {
  divide(x, y, static_cast<std::size_t>(n));
}

}  // namespace fathom

AnalysisStatus TransferFunction(const double* stimulus, const double* response, int32_t n,
                                double dt, double* magnitude, double* phase, double* df) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> x(size);
  fathom::Workspace<double> h(size);
  if (!x || !h) return FATHOM_ERR_MEMORY;
  transform(stimulus, n, x.data());
  transform(response, n, h.data());
  fathom::packedQuotient(x.data(), h.data(), n);
  magnitude[0] = fathom::fabs(h[0]);
  phase[0] = fathom::atan2(0.0, h[0]);
  fathom::packedMagnitudes(h.data(), n, 1.0, 1.0, magnitude);
  fathom::packedPhases(h.data(), n, phase);
  *df = 1.0 / (n * dt);
  return FATHOM_OK;
}

AnalysisStatus ImpulseResponse(const double* stimulus, const double* response, int32_t n,
                               double* impulse) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> x(size);
  if (!x) return FATHOM_ERR_MEMORY;
  transform(stimulus, n, x.data());  // before the response: `impulse` may be the stimulus
  transform(response, n, impulse);
  fathom::packedQuotient(x.data(), impulse, n);
  fathom::PackedRealInvFFT(impulse, n, fathom::Log2Size(n));
  return FATHOM_OK;
}

AnalysisStatus NetworkFunctions(const double* stimulus, const double* response, int32_t n,
                                int32_t frames, double dt, double* crossMagnitude,
                                double* crossPhase, double* magnitude, double* phase,
                                double* coherence, double* impulse, double* df) {
  if (n < 1 || frames < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  const std::size_t half = size / 2;
  fathom::Workspace<double> x(size);
  fathom::Workspace<double> y(size);
  if (!x || !y) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> crossRe(half + 1);
  fathom::Workspace<double> crossIm(half + 1);
  fathom::Workspace<double> stimulusPower(half + 1);
  fathom::Workspace<double> responsePower(half + 1);
  if (!crossRe || !crossIm || !stimulusPower || !responsePower) return FATHOM_ERR_MEMORY;
  const Sums sums = {crossRe.data(), crossIm.data(), stimulusPower.data(), responsePower.data()};
  std::fill_n(sums.re, half + 1, 0.0);
  std::fill_n(sums.im, half + 1, 0.0);
  std::fill_n(sums.stimulus, half + 1, 0.0);
  std::fill_n(sums.response, half + 1, 0.0);
  for (int32_t f = 0; f < frames; ++f) {
    transform(stimulus + static_cast<std::size_t>(f) * size, n, x.data());
    transform(response + static_cast<std::size_t>(f) * size, n, y.data());
    addFrame(x.data(), y.data(), size, sums);
  }
  double* const h = x.data();  // imaginary parts of H; the real ones are in `impulse`
  frequencyResponse(sums, size, impulse, h);
  for (std::size_t k = 0; k < half; ++k) {
    magnitude[k] = fathom::sqrt(impulse[k] * impulse[k] + h[k] * h[k]);
  }
  fathom::atan2(h, impulse, half, phase);
  InvFFT(impulse, h, n);
  const double oneFrame = 1.0 / frames;
  const std::size_t bins = std::max<std::size_t>(half, 1);
  for (std::size_t k = 0; k < bins; ++k) {
    const double square = sums.re[k] * sums.re[k] + sums.im[k] * sums.im[k];
    const double factor = k == 0 ? oneFrame : 2.0 * oneFrame;  // the negative frequency's half
    crossMagnitude[k] = factor * fathom::sqrt(square);
    coherence[k] = square / (sums.stimulus[k] * sums.response[k]);
  }
  fathom::atan2(sums.im, sums.re, bins, crossPhase);
  *df = 1.0 / (n * dt);
  return FATHOM_OK;
}
