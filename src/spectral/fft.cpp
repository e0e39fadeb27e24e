// Complex fast Fourier transforms of split real and imaginary arrays, in place: split-radix,
// decimation in frequency (P. Duhamel and H. Hollmann, "Split radix FFT algorithm", Electronics
// Letters, 1984). Butterflies of different j are independent, so they run in any order, many at
// once; what is fixed is each butterfly's arithmetic and its angle.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "spectral/bit_reversal.hpp"
#include "spectral/twiddle.hpp"

namespace fathom {
namespace {

// Stages of this span and less run one block at a time, their twiddles and the block in the
// second-level cache; in those of larger spans, this many twiddles at a time sweep all blocks.
constexpr std::size_t kBlockSpan = 4096;
constexpr std::size_t kTile = 256;
// The last stages, of spans 8, 4 and 2, run with the bit reversal.
constexpr std::size_t kReversalSpan = 8;

// Bit by bit: a conditional would become a masked load of the twiddles, whose other lanes, left as
// they were and at worst denormal, would be multiplied all the same.
constexpr std::uint64_t kUnrotated[8] = {~std::uint64_t{0}};
FATHOM_INLINE double selected(std::uint64_t mask, double where, double elsewhere) {
  return std::bit_cast<double>((std::bit_cast<std::uint64_t>(where) & mask) |
                               (std::bit_cast<std::uint64_t>(elsewhere) & ~mask));
}

// `width` butterflies with neighbouring j. The first of the first ones has j = 0: no rotation,
// which for -0.0 and NaN is not the same as one by an angle of 0.
template <std::size_t width, bool first>
FATHOM_INLINE void butterflies(double* x, double* y, std::size_t quarter, const Twiddles& w) {
  double *x1 = x + quarter, *x2 = x1 + quarter, *x3 = x2 + quarter;
  double *y1 = y + quarter, *y2 = y1 + quarter, *y3 = y2 + quarter;
  FATHOM_INDEPENDENT
  for (std::size_t k = 0; k < width; ++k) {
    // All loads before the first store: a store can hold up loads a multiple of 4 KB away.
    const double a0 = x[k], a1 = x1[k], a2 = x2[k], a3 = x3[k];
    const double b0 = y[k], b1 = y1[k], b2 = y2[k], b3 = y3[k];
    x[k] = a0 + a2;
    x1[k] = a1 + a3;
    y[k] = b0 + b2;
    y1[k] = b1 + b3;
    const double rx = a0 - a2, sx = a1 - a3, ry = b0 - b2, sy = b1 - b3;
    const double u = rx + sy, v = ry - sx, p = rx - sy, q = ry + sx;
    const std::uint64_t mask = first ? kUnrotated[k] : 0;
    x2[k] = selected(mask, u, u * w.cos1[k] + v * w.sin1[k]);
    y2[k] = selected(mask, v, v * w.cos1[k] - u * w.sin1[k]);
    x3[k] = selected(mask, p, p * w.cos3[k] + q * w.sin3[k]);
    y3[k] = selected(mask, q, q * w.cos3[k] - p * w.sin3[k]);
  }
}

// `count` of them, a multiple of 8, from x and y on.
FATHOM_INLINE void butterflies(double* x, double* y, std::size_t quarter, const Twiddles& w,
                               std::size_t count, bool first) {
  std::size_t k = 0;
  if (first) {
    butterflies<8, true>(x, y, quarter, w);
    k = 8;
  }
  for (; k < count; k += 8) butterflies<8, false>(x + k, y + k, quarter, w.from(k));
}

// One stage's butterflies j0 .. j0 + count in every block.
FATHOM_MULTIVERSION
void stageTile(double* x, double* y, std::size_t n, std::size_t span, std::size_t j0,
               const Twiddles& w, std::size_t count) {
  for (std::size_t block = 0; block < n / span; ++block) {
    if (!isWholeBlock(block)) continue;
    const std::size_t i = block * span + j0;
    butterflies(x + i, y + i, span / 4, w, count, j0 == 0);
  }
}

// The stages of the elements start .. start + n, down to the span that the reversal takes over.
FATHOM_MULTIVERSION
void blockStages(double* x, double* y, std::size_t start, std::size_t n, const Twiddles& table) {
  std::size_t span = n;
  for (; span > 2 * kReversalSpan; span /= 2) {
    for (std::size_t block = start / span; block < (start + n) / span; ++block) {
      if (!isWholeBlock(block)) continue;
      const std::size_t i = block * span;
      butterflies(x + i, y + i, span / 4, table.from(span / 4), span / 4, true);
    }
  }
  for (std::size_t block = start / span; block < (start + n) / span; ++block) {
    if (!isWholeBlock(block)) continue;
    butterflies<4, true>(x + block * span, y + block * span, 4, table.from(4));
  }
}

// The butterfly of j = 0 on elements i0 .. i3.
template <typename L>
FATHOM_INLINE void butterfly(L (&z)[2][kTileSide], int i0, int i1, int i2, int i3) {
  auto& [re, im] = z;
  const L rx = re[i0] - re[i2], sx = re[i1] - re[i3];
  const L ry = im[i0] - im[i2], sy = im[i1] - im[i3];
  re[i0] += re[i2];
  re[i1] += re[i3];
  im[i0] += im[i2];
  im[i1] += im[i3];
  re[i2] = rx + sy;
  re[i3] = rx - sy;
  im[i2] = ry - sx;
  im[i3] = ry + sx;
}

template <typename L>
FATHOM_INLINE void rotate(L (&z)[2][kTileSide], int i, double c, double s) {
  auto& [re, im] = z;
  const L x = re[i];
  re[i] = x * c + im[i] * s;
  im[i] = im[i] * c - x * s;
}

template <typename L>
FATHOM_INLINE void lengthTwo(L (&z)[2][kTileSide], int i) {
  for (L* part : z) {
    const L t = part[i];
    part[i] = t + part[i + 1];
    part[i + 1] = t - part[i + 1];
  }
}

// The stages within a tile.
struct LastStages {
  double cos1, sin1, cos3, sin3;

