// Eigenvalues and eigenvectors of real symmetric matrices: Householder reflections to a tridiagonal
// matrix, then implicitly shifted QL on that. The tridiagonal matrix never looks at the vectors, so
// its rotations are gathered, and then applied to a few elements of all vectors at a time.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/eigen_range.hpp"
#include "linalg/element.hpp"
#include "linalg/householder.hpp"

namespace fathom {
namespace {

// a = a - v w^T - w v^T and, for the symmetric matrix that results, sums = a x: column sums, as its
// columns are its rows.
FATHOM_MULTIVERSION void updateAndMultiply(MatrixBlock<double> a, const double* v, const double* w,
                                           const double* x, double* sums) {
  const std::size_t n = a.columns;
  for (std::size_t j = 0; j < n; ++j) sums[j] = 0.0;
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    double *a0 = a.row(i), *a1 = a.row(i + 1), *a2 = a.row(i + 2), *a3 = a.row(i + 3);
    const double v0 = v[i], v1 = v[i + 1], v2 = v[i + 2], v3 = v[i + 3];
    const double w0 = w[i], w1 = w[i + 1], w2 = w[i + 2], w3 = w[i + 3];
    const double x0 = x[i], x1 = x[i + 1], x2 = x[i + 2], x3 = x[i + 3];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < n; ++j) {
      a0[j] -= v0 * w[j] + w0 * v[j];
      a1[j] -= v1 * w[j] + w1 * v[j];
      a2[j] -= v2 * w[j] + w2 * v[j];
      a3[j] -= v3 * w[j] + w3 * v[j];
      sums[j] = (((sums[j] + x0 * a0[j]) + x1 * a1[j]) + x2 * a2[j]) + x3 * a3[j];
    }
  }
  for (; i < n; ++i) {
    double* row = a.row(i);
    const double vi = v[i], wi = w[i], xi = x[i];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < n; ++j) {
      row[j] -= vi * w[j] + wi * v[j];
      sums[j] += xi * row[j];
    }
  }
}

// The tridiagonal matrix with diagonal d and, from e[1] on, subdiagonal e. Row i of `a` is left
// with the vector, i values, of the reflection with tau[i]. `work` has room for 2n values.
void tridiagonalise(double* a, std::size_t n, double* d, double* e, double* tau, double* work) {
  double *v = work, *w = work + n;
  std::fill_n(work, 2 * n, 0.0);
  e[0] = tau[0] = 0.0;
  for (std::size_t i = n - 1; i > 0; --i) {
    // v and w, of the reflection before, are yet to be applied to the rows up to here.
    double* row = a + i * n;
    for (std::size_t j = 0; j <= i; ++j) row[j] -= v[i] * w[j] + w[i] * v[j];
    d[i] = row[i];
    const Reflector<double> h = reflector(row[i - 1], row, i - 1);
    e[i] = h.beta;
    tau[i] = h.tau;
    double* sums = d;  // its first i values are not known yet
    updateAndMultiply({a, n, i, i}, v, w, row, sums);
    double sum = 0.0;
    for (std::size_t j = 0; j < i; ++j) {
      sums[j] *= h.tau;
      sum += sums[j] * row[j];
    }
    const double half = 0.5 * h.tau * sum;
    for (std::size_t j = 0; j < i; ++j) {
      v[j] = row[j];
      w[j] = sums[j] - half * row[j];
    }
  }
  d[0] = a[0];
}

// The product of the reflections that tridiagonalise left in `a`, transposed: `a` becomes the
// matrix whose rows turn into the eigenvectors.
void accumulateRows(double* a, std::size_t n, const double* tau, double* q, double* sums) {
  std::fill_n(q, n * n, 0.0);
  for (std::size_t i = 0; i < n; ++i) q[i * n + i] = 1.0;
  for (std::size_t i = 2; i < n; ++i) {
    if (tau[i] != 0.0) reflectLeft(MatrixBlock<double>{q, n, i, i}, a + i * n, tau[i], sums);
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) a[i * n + j] = q[j * n + i];
  }
}

struct Rotation {
  double cosine;
  double sine;
};

// Rotations of rows i - 1 and i, with i from `row` down.
struct Sweep {
  std::size_t row;
  std::size_t count;
};

constexpr std::size_t kSweeps = 32;
constexpr std::size_t kTileColumns = 32;

