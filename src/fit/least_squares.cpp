// General least squares, weighted or not, by six factorisations, and iterative refinement of what
// they give.
//
// The matrix is kept column after column in blocks of rows that fit the first-level cache, its
// columns, the right-hand side and the deviations scaled by powers of two. The last block is filled
// up with rows of zeros, so that no loop over rows has a remainder.
//
// Refinement is that of the augmented system r + A x = b, A^T r = 0 for the residuals r and the
// solution x together (A. Bjoerck, "Iterative refinement of linear least squares solutions I", BIT,
// 1967). What is left over of both equations is summed in twice the precision (T. Ogita,
// S. M. Rump, S. Oishi, "Accurate sum and dot product", SIAM Journal on Scientific Computing,
// 2005).
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "elementary/double_double.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/tile.hpp"

namespace fathom {
namespace {

constexpr std::size_t kPartial = 8;  // sums over rows that run side by side
constexpr std::size_t kBlockDoubles = 3072;
constexpr double kNegligible = 0x1p-900;  // squares this small count as zero

// The leading power of two of x > 0; 1 where there is none that serves as a scale.
double scaleOf(double x) {
  if (!(x > 0.0) || !(x <= 0x1.fffffffffffffp1023)) return 1.0;
  const double power = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0x7FF0000000000000u);
  return power > 0x1p-1022 ? power : 0x1p-1022;
}

// The sum of kPartial partial sums and more, pair by pair.
template <std::size_t count>
FATHOM_INLINE double folded(double (&partial)[count]) {
  for (std::size_t half = count / 2; half > 0; half /= 2) {
    for (std::size_t l = 0; l < half; ++l) partial[l] += partial[l + half];
  }
  return partial[0];
}

// sums[c] = the sum of x[i] y[c rows + i], over a multiple of kPartial rows.
template <std::size_t bytes, std::size_t count>
FATHOM_INLINE void dotsOf(const double* x, const double* y, std::size_t rows, double* sums) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kVectors = kPartial / kLanes;
  Lanes<bytes> partial[count][kVectors] = {};
  for (std::size_t i = 0; i < rows; i += kPartial) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kVectors; ++v) {
      Lanes<bytes> xs, ys;
      load(xs, x + i + v * kLanes);
      FATHOM_UNROLL
      for (std::size_t c = 0; c < count; ++c) {
        load(ys, y + c * rows + i + v * kLanes);
        partial[c][v] = partial[c][v] + xs * ys;
      }
    }
  }
  for (std::size_t c = 0; c < count; ++c) {
    double parts[kPartial];
    for (std::size_t v = 0; v < kVectors; ++v) store(parts + v * kLanes, partial[c][v]);
    sums[c] = folded(parts);
  }
}

// One sum alone has four times as many parts, as each waits for its own last addition. With
// `subtracts`, y = y - factor z comes first.
template <std::size_t bytes, bool subtracts>
FATHOM_INLINE double dotOf(const double* x, std::conditional_t<subtracts, double*, const double*> y,
                           double factor, const double* z, std::size_t rows) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kVectors = kPartial / kLanes;
  constexpr std::size_t kChains = 4, kSpan = kChains * kPartial;
  Lanes<bytes> partial[kChains * kVectors] = {};
  const auto take = [&](std::size_t i, Lanes<bytes> & sum) __attribute__((always_inline)) {
    Lanes<bytes> xs, ys;
    load(xs, x + i);
    load(ys, y + i);
    if constexpr (subtracts) {
      Lanes<bytes> zs;
      load(zs, z + i);
      ys = ys - zs * factor;
      store(y + i, ys);
    }
    sum = sum + xs * ys;
  };
  std::size_t i = 0;
  for (; i + kSpan <= rows; i += kSpan) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kChains * kVectors; ++v) take(i + v * kLanes, partial[v]);
  }
  for (; i < rows; i += kPartial) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kVectors; ++v) take(i + v * kLanes, partial[v]);
  }
  double parts[kSpan];
  for (std::size_t v = 0; v < kChains * kVectors; ++v) store(parts + v * kLanes, partial[v]);
  return folded(parts);
}
template <std::size_t bytes>
FATHOM_INLINE double dotOf(const double* x, const double* y, std::size_t rows) {
  return dotOf<bytes, false>(x, y, 0.0, nullptr, rows);
}

template <std::size_t bytes>
FATHOM_INLINE void dotsIntoOf(const double* x, const double* y, std::size_t count, std::size_t rows,
                              double* sums) {
  std::size_t c = 0;
  for (; c + 4 <= count; c += 4) dotsOf<bytes, 4>(x, y + c * rows, rows, sums + c);
  for (; c < count; ++c) sums[c] = dotOf<bytes>(x, y + c * rows, rows);
}
FATHOM_BY_WIDTH(dotsInto,
                (const double* x, const double* y, std::size_t count, std::size_t rows,
                 double* sums),
                (x, y, count, rows, sums))

// y = y - factor x
FATHOM_INLINE void subtract(double* y, double factor, const double* x, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) y[i] -= factor * x[i];
}

FATHOM_MULTIVERSION void subtractFrom(double* y, const double* factors, std::size_t count,
                                      const double* x, std::size_t rows) {
  for (std::size_t c = 0; c < count; ++c) subtract(y + c * rows, factors[c], x, rows);
}
FATHOM_MULTIVERSION void subtractAll(double* y, const double* factors, std::size_t count,
                                     const double* x, std::size_t rows) {
  for (std::size_t c = 0; c < count; ++c) subtract(y, factors[c], x + c * rows, rows);
}

