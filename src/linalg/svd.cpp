// Singular value decomposition: Householder reflections to a real bidiagonal matrix, then
// implicitly shifted QR on that. The bidiagonal matrix never looks at the vectors, so its rotations
// are gathered and then applied to a few rows of U and V at a time.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/householder.hpp"
#include "linalg/tile.hpp"

namespace fathom {
namespace {

constexpr double kNegligible = 1e-16;
constexpr int kPasses = 30;

// The reflection that turns x, n values, to a multiple of its first unit vector: I + v v* / h,
// whose v replaces x / scale. The multiple, scale g, is real, and so is what follows the
// reflections.
template <typename Element>
struct Reflection {
  double scale;
  double g;
  Element h;
};

template <typename Element>
Reflection<Element> reflectionOf(Element* x, std::size_t n) {
  double scale = 0.0;
  for (std::size_t k = 0; k < n; ++k) scale += partSum(x[k]);
  if (scale == 0.0) return {0.0, 0.0, Element{}};
  double sum = 0.0;
  for (std::size_t k = 0; k < n; ++k) {
    x[k] = divide(x[k], scale);
    sum += squaredModulus(x[k]);
  }
  const Element first = x[0];
  const double g = realPart(first) < 0.0 ? sqrt(sum) : -sqrt(sum);
  x[0] = first - element<Element>(g);
  return {scale, g, scaled(first, g) - element<Element>(sum)};
}

// The vectors and numbers that every decomposition works with, apart from the matrices.
template <typename Element>
class Vectors {
 public:
  Vectors(std::size_t m, std::size_t n)
      : columns_(n),
        longer_(std::max(m, n)),
        reals_(2 * n),
        elements_(2 * n + 2 * std::max(m, n)) {}
  explicit operator bool() const { return reals_ && elements_; }

  double* values() { return reals_.data(); }
  double* superdiagonal() { return values() + columns_; }
  Element* row() { return elements_.data(); }
  Element* otherRow() { return row() + columns_; }
  Element* column() { return otherRow() + columns_; }
  Element* otherColumn() { return column() + longer_; }

 private:
  std::size_t columns_, longer_;
  Workspace<double> reals_;
  Workspace<Element> elements_;
};

// Reduces u to the diagonal s and superdiagonal e (from e[1]). Where they are kept, the vectors of
// the column reflections stay in and below the diagonal and those of the row reflections right of
// it. Returns the bound of the norm, NaN where any of s and e is.
template <typename Element>
double bidiagonalise(MatrixBlock<Element> u, Vectors<Element>& work, bool keepsVectors) {
  constexpr const Element* kNone = nullptr;
  const std::size_t m = u.rows, n = u.columns;
  double *s = work.values(), *e = work.superdiagonal();
  Element *f = work.row(), *t = work.otherRow(), *column = work.column(),
          *next = work.otherColumn();
  double bound = 0.0;
  e[0] = 0.0;
  for (std::size_t k = 0; k < m; ++k) column[k] = u.row(k)[0];
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t l = i + 1, rest = n - l;
    const Reflection<Element> left = reflectionOf(column + i, m - i);
    const bool turnsColumn = left.scale != 0.0;
    s[i] = left.scale * left.g;
    const double sum = fabs(s[i]) + fabs(e[i]);
    if (sum > bound || isNan(sum)) bound = sum;
    if (turnsColumn && rest > 0) {
      for (std::size_t k = i; k < m; ++k) next[k] = conjugate(column[k]);
      std::fill_n(f, rest, Element{});
      walkRows(u.from(i, l), kNone, kNone, next + i, f);
      for (std::size_t j = 0; j < rest; ++j) f[j] = divide(f[j], left.h);
      walkRows(MatrixBlock<Element>{u.row(i) + l, u.stride, 1, rest}, column + i, f, kNone,
               nullptr);
    }
    if (rest > 0) {
      Element* r = u.row(i) + l;
      const Reflection<Element> right = reflectionOf(r, rest);
      const bool turnsRow = right.scale != 0.0;
      e[l] = right.scale * right.g;
      for (std::size_t j = 0; j < rest && turnsRow; ++j) t[j] = divide(r[j], right.h);
      reflectBoth(u.from(l, l), column + l, turnsColumn ? f : kNone, turnsRow ? r : kNone, t,
                  next + l);
      for (std::size_t j = 0; j < rest && turnsRow; ++j) r[j] = scaled(r[j], right.scale);
    }
    for (std::size_t k = i; k < m && turnsColumn && keepsVectors; ++k) {
      u.row(k)[i] = scaled(column[k], left.scale);
    }
    std::swap(column, next);
  }
  return bound;
}

// V as the product of the row reflections that bidiagonalise left in u. The walk that adds one
// reflection takes the sums of the next one, whose index is lower.
template <typename Element>
void accumulateRight(MatrixBlock<Element> u, MatrixBlock<Element> v, Vectors<Element>& work) {
  constexpr const Element* kNone = nullptr;
  const std::size_t n = u.columns;
  const double* e = work.superdiagonal();
  Element *f = work.row(), *next = work.otherRow(), *column = work.column();
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t l = i + 1, rest = n - l;
    const bool turns = rest > 0 && e[l] != 0.0, nextTurns = i > 0 && e[i] != 0.0;
    const Element* r = u.row(i) + l;
    for (std::size_t j = 0; j < rest && turns; ++j) {
      // Divided twice, as the product of the divisors may underflow.
      column[j] = divide(divide(conjugate(r[j]), r[0]), e[l]);
    }
    // Row and column i become those of the unit matrix, whose sums are these.
    const Element* x = nextTurns ? u.row(i - 1) + i : kNone;
    std::fill_n(next, rest + 1, Element{});
    if (nextTurns) next[0] = next[0] + x[0];
    walkRows(v.from(l, l), column, turns ? f : kNone, nextTurns ? x + 1 : kNone, next + 1);
    for (std::size_t j = l; j < n; ++j) v.row(i)[j] = v.row(j)[i] = Element{};
    v.row(i)[i] = element<Element>(1.0);
    std::swap(f, next);
  }
}

