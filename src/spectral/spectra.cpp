// Spectra of real records: power, cross power, amplitude and phase, all from the packed transform.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "spectral/packed_bins.hpp"
#include "spectral/packed_real.hpp"

namespace {

// 1 / n^2; n^2 would not fit the type of n.
double powerScale(std::size_t n) {
  const auto size = static_cast<double>(n);
  return 1.0 / (size * size);
}

// Two-sided power in place of a packed spectrum, n >= 2.
FATHOM_MULTIVERSION void twoSidedPower(double* x, std::size_t n) {
  const double s = powerScale(n);
  x[0] = x[0] * x[0] * s;
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    const double power = (x[k] * x[k] + x[n - k] * x[n - k]) * s;
    x[k] = power;
    x[n - k] = power;
  }
  x[n / 2] = x[n / 2] * x[n / 2] * s;
}

// Bins 0 to n/2 - 1 of the same, all but bin 0 doubled.
FATHOM_MULTIVERSION void oneSidedPower(const double* x, std::size_t n, double* power) {
  const double s = powerScale(n);
  power[0] = x[0] * x[0] * s;
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    power[k] = (x[k] * x[k] + x[n - k] * x[n - k]) * s * 2.0;
  }
}

// conj(X) Y / n^2, packed, in place of X.
FATHOM_MULTIVERSION void cross(double* x, const double* y, std::size_t n) {
  const double s = powerScale(n);
  x[0] = x[0] * y[0] * s;
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    const double re = (x[k] * y[k] + x[n - k] * y[n - k]) * s;
    const double im = (x[k] * y[n - k] - x[n - k] * y[k]) * s;
    x[k] = re;
    x[n - k] = im;
  }
  if (n > 1) x[n / 2] = x[n / 2] * y[n / 2] * s;
}

FATHOM_MULTIVERSION void unpack(const double* packed, std::size_t n, double* re, double* im) {
  re[0] = packed[0];
  im[0] = 0.0;
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    re[k] = packed[k];
    re[n - k] = packed[k];
    im[k] = packed[n - k];
    im[n - k] = -packed[n - k];
  }
  if (n > 1) {
    re[n / 2] = packed[n / 2];
    im[n / 2] = 0.0;
  }
}

FATHOM_MULTIVERSION void magnitudes(const double* packed, std::size_t n, double factor,
                                    double divisor, double* magnitude) {
  FATHOM_INDEPENDENT
  for (std::size_t k = 1; k < n / 2; ++k) {
    const double re = packed[k];
    const double im = packed[n - k];
    magnitude[k] = factor * fathom::sqrt(re * re + im * im) / divisor;
  }
}

// The packed cross spectrum, in x; y is lost.
AnalysisStatus packedCross(const double* x, const double* y, std::size_t n, int32_t size,
                           fathom::Workspace<double>& packedX, fathom::Workspace<double>& packedY) {
  if (!packedX || !packedY) return FATHOM_ERR_MEMORY;
  fathom::packedSpectrum(x, n, size, packedX.data());
  fathom::packedSpectrum(y, n, size, packedY.data());
  cross(packedX.data(), packedY.data(), static_cast<std::size_t>(size));
  return FATHOM_OK;
}

}  // namespace

namespace fathom {

int64_t paddedSize(int32_t n) {
  return std::bit_ceil(static_cast<uint32_t>(n));
}

void packedSpectrum(const double* x, std::size_t n, int32_t size, double* packed) {
  std::fill(std::copy_n(x, n, packed), packed + size, 0.0);
  PackedRealFFT(packed, size, Log2Size(size));
}

void packedMagnitudes(const double* packed, int32_t n, double factor, double divisor,
                      double* magnitude) {
  magnitudes(packed, static_cast<std::size_t>(n), factor, divisor, magnitude);
}

void packedPhases(const double* packed, int32_t n, double* phase) {
  const auto size = static_cast<std::size_t>(n);
  constexpr std::size_t kBlock = 128;
  double imaginary[kBlock];  // stored from the end down
  for (std::size_t k = 1; k < size / 2; k += kBlock) {
    const std::size_t count = std::min(kBlock, size / 2 - k);
    std::reverse_copy(packed + size - k - count + 1, packed + size - k + 1, imaginary);
    atan2(imaginary, packed + k, count, phase + k);
  }
}

}  // namespace fathom

AnalysisStatus Spectrum(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) {
    x[0] = x[0] * x[0];
    return FATHOM_OK;
  }
  fathom::PackedRealFFT(x, n, fathom::Log2Size(n));
  twoSidedPower(x, static_cast<std::size_t>(n));
  return FATHOM_OK;
}

AnalysisStatus AutoPowerSpectrum(const double* x, int32_t n, double dt, double* power, double* df) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> packed(size);
  if (!packed) return FATHOM_ERR_MEMORY;
  fathom::packedSpectrum(x, size, n, packed.data());
  if (n > 1) oneSidedPower(packed.data(), size, power);
  *df = 1.0 / (n * dt);
  return FATHOM_OK;
}

AnalysisStatus CrossSpectrum(const double* x, const double* y, int32_t n, double* re, double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const int64_t padded = fathom::paddedSize(n);
  if (padded > INT32_MAX) return FATHOM_ERR_MEMORY;  // more than a transform can address
  const auto size = static_cast<std::size_t>(padded);
  fathom::Workspace<double> packedX(size);
  if (!packedX) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> packedY(size);
  const AnalysisStatus status = packedCross(x, y, static_cast<std::size_t>(n),
                                            static_cast<int32_t>(padded), packedX, packedY);
  if (status != FATHOM_OK) return status;
  unpack(packedX.data(), size, re, im);
  return FATHOM_OK;
}

AnalysisStatus CrossPowerSpectrum(const double* x, const double* y, int32_t n, double dt,
                                  double* magnitude, double* phase, double* df) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> packedX(size);
  if (!packedX) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> packedY(size);
  const AnalysisStatus status = packedCross(x, y, size, n, packedX, packedY);
  if (status != FATHOM_OK) return status;
  magnitude[0] = fathom::sqrt(packedX[0] * packedX[0]);
  phase[0] = fathom::atan2(0.0, packedX[0]);
  fathom::packedMagnitudes(packedX.data(), n, 2.0, 1.0, magnitude);
  fathom::packedPhases(packedX.data(), n, phase);
  *df = 1.0 / (n * dt);
  return FATHOM_OK;
}

AnalysisStatus AmpPhaseSpectrum(const double* x, int32_t n, int32_t unwrap, double dt,
                                double* amplitude, double* phase, double* df) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> packed(size);
  if (!packed) return FATHOM_ERR_MEMORY;
  fathom::packedSpectrum(x, size, n, packed.data());
  amplitude[0] = fathom::fabs(packed[0]) / n;
  phase[0] = packed[0] < 0.0 ? fathom::kPi : 0.0;
  fathom::packedMagnitudes(packed.data(), n, fathom::sqrt(2.0), n, amplitude);
  fathom::packedPhases(packed.data(), n, phase);
  if (unwrap != 0) UnWrap1D(phase, n / 2);
  *df = 1.0 / (n * dt);
  return FATHOM_OK;
}