// A Householder reflection I - v v^T / gamma of a row of R, whose element of v is `pivot`, and the
// rows of a block. Where nothing is to be done, gamma is 0.
struct Reflection {
  double pivot;
  double gamma;
};

// Reflects the rows of a block, column after column, into the triangle R above it.
template <std::size_t bytes>
FATHOM_INLINE void reflectBlockOf(double* q, std::size_t rows, std::size_t k, double* r,
                                  Reflection* reflections, double* sums) {
  for (std::size_t j = 0; j < k; ++j) {
    double *v = q + j * rows, *row = r + j * k;
    const double square = dotOf<bytes>(v, v, rows);
    if (square < kNegligible) {
      reflections[j] = {0.0, 0.0};
      continue;
    }
    const double alpha = row[j], norm = sqrt(alpha * alpha + square);
    const double beta = alpha > 0.0 ? -norm : norm;
    const double pivot = alpha - beta, gamma = -beta * pivot;
    reflections[j] = {pivot, gamma};
    row[j] = beta;
    const std::size_t rest = k - j - 1;
    dotsIntoOf<bytes>(v, v + rows, rest, rows, sums);
    for (std::size_t c = 0; c < rest; ++c) {
      const double factor = (pivot * row[j + 1 + c] + sums[c]) / gamma;
      row[j + 1 + c] -= factor * pivot;
      subtract(v + (1 + c) * rows, factor, v, rows);
    }
  }
}

FATHOM_BY_WIDTH(reflectBlock,
                (double* q, std::size_t rows, std::size_t k, double* r, Reflection* reflections,
                 double* sums),
                (q, rows, k, r, reflections, sums))

// Applies one block's reflections, in their order or from the last to the first, to the vector of
// `top`, which goes with R, and the block's rows of f.
template <std::size_t bytes>
FATHOM_INLINE void applyReflectionsOf(const double* q, std::size_t rows, std::size_t k,
                                      const Reflection* reflections, bool backwards, double* top,
                                      double* f) {
  const auto vectorAt = [=](std::size_t i) { return q + (backwards ? k - 1 - i : i) * rows; };
  double sum = dotOf<bytes>(vectorAt(0), f, rows);
  for (std::size_t i = 0; i < k; ++i) {
    const std::size_t j = backwards ? k - 1 - i : i;
    const auto [pivot, gamma] = reflections[j];
    const double factor = gamma == 0.0 ? 0.0 : (pivot * top[j] + sum) / gamma;
    top[j] -= factor * pivot;
    if (i + 1 == k) {
      subtract(f, factor, vectorAt(i), rows);
    } else {
      sum = dotOf<bytes, true>(vectorAt(i + 1), f, factor, vectorAt(i), rows);
    }
  }
}
FATHOM_BY_WIDTH(applyReflections,
                (const double* q, std::size_t rows, std::size_t k, const Reflection* reflections,
                 bool backwards, double* top, double* f),
                (q, rows, k, reflections, backwards, top, f))

// Givens rotations of pairs of rows x and z: sine and cosine go to where they are kept.
FATHOM_INLINE void rotationsOf(double* x, double* z, double* cosines, std::size_t count) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    const double square = x[i] * x[i] + z[i] * z[i];
    const bool none = square < kNegligible;
    const double length = sqrt(square);
    cosines[i] = none ? 1.0 : x[i] / length;
    z[i] = none ? 0.0 : z[i] / length;
    x[i] = none ? x[i] : length;
  }
}
// With the sines negated it is the rotation back.
FATHOM_INLINE void rotate(double* x, double* z, const double* cosines, const double* sines,
                          double sign, std::size_t count) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    const double c = cosines[i], s = sign * sines[i], before = x[i];
    x[i] = rounded(before * c) + rounded(z[i] * s);
    z[i] = rounded(z[i] * c) - rounded(before * s);
  }
}

// The rows of a block are rotated into each other by halves, so that rotations run side by side.
constexpr std::size_t lowerHalf(std::size_t rows) {
  return rows - rows / 2;
}

FATHOM_MULTIVERSION void rotateBlock(double* q, std::size_t rows, std::size_t k, double* r,
                                     double* cosines) {
  for (std::size_t j = 0; j < k; ++j) {
    double *x = q + j * rows, *c = cosines + j * rows;
    for (std::size_t left = rows; left > 1;) {
      const std::size_t half = lowerHalf(left), count = left - half;
      rotationsOf(x, x + half, c + half, count);
      for (std::size_t other = 1; other < k - j; ++other) {
        double* y = x + other * rows;
        rotate(y, y + half, c + half, x + half, 1.0, count);
      }
      left = half;
    }
    double* row = r + j * k;
    rotationsOf(row + j, x, c, 1);
    for (std::size_t other = 1; other < k - j; ++other) {
      rotate(row + j + other, x + other * rows, c, x, 1.0, 1);
    }
  }
}

