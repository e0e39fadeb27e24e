// Discrete Hartley transform of real data, in place: radix 2, decimation in frequency (R. N.
// Bracewell, "The fast Hartley transform", Proceedings of the IEEE, 1984).
//
// A block of span 2h is summed and subtracted half by half; then the differences j past the middle
// and j before the end are rotated, for 0 < j < h/2. Both are done in one pass over four elements,
// many j at once.
#include <algorithm>
#include <cstddef>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/running_sum.hpp"
#include "spectral/bit_reversal.hpp"

namespace fathom {
namespace {

// Stages of this span and less run one block at a time, their rotations and the block in the
// first-level cache.
constexpr std::size_t kBlockSpan = 1024;
constexpr std::size_t kTile = kBlockSpan / 4;

template <typename T>
FATHOM_INLINE void lengthTwo(T& a, T& b) {
  const T t = a;
  a = t + b;
  b = t - b;
}

template <typename T>
FATHOM_INLINE void rotate(T& p, T& q, double c, double s) {
  const T t = p;
  p = t * c + q * s;
  q = t * s - q * c;
}

// `width` neighbouring j: x is at j, y at h - j.
template <std::size_t width>
FATHOM_INLINE void butterflies(double* x, double* y, std::size_t half, const double* c,
                               const double* s) {
  double *p = x + half, *q = y + half;
  FATHOM_INDEPENDENT
  for (std::ptrdiff_t k = 0; k < static_cast<std::ptrdiff_t>(width); ++k) {
    const double a = x[k], b = p[k], d = y[-k], e = q[-k];
    const double t = a - b, u = d - e;
    x[k] = a + b;
    y[-k] = d + e;
    p[k] = t * c[k] + u * s[k];
    q[-k] = t * s[k] - u * c[k];
  }
}

// j .. j + count of one block, with c and s for j on. j = 0 and j = h/2 have no rotation: they come
// with the first and the last. So that counts are even, the others run on to h/2, where p and q
// meet, and the right value is put there afterwards.
template <std::size_t width>
FATHOM_INLINE void blockRange(double* x, std::size_t half, std::size_t j, std::size_t count,
                              const double* c, const double* s) {
  if (j == 1) lengthTwo(x[0], x[half]);
  const double difference = x[half / 2] - x[half / 2 + half];
  for (std::size_t k = 0; k < count; k += width) {
    butterflies<width>(x + j + k, x + half - j - k, half, c + k, s + k);
  }
  if (j + count > half / 2) x[half / 2 + half] = difference;
}

FATHOM_MULTIVERSION
void stageTile(double* x, std::size_t n, std::size_t half, std::size_t j, const double* c,
               const double* s) {
  for (std::size_t i = 0; i < n; i += 2 * half) blockRange<8>(x + i, half, j, kTile, c, s);
}

// The stages of one block from span n down to 16; the rotations of h/2 begin at that index, less 1.
FATHOM_MULTIVERSION
void blockStages(double* x, std::size_t n, const double* c, const double* s) {
  for (std::size_t half = n / 2; half >= 8; half /= 2) {
    const std::size_t at = half / 2;
    for (std::size_t i = 0; i < n; i += 2 * half) {
      if (at >= 8) {
        blockRange<8>(x + i, half, 1, at, c + at, s + at);
      } else {
        blockRange<4>(x + i, 8, 1, 4, c + 4, s + 4);
      }
    }
  }
}

// The stages within eight neighbours, which are always one block.
struct LastStages {
  double c, s;

  template <typename L>
  FATHOM_INLINE void whole(L (&x)[1][kTileSide]) const {
    auto& v = x[0];
    for (int i = 0; i < 4; ++i) lengthTwo(v[i], v[i + 4]);
    rotate(v[5], v[7], c, s);
    for (int i : {0, 4}) {
      lengthTwo(v[i], v[i + 2]);
      lengthTwo(v[i + 1], v[i + 3]);
      lengthTwo(v[i], v[i + 1]);
      lengthTwo(v[i + 2], v[i + 3]);
    }
  }
  template <typename L>
  FATHOM_INLINE void split(L (&x)[1][kTileSide]) const {
    whole(x);
  }
};

template <std::size_t bytes>
FATHOM_INLINE void lastStagesReversedOf(double* x, std::size_t n, double c, double s) {
  reverseWithStages<bytes, false>({x}, n, LastStages{c, s});
}
FATHOM_BY_WIDTH(lastStagesReversed, (double* x, std::size_t n, double c, double s), (x, n, c, s))

// Sizes below a tile's, one pair after another.
void transformSmall(double* x, std::size_t n, const double* c, const double* s) {
  for (std::size_t half = n / 2; half >= 1; half /= 2) {
    for (std::size_t i = 0; i < n; i += 2 * half) {
      for (std::size_t k = i; k < i + half; ++k) lengthTwo(x[k], x[k + half]);
      for (std::size_t j = 1; j < half / 2; ++j) {
        rotate(x[i + half + j], x[i + 2 * half - j], c[half / 2 + j - 1], s[half / 2 + j - 1]);
      }
    }
  }
  reverseFew(n, [x](std::size_t i, std::size_t j) { std::swap(x[i], x[j]); });
}

FATHOM_MULTIVERSION
void scale(double* x, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor;
}

void transform(double* x, std::size_t n) {
  for (std::size_t span = n; span > kBlockSpan; span /= 2) {
    double angle[kTile], c[kTile], s[kTile];
    const double e = kTwoPi / static_cast<double>(span);
    const AngleSpacing spacing(e);
    double a = e;
    for (std::size_t j = 0; j < span / 4; j += kTile) {
      a = runningSum(a, e, kTile, angle);
      sincos(spacing, angle, kTile, s, c);
      stageTile(x, n, span / 2, j + 1, c, s);
    }
  }
  const std::size_t block = std::min(n, kBlockSpan);
  double c[2 * kTile], s[2 * kTile];
  const double e = kTwoPi / static_cast<double>(block);
  runningSum(e, e, block / 4, c + block / 4);
  doubleSums(block / 4, c);
  if (block > 4) sincos(c + 2, block / 2 - 2, s + 2, c + 2);
  if (n < kTileSide * kTileSide) {
    transformSmall(x, n, c, s);
    return;
  }
  for (std::size_t i = 0; i < n; i += block) blockStages(x + i, block, c, s);
  lastStagesReversed(x, n, c[2], s[2]);
}

}  // namespace
}  // namespace fathom

AnalysisStatus FHT(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  fathom::transform(x, static_cast<std::size_t>(n));
  return FATHOM_OK;
}

AnalysisStatus InvFHT(double* x, int32_t n) {
  const AnalysisStatus status = FHT(x, n);
  if (status != FATHOM_OK) return status;
  fathom::scale(x, static_cast<std::size_t>(n), 1.0 / n);
  return FATHOM_OK;
}