// The row that two neighbouring rotations share stays in registers.
template <std::size_t bytes>
FATHOM_INLINE void rotateTileOf(double* tile, const Rotation* rotation, const Sweep* sweeps,
                                std::size_t count) {
  constexpr std::size_t kLanes = bytes / sizeof(double), kVectors = 4;
  static_assert(kTileColumns % (kVectors * kLanes) == 0);
  for (std::size_t column = 0; column < kTileColumns; column += kVectors * kLanes) {
    const Rotation* r = rotation;
    for (const Sweep* sweep = sweeps; sweep < sweeps + count; ++sweep) {
      double* row = tile + sweep->row * kTileColumns + column;
      Lanes<bytes> shared[kVectors];
      FATHOM_UNROLL
      for (std::size_t v = 0; v < kVectors; ++v) load(shared[v], row + v * kLanes);
      for (const Rotation* end = r + sweep->count; r < end; ++r) {
        double* above = row - kTileColumns;
        FATHOM_UNROLL
        for (std::size_t v = 0; v < kVectors; ++v) {
          Lanes<bytes> x;
          load(x, above + v * kLanes);
          store(row + v * kLanes, r->sine * x + r->cosine * shared[v]);
          shared[v] = r->cosine * x - r->sine * shared[v];
        }
        row = above;
      }
      FATHOM_UNROLL
      for (std::size_t v = 0; v < kVectors; ++v) store(row + v * kLanes, shared[v]);
    }
  }
}
FATHOM_BY_WIDTH(rotateTile,
                (double* tile, const Rotation* rotations, const Sweep* sweeps, std::size_t count),
                (tile, rotations, sweeps, count))

// Rotations of a matrix's rows, gathered until they are worth a walk over its columns.
class Rotations {
 public:
  Rotations(double* rows, std::size_t n, Rotation* list, double* tile)
      : rows_(rows), n_(n), list_(list), tile_(tile) {}

  void begin(std::size_t row) {
    if (sweep_ == kSweeps) apply();
    sweeps_[sweep_++] = {row, 0};
  }
  void add(double cosine, double sine) {
    list_[count_++] = {cosine, sine};
    ++sweeps_[sweep_ - 1].count;
  }

  void apply() {
    for (std::size_t j = 0; j < n_ && sweep_ > 0; j += kTileColumns) {
      const std::size_t columns = std::min(kTileColumns, n_ - j);
      if (columns < kTileColumns) std::fill_n(tile_, n_ * kTileColumns, 0.0);
      for (std::size_t i = 0; i < n_; ++i) {
        std::copy_n(rows_ + i * n_ + j, columns, tile_ + i * kTileColumns);
      }
      rotateTile(tile_, list_, sweeps_, sweep_);
      for (std::size_t i = 0; i < n_; ++i) {
        std::copy_n(tile_ + i * kTileColumns, columns, rows_ + i * n_ + j);
      }
    }
    count_ = sweep_ = 0;
  }

 private:
  double* rows_;
  std::size_t n_;
  Rotation* list_;
  double* tile_;
  Sweep sweeps_[kSweeps] = {};
  std::size_t count_ = 0;
  std::size_t sweep_ = 0;
};

struct NoRotations {
  void begin(std::size_t) {}
  void add(double, double) {}
};

// One QL sweep over d[l..m] and e[l..m - 1], where e[i] couples d[i] and d[i + 1], with the shift
// of the leading 2 x 2 block.
template <typename Sink>
void sweep(double* d, double* e, std::size_t l, std::size_t m, Sink& sink) {
  const double ratio = (d[l + 1] - d[l]) / (2.0 * e[l]);
  double g = d[m] - d[l] + e[l] / (ratio + copysign(hypotenuse(ratio, 1.0), ratio));
  double sine = 1.0, cosine = 1.0, p = 0.0;
  sink.begin(m);
  for (std::size_t i = m; i-- > l;) {
    const double f = sine * e[i], b = cosine * e[i];
    const double length = hypotenuse(f, g);
    e[i + 1] = length;
    if (length == 0.0) {  // the matrix has fallen apart here
      d[i + 1] -= p;
      e[m] = 0.0;
      return;
    }
    sine = f / length;
    cosine = g / length;
    g = d[i + 1] - p;
    const double r = (d[i] - g) * sine + 2.0 * cosine * b;
    p = sine * r;
    d[i + 1] = g + p;
    g = cosine * r - b;
    sink.add(cosine, sine);
  }
  d[l] -= p;
  e[l] = g;
  e[m] = 0.0;
}