FATHOM_MULTIVERSION void applyRotations(const double* q, std::size_t rows, std::size_t k,
                                        const double* cosines, bool backwards, double* top,
                                        double* f) {
  for (std::size_t i = 0; i < k; ++i) {
    const std::size_t j = backwards ? k - 1 - i : i;
    const double *s = q + j * rows, *c = cosines + j * rows;
    std::size_t halves[64], stages = 0;
    for (std::size_t left = rows; left > 1; left = halves[stages++])
      halves[stages] = lowerHalf(left);
    const double sign = backwards ? -1.0 : 1.0;
    if (backwards) rotate(top + j, f, c, s, sign, 1);
    for (std::size_t stage = 0; stage < stages; ++stage) {
      const std::size_t at = backwards ? stages - 1 - stage : stage, half = halves[at];
      const std::size_t left = at == 0 ? rows : halves[at - 1];
      rotate(f, f + half, c + half, s + half, sign, left - half);
    }
    if (!backwards) rotate(top + j, f, c, s, sign, 1);
  }
}

// For a block of A: sum + low = sum + low - A x, and the partial sums of A^T (q + qLow), each with
// twice the precision. x is given by the parts of its elements' negatives.
FATHOM_MULTIVERSION void accurateProducts(const double* a, std::size_t rows, std::size_t k,
                                          const double* minusX, const double* q, const double* qLow,
                                          double* sum, double* low, double* g, double* gLow) {
  for (std::size_t i = 0; i < rows; i += kPartial) {
    double s[kPartial], c[kPartial], weight[kPartial], high[kPartial], tail[kPartial];
    for (std::size_t l = 0; l < kPartial; ++l) {
      s[l] = sum[i + l];
      c[l] = low[i + l];
      weight[l] = q[i + l];
      high[l] = split(weight[l]).high;
      tail[l] = split(weight[l]).low;
    }
    for (std::size_t j = 0; j < k; ++j) {
      const double x = minusX[j];
      const DoubleDouble xParts = split(x);
      FATHOM_INDEPENDENT
      for (std::size_t l = 0; l < kPartial; ++l) {
        const double element = a[j * rows + i + l];
        const DoubleDouble parts = split(element);
        const DoubleDouble p = twoProduct(element, parts, x, xParts);
        const DoubleDouble t = twoSum(s[l], p.high);
        s[l] = t.high;
        c[l] += p.low + t.low;
        const DoubleDouble w = twoProduct(element, parts, weight[l], {high[l], tail[l]});
        const DoubleDouble u = twoSum(g[j * kPartial + l], w.high);
        g[j * kPartial + l] = u.high;
        gLow[j * kPartial + l] += (w.low + u.low) + element * qLow[i + l];
      }
    }
    for (std::size_t l = 0; l < kPartial; ++l) {
      sum[i + l] = s[l];
      low[i + l] = c[l];
    }
  }
}

// Copies rows of `h` to a block, column after column.
template <std::size_t bytes>
FATHOM_INLINE void gatherBlockOf(const double* h, std::size_t rows, std::size_t filled,
                                 std::size_t k, double* a) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  std::size_t i = 0;
  for (; i + kLanes <= filled; i += kLanes) {
    std::size_t j = 0;
    for (; j + kLanes <= k; j += kLanes) {
      transposeSquare<bytes, 1>(h + i * k + j, k, a + j * rows + i, rows);
    }
    for (; j < k; ++j) {
      for (std::size_t l = 0; l < kLanes; ++l) a[j * rows + i + l] = h[(i + l) * k + j];
    }
  }
  for (; i < rows; ++i) {
    for (std::size_t j = 0; j < k; ++j) a[j * rows + i] = i < filled ? h[i * k + j] : 0.0;
  }
}
FATHOM_BY_WIDTH(gatherBlock,
                (const double* h, std::size_t rows, std::size_t filled, std::size_t k, double* a),
                (h, rows, filled, k, a))

// The largest magnitude of x / deviations and `largest`, by the bits, which order magnitudes.
FATHOM_MULTIVERSION double largestOf(const double* x, const double* deviations, std::size_t rows,
                                     double largest) {
  constexpr std::int64_t kMagnitude = INT64_MAX;
  std::int64_t partial[kPartial];
  for (std::int64_t& size : partial) size = std::bit_cast<std::int64_t>(largest);
  for (std::size_t i = 0; i < rows; i += kPartial) {
    double values[kPartial];
    for (std::size_t l = 0; l < kPartial; ++l) values[l] = x[i + l];
    if (deviations != nullptr) {
      for (std::size_t l = 0; l < kPartial; ++l) values[l] /= deviations[i + l];
    }
    for (std::size_t l = 0; l < kPartial; ++l) {
      const std::int64_t size = std::bit_cast<std::int64_t>(values[l]) & kMagnitude;
      partial[l] = size > partial[l] ? size : partial[l];
    }
  }
  return std::bit_cast<double>(*std::max_element(partial, partial + kPartial));
}

// a = a scale, and q = a / deviations.
FATHOM_MULTIVERSION void scaleColumn(double* a, double* q, double scale, const double* deviations,
                                     std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) a[i] = a[i] * scale;
  if (deviations == nullptr) {
    std::copy_n(a, rows, q);
    return;
  }
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) q[i] = a[i] / deviations[i];
}

DoubleDouble quotient(DoubleDouble a, double b) {
  const double high = a.high / b;
  const DoubleDouble product = twoProduct(high, b);
  return {high, ((a.high - product.high) - product.low + a.low) / b};
}

// high + low = (high + low) / deviations
FATHOM_MULTIVERSION void divideAll(double* high, double* low, const double* deviations,
                                   std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble q = quotient({high[i], low[i]}, deviations[i]);
    high[i] = q.high;
    low[i] = q.low;
  }
}