// U as the product of the column reflections that bidiagonalise left in it, in such walks.
template <typename Element>
void accumulateLeft(MatrixBlock<Element> u, Vectors<Element>& work) {
  constexpr const Element* kNone = nullptr;
  const std::size_t m = u.rows, n = u.columns;
  const double* s = work.values();
  Element *f = work.row(), *next = work.otherRow(), *column = work.column(),
          *x = work.otherColumn();
  for (std::size_t k = n - 1; k < m; ++k) column[k] = u.row(k)[n - 1];
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t l = i + 1, rest = n - l;
    const bool turns = s[i] != 0.0, nextTurns = i > 0 && s[i - 1] != 0.0;
    for (std::size_t j = 0; j < rest && turns; ++j) {
      f[j] = divide(divide(f[j], conjugate(column[i])), s[i]);
    }
    Element sum = {};
    for (std::size_t k = i; k < m; ++k) {
      Element& place = u.row(k)[i];
      place = turns ? divide(column[k], s[i]) : Element{};
      if (k == i) place = place + element<Element>(1.0);
      if (i == 0) continue;
      x[k] = conjugate(u.row(k)[i - 1]);
      sum = sum + x[k] * place;
    }
    std::fill_n(u.row(i) + l, rest, Element{});
    std::fill_n(next, rest + 1, Element{});
    walkRows(u.from(i, l), column + i, turns ? f : kNone, nextTurns ? x + i : kNone, next + 1);
    next[0] = sum;
    if (i == 0) break;
    x[i - 1] = conjugate(u.row(i - 1)[i - 1]);
    for (std::size_t k = i - 1; k < m; ++k) x[k] = conjugate(x[k]);
    std::swap(column, x);
    std::swap(f, next);
  }
}

// x = x cosine + z sine and z = z cosine - x sine of the columns x and z of a matrix.
struct Rotation {
  double cosine;
  double sine;
  std::int32_t x;
  std::int32_t z;
};

constexpr std::size_t kTileRows = 32;  // real ones: half as many complex rows
constexpr std::size_t kTileAlignment = 8;

FATHOM_INLINE void rotate(double& x, double& z, double cosine, double sine) {
  const double turned = rounded(x * cosine) + rounded(z * sine);
  z = rounded(z * cosine) - rounded(x * sine);
  x = turned;
}

