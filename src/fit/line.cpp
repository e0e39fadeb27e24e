// Straight lines and exponentials by closed-form sums. Each sum takes its terms in ascending order;
// the sums of one fit run in step, so that none waits for another.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// The logarithms and exponentials that are on the stack at a time.
constexpr std::size_t kBlock = 256;

struct Sums {
  double x = 0.0;
  double xx = 0.0;
  double y = 0.0;
  double xy = 0.0;

  void add(const double* xs, const double* ys, std::size_t n) {
    Sums s = *this;
    for (std::size_t i = 0; i < n; ++i) {
      s.x += xs[i];
      s.xx += xs[i] * xs[i];
      s.y += ys[i];
      s.xy += xs[i] * ys[i];
    }
    *this = s;
  }
};

// NaN fails: as the first element it asks the others to be no more than zero.
bool hasOneSign(const double* y, std::size_t n) {
  const bool positive = y[0] > 0.0;
  for (std::size_t i = 1; i < n; ++i) {
    if (!(positive ? y[i] > 0.0 : y[i] <= 0.0)) return false;
  }
  return true;
}

}  // namespace
}  // namespace fathom

AnalysisStatus LinFit(const double* x, const double* y, int32_t n, double* fitted, double* slope,
                      double* intercept, double* meanSquaredError) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  const double points = n;
  fathom::Sums s;
  s.add(x, y, size);
  const double d = s.x * s.x - points * s.xx;
  const double a = (s.x * s.y - points * s.xy) / d;
  const double b = (s.x * s.xy - s.y * s.xx) / d;
  *slope = a;
  *intercept = b;
  double error = 0.0;
  for (std::size_t i = 0; i < size; ++i) {
    const double value = a * x[i] + b;
    fitted[i] = value;
    const double difference = value - y[i];  // y[i] is the value itself where y is `fitted`
    error += difference * difference;
  }
  *meanSquaredError = error / points;
  return FATHOM_OK;
}

AnalysisStatus ExpFit(const double* x, double* y, int32_t n, double* fitted, double* amplitude,
                      double* damping, double* meanSquaredError) {
  *amplitude = 0.0;
  *damping = 0.0;
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  const double points = n;
  const bool negated = y[0] < 0.0;
  if (negated) Neg1D(y, n, y);

  double block[fathom::kBlock];
  double a = 0.0, b = 0.0;
  const bool fits = fathom::hasOneSign(y, size);
  if (fits) {
    fathom::Sums s;  // of x and the logarithm of y
    for (std::size_t start = 0; start < size; start += fathom::kBlock) {
      const std::size_t count = std::min(fathom::kBlock, size - start);
      fathom::log(y + start, count, block);
      s.add(x + start, block, count);
    }
    b = (points * s.xy - s.x * s.y) / (points * s.xx - s.x * s.x);
    a = fathom::exp((s.y - b * s.x) / points);
    if (negated) a = -a;
  }
  if (negated) Neg1D(y, n, y);
  if (!fits) return FATHOM_ERR_SIGN_OF_ARRAY;

  *amplitude = a;
  *damping = b;
  double error = 0.0;
  for (std::size_t start = 0; start < size; start += fathom::kBlock) {
    const std::size_t count = std::min(fathom::kBlock, size - start);
    for (std::size_t i = 0; i < count; ++i) block[i] = b * x[start + i];
    fathom::exp(block, count, block);
    for (std::size_t i = 0; i < count; ++i) {
      const double value = block[i] * a;
      fitted[start + i] = value;
      const double difference = value - y[start + i];
      error += difference * difference;
    }
  }
  *meanSquaredError = error / points;
  return FATHOM_OK;
}