// high + low = high + low + x
FATHOM_MULTIVERSION void addAll(double* high, double* low, const double* x, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble sum = DoubleDouble{high[i], low[i]} + x[i];
    high[i] = sum.high;
    low[i] = sum.low;
  }
}

// f = f + fLow - x - xLow
FATHOM_MULTIVERSION void differences(double* f, const double* fLow, const double* x,
                                     const double* xLow, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble left = DoubleDouble{f[i], fLow[i]} + -x[i];
    f[i] = left.high + (left.low - xLow[i]);
  }
}

// The matrix and everything that goes with it, in one piece of memory.
class Fit {
 public:
  Fit(const double* h, std::int32_t n, std::int32_t k, const double* y, const double* deviations,
      std::int32_t algorithm)
      : points_(static_cast<std::size_t>(n)),
        k_(static_cast<std::size_t>(k)),
        blockRows_(
            std::clamp(kBlockDoubles / k_ / kPartial * kPartial, 2 * kPartial, std::size_t{512})),
        rows_((points_ + kPartial - 1) / kPartial * kPartial),
        blocks_((rows_ + blockRows_ - 1) / blockRows_),
        weighted_(deviations != nullptr),
        algorithm_(algorithm),
        memory_(request()),
        pivots_(k_) {
    if (!memory_ || !pivots_) return;
    double* next = memory_.data();
    const auto take = [&next](std::size_t count) {
      double* taken = next;
      next += count;
      return taken;
    };
    const std::size_t cells = rows_ * k_;
    a_ = take(cells);
    q_ = take(cells);
    cosines_ = algorithm == FATHOM_LS_GIVENS ? take(cells) : nullptr;
    for (double** column :
         {&b_, &deviations_, &residual_, &residualLow_, &f_, &low_, &weight_, &weightLow_}) {
      *column = take(rows_);
    }
    for (double** square : {&r_, &u_, &v_, &root_}) *square = take(k_ * k_);
    for (double** row : {&scale_, &s_, &x_, &dx_, &g_, &top_, &h_, &sums_}) *row = take(k_);
    partial_ = take(2 * kPartial * k_);
    reflections_ = reinterpret_cast<Reflection*>(take(2 * blocks_ * k_));
    load(h, y, deviations);
  }

  explicit operator bool() const { return memory_ && pivots_; }

  AnalysisStatus solve() {
    const AnalysisStatus status = factor();
    if (status != FATHOM_OK) return status;
    if (rank_ == k_) return refine();
    solveDeficient();
    return FATHOM_OK;
  }

  void coefficients(double* c) const {
    for (std::size_t j = 0; j < k_; ++j) c[j] = x_[j] * unit_ * scale_[j];
  }

  // `fitted` may be `y`.
  void fitted(const double* y, double* fitted) const {
    for (std::size_t i = 0; i < points_; ++i) {
      fitted[i] = y[i] - residual_[i] * deviations_[i] * unit_;
    }
  }

  double sumOfSquares() const {
    const double unit = unit_ / deviationUnit_;
    double sum = 0.0;
    for (std::size_t i = 0; i < points_; ++i) {
      const double x = residual_[i] * unit;
      sum += x * x;
    }
    return sum;
  }

  // root_: the inverse of the factor, of which the covariance is the product with its transpose;
  // after the normal equations by LU the covariance itself.
  AnalysisStatus invert() {
    if (algorithm_ == FATHOM_LS_NORMAL_LU) {
      return InvMatrix(u_, static_cast<std::int32_t>(k_), root_);
    }
    for (std::size_t t = 0; t < rank_; ++t) {
      for (std::size_t i = 0; i < k_; ++i) h_[i] = i == t ? 1.0 : 0.0;
      if (algorithm_ == FATHOM_LS_SINGULAR_VALUES) {
        for (std::size_t i = 0; i < k_; ++i) h_[i] = v_[i * k_ + t] / s_[t];
      } else {
        solveFactor(h_);
      }
      if (rank_ < k_) shorten(h_);
      for (std::size_t i = 0; i < k_; ++i) root_[i * k_ + t] = h_[i];
    }
    return FATHOM_OK;
  }