  template <typename L>
  FATHOM_INLINE void whole(L (&z)[2][kTileSide]) const {
    butterfly(z, 0, 2, 4, 6);
    butterfly(z, 1, 3, 5, 7);
    rotate(z, 5, cos1, sin1);
    rotate(z, 7, cos3, sin3);
    butterfly(z, 0, 1, 2, 3);
    for (int i : {0, 4, 6}) lengthTwo(z, i);
  }
  template <typename L>
  FATHOM_INLINE void split(L (&z)[2][kTileSide]) const {
    for (int i : {0, 4}) {
      butterfly(z, i, i + 1, i + 2, i + 3);
      lengthTwo(z, i);
    }
  }
};

template <std::size_t bytes>
FATHOM_INLINE void lastStagesReversedOf(double* x, double* y, std::size_t n, const Twiddles& w) {
  reverseWithStages<bytes, false>({x, y}, n,
                                  LastStages{w.cos1[1], w.sin1[1], w.cos3[1], w.sin3[1]});
}
FATHOM_BY_WIDTH(lastStagesReversed, (double* x, double* y, std::size_t n, const Twiddles& w),
                (x, y, n, w))

// Sizes below a tile's, butterfly by butterfly.
void transformFew(double* x, double* y, std::size_t n, const Twiddles& table) {
  for (std::size_t span = n; span > 2; span /= 2) {
    const std::size_t quarter = span / 4;
    for (std::size_t block = 0; block < n / span; ++block) {
      if (!isWholeBlock(block)) continue;
      for (std::size_t j = 0; j < quarter; ++j) {
        const std::size_t i = block * span + j;
        if (j == 0) {
          butterflies<1, true>(x + i, y + i, quarter, table);
        } else {
          butterflies<1, false>(x + i, y + i, quarter, table.from(quarter + j));
        }
      }
    }
  }
  for (std::size_t i = 0; i < n; i += 2) {
    if (!isWholeBlock(i / 2)) continue;
    for (double* z : {x + i, y + i}) {
      const double t = z[0];
      z[0] = t + z[1];
      z[1] = t - z[1];
    }
  }
  reverseFew(n, [=](std::size_t i, std::size_t j) {
    std::swap(x[i], x[j]);
    std::swap(y[i], y[j]);
  });
}

void transform(double* x, double* y, std::size_t n) {
  for (std::size_t span = n; span > kBlockSpan; span /= 2) {
    TwiddleStore<kTile> tile;
    const double e = kTwoPi / static_cast<double>(span);
    const TwiddleSpacing spacing(e);
    double a = 0.0;
    for (std::size_t j = 0; j < span / 4; j += kTile) {
      a = tile.setAngles(a, e, kTile, 0);
      if (j == 0) tile.pad(0);
      tile.evaluate(spacing, kTile);
      stageTile(x, y, n, span, j, tile.twiddles(), kTile);
    }
  }
  // The twiddles of a quarter span begin at that index.
  TwiddleStore<kBlockSpan / 2> table;
  const std::size_t largest = std::min(n, kBlockSpan);
  table.setStages(0.0, kTwoPi / static_cast<double>(largest), largest / 4);
  for (std::size_t quarter = largest / 4; quarter > 1; quarter /= 2) table.pad(quarter);
  if (largest > 4) table.evaluate(largest / 2 - 2, 2);
  if (n < kTileSide * kTileSide) {
    transformFew(x, y, n, table.twiddles());
    return;
  }
  for (std::size_t i = 0; i < n; i += largest) {
    blockStages(x, y, i, largest, table.twiddles());
  }
  lastStagesReversed(x, y, n, table.twiddles().from(2));
}

FATHOM_MULTIVERSION
void scale(double* x, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor;
}

FATHOM_MULTIVERSION
void negate(double* x, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) x[i] = -x[i];
}

}  // namespace
}  // namespace fathom

AnalysisStatus FFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  fathom::transform(re, im, static_cast<std::size_t>(n));
  return FATHOM_OK;
}

AnalysisStatus InvFFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  const auto size = static_cast<std::size_t>(n);
  const double factor = 1.0 / n;
  fathom::scale(re, size, factor);
  fathom::scale(im, size, -factor);
  fathom::transform(re, im, size);
  fathom::negate(im, size);
  return FATHOM_OK;
}
