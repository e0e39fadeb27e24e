// Patterns: one finished shape per call, nothing kept.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

// Short enough that the additions that advance an angle overlap with the sines of the tile before.
constexpr std::size_t kTile = 64;

FATHOM_MULTIVERSION void scale(const double* x, std::size_t n, double factor, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = factor * x[i];
}

// (i k + w) i for i = start, start + 1, ...
FATHOM_MULTIVERSION void chirpAngles(int32_t start, std::size_t n, double k, double w,
                                     double* angle) {
  for (std::size_t j = 0; j < n; ++j) {
    const double i = start + static_cast<int32_t>(j);
    angle[j] = (i * k + w) * i;
  }
}

// (i dt - delay) pi for i = start, start + 1, ...
FATHOM_MULTIVERSION void sincAngles(int32_t start, std::size_t n, double dt, double delay,
                                    double* angle) {
  for (std::size_t j = 0; j < n; ++j) {
    const double i = start + static_cast<int32_t>(j);
    angle[j] = (i * dt - delay) * fathom::kPi;
  }
}

FATHOM_MULTIVERSION void sincValues(const double* x, const double* sine, std::size_t n,
                                    double amplitude, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double value = sine[i] / x[i] * amplitude;
    y[i] = x[i] == 0.0 ? amplitude : value;
  }
}

// Calls body(start, count) for each tile of 0 ... n - 1.
template <typename Body>
void forEachTile(int32_t n, Body body) {
  constexpr auto kStep = static_cast<int32_t>(kTile);
  for (int32_t start = 0;;) {
    const int32_t count = std::min(kStep, n - start);
    body(start, static_cast<std::size_t>(count));
    if (count == n - start) return;
    start += count;
  }
}

}  // namespace

AnalysisStatus SinePattern(int32_t n, double amplitude, double phase, double cycles, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(cycles <= n)) return FATHOM_ERR_CYCLES;
  double angle = phase * fathom::kRadiansPerDegree;
  const double step = fathom::kTwoPi * cycles / n;
  forEachTile(n, [&](int32_t start, std::size_t count) {
    double tile[kTile];
    for (std::size_t i = 0; i < count; ++i) {
      tile[i] = angle;
      angle += step;
    }
    fathom::sin(tile, count, tile);
    scale(tile, count, amplitude, y + start);
  });
  return FATHOM_OK;
}

AnalysisStatus Ramp(int32_t n, double first, double last, double* y) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const double step = (last - first) / (n - 1);
  double value = first;
  for (int32_t k = 0; k < n; ++k) {
    y[k] = value;
    value += step;
  }
  return FATHOM_OK;
}

AnalysisStatus Impulse(int32_t n, double amplitude, int32_t index, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (index >= n || index < 0) return FATHOM_ERR_INDEX;
  std::fill_n(y, n, 0.0);
  y[index] = amplitude;
  return FATHOM_OK;
}

AnalysisStatus Pulse(int32_t n, double amplitude, int32_t delay, int32_t width, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const int64_t end = int64_t{delay} + width;
  if (delay < 0 || width < 0 || end > n) return FATHOM_ERR_DELAY_WIDTH;
  std::fill(y, y + delay, 0.0);
  std::fill(y + delay, y + end, amplitude);
  std::fill(y + end, y + n, 0.0);
  return FATHOM_OK;
}

AnalysisStatus Triangle(int32_t n, double amplitude, double* y) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  y[0] = 0.0;
  int32_t mirror = n - 1;
  if (n % 2 != 0) y[mirror--] = 0.0;
  const int32_t half = n / 2;
  const double step = amplitude / half;
  double value = 0.0;
  for (int32_t j = 1; j <= half; ++j) {
    value += step;
    y[mirror--] = value;
    y[j] = value;
  }
  return FATHOM_OK;
}

AnalysisStatus Chirp(int32_t n, double amplitude, double f1, double f2, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const double k = (f2 - f1) * fathom::kPi / n;
  const double w = fathom::kTwoPi * f1;
  forEachTile(n, [&](int32_t start, std::size_t count) {
    double tile[kTile];
    chirpAngles(start, count, k, w, tile);
    fathom::sin(tile, count, tile);
    scale(tile, count, amplitude, y + start);
  });
  return FATHOM_OK;
}

AnalysisStatus Sinc(int32_t n, double amplitude, double delay, double dt, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(dt > 0.0)) return FATHOM_ERR_INTERVAL;
  forEachTile(n, [&](int32_t start, std::size_t count) {
    double angle[kTile], sine[kTile];
    sincAngles(start, count, dt, delay, angle);
    fathom::sin(angle, count, sine);
    sincValues(angle, sine, count, amplitude, y + start);
  });
  return FATHOM_OK;
}
