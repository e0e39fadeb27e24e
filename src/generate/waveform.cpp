// Periodic waveforms. They share one frame, which advances the caller's phase by repeated addition
// a tile of samples at a time, and differ by the shape that turns a tile of phases into samples.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"
#include "frame/running_sum.hpp"

namespace {

// Samples per tile.
constexpr std::size_t kTile = 512;
constexpr double kDegrees = 360.0;
constexpr double kPerHalfCycle = 0.005555555555555556;  // 1 / 180

// fmod(p, period), raised by one period when negative. That sum may round to the period itself.
FATHOM_INLINE double reduced(double p, double period) {
  const double r = fathom::fmod(p, period);
  return r < 0.0 ? r + period : r;
}

// The same for a tile of phases that run one way, so that its ends bound it. `period` is an integer
// below 2^31. While the quotient fits 31 bits and the phase 52, |p| - quotient x period is exact,
// even when the rounded reciprocal makes the quotient wrong by one.
FATHOM_MULTIVERSION void reduceTile(double* p, std::size_t n, double period) {
  const double limit = std::min(0x1p30 * period, 0x1p52);
  if (!(fathom::fabs(p[0]) < limit && fathom::fabs(p[n - 1]) < limit)) {
    for (std::size_t i = 0; i < n; ++i) p[i] = reduced(p[i], period);
    return;
  }
  const double reciprocal = 1.0 / period;
  for (std::size_t i = 0; i < n; ++i) {
    const double magnitude = fathom::fabs(p[i]);
    const auto quotient = static_cast<int32_t>(magnitude * reciprocal);
    double r = magnitude - quotient * period;
    r = r < 0.0 ? r + period : r;
    r = r >= period ? r - period : r;
    r = fathom::copysign(r, p[i]);  // a zero keeps the sign too
    p[i] = r < 0.0 ? r + period : r;
  }
}

// Gives shape(tile, count, y) the phases from *phase on; leaves *phase, unreduced, at the sample
// after the last.
template <typename Shape>
void generate(int32_t n, double step, double* phase, double* y, Shape shape) {
  const auto size = static_cast<std::size_t>(n);
  double tile[kTile];
  for (std::size_t start = 0; start < size; start += kTile) {
    const std::size_t count = std::min(kTile, size - start);
    *phase = fathom::runningSum(*phase, step, count, tile);
    shape(tile, count, y + start);
  }
}

FATHOM_MULTIVERSION void multiply(double* x, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor;
}

FATHOM_MULTIVERSION void squareShape(const double* p, std::size_t n, double amplitude, double edge,
                                     double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = amplitude * (p[i] < edge ? 1.0 : -1.0);
}

FATHOM_MULTIVERSION void triangleShape(const double* p, std::size_t n, double amplitude,
                                       double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double t = p[i] * kPerHalfCycle;
    const double falling = t < 1.5 ? (1.0 - t) * 2.0 : (t - 2.0) * 2.0;
    y[i] = amplitude * (t < 0.5 ? 2.0 * t : falling);
  }
}

FATHOM_MULTIVERSION void sawtoothShape(const double* p, std::size_t n, double amplitude,
                                       double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double t = p[i] * kPerHalfCycle;
    y[i] = amplitude * (p[i] < 180.0 ? t : t - 2.0);
  }
}

// Table positions in [0, length]. A position just below zero may have been raised to `length`: it
// is the first entry. One that is not a number indexes nothing and is the sample's value.
FATHOM_MULTIVERSION void nearestShape(const double* p, std::size_t n, double amplitude,
                                      const double* table, double length, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double at = p[i] > 0.0 && p[i] < length ? p[i] : 0.0;
    const double value = table[static_cast<int32_t>(at)];
    y[i] = amplitude * (p[i] == p[i] ? value : p[i]);
  }
}

FATHOM_MULTIVERSION void interpolatedShape(const double* p, std::size_t n, double amplitude,
                                           const double* table, int32_t length, double* y) {
  const double end = length;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double at = p[i] > 0.0 && p[i] < end ? p[i] : 0.0;
    const auto below = static_cast<int32_t>(at);
    const int32_t above = below + 1 == length ? 0 : below + 1;
    const double fraction = at - below;
    const double value = (table[above] - table[below]) * fraction + table[below];
    y[i] = amplitude * (p[i] == p[i] ? value : p[i]);
  }
}

}  // namespace

AnalysisStatus SineWave(int32_t n, double amplitude, double frequency, double* phase, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  generate(n, frequency * kDegrees, phase, y, [=](double* tile, std::size_t count, double* out) {
    multiply(tile, count, fathom::kRadiansPerDegree);
    fathom::sin(tile, count, out);
    multiply(out, count, amplitude);
  });
  *phase = reduced(*phase, kDegrees);
  return FATHOM_OK;
}

AnalysisStatus SquareWave(int32_t n, double amplitude, double frequency, double* phase,
                          double dutyCycle, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double duty = 0.01 * dutyCycle;
  if (duty < 0.0) duty = 0.0;
  if (duty > 1.0) duty = 1.0;
  const double edge = duty * kDegrees;
  generate(n, frequency * kDegrees, phase, y, [=](double* tile, std::size_t count, double* out) {
    reduceTile(tile, count, kDegrees);
    squareShape(tile, count, amplitude, edge, out);
  });
  *phase = reduced(*phase, kDegrees);
  return FATHOM_OK;
}

AnalysisStatus TriangleWave(int32_t n, double amplitude, double frequency, double* phase,
                            double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  generate(n, frequency * kDegrees, phase, y, [=](double* tile, std::size_t count, double* out) {
    reduceTile(tile, count, kDegrees);
    triangleShape(tile, count, amplitude, out);
  });
  *phase = reduced(*phase, kDegrees);
  return FATHOM_OK;
}

AnalysisStatus SawtoothWave(int32_t n, double amplitude, double frequency, double* phase,
                            double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  generate(n, frequency * kDegrees, phase, y, [=](double* tile, std::size_t count, double* out) {
    reduceTile(tile, count, kDegrees);
    sawtoothShape(tile, count, amplitude, out);
  });
  *phase = reduced(*phase, kDegrees);
  return FATHOM_OK;
}

AnalysisStatus ArbitraryWave(int32_t n, double amplitude, double frequency, double* phase,
                             const double* table, int32_t length, int32_t interpolation,
                             double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const double period = length;
  *phase = (period * fathom::kOne360th * *phase).toDouble();
  generate(n, period * frequency, phase, y, [=](double* tile, std::size_t count, double* out) {
    if (length <= 0) {
      std::fill_n(out, count, amplitude * 0.0);
      return;
    }
    reduceTile(tile, count, period);
    if (interpolation == FATHOM_INTERPOLATE_LINEAR) {
      interpolatedShape(tile, count, amplitude, table, length, out);
    } else {
      nearestShape(tile, count, amplitude, table, period, out);
    }
  });
  if (length != 0) *phase = kDegrees / period * *phase;
  *phase = reduced(*phase, kDegrees);
  return FATHOM_OK;
}
