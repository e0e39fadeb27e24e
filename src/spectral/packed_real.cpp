// The packed real transform, split-radix with decimation in time, and its inverse, with decimation
// in frequency (H. V. Sorensen, D. L. Jones, M. T. Heideman and C. S. Burrus, "Real-valued fast
// Fourier transform algorithms", IEEE Transactions on Acoustics, Speech and Signal Processing,
// 1987).
//
// A block of span 4q has butterflies on its elements 0, q, 2q, 3q; on those q/2 past them; and for
// each 0 < j < q/2 on those j past them with those j before the next. They are independent of one
// another and run many j at once.
#include "spectral/packed_real.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "spectral/bit_reversal.hpp"
#include "spectral/twiddle.hpp"

namespace fathom {
namespace {

constexpr double kRootHalf = 0.7071067811865476;

// Stages of this span and less run one block at a time, as in the complex transform, but from the
// first-level cache.
constexpr std::size_t kBlockSpan = 1024;
constexpr std::size_t kTile = 256;

// The butterflies of the two directions. T is double or lanes of doubles; p and q are the elements
// j past the quarters and j before the next.
struct Forward {
  template <typename T>
  FATHOM_INLINE static void first(T& x0, T& x1, T& x2, T& x3) {
    static_cast<void>(x1);
    const T t = x3 + x2;
    x3 = x3 - x2;
    x2 = x0 - t;
    x0 = x0 + t;
  }
  template <typename T>
  FATHOM_INLINE static void eighth(T& x0, T& x1, T& x2, T& x3) {
    const T t1 = (x2 + x3) * kRootHalf, t2 = (x2 - x3) * kRootHalf;
    x3 = x1 - t1;
    x2 = -(x1 + t1);
    x1 = x0 - t2;
    x0 = x0 + t2;
  }
  FATHOM_INLINE static void general(double* p, double* q, std::size_t quarter, double c1, double s1,
                                    double c3, double s3) {
    double *p1 = p + quarter, *p2 = p1 + quarter, *p3 = p2 + quarter;
    double *q1 = q + quarter, *q2 = q1 + quarter, *q3 = q2 + quarter;
    const double t1 = *p2 * c1 + *q2 * s1, t2 = *q2 * c1 - *p2 * s1;
    const double t3 = *p3 * c3 + *q3 * s3, t4 = *q3 * c3 - *p3 * s3;
    const double x0 = *p, x1 = *p1, y0 = *q, y1 = *q1;
    *q3 = y1 + (t2 + t4);
    *p2 = (t2 + t4) - y1;
    *p3 = x1 - (t1 - t3);
    *q2 = -(x1 + (t1 - t3));
    *q1 = x0 - (t1 + t3);
    *p = x0 + (t1 + t3);
    *p1 = y0 + (t2 - t4);
    *q = y0 - (t2 - t4);
  }
};

struct Inverse {
  template <typename T>
  FATHOM_INLINE static void first(T& x0, T& x1, T& x2, T& x3) {
    const T t = x0 - x2;
    x0 = x0 + x2;
    x1 = 2.0 * x1;
    x2 = t - 2.0 * x3;
    x3 = t + 2.0 * x3;
  }
  template <typename T>
  FATHOM_INLINE static void eighth(T& x0, T& x1, T& x2, T& x3) {
    const T t1 = (x1 - x0) * kRootHalf, t2 = (x3 + x2) * kRootHalf;
    x0 = x0 + x1;
    x1 = x3 - x2;
    x2 = 2.0 * (-t2 - t1);
    x3 = 2.0 * (-t2 + t1);
  }
  FATHOM_INLINE static void general(double* p, double* q, std::size_t quarter, double c1, double s1,
                                    double c3, double s3) {
    double *p1 = p + quarter, *p2 = p1 + quarter, *p3 = p2 + quarter;
    double *q1 = q + quarter, *q2 = q1 + quarter, *q3 = q2 + quarter;
    const double x0 = *p, x1 = *p1, x2 = *p2, x3 = *p3;
    const double y0 = *q, y1 = *q1, y2 = *q2, y3 = *q3;
    const double t1 = x0 - y1, t2 = y0 - x1, t3 = y3 + x2, t4 = x3 + y2;
    const double t5 = t1 - t4, t6 = t1 + t4, t7 = t2 - t3, t8 = t2 + t3;
    *p = x0 + y1;
    *q = x1 + y0;
    *q1 = y3 - x2;
    *p1 = x3 - y2;
    *p2 = t5 * c1 + t7 * s1;
    *q2 = t5 * s1 - t7 * c1;
    *p3 = t6 * c3 - t8 * s3;
    *q3 = t8 * c3 + t6 * s3;
  }
};

template <typename Direction, std::size_t width>
FATHOM_INLINE void butterflies(double* p, double* q, std::size_t quarter, const Twiddles& w) {
  FATHOM_INDEPENDENT
  for (std::ptrdiff_t k = 0; k < static_cast<std::ptrdiff_t>(width); ++k) {
    Direction::general(p + k, q - k, quarter, w.cos1[k], w.sin1[k], w.cos3[k], w.sin3[k]);
  }
}

// The butterflies j .. j + count of one block, with w for j on; those without a rotation come with
// the first and the last. So that counts are even, the general ones run on to j = q/2, where p and
// q meet, and the right values are put there afterwards.
template <typename Direction, std::size_t width>
FATHOM_INLINE void blockRange(double* x, std::size_t quarter, std::size_t j, std::size_t count,
                              const Twiddles& w) {
  double *x1 = x + quarter, *x2 = x1 + quarter, *x3 = x2 + quarter;
  const std::size_t half = quarter / 2;
  if (j == 1) Direction::first(x[0], x1[0], x2[0], x3[0]);
  double m0 = x[half], m1 = x1[half], m2 = x2[half], m3 = x3[half];
  for (std::size_t k = 0; k < count; k += width) {
    butterflies<Direction, width>(x + j + k, x1 - j - k, quarter, w.from(k));
  }
  if (j + count <= half) return;
  Direction::eighth(m0, m1, m2, m3);
  x[half] = m0;
  x1[half] = m1;
  x2[half] = m2;
  x3[half] = m3;
}

// A whole stage over the elements start .. start + n; the table has the twiddles of j at q/2 + j
// - 1.
template <typename Direction>
FATHOM_INLINE void blockStage(double* x, std::size_t start, std::size_t n, std::size_t span,
                              const Twiddles& table) {
  const std::size_t quarter = span / 4, half = quarter / 2;
  for (std::size_t block = start / span; block < (start + n) / span; ++block) {
    if (!isWholeBlock(block)) continue;
    double* const base = x + block * span;
    if (half >= 8) {
      blockRange<Direction, 8>(base, quarter, 1, half, table.from(half));
    } else if (half == 4) {
      blockRange<Direction, 4>(base, 8, 1, 4, table.from(4));
    } else if (half == 2) {
      blockRange<Direction, 2>(base, 4, 1, 2, table.from(2));
    } else {
      Direction::first(base[0], base[quarter], base[2 * quarter], base[3 * quarter]);
      if (half == 1) Direction::eighth(base[1], base[3], base[5], base[7]);
    }
  }
}

FATHOM_MULTIVERSION
void forwardBlock(double* x, std::size_t start, std::size_t n, std::size_t smallest,
                  const Twiddles& table) {
  for (std::size_t span = smallest; span <= n; span *= 2) {
    blockStage<Forward>(x, start, n, span, table);
  }
}

FATHOM_MULTIVERSION
void inverseBlock(double* x, std::size_t start, std::size_t n, std::size_t smallest,
                  const Twiddles& table) {
  for (std::size_t span = n; span >= smallest; span /= 2) {
    blockStage<Inverse>(x, start, n, span, table);
  }
}

template <typename Direction>
FATHOM_INLINE void stageTile(double* x, std::size_t n, std::size_t span, std::size_t j,
                             const Twiddles& w) {
  for (std::size_t block = 0; block < n / span; ++block) {
    if (isWholeBlock(block)) blockRange<Direction, 8>(x + block * span, span / 4, j, kTile, w);
  }
}

FATHOM_MULTIVERSION
void forwardTile(double* x, std::size_t n, std::size_t span, std::size_t j, const Twiddles& w) {
  stageTile<Forward>(x, n, span, j, w);
}

FATHOM_MULTIVERSION
void inverseTile(double* x, std::size_t n, std::size_t span, std::size_t j, const Twiddles& w) {
  stageTile<Inverse>(x, n, span, j, w);
}

using TileFunction = void (*)(double*, std::size_t, std::size_t, std::size_t, const Twiddles&);

// A stage of a span beyond kBlockSpan.
void largeStage(double* x, std::size_t n, std::size_t span, TileFunction tile) {
  TwiddleStore<kTile> store;
  const double e = kTwoPi / static_cast<double>(span);
  const TwiddleSpacing spacing(e);
  double a = e;
  for (std::size_t j = 0; j < span / 8; j += kTile) {
    a = store.setAngles(a, e, kTile, 0);
    store.evaluate(spacing, kTile);
    tile(x, n, span, j + 1, store.twiddles());
  }
}

using BlockTable = TwiddleStore<kBlockSpan / 4>;

void fillTable(BlockTable& table, std::size_t span) {
  const double e = kTwoPi / static_cast<double>(span);
  table.setStages(e, e, span / 8);
  for (std::size_t half = span / 8; half > 1; half /= 2) table.pad(2 * half - 1);
  if (span > 8) table.evaluate(span / 4 - 2, 2);
}

template <typename T>
FATHOM_INLINE void lengthTwo(T& a, T& b) {
  const T t = a;
  a = t + b;
  b = t - b;
}

// The stages within a tile, first to last or last to first.
struct ForwardStages {
  template <typename L>
  FATHOM_INLINE void whole(L (&x)[1][kTileSide]) const {
    auto& v = x[0];
    for (int i : {0, 4, 6}) lengthTwo(v[i], v[i + 1]);
    Forward::first(v[0], v[1], v[2], v[3]);
    Forward::first(v[0], v[2], v[4], v[6]);
    Forward::eighth(v[1], v[3], v[5], v[7]);
  }
  template <typename L>
  FATHOM_INLINE void split(L (&x)[1][kTileSide]) const {
    auto& v = x[0];
    for (int i : {0, 4}) {
      lengthTwo(v[i], v[i + 1]);
      Forward::first(v[i], v[i + 1], v[i + 2], v[i + 3]);
    }
  }
};

struct InverseStages {
  template <typename L>
  FATHOM_INLINE void whole(L (&x)[1][kTileSide]) const {
    auto& v = x[0];
    Inverse::first(v[0], v[2], v[4], v[6]);
    Inverse::eighth(v[1], v[3], v[5], v[7]);
    Inverse::first(v[0], v[1], v[2], v[3]);
    for (int i : {0, 4, 6}) lengthTwo(v[i], v[i + 1]);
  }
  template <typename L>
  FATHOM_INLINE void split(L (&x)[1][kTileSide]) const {
    auto& v = x[0];
    for (int i : {0, 4}) {
      Inverse::first(v[i], v[i + 1], v[i + 2], v[i + 3]);
      lengthTwo(v[i], v[i + 1]);
    }
  }
};

template <std::size_t bytes>
FATHOM_INLINE void reversedFirstStagesOf(double* x, std::size_t n) {
  reverseWithStages<bytes, true>({x}, n, ForwardStages{});
}
FATHOM_BY_WIDTH(reversedFirstStages, (double* x, std::size_t n), (x, n))

template <std::size_t bytes>
FATHOM_INLINE void lastStagesReversedOf(double* x, std::size_t n) {
  reverseWithStages<bytes, false>({x}, n, InverseStages{});
}
FATHOM_BY_WIDTH(lastStagesReversed, (double* x, std::size_t n), (x, n))

FATHOM_MULTIVERSION
void scale(double* x, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor;
}

constexpr bool hasTiles(std::size_t n) {
  return n >= kTileSide * kTileSide;
}

void reverseSmall(double* x, std::size_t n) {
  reverseFew(n, [x](std::size_t i, std::size_t j) { std::swap(x[i], x[j]); });
}

void lengthTwoSmall(double* x, std::size_t n) {
  for (std::size_t i = 0; i < n; i += 2) {
    if (isWholeBlock(i / 2)) lengthTwo(x[i], x[i + 1]);
  }
}

}  // namespace

int32_t Log2Size(int32_t n) {
  return n < 1 ? -1 : std::bit_width(static_cast<uint32_t>(n)) - 1;
}

AnalysisStatus PackedRealFFT(double* x, int32_t n, int32_t log2n) {
  if (n <= 1) return FATHOM_OK;
  const std::size_t size = std::size_t{1} << log2n, block = std::min(size, kBlockSpan);
  BlockTable table;
  fillTable(table, block);
  if (hasTiles(size)) {
    reversedFirstStages(x, size);
  } else {
    reverseSmall(x, size);
    lengthTwoSmall(x, size);
  }
  for (std::size_t i = 0; i < size; i += block) {
    forwardBlock(x, i, block, hasTiles(size) ? 16 : 4, table.twiddles());
  }
  for (std::size_t span = 2 * kBlockSpan; span <= size; span *= 2) {
    largeStage(x, size, span, forwardTile);
  }
  return FATHOM_OK;
}

void PackedRealInvFFT(double* x, int32_t n, int32_t log2n) {
  if (n < 2) return;
  const std::size_t size = std::size_t{1} << log2n, block = std::min(size, kBlockSpan);
  scale(x, size, 1.0 / n);
  for (std::size_t span = size; span > kBlockSpan; span /= 2) {
    largeStage(x, size, span, inverseTile);
  }
  BlockTable table;
  fillTable(table, block);
  for (std::size_t i = 0; i < size; i += block) {
    inverseBlock(x, i, block, hasTiles(size) ? 16 : 4, table.twiddles());
  }
  if (hasTiles(size)) {
    lastStagesReversed(x, size);
  } else {
    lengthTwoSmall(x, size);
    reverseSmall(x, size);
  }
}

}  // namespace fathom