  // (A^T A)^-1 times a factor, after invert().
  void covariance(double factor, double* c) const {
    for (std::size_t i = 0; i < k_; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        double sum = 0.0;
        if (algorithm_ == FATHOM_LS_NORMAL_LU) {
          sum = root_[i * k_ + j];
        } else {
          for (std::size_t t = 0; t < rank_; ++t) sum += root_[i * k_ + t] * root_[j * k_ + t];
        }
        sum = sum * deviationUnit_ * scale_[i] * (deviationUnit_ * scale_[j]) * factor;
        c[i * k_ + j] = c[j * k_ + i] = sum;
      }
    }
  }

 private:
  static constexpr int kIterations = 10;
  // Coefficients of what is nearly orthogonal to all columns are as small as their corrections.
  static constexpr double kUnsolved = 0x1p-20;
  static constexpr double kLead = 0x1p-20;

  std::size_t request() const {
    // k is no larger than n; where their product is no size, neither are the rest.
    const std::uint64_t rows = rows_, k = k_, limit = PTRDIFF_MAX / 64;
    if (rows > limit / k) return SIZE_MAX;
    const std::uint64_t cells = rows * k * (algorithm_ == FATHOM_LS_GIVENS ? 3 : 2) + 8 * rows +
                                4 * k * k + (8 + 2 * kPartial) * k + 2 * blocks_ * k;
    return cells <= PTRDIFF_MAX / sizeof(double) ? static_cast<std::size_t>(cells) : SIZE_MAX;
  }

  std::size_t rowsOf(std::size_t block) const {
    return std::min(blockRows_, rows_ - block * blockRows_);
  }
  std::size_t firstOf(std::size_t block) const { return block * blockRows_; }

  // Calls run(block of a or q, first row, rows) for all blocks, or from the last to the first.
  template <typename Run>
  void forBlocks(double* matrix, bool backwards, const Run& run) const {
    for (std::size_t i = 0; i < blocks_; ++i) {
      const std::size_t block = backwards ? blocks_ - 1 - i : i;
      run(matrix + firstOf(block) * k_, firstOf(block), rowsOf(block));
    }
  }

  void load(const double* h, const double* y, const double* deviations) {
    std::fill_n(deviations_, rows_, 1.0);
    if (weighted_) {
      double smallest = deviations[0];
      for (std::size_t i = 1; i < points_; ++i) smallest = std::min(smallest, deviations[i]);
      deviationUnit_ = scaleOf(smallest);
      for (std::size_t i = 0; i < points_; ++i) deviations_[i] = deviations[i] / deviationUnit_;
    }
    std::fill_n(scale_, k_, 0.0);
    forBlocks(a_, false, [&](double* a, std::size_t first, std::size_t rows) {
      gatherBlock(h + first * k_, rows, std::min(rows, points_ - first), k_, a);
      for (std::size_t j = 0; j < k_; ++j) {
        scale_[j] = largestOf(a + j * rows, deviationsFrom(first), rows, scale_[j]);
      }
    });
    for (std::size_t j = 0; j < k_; ++j) scale_[j] = 1.0 / scaleOf(scale_[j]);
    std::copy_n(y, points_, b_);
    std::fill(b_ + points_, b_ + rows_, 0.0);
    unit_ = scaleOf(largestOf(b_, deviationsFrom(0), rows_, 0.0));
    scaleColumn(b_, f_, 1.0 / unit_, deviationsFrom(0), rows_);
  }

  const double* deviationsFrom(std::size_t first) const {
    return weighted_ ? deviations_ + first : nullptr;
  }

  // Scales the columns of a block, and makes the copy that is factored.
  void prepare(std::size_t first, std::size_t rows) {
    for (std::size_t j = 0; j < k_; ++j) {
      const std::size_t column = first * k_ + j * rows;
      scaleColumn(a_ + column, q_ + column, scale_[j], deviationsFrom(first), rows);
    }
  }

  double tolerance() const { return 0x1p-52 * static_cast<double>(points_); }

  AnalysisStatus factor() {
    rank_ = k_;
    std::fill_n(r_, k_ * k_, 0.0);
    switch (algorithm_) {
      case FATHOM_LS_GIVENS:
        forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
          prepare(first, rows);
          rotateBlock(q, rows, k_, r_, cosines_ + first * k_);
        });
        break;
      case FATHOM_LS_GRAM_SCHMIDT:
        orthonormalise();
        break;
      case FATHOM_LS_NORMAL_LU:
      case FATHOM_LS_NORMAL_CHOLESKY:
        return factorNormal();
      default:
        forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
          prepare(first, rows);
          reflectBlock(q, rows, k_, r_, reflections_ + first / blockRows_ * k_, sums_);
        });
    }
    if (algorithm_ == FATHOM_LS_SINGULAR_VALUES) return decompose();
    return isRegular(tolerance()) ? FATHOM_OK : FATHOM_ERR_SINGULAR;
  }

  // Whether what is left of each column is above its part of the column, whose norm is that of R's.
  bool isRegular(double part) const {
    for (std::size_t j = 0; j < k_; ++j) {
      double sum = 0.0;
      for (std::size_t i = 0; i <= j; ++i) sum += r_[i * k_ + j] * r_[i * k_ + j];
      if (!(fabs(r_[j * k_ + j]) > part * sqrt(sum))) return false;
    }
    return true;
  }

  void orthonormalise() {
    forBlocks(q_, false,
              [&](double*, std::size_t first, std::size_t rows) { prepare(first, rows); });
    for (std::size_t j = 0; j < k_; ++j) {
      double* row = r_ + j * k_;
      const auto sumsOfBlocks = [&](std::size_t from, std::size_t count) {
        std::fill_n(row + from, count, 0.0);
        forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
          dotsInto(q + j * rows, q + from * rows, count, rows, sums_);
          for (std::size_t c = 0; c < count; ++c) row[from + c] += sums_[c];
        });
      };
      sumsOfBlocks(j, 1);
      row[j] = sqrt(row[j]);
      if (!(row[j] > 0.0)) return;
      const double inverse = 1.0 / row[j];
      forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
        for (std::size_t i = 0; i < rows; ++i) q[j * rows + i] *= inverse;
      });
      sumsOfBlocks(j + 1, k_ - j - 1);
      forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
        subtractFrom(q + (j + 1) * rows, row + j + 1, k_ - j - 1, q + j * rows, rows);
      });
    }
  }

  AnalysisStatus decompose() {
    std::copy_n(r_, k_ * k_, root_);
    const auto side = static_cast<std::int32_t>(k_);
    const AnalysisStatus status = SVD(root_, side, side, u_, s_, v_);
    if (status != FATHOM_OK) return status;
    rank_ = 0;
    while (rank_ < k_ && s_[rank_] > tolerance() * s_[0]) ++rank_;
    return FATHOM_OK;
  }

  AnalysisStatus factorNormal() {
    double* gram = u_;
    std::fill_n(gram, k_ * k_, 0.0);
    forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
      prepare(first, rows);
      for (std::size_t j = 0; j < k_; ++j) {
        dotsInto(q + j * rows, q + j * rows, k_ - j, rows, sums_);
        for (std::size_t c = j; c < k_; ++c) gram[j * k_ + c] += sums_[c - j];
      }
    });
    for (std::size_t j = 0; j < k_; ++j) {
      for (std::size_t c = 0; c < j; ++c) gram[j * k_ + c] = gram[c * k_ + j];
    }
    const auto side = static_cast<std::int32_t>(k_);
    if (algorithm_ == FATHOM_LS_NORMAL_LU) {
      std::copy_n(gram, k_ * k_, r_);
      std::int32_t parity;
      return LU(r_, side, pivots_.data(), &parity);
    }
    const AnalysisStatus status = Cholesky(gram, side, v_);
    if (status != FATHOM_OK) return status;
    for (std::size_t i = 0; i < k_; ++i) {
      for (std::size_t j = i; j < k_; ++j) r_[i * k_ + j] = v_[j * k_ + i];
    }
    return isRegular(sqrt(tolerance())) ? FATHOM_OK : FATHOM_ERR_SINGULAR;
  }

  // x = R^-1 x and x = R^-T x, with the triangle or its singular values.
  void solveFactor(double* x) {
    if (algorithm_ != FATHOM_LS_SINGULAR_VALUES) {
      for (std::size_t i = k_; i-- > 0;) {
        for (std::size_t j = i + 1; j < k_; ++j) x[i] -= r_[i * k_ + j] * x[j];
        x[i] /= r_[i * k_ + i];
      }
      return;
    }
    turn(u_, v_, x);
  }
  void solveTransposed(double* x) {
    if (algorithm_ != FATHOM_LS_SINGULAR_VALUES) {
      for (std::size_t i = 0; i < k_; ++i) {
        x[i] /= r_[i * k_ + i];
        for (std::size_t j = i + 1; j < k_; ++j) x[j] -= r_[i * k_ + j] * x[i];
      }
      return;
    }
    turn(v_, u_, x);
  }
  // x = to S^+ from^T x
  void turn(const double* from, const double* to, double* x) {
    for (std::size_t t = 0; t < rank_; ++t) {
      double sum = 0.0;
      for (std::size_t i = 0; i < k_; ++i) sum += from[i * k_ + t] * x[i];
      sums_[t] = sum / s_[t];
    }
    for (std::size_t i = 0; i < k_; ++i) {
      double sum = 0.0;
      for (std::size_t t = 0; t < rank_; ++t) sum += to[i * k_ + t] * sums_[t];
      x[i] = sum;
    }
  }

  // The block reflections or rotations applied to (top, f).
  void applyFactor(bool backwards) {
    forBlocks(q_, backwards, [&](double* q, std::size_t first, std::size_t rows) {
      if (algorithm_ == FATHOM_LS_GIVENS) {
        applyRotations(q, rows, k_, cosines_ + first * k_, backwards, top_, f_ + first);
      } else {
        applyReflections(q, rows, k_, reflections_ + first / blockRows_ * k_, backwards, top_,
                         f_ + first);
      }
    });
  }

  // Solves r + A x = f, A^T r = g: x goes to dx_, r to f_.
  void correct() {
    if (algorithm_ == FATHOM_LS_NORMAL_LU || algorithm_ == FATHOM_LS_NORMAL_CHOLESKY) {
      columnSums(dx_);
      for (std::size_t j = 0; j < k_; ++j) dx_[j] -= g_[j];
      if (algorithm_ == FATHOM_LS_NORMAL_LU) {
        const auto side = static_cast<std::int32_t>(k_);
        ForwSub(r_, dx_, side, top_, pivots_.data());
        BackSub(r_, top_, side, dx_);
      } else {
        solveTransposed(dx_);
        solveFactor(dx_);
      }
      forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
        subtractAll(f_ + first, dx_, k_, q, rows);
      });
      return;
    }
    std::copy_n(g_, k_, h_);
    solveTransposed(h_);
    if (algorithm_ == FATHOM_LS_GRAM_SCHMIDT) {
      for (std::size_t j = 0; j < k_; ++j) top_[j] = projected(j, 0.0);
      for (std::size_t j = 0; j < k_; ++j) dx_[j] = top_[j] - h_[j];
      for (std::size_t j = k_; j-- > 0;) projected(j, h_[j]);
    } else {
      std::fill_n(top_, k_, 0.0);
      applyFactor(false);
      for (std::size_t j = 0; j < k_; ++j) dx_[j] = top_[j] - h_[j];
      std::copy_n(h_, k_, top_);
      applyFactor(true);
    }
    solveFactor(dx_);
  }

  // f = f - (q^T f - kept) q for column q of Q; returns q^T f.
  double projected(std::size_t j, double kept) {
    double dot = 0.0;
    forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
      dotsInto(f_ + first, q + j * rows, 1, rows, sums_);
      dot += sums_[0];
    });
    const double factor = dot - kept;
    forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
      subtractAll(f_ + first, &factor, 1, q + j * rows, rows);
    });
    return dot;
  }

  void columnSums(double* sums) {
    std::fill_n(sums, k_, 0.0);
    forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
      dotsInto(f_ + first, q, k_, rows, sums_);
      for (std::size_t j = 0; j < k_; ++j) sums[j] += sums_[j];
    });
  }

  // What x and the residuals leave over of the equations: f = b - r - A x, g = -A^T r.
  void leftOver() {
    const double *weight = residual_, *weightLow = residualLow_;
    if (weighted_) {
      std::copy_n(residual_, rows_, weight_);
      std::copy_n(residualLow_, rows_, weightLow_);
      divideAll(weight_, weightLow_, deviations_, rows_);
      weight = weight_;
      weightLow = weightLow_;
    }
    std::copy_n(b_, rows_, f_);
    std::fill_n(low_, rows_, 0.0);
    for (std::size_t j = 0; j < k_; ++j) dx_[j] = -x_[j];
    std::fill_n(partial_, 2 * kPartial * k_, 0.0);
    double* partialLow = partial_ + kPartial * k_;
    forBlocks(a_, false, [&](double* a, std::size_t first, std::size_t rows) {
      accurateProducts(a, rows, k_, dx_, weight + first, weightLow + first, f_ + first,
                       low_ + first, partial_, partialLow);
    });
    for (std::size_t j = 0; j < k_; ++j) {
      DoubleDouble sum = {0.0, 0.0};
      for (std::size_t l = 0; l < kPartial; ++l) {
        sum = sum + DoubleDouble{partial_[j * kPartial + l], partialLow[j * kPartial + l]};
      }
      g_[j] = -(sum.high + sum.low);
    }
    if (weighted_) divideAll(f_, low_, deviations_, rows_);
    differences(f_, low_, residual_, residualLow_, rows_);
  }

  // A first correction of the size of the solution means that the factorisation saw dependent
  // columns, though it found none.
  AnalysisStatus refine() {
    std::fill_n(g_, k_, 0.0);
    std::fill_n(x_, k_, 0.0);
    std::fill_n(residual_, rows_, 0.0);
    std::fill_n(residualLow_, rows_, 0.0);
    double before = 2.0;  // the last correction, in units of the largest coefficient
    for (int pass = 0; pass < kIterations; ++pass) {
      if (pass > 0) leftOver();
      correct();
      double correction = 0.0, largest = 0.0;
      for (std::size_t j = 0; j < k_; ++j) {
        correction = std::max(correction, fabs(dx_[j]));
        largest = std::max(largest, fabs(x_[j] + dx_[j]));
      }
      const bool grows = correction > kUnsolved && correction >= 0.5 * largest;
      if (pass == 1 && grows && algorithm_ != FATHOM_LS_SINGULAR_VALUES) return FATHOM_ERR_SINGULAR;
      correction /= largest;
      if (pass > 0 && !(correction < 0.5 * before)) break;
      for (std::size_t j = 0; j < k_; ++j) x_[j] += dx_[j];
      addAll(residual_, residualLow_, f_, rows_);
      if (pass == 0) continue;
      // The next correction would be about the square of this one.
      double smallest = largest;
      for (std::size_t j = 0; j < k_; ++j) smallest = std::min(smallest, fabs(x_[j]));
      smallest = std::max(smallest, 0x1p-30 * largest);
      if (correction * correction * largest <= 0x1p-55 * smallest) break;
      before = correction;
    }
    return FATHOM_OK;
  }

  // The solution of smallest norm, of those that the numerical rank leaves.
  void solveDeficient() {
    std::fill_n(top_, k_, 0.0);
    applyFactor(false);
    std::copy_n(top_, k_, x_);
    solveFactor(x_);
    makeNullSpace();
    shorten(x_);
    std::fill_n(residual_, rows_, 0.0);
    std::fill_n(residualLow_, rows_, 0.0);
    leftOver();
    std::copy_n(f_, rows_, residual_);
  }

  double& nullVector(std::size_t i, std::size_t t) { return v_[i * k_ + t]; }
  double& basis(std::size_t i, std::size_t t) { return r_[i * k_ + t]; }

  // The last columns of V turned among each other so that the elements that were scaled up most are
  // zero in all but one of them, each the lead of its column; and, in place of R, an orthonormal
  // basis of what they are without the scaling of the columns, built from the first lead on.
  void makeNullSpace() {
    std::copy_n(scale_, k_, h_);
    largestScale_ = *std::max_element(scale_, scale_ + k_);
    for (std::size_t t = rank_; t < k_; ++t) pivots_[t] = -1;
    std::size_t next = rank_;
    for (std::size_t step = 0; step < k_ && next < k_; ++step) {
      const auto row = static_cast<std::size_t>(std::max_element(h_, h_ + k_) - h_);
      h_[row] = 0.0;
      for (std::size_t t = next + 1; t < k_; ++t) {
        const double x = nullVector(row, next), z = nullVector(row, t);
        const double length = sqrt(x * x + z * z);
        if (length == 0.0) continue;
        const double cosine = x / length, sine = z / length;
        for (std::size_t i = 0; i < k_; ++i) {
          rotate(&nullVector(i, next), &nullVector(i, t), &cosine, &sine, 1.0, 1);
        }
        nullVector(row, t) = 0.0;
      }
      if (fabs(nullVector(row, next)) > kLead) {
        pivots_[next++] = static_cast<std::int32_t>(row);
      } else if (fabs(nullVector(row, next)) <= tolerance()) {
        nullVector(row, next) = 0.0;
      }
    }
    for (std::size_t t = rank_; t < k_; ++t) {
      double largest = 0.0;
      for (std::size_t i = 0; i < k_; ++i) {
        basis(i, t) = nullVector(i, t) * (scale_[i] / largestScale_);
        largest = std::max(largest, fabs(basis(i, t)));
      }
      const double unit = 1.0 / scaleOf(largest);
      for (std::size_t i = 0; i < k_; ++i) basis(i, t) *= unit;
      for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t e = rank_; e < t; ++e) dropComponent(&basis(0, t), k_, e);
      }
      double square = 0.0;
      for (std::size_t i = 0; i < k_; ++i) square += basis(i, t) * basis(i, t);
      // What rounding left of a direction is none.
      const double inverse = square > 0x1p-80 ? 1.0 / sqrt(square) : 0.0;
      for (std::size_t i = 0; i < k_; ++i) basis(i, t) *= inverse;
    }
  }
  void dropComponent(double* x, std::size_t stride, std::size_t t) {
    double sum = 0.0;
    for (std::size_t i = 0; i < k_; ++i) sum += basis(i, t) * x[i * stride];
    for (std::size_t i = 0; i < k_; ++i) x[i * stride] -= sum * basis(i, t);
  }

  // Takes from x what the matrix maps to zero: first so that the leads vanish, which are the
  // largest elements without the scaling, then by the basis.
  void shorten(double* x) {
    for (std::size_t t = rank_; t < k_; ++t) {
      if (pivots_[t] < 0) continue;
      const auto lead = static_cast<std::size_t>(pivots_[t]);
      const double factor = x[lead] / nullVector(lead, t);
      for (std::size_t i = 0; i < k_; ++i) x[i] -= factor * nullVector(i, t);
      x[lead] = 0.0;
    }
    for (std::size_t i = 0; i < k_; ++i) x[i] *= scale_[i] / largestScale_;
    for (int pass = 0; pass < 2; ++pass) {
      for (std::size_t t = rank_; t < k_; ++t) dropComponent(x, 1, t);
    }
    for (std::size_t i = 0; i < k_; ++i) x[i] /= scale_[i] / largestScale_;
  }

  std::size_t points_, k_, blockRows_, rows_, blocks_;
  bool weighted_;
  std::int32_t algorithm_;
  Workspace<double> memory_;
  Workspace<std::int32_t> pivots_;  // of LU, or the leads of null vectors
  std::size_t rank_ = 0;
  double unit_ = 1.0, deviationUnit_ = 1.0, largestScale_ = 1.0;
  double *a_ = nullptr, *q_ = nullptr, *cosines_ = nullptr;
  double *b_ = nullptr, *deviations_ = nullptr, *residual_ = nullptr, *residualLow_ = nullptr;
  double *f_ = nullptr, *low_ = nullptr, *weight_ = nullptr, *weightLow_ = nullptr;
  double *r_ = nullptr, *u_ = nullptr, *v_ = nullptr, *root_ = nullptr;
  double *scale_ = nullptr, *s_ = nullptr, *x_ = nullptr, *dx_ = nullptr;
  double *g_ = nullptr, *top_ = nullptr, *h_ = nullptr, *sums_ = nullptr, *partial_ = nullptr;
  Reflection* reflections_ = nullptr;
};