// Applies the rotations to `vectors` vectors of each column of a tile. As a rule, the second column
// of one is the first of the next, and stays in registers.
template <std::size_t bytes, std::size_t vectors>
FATHOM_INLINE void rotateTile(double* tile, const Rotation* rotations, std::size_t count) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  const auto column = [tile](std::int32_t j) {
    return tile + static_cast<std::size_t>(j) * kTileRows;
  };
  double* held = column(rotations[0].x);
  Lanes<bytes> x[vectors];
  FATHOM_UNROLL
  for (std::size_t v = 0; v < vectors; ++v) load(x[v], held + v * kLanes);
  for (std::size_t i = 0; i < count; ++i) {
    const double c = rotations[i].cosine, s = rotations[i].sine;
    double *p = column(rotations[i].x), *q = column(rotations[i].z);
    if (p != held) {
      FATHOM_UNROLL
      for (std::size_t v = 0; v < vectors; ++v) {
        store(held + v * kLanes, x[v]);
        load(x[v], p + v * kLanes);
      }
    }
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      Lanes<bytes> z;
      load(z, q + v * kLanes);
      store(p + v * kLanes, x[v] * c + z * s);
      x[v] = z * c - x[v] * s;
    }
    held = q;
  }
  FATHOM_UNROLL
  for (std::size_t v = 0; v < vectors; ++v) store(held + v * kLanes, x[v]);
}

// Applies the rotations to `rows` rows of `length` doubles, through a tile that holds them column
// after column. The tile has `height` rows, half as many for complex elements, whose parts are
// columns of their own.
template <std::size_t bytes>
FATHOM_INLINE void rotateRowsOf(double* a, std::size_t stride, std::size_t length, std::size_t rows,
                                std::size_t height, double* tile, const Rotation* rotations,
                                std::size_t count) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  const auto transfer = [&](bool toTile) __attribute__((always_inline)) {
    for (std::size_t j = 0; j < length; j += kLanes) {
      const std::size_t columns = std::min(kLanes, length - j);
      for (std::size_t i = 0; i < rows; i += kLanes) {
        double *x = a + i * stride + j, *y = tile + j * height + i;
        if (columns == kLanes && i + kLanes <= rows) {
          if (toTile) {
            transposeSquare<bytes, 1>(x, stride, y, height);
          } else {
            transposeSquare<bytes, 1>(y, height, x, stride);
          }
          continue;
        }
        for (std::size_t p = 0; p < std::min(kLanes, rows - i); ++p) {
          for (std::size_t q = 0; q < columns; ++q) {
            double &from = x[p * stride + q], &to = y[q * height + p];
            if (toTile) {
              to = from;
            } else {
              from = to;
            }
          }
        }
      }
    }
  };
  if (rows < height) std::fill_n(tile, length * height, 0.0);
  transfer(true);
  const std::size_t filled = height == kTileRows ? rows : kTileRows;
  for (std::size_t i = 0; i < filled;) {
    if (i + 4 * kLanes <= kTileRows && filled > i + 2 * kLanes) {
      rotateTile<bytes, 4>(tile + i, rotations, count);
      i += 4 * kLanes;
    } else {
      rotateTile<bytes, 1>(tile + i, rotations, count);
      i += kLanes;
    }
  }
  transfer(false);
}

FATHOM_BY_WIDTH(rotateRows,
                (double* a, std::size_t stride, std::size_t length, std::size_t rows,
                 std::size_t height, double* tile, const Rotation* rotations, std::size_t count),
                (a, stride, length, rows, height, tile, rotations, count))

// Rotations of a matrix's columns, gathered until they are worth a walk over its rows.
template <typename Element>
class Rotations {
 public:
  static std::size_t capacityFor(std::size_t columns) {
    return 64 * std::min<std::size_t>(columns, 1024);
  }

  static std::size_t tileSize(std::size_t columns) { return columns * kTileRows + kTileAlignment; }

  Rotations(MatrixBlock<Element> matrix, Rotation* list, double* tile)
      : matrix_(matrix), list_(list), tile_(tile), capacity_(capacityFor(matrix.columns)) {
    // So that no vector lies in two cache lines.
    constexpr std::size_t kBytes = kTileAlignment * sizeof(double);
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(tile) % kBytes / sizeof(double);
    if (beyond > 0) tile_ += kTileAlignment - beyond;
  }

  void add(std::size_t x, std::size_t z, double cosine, double sine) {
    if (count_ == capacity_) apply();
    list_[count_++] = {cosine, sine, static_cast<std::int32_t>(x), static_cast<std::int32_t>(z)};
  }

  void apply() {
    constexpr std::size_t kParts = kPartsOf<Element>, kRows = kTileRows / kParts;
    for (std::size_t i = 0; i < matrix_.rows && count_ > 0; i += kRows) {
      rotateRows(reinterpret_cast<double*>(matrix_.row(i)), matrix_.stride * kParts,
                 matrix_.columns * kParts, std::min(kRows, matrix_.rows - i), kRows, tile_, list_,
                 count_);
    }
    count_ = 0;
  }

