// Calculus of sampled signals: running integral, central differences, phase unwrapping, decimation.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace {

constexpr std::size_t kTile = 256;

// y[i] = (x[i + 1] - x[i - 1]) x h, with the neighbours outside the array given. x is copied a tile
// at a time before y overwrites it.
FATHOM_MULTIVERSION void differences(const double* x, std::size_t n, double h, double initial,
                                     double final, double* y) {
  double tile[kTile + 2];
  tile[0] = initial;
  for (std::size_t start = 0; start < n; start += kTile) {
    const std::size_t length = std::min(kTile, n - start);
    std::copy_n(x + start, length, tile + 1);
    tile[length + 1] = start + length < n ? x[start + length] : final;
    for (std::size_t i = 0; i < length; ++i) y[start + i] = (tile[i + 2] - tile[i]) * h;
    tile[0] = tile[length];
  }
}

// Corrections are decided a block at a time; those of a block go to the rest of the array together.
constexpr std::size_t kBlock = 64;

// Adds the corrections to each element, one rounded addition after another, in order.
template <std::size_t bytes>
FATHOM_INLINE void correctOf(double* x, std::size_t n, const double* correction,
                             std::size_t corrections) {
  constexpr std::size_t kRegisters = 8;
  constexpr std::size_t kLanes = bytes / sizeof(double);
  std::size_t i = 0;
  for (; i + kRegisters * kLanes <= n; i += kRegisters * kLanes) {
    fathom::Lanes<bytes> value[kRegisters];
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) fathom::load(value[r], x + i + r * kLanes);
    for (std::size_t k = 0; k < corrections; ++k) {
      FATHOM_UNROLL
      // NOLINTNEXTLINE(modernize-loop-convert): counted, so that it is unrolled
      for (std::size_t r = 0; r < kRegisters; ++r) value[r] += correction[k];
    }
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) fathom::store(x + i + r * kLanes, value[r]);
  }
  for (; i + kLanes <= n; i += kLanes) {
    fathom::Lanes<bytes> value;
    fathom::load(value, x + i);
    for (std::size_t k = 0; k < corrections; ++k) value += correction[k];
    fathom::store(x + i, value);
  }
  for (; i < n; ++i) {
    for (std::size_t k = 0; k < corrections; ++k) x[i] += correction[k];
  }
}

FATHOM_BY_WIDTH(correct,
                (double* x, std::size_t n, const double* correction, std::size_t corrections),
                (x, n, correction, corrections))

// Whether any of n phases is more than pi from the one before it, which precedes the array.
FATHOM_MULTIVERSION bool jumps(const double* phase, std::size_t n) {
  const double* before = phase - 1;
  int found = 0;
  for (std::size_t i = 0; i < n; ++i) {
    found |= fathom::fabs(phase[i] - before[i]) > fathom::kPi ? 1 : 0;
  }
  return found != 0;
}

// Decides the corrections of a block, one phase after another, and applies them inside it. Returns
// their number.
std::size_t unwrapBlock(double* phase, std::size_t n, double* correction) {
  const double* before = phase - 1;
  std::size_t corrections = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double jump = phase[i] - before[i];
    if (jump > fathom::kPi) {
      correction[corrections] = -fathom::kTwoPi;
    } else if (jump < -fathom::kPi) {
      correction[corrections] = fathom::kTwoPi;
    } else {
      continue;
    }
    for (std::size_t j = i; j < n; ++j) phase[j] += correction[corrections];
    ++corrections;
  }
  return corrections;
}

}  // namespace

AnalysisStatus Integrate(const double* x, int32_t n, double dt, double initial, double final,
                         double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(dt > 0.0)) return FATHOM_ERR_INTERVAL;
  const double k = (fathom::kOneSixth * dt).toDouble();
  double before = initial;
  double here = x[0];
  double sum = -0.0;  // the one value that leaves every first step as it is
  for (int32_t i = 0; i < n - 1; ++i) {
    const double after = x[i + 1];  // read before y[i + 1] may overwrite it
    sum += ((4.0 * here + before) + after) * k;
    y[i] = sum;
    before = here;
    here = after;
  }
  y[n - 1] = sum + ((4.0 * here + before) + final) * k;
  return FATHOM_OK;
}

AnalysisStatus Difference(const double* x, int32_t n, double dt, double initial, double final,
                          double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(dt > 0.0)) return FATHOM_ERR_INTERVAL;
  differences(x, static_cast<std::size_t>(n), 0.5 / dt, initial, final, y);
  return FATHOM_OK;
}

AnalysisStatus UnWrap1D(double* phase, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (n == 2) return FATHOM_OK;  // two samples stay as they are
  const auto count = static_cast<std::size_t>(n);
  double correction[kBlock];
  for (std::size_t start = 1; start < count; start += kBlock) {
    const std::size_t end = std::min(start + kBlock, count);
    if (!jumps(phase + start, end - start)) continue;
    const std::size_t corrections = unwrapBlock(phase + start, end - start, correction);
    correct(phase + end, count - end, correction, corrections);
  }
  return FATHOM_OK;
}

AnalysisStatus Decimate(const double* x, int32_t n, int32_t factor, int32_t averaging, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (factor < 1 || n < factor) return FATHOM_ERR_DECIMATION;
  for (int64_t i = 0; i < n; i += factor) {  // 64 bits: the last step can pass 2^31
    if (averaging != 0) {
      Mean(x + i, factor, y);
    } else {
      *y = x[i];
    }
    ++y;
  }
  return FATHOM_OK;
}