AnalysisStatus check(std::int32_t n, std::int32_t k, std::int32_t algorithm,
                     const double* deviations) {
  if (n < 1 || k < 1) return FATHOM_ERR_NO_SAMPLES;
  if (k > n) return FATHOM_ERR_ARRAY_SIZE;
  if (algorithm < FATHOM_LS_SINGULAR_VALUES || algorithm > FATHOM_LS_NORMAL_CHOLESKY) {
    return FATHOM_ERR_SELECTION;
  }
  for (std::int32_t i = 0; i < n && deviations != nullptr; ++i) {
    if (!(deviations[i] > 0.0)) return FATHOM_ERR_SELECTION;
  }
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus GenLSFit(const double* h, int32_t n, int32_t k, const double* y,
                        const double* standardDeviations, int32_t algorithm, double* fitted,
                        double* coefficients, double* covariance, double* meanSquaredError) {
  AnalysisStatus status = fathom::check(n, k, algorithm, standardDeviations);
  if (status != FATHOM_OK) return status;
  fathom::Fit fit(h, n, k, y, standardDeviations, algorithm);
  if (!fit) return FATHOM_ERR_MEMORY;
  status = fit.solve();
  if (status == FATHOM_OK && covariance != nullptr) status = fit.invert();
  if (status != FATHOM_OK) return status;
  fit.coefficients(coefficients);
  fit.fitted(y, fitted);
  const double squares = fit.sumOfSquares();
  *meanSquaredError = squares / n;
  if (covariance != nullptr) {
    const bool scales = standardDeviations == nullptr && n > k;
    fit.covariance(scales ? squares / (n - k) : 1.0, covariance);
  }
  return FATHOM_OK;
}

AnalysisStatus GenLSFitCoef(const double* h, int32_t n, int32_t k, const double* y,
                            int32_t algorithm, double* coefficients) {
  AnalysisStatus status = fathom::check(n, k, algorithm, nullptr);
  if (status != FATHOM_OK) return status;
  fathom::Fit fit(h, n, k, y, nullptr, algorithm);
  if (!fit) return FATHOM_ERR_MEMORY;
  status = fit.solve();
  if (status == FATHOM_OK) fit.coefficients(coefficients);
  return status;
}