 private:
  MatrixBlock<Element> matrix_;
  Rotation* list_;
  double* tile_;
  std::size_t capacity_;
  std::size_t count_ = 0;
};

struct NoRotations {
  void add(std::size_t, std::size_t, double, double) {}
};

// One QR sweep over s[l..k] and e[l + 1..k] with the shift of the trailing 2 x 2 block.
template <typename Sink>
void sweep(double* s, double* e, std::size_t l, std::size_t k, Sink& left, Sink& right) {
  double x = s[l], y = s[k - 1], g = e[k - 1], h = e[k];
  const double z = s[k];
  double f = 0.5 * (((g + z) / h) * ((g - z) / y) + y / h - h / y);
  g = hypotenuse(f, 1.0);
  f = x - (z / x) * z + (h / x) * (y / (f + (f < 0.0 ? -g : g)) - h);
  double cosine = 1.0, sine = 1.0;
  for (std::size_t i = l + 1; i <= k; ++i) {
    g = e[i];
    y = s[i];
    h = sine * g;
    g = cosine * g;
    double length = hypotenuse(f, h);
    e[i - 1] = length;
    cosine = f / length;
    sine = h / length;
    rotate(x, g, cosine, sine);
    f = x;
    h = y * sine;
    y = y * cosine;
    right.add(i - 1, i, cosine, sine);
    length = hypotenuse(f, h);
    s[i - 1] = length;
    if (length != 0.0) {
      cosine = f / length;
      sine = h / length;
    }
    rotate(g, y, cosine, sine);
    f = g;
    x = y;
    left.add(i - 1, i, cosine, sine);
  }
  e[l] = 0.0;
  e[k] = f;
  s[k] = x;
}

// Turns the bidiagonal matrix s, e of norm `bound` at most into the diagonal one, whose rotations
// go to `left` and `right`. The values stay signed.
template <typename Sink>
AnalysisStatus diagonalise(double* s, double* e, std::size_t n, double bound, Sink& left,
                           Sink& right) {
  const auto negligible = [bound](double x) { return (fabs(x) + bound) - bound < kNegligible; };
  for (std::size_t k = n; k-- > 0;) {
    for (int pass = 0;; ++pass) {
      std::size_t l = k;
      bool cancel = false;
      for (; !negligible(e[l]); --l) {
        if (l == 0) return FATHOM_ERR_ITERATIONS;  // e[0] = 0: the bound is infinite or NaN
        cancel = negligible(s[l - 1]);
        if (cancel) break;
      }
      if (cancel) {
        double cosine = 0.0, sine = 1.0;
        for (std::size_t i = l; i <= k; ++i) {
          const double f = sine * e[i];
          e[i] = cosine * e[i];
          if (fabs(f) + bound == bound) break;
          const double g = s[i];
          s[i] = hypotenuse(f, g);
          cosine = g / s[i];
          sine = -f / s[i];
          left.add(l - 1, i, cosine, sine);
        }
      }
      if (l == k) break;
      if (pass == kPasses - 1) return FATHOM_ERR_ITERATIONS;
      sweep(s, e, l, k, left, right);
    }
    if (isNan(s[k])) return FATHOM_ERR_ITERATIONS;
  }
  return FATHOM_OK;
}

// Exchanges pairs until s descends; order[i], if there is one, is where s[i] came from.
void sortDescending(double* s, std::size_t n, std::int32_t* order) {
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      if (!(s[i] < s[j])) continue;
      std::swap(s[i], s[j]);
      if (order != nullptr) std::swap(order[i], order[j]);
    }
  }
}

// Makes the values positive, and negates their columns of V, if there is one.
template <typename Element>
void makePositive(double* s, std::size_t n, Element* v) {
  for (std::size_t i = 0; i < n && v != nullptr; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      if (s[j] < 0.0) v[i * n + j] = -v[i * n + j];
    }
  }
  for (std::size_t j = 0; j < n; ++j) {
    if (s[j] < 0.0) s[j] = -s[j];
  }
}

// Column j of each row becomes what column order[j] was. `row` has room for one row.
template <typename Element>
void permuteColumns(MatrixBlock<Element> a, const std::int32_t* order, Element* row) {
  for (std::size_t i = 0; i < a.rows; ++i) {
    for (std::size_t j = 0; j < a.columns; ++j) row[j] = a.row(i)[order[j]];
    std::copy_n(row, a.columns, a.row(i));
  }
}