// Turns the tridiagonal matrix into the diagonal one. False if that takes too many sweeps.
template <typename Sink>
bool diagonalise(double* d, double* e, std::size_t n, Sink& sink) {
  std::copy_n(e + 1, n - 1, e);
  e[n - 1] = 0.0;
  double norm = 0.0;
  for (std::size_t i = 0; i < n; ++i) norm = std::max(norm, fabs(d[i]) + fabs(e[i]));
  std::size_t sweepsLeft = 30 * n;
  for (std::size_t l = 0; l < n; ++l) {
    for (;;) {
      std::size_t m = l;
      for (; m + 1 < n; ++m) {
        if (negligible(e[m], fabs(d[m]) + fabs(d[m + 1]), norm)) break;
      }
      if (m == l) break;
      if (sweepsLeft-- == 0) return false;
      sweep(d, e, l, m, sink);
    }
  }
  return true;
}

// order[j] is the place of the j-th value from the smallest up; equal ones keep their order.
void sortAscending(const double* d, std::size_t n, std::int32_t* order) {
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t j = i;
    for (; j > 0 && d[i] < d[order[j - 1]]; --j) order[j] = order[j - 1];
    order[j] = static_cast<std::int32_t>(i);
  }
}

// The sign that makes the first of the largest elements positive.
double signOf(const double* row, std::size_t n) {
  double largest = row[0];
  for (std::size_t j = 1; j < n; ++j) {
    if (fabs(row[j]) > fabs(largest)) largest = row[j];
  }
  return largest < 0.0 ? -1.0 : 1.0;
}

// The lower triangle of `a`, scaled, and its mirror image. False if it is not finite.
bool copySymmetric(const double* a, std::size_t n, double* copy, double& inverse) {
  EigenRange range;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j <= i; ++j) range.add(a[i * n + j]);
  }
  const double factor = range.factor();
  inverse = 1.0 / factor;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      copy[i * n + j] = copy[j * n + i] = a[i * n + j] * factor;
    }
  }
  return range.finite();
}

}  // namespace
}  // namespace fathom

AnalysisStatus SymEigenValueVector(const double* a, int32_t n, int32_t option, double* values,
                                   double* vectors) {
  using fathom::Workspace;
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (option != FATHOM_EIGEN_VALUES && option != FATHOM_EIGEN_VECTORS) return FATHOM_ERR_SELECTION;
  const bool both = option == FATHOM_EIGEN_VECTORS;
  const auto size = static_cast<std::size_t>(n);
  Workspace<double> rows(fathom::matrixSize(n, n)), q(both ? fathom::matrixSize(n, n) : 0);
  if (!rows || !q) return FATHOM_ERR_MEMORY;
  Workspace<double> work(5 * size), tile(both ? size * fathom::kTileColumns : 0);
  Workspace<fathom::Rotation> list(both ? size * fathom::kSweeps : 0);
  Workspace<std::int32_t> order(size);
  if (!work || !tile || !list || !order) return FATHOM_ERR_MEMORY;

  double *d = work.data(), *e = d + size, *tau = e + size, *sums = tau + size, inverse;
  if (!fathom::copySymmetric(a, size, rows.data(), inverse)) return FATHOM_ERR_ITERATIONS;
  fathom::tridiagonalise(rows.data(), size, d, e, tau, sums);
  if (both) {
    fathom::accumulateRows(rows.data(), size, tau, q.data(), sums);
    fathom::Rotations rotations(rows.data(), size, list.data(), tile.data());
    if (!fathom::diagonalise(d, e, size, rotations)) return FATHOM_ERR_ITERATIONS;
    rotations.apply();
  } else {
    fathom::NoRotations none;
    if (!fathom::diagonalise(d, e, size, none)) return FATHOM_ERR_ITERATIONS;
  }
  fathom::sortAscending(d, size, order.data());
  for (std::size_t j = 0; j < size; ++j) {
    const auto place = static_cast<std::size_t>(order[j]);
    values[j] = d[place] * inverse;
    if (!both) continue;
    const double* row = rows.data() + place * size;
    const double sign = fathom::signOf(row, size);
    for (std::size_t i = 0; i < size; ++i) vectors[i * size + j] = sign * row[i];
  }
  return FATHOM_OK;
}
