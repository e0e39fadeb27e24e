// Descriptive statistics: mean, deviation, central moments and median of one real sequence.
//
// Sums run in index order in one accumulator each; their order decides the last bits.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/workspace.hpp"

namespace {

struct Sums {
  double values;
  double squares;
};

// Two independent chains of additions in one pass, which hide each other's latency.
Sums sumsOf(const double* x, int32_t n) {
  Sums sums{0.0, 0.0};
  for (int32_t i = 0; i < n; ++i) {
    sums.values += x[i];
    sums.squares += x[i] * x[i];
  }
  return sums;
}

constexpr std::size_t kRegisters = 4;

// power[i] = (x[i] - mean) multiplied by itself order - 1 times, for one tile. Once every power
// comes back after two steps (zero, one, infinity, a value that rounding no longer moves) it does
// so for ever, and only the parity of the steps still to do counts.
template <std::size_t bytes>
FATHOM_INLINE void raiseTile(const double* x, double mean, int32_t order, double* power) {
  using Lanes = fathom::Lanes<bytes>;
  constexpr std::size_t kLanes = bytes / sizeof(double);
  constexpr std::size_t kTile = kRegisters * kLanes;
  constexpr int32_t kStepsBetweenLooks = 32;
  Lanes deviation[kRegisters], p[kRegisters];
  FATHOM_UNROLL
  for (std::size_t r = 0; r < kRegisters; ++r) {
    fathom::load(deviation[r], x + r * kLanes);
    deviation[r] -= mean;
    p[r] = deviation[r];
  }
  int32_t steps = order - 1;
  for (int32_t next = kStepsBetweenLooks; steps > 1; steps -= 2, next -= 2) {
    if (next == 0) {
      next = kStepsBetweenLooks;
      double before[kTile], after[kTile];
      FATHOM_UNROLL
      for (std::size_t r = 0; r < kRegisters; ++r) {
        const Lanes twice = p[r] * deviation[r] * deviation[r];
        fathom::store(before + r * kLanes, p[r]);
        fathom::store(after + r * kLanes, twice);
      }
      bool settled = true;  // a NaN is settled
      for (std::size_t i = 0; i < kTile; ++i) {
        settled = settled && !(after[i] < before[i]) && !(after[i] > before[i]);
      }
      if (settled) break;
    }
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) {
      p[r] *= deviation[r];
      p[r] *= deviation[r];
    }
  }
  if (steps % 2 == 1) {
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) p[r] *= deviation[r];
  }
  FATHOM_UNROLL
  for (std::size_t r = 0; r < kRegisters; ++r) fathom::store(power + r * kLanes, p[r]);
}

constexpr std::size_t kBlock = 64;

// The powers of kBlock samples. Not in the widest registers: while those are in use, the scalar sum
// that runs beside the next block takes twice its time.
template <std::size_t widest>
FATHOM_INLINE void raiseOf(const double* x, double mean, int32_t order, double* power) {
  constexpr std::size_t kBytes = std::min(widest, std::size_t{32});
  constexpr std::size_t kTile = kRegisters * kBytes / sizeof(double);
  static_assert(kBlock % kTile == 0);
  for (std::size_t i = 0; i < kBlock; i += kTile) {
    raiseTile<kBytes>(x + i, mean, order, power + i);
  }
}

FATHOM_BY_WIDTH(raise, (const double* x, double mean, int32_t order, double* power),
                (x, mean, order, power))

}  // namespace

AnalysisStatus Mean(const double* x, int32_t n, double* mean) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double sum = 0.0;
  for (int32_t i = 0; i < n; ++i) sum += x[i];
  *mean = sum / n;
  return FATHOM_OK;
}

AnalysisStatus StdDev(const double* x, int32_t n, double* mean, double* deviation) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Sums sums = sumsOf(x, n);
  const double average = sums.values / n;
  *mean = average;
  *deviation = fathom::sqrt(fathom::fabs(sums.squares / n - average * average));
  return FATHOM_OK;
}

AnalysisStatus Variance(const double* x, int32_t n, double* mean, double* variance) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Sums sums = sumsOf(x, n);
  const double average = sums.values / n;
  *mean = average;
  *variance = sums.squares / n - average * average;
  return FATHOM_OK;
}

AnalysisStatus RMS(const double* x, int32_t n, double* rms) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double squares = 0.0;
  for (int32_t i = 0; i < n; ++i) squares += x[i] * x[i];
  *rms = fathom::sqrt(squares / n);
  return FATHOM_OK;
}

AnalysisStatus Moment(const double* x, int32_t n, int32_t order, double* moment) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (order < 1) return FATHOM_ERR_ORDER;
  double mean = 0.0;
  Mean(x, n, &mean);
  const auto count = static_cast<std::size_t>(n);
  double sum = 0.0;
  alignas(64) double power[kBlock];  // in whole cache lines
  std::size_t start = 0;
  for (; start + kBlock <= count; start += kBlock) {
    raise(x + start, mean, order, power);
    for (const double p : power) sum += p;
  }
  if (start < count) {
    std::fill_n(std::copy_n(x + start, count - start, power), kBlock - (count - start), mean);
    raise(power, mean, order, power);
    for (std::size_t i = 0; i < count - start; ++i) sum += power[i];
  }
  *moment = sum / n;
  return FATHOM_OK;
}

AnalysisStatus Median(const double* x, int32_t n, double* median) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  fathom::Workspace<double> sorted(count);
  if (!sorted) return FATHOM_ERR_MEMORY;
  std::copy_n(x, count, sorted.data());
  if (n > 1) Sort(sorted.data(), n, 0, sorted.data());
  const std::size_t middle = count / 2;
  *median = n % 2 == 1 ? sorted[middle] : (sorted[middle] + sorted[middle - 1]) * 0.5;
  return FATHOM_OK;
}