void copyValues(const double* values, std::size_t n, double* s) {
  std::copy_n(values, n, s);
}
void copyValues(const double* values, std::size_t n, ComplexNum* s) {
  for (std::size_t j = 0; j < n; ++j) s[j] = {values[j], 0.0};
}

// A copy of the m x n matrix `a`, unless it is `a` itself, with rows of zeros below to at least n.
template <typename Element>
MatrixBlock<Element> padded(const Element* a, std::size_t m, std::size_t n, Element* copy) {
  if (copy != a) std::copy_n(a, m * n, copy);
  const std::size_t rows = std::max(m, n);
  std::fill(copy + m * n, copy + rows * n, Element{});
  return {copy, n, rows, n};
}

// Whether the padded matrix could be in memory at all.
template <typename Element>
bool fits(std::int32_t m, std::int32_t n) {
  return matrixSize(std::max(m, n), n) <= PTRDIFF_MAX / sizeof(Element);
}

template <typename Element>
AnalysisStatus decompose(Element* a, bool padsInput, std::int32_t rows, std::int32_t columns,
                         Element* u, Element* s, Element* v) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!fits<Element>(rows, columns)) return FATHOM_ERR_MEMORY;
  const auto m = static_cast<std::size_t>(rows), n = static_cast<std::size_t>(columns);
  const std::size_t capacity = Rotations<Element>::capacityFor(n);
  Vectors<Element> work(m, n);
  Workspace<Rotation> lists(2 * capacity);
  Workspace<double> tile(Rotations<Element>::tileSize(n));
  Workspace<std::int32_t> order(n);
  if (!work || !lists || !tile || !order) return FATHOM_ERR_MEMORY;

  if (padsInput) padded(a, m, n, a);
  const MatrixBlock<Element> left = padded<Element>(a, m, n, u);
  const MatrixBlock<Element> right = {v, n, n, n};
  double* const values = work.values();
  const double bound = bidiagonalise(left, work, true);
  accumulateRight(left, right, work);
  accumulateLeft(left, work);

  Rotations<Element> ofLeft(left, lists.data(), tile.data());
  Rotations<Element> ofRight(right, lists.data() + capacity, tile.data());
  const AnalysisStatus status =
      diagonalise(values, work.superdiagonal(), n, bound, ofLeft, ofRight);
  if (status != FATHOM_OK) return status;
  ofLeft.apply();
  ofRight.apply();
  makePositive(values, n, v);
  for (std::size_t j = 0; j < n; ++j) order[j] = static_cast<std::int32_t>(j);
  sortDescending(values, n, order.data());
  permuteColumns(left, order.data(), work.row());
  permuteColumns(right, order.data(), work.row());
  copyValues(values, n, s);
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus valuesOnly(const Element* a, std::int32_t rows, std::int32_t columns, Element* s) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!fits<Element>(rows, columns)) return FATHOM_ERR_MEMORY;
  const auto m = static_cast<std::size_t>(rows), n = static_cast<std::size_t>(columns);
  Workspace<Element> copy(std::max(m, n) * n);
  Vectors<Element> work(m, n);
  if (!copy || !work) return FATHOM_ERR_MEMORY;

  double* const values = work.values();
  const double bound = bidiagonalise(padded(a, m, n, copy.data()), work, false);
  NoRotations none;
  const AnalysisStatus status = diagonalise(values, work.superdiagonal(), n, bound, none, none);
  if (status != FATHOM_OK) return status;
  makePositive<Element>(values, n, nullptr);
  sortDescending(values, n, nullptr);
  copyValues(values, n, s);
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus SVD(double* a, int32_t m, int32_t n, double* u, double* s, double* v) {
  return fathom::decompose(a, true, m, n, u, s, v);
}

AnalysisStatus SVDS(const double* a, int32_t m, int32_t n, double* s) {
  return fathom::valuesOnly(a, m, n, s);
}

AnalysisStatus CxSVD(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* u, ComplexNum* s,
                     ComplexNum* v) {
  // Not padded: without that, the matrix is only read.
  return fathom::decompose(const_cast<ComplexNum*>(a), false, m, n, u, s, v);
}

AnalysisStatus CxSVDS(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* s) {
  return fathom::valuesOnly(a, m, n, s);
}
