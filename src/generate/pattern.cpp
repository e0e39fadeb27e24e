// Patterns: one finished shape per call, nothing kept.
#include <algorithm>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace {

// y[i] = value(t, sin t) with t = angle(i), i upward. A few angles are made at a time, so that
// their arithmetic hides behind the sines of those before.
template <typename Angle, typename Value>
void fillFromSines(int32_t n, double* y, Angle angle, Value value) {
  constexpr int32_t kTile = 16;
  double tile[kTile];
  for (int32_t start = 0; start < n;) {
    const int32_t count = std::min(kTile, n - start);
    for (int32_t i = 0; i < count; ++i) tile[i] = angle(start + i);
    for (int32_t i = 0; i < count; ++i) y[start + i] = value(tile[i], fathom::sin(tile[i]));
    start += count;
  }
}

}  // namespace

AnalysisStatus SinePattern(int32_t n, double amplitude, double phase, double cycles, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(cycles <= n)) return FATHOM_ERR_CYCLES;
  const double step = fathom::kTwoPi * cycles / n;
  fillFromSines(
      n, y,
      [step, next = phase * fathom::kRadiansPerDegree](int32_t) mutable {
        const double angle = next;
        next += step;
        return angle;
      },
      [amplitude](double, double sine) { return amplitude * sine; });
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
  fillFromSines(
      n, y, [k, w](int32_t i) { return (i * k + w) * i; },
      [amplitude](double, double sine) { return amplitude * sine; });
  return FATHOM_OK;
}

AnalysisStatus Sinc(int32_t n, double amplitude, double delay, double dt, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(dt > 0.0)) return FATHOM_ERR_INTERVAL;
  fillFromSines(
      n, y, [dt, delay](int32_t i) { return (i * dt - delay) * fathom::kPi; },
      [amplitude](double x, double sine) { return x == 0.0 ? amplitude : sine / x * amplitude; });
  return FATHOM_OK;
}
