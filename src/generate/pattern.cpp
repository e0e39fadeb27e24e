// Patterns: one finished shape per call, nothing kept.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/running_sum.hpp"

namespace {

// y from sines, a tile at a time: setAngles(start, count, tile), then finish(tile, count, sines).
template <typename Angles, typename Finish>
void fillFromSines(int32_t n, double* y, Angles setAngles, Finish finish) {
  constexpr int32_t kTile = 512;
  double tile[kTile];
  for (int32_t start = 0; start < n;) {
    const int32_t count = std::min(kTile, n - start);
    setAngles(start, count, tile);
    fathom::sin(tile, static_cast<std::size_t>(count), y + start);
    finish(tile, count, y + start);
    start += count;
  }
}

FATHOM_MULTIVERSION void multiply(double* x, int32_t n, double factor) {
  for (int32_t i = 0; i < n; ++i) x[i] *= factor;
}

FATHOM_MULTIVERSION void chirpAngles(int32_t start, int32_t count, double k, double w,
                                     double* angle) {
  for (int32_t j = 0; j < count; ++j) {
    const int32_t i = start + j;
    angle[j] = (i * k + w) * i;
  }
}

FATHOM_MULTIVERSION void sincAngles(int32_t start, int32_t count, double dt, double delay,
                                    double* angle) {
  for (int32_t j = 0; j < count; ++j) angle[j] = ((start + j) * dt - delay) * fathom::kPi;
}

FATHOM_MULTIVERSION void divideSines(const double* x, int32_t n, double amplitude, double* y) {
  FATHOM_INDEPENDENT
  for (int32_t i = 0; i < n; ++i) y[i] = x[i] == 0.0 ? amplitude : y[i] / x[i] * amplitude;
}

}  // namespace

AnalysisStatus SinePattern(int32_t n, double amplitude, double phase, double cycles, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(cycles <= n)) return FATHOM_ERR_CYCLES;
  const double step = fathom::kTwoPi * cycles / n;
  double next = phase * fathom::kRadiansPerDegree;
  fillFromSines(
      n, y,
      [step, &next](int32_t, int32_t count, double* angle) {
        next = fathom::runningSum(next, step, static_cast<std::size_t>(count), angle);
      },
      [amplitude](double*, int32_t count, double* sine) { multiply(sine, count, amplitude); });
  return FATHOM_OK;
}

AnalysisStatus Ramp(int32_t n, double first, double last, double* y) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const double step = (last - first) / (n - 1);
  fathom::runningSum(first, step, static_cast<std::size_t>(n), y);
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
  fillFromSines(
      n, y,
      [k, w](int32_t start, int32_t count, double* angle) {
        chirpAngles(start, count, k, w, angle);
      },
      [amplitude](double*, int32_t count, double* sine) { multiply(sine, count, amplitude); });
  return FATHOM_OK;
}

AnalysisStatus Sinc(int32_t n, double amplitude, double delay, double dt, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(dt > 0.0)) return FATHOM_ERR_INTERVAL;
  fillFromSines(
      n, y,
      [dt, delay](int32_t start, int32_t count, double* angle) {
        sincAngles(start, count, dt, delay, angle);
      },
      [amplitude](double* x, int32_t count, double* sine) {
        divideSines(x, count, amplitude, sine);
      });
  return FATHOM_OK;
}
