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

template <typename Element>
constexpr std::size_t partsOf = sizeof(Element) / sizeof(double);

// sums[j] = x[0] A(0, j) + x[1] A(1, j) + ..., four rows in one walk over the sums.
template <typename Element>
FATHOM_INLINE void columnSumsOf(MatrixBlock<Element> a, const Element* x, Element* sums) {
  const std::size_t columns = a.columns;
  for (std::size_t j = 0; j < columns; ++j) sums[j] = Element{};
  std::size_t k = 0;
  for (; k + 4 <= a.rows; k += 4) {
    const Element *a0 = a.row(k), *a1 = a.row(k + 1), *a2 = a.row(k + 2), *a3 = a.row(k + 3);
    const Element x0 = x[k], x1 = x[k + 1], x2 = x[k + 2], x3 = x[k + 3];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < columns; ++j) {
      sums[j] = (((sums[j] + x0 * a0[j]) + x1 * a1[j]) + x2 * a2[j]) + x3 * a3[j];
    }
  }
  for (; k < a.rows; ++k) {
    const Element* row = a.row(k);
    const Element xk = x[k];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < columns; ++j) sums[j] = sums[j] + xk * row[j];
  }
}

// A(k, j) = A(k, j) + f[j] y[k].
template <typename Element>
FATHOM_INLINE void addProductOf(MatrixBlock<Element> a, const Element* y, const Element* f) {
  for (std::size_t k = 0; k < a.rows; ++k) {
    Element* row = a.row(k);
    const Element yk = y[k];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < a.columns; ++j) row[j] = row[j] + f[j] * yk;
  }
}

// sums[k] = A(k, 0) conj(r[0]) + A(k, 1) conj(r[1]) + ... for `groups` vectors of rows: their lanes
// are rows, for which squares of the matrix are transposed on the way.
template <std::size_t bytes, std::size_t groups, typename Element>
FATHOM_INLINE void rowSumsOf(MatrixBlock<Element> a, const Element* r, Element* sums) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kParts = partsOf<Element>;
  const std::size_t stride = a.stride * kParts, length = a.columns * kParts;
  const double* first = reinterpret_cast<const double*>(a.first);
  const double* factors = reinterpret_cast<const double*>(r);
  Lanes<bytes> sum[groups][kParts] = {};
  double square[groups][kLanes * kLanes] = {};
  std::size_t j = 0;
  const auto take = [&](std::size_t count) __attribute__((always_inline)) {
    FATHOM_UNROLL
    for (std::size_t k = 0; k < count; k += kParts) {
      FATHOM_UNROLL
      for (std::size_t g = 0; g < groups; ++g) {
        Lanes<bytes> x[kParts];
        FATHOM_UNROLL
        for (std::size_t p = 0; p < kParts; ++p) load(x[p], square[g] + (k + p) * kLanes);
        if constexpr (kParts == 1) {
          sum[g][0] = sum[g][0] + x[0] * factors[j + k];
        } else {
          const double re = factors[j + k], im = factors[j + k + 1];
          sum[g][0] = sum[g][0] + (x[0] * re + x[1] * im);
          sum[g][1] = sum[g][1] + (x[1] * re - x[0] * im);
        }
      }
    }
  };
  for (; j + kLanes <= length; j += kLanes) {
    FATHOM_UNROLL
    for (std::size_t g = 0; g < groups; ++g) {
      transposeSquare<bytes, 1>(first + g * kLanes * stride + j, stride, square[g], kLanes);
    }
    take(kLanes);
  }
  for (std::size_t g = 0; g < groups; ++g) {
    for (std::size_t k = 0; k < length - j; ++k) {
      for (std::size_t i = 0; i < kLanes; ++i) {
        square[g][k * kLanes + i] = first[(g * kLanes + i) * stride + j + k];
      }
    }
  }
  take(length - j);
  for (std::size_t g = 0; g < groups; ++g) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      for (std::size_t p = 0; p < kParts; ++p) {
        reinterpret_cast<double*>(sums)[(g * kLanes + i) * kParts + p] = sum[g][p][i];
      }
    }
  }
}

template <typename Element>
FATHOM_INLINE Element rowSum(const Element* a, const Element* r, std::size_t n) {
  Element sum = {};
  for (std::size_t j = 0; j < n; ++j) sum = sum + a[j] * conjugate(r[j]);
  return sum;
}

// To each row in turn: the column reflection's f[j] v[k] is added where there is one, then the row
// reflection's sum of A(k, j) conj(r[j]) times t[j].
template <std::size_t bytes, typename Element>
FATHOM_INLINE void reflectOf(MatrixBlock<Element> a, const Element* v, const Element* f,
                             const Element* r, const Element* t) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kRows = 2 * kLanes;
  for (std::size_t k = 0; k < a.rows; k += kRows) {
    const MatrixBlock<Element> rows = {a.row(k), a.stride, std::min(kRows, a.rows - k), a.columns};
    if (f != nullptr) addProductOf(rows, v + k, f);
    if (r == nullptr) continue;
    Element sums[kRows];
    std::size_t i = 0;
    if (rows.rows == kRows) {
      rowSumsOf<bytes, 2>(rows, r, sums);
      i = kRows;
    } else if (rows.rows >= kLanes) {
      rowSumsOf<bytes, 1>(rows, r, sums);
      i = kLanes;
    }
    for (; i < rows.rows; ++i) sums[i] = rowSum(rows.row(i), r, rows.columns);
    addProductOf(rows, sums, t);
  }
}

FATHOM_MULTIVERSION void columnSums(MatrixBlock<double> a, const double* x, double* sums) {
  columnSumsOf(a, x, sums);
}
FATHOM_MULTIVERSION void columnSums(MatrixBlock<ComplexNum> a, const ComplexNum* x,
                                    ComplexNum* sums) {
  columnSumsOf(a, x, sums);
}
FATHOM_MULTIVERSION void addProduct(MatrixBlock<double> a, const double* y, const double* f) {
  addProductOf(a, y, f);
}
FATHOM_MULTIVERSION void addProduct(MatrixBlock<ComplexNum> a, const ComplexNum* y,
                                    const ComplexNum* f) {
  addProductOf(a, y, f);
}
FATHOM_BY_WIDTH(reflect,
                (MatrixBlock<double> a, const double* v, const double* f, const double* r,
                 const double* t),
                (a, v, f, r, t))
FATHOM_BY_WIDTH(reflect,
                (MatrixBlock<ComplexNum> a, const ComplexNum* v, const ComplexNum* f,
                 const ComplexNum* r, const ComplexNum* t),
                (a, v, f, r, t))

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

// Reduces u to the diagonal s and superdiagonal e (from e[1]), leaving the vectors of the column
// reflections in and below the diagonal and those of the row reflections right of it. Returns the
// bound of the norm, NaN where any of s and e is. `f` has room for 2n elements, `column` for m.
template <typename Element>
double bidiagonalise(MatrixBlock<Element> u, double* s, double* e, Element* f, Element* column) {
  const std::size_t m = u.rows, n = u.columns;
  Element* t = f + n;
  double bound = 0.0;
  e[0] = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t l = i + 1, rest = n - l;
    for (std::size_t k = i; k < m; ++k) column[k] = u.row(k)[i];
    const Reflection<Element> left = reflectionOf(column + i, m - i);
    s[i] = left.scale * left.g;
    const double sum = fabs(s[i]) + fabs(e[i]);
    if (sum > bound || isNan(sum)) bound = sum;
    if (left.scale != 0.0 && rest > 0) {
      for (std::size_t k = i; k < m; ++k) column[k] = conjugate(column[k]);
      columnSums(u.from(i, l), column + i, f);
      for (std::size_t k = i; k < m; ++k) column[k] = conjugate(column[k]);
      for (std::size_t j = 0; j < rest; ++j) f[j] = divide(f[j], left.h);
      addProduct({u.row(i) + l, u.stride, 1, rest}, column + i, f);
    }
    if (rest > 0) {
      Element* r = u.row(i) + l;
      const Reflection<Element> right = reflectionOf(r, rest);
      e[l] = right.scale * right.g;
      for (std::size_t j = 0; j < rest && right.scale != 0.0; ++j) t[j] = divide(r[j], right.h);
      if (l < m) {
        reflect(u.from(l, l), column + l, left.scale != 0.0 ? f : nullptr,
                right.scale != 0.0 ? r : nullptr, t);
      }
      for (std::size_t j = 0; j < rest && right.scale != 0.0; ++j) r[j] = scaled(r[j], right.scale);
    }
    for (std::size_t k = i; k < m && left.scale != 0.0; ++k) {
      u.row(k)[i] = scaled(column[k], left.scale);
    }
  }
  return bound;
}

// V as the product of the row reflections that bidiagonalise left in u.
template <typename Element>
void accumulateRight(MatrixBlock<Element> u, const double* e, MatrixBlock<Element> v, Element* f,
                     Element* column) {
  const std::size_t n = u.columns;
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t l = i + 1, rest = n - l;
    if (rest > 0 && e[l] != 0.0) {
      const Element* r = u.row(i) + l;
      for (std::size_t j = 0; j < rest; ++j) {
        // Divided twice, as the product of the divisors may underflow.
        column[j] = divide(divide(conjugate(r[j]), r[0]), e[l]);
      }
      columnSums(v.from(l, l), r, f);
      addProduct(v.from(l, l), column, f);
    }
    for (std::size_t j = l; j < n; ++j) v.row(i)[j] = v.row(j)[i] = Element{};
    v.row(i)[i] = element<Element>(1.0);
  }
}

// U as the product of the column reflections that bidiagonalise left in it.
template <typename Element>
void accumulateLeft(MatrixBlock<Element> u, const double* s, Element* f, Element* column) {
  const std::size_t m = u.rows, n = u.columns;
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t l = i + 1, rest = n - l;
    for (std::size_t j = l; j < n; ++j) u.row(i)[j] = Element{};
    if (s[i] != 0.0) {
      for (std::size_t k = i; k < m; ++k) column[k] = conjugate(u.row(k)[i]);
      if (rest > 0) {
        if (l < m) {
          columnSums(u.from(l, l), column + l, f);
        } else {
          std::fill_n(f, rest, Element{});
        }
        for (std::size_t j = 0; j < rest; ++j) f[j] = divide(divide(f[j], column[i]), s[i]);
      }
      for (std::size_t k = i; k < m; ++k) column[k] = conjugate(column[k]);
      if (rest > 0) addProduct(u.from(i, l), column + i, f);
      for (std::size_t k = i; k < m; ++k) u.row(k)[i] = divide(column[k], s[i]);
    } else {
      for (std::size_t k = i; k < m; ++k) u.row(k)[i] = Element{};
    }
    u.row(i)[i] = u.row(i)[i] + element<Element>(1.0);
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
    return 16 * std::min<std::size_t>(columns, 4096);
  }

  Rotations(MatrixBlock<Element> matrix, Rotation* list, double* tile)
      : matrix_(matrix), list_(list), tile_(tile), capacity_(capacityFor(matrix.columns)) {}

  void add(std::size_t x, std::size_t z, double cosine, double sine) {
    if (count_ == capacity_) apply();
    list_[count_++] = {cosine, sine, static_cast<std::int32_t>(x), static_cast<std::int32_t>(z)};
  }

  void apply() {
    constexpr std::size_t kParts = partsOf<Element>, kRows = kTileRows / kParts;
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

// The vectors and numbers that every decomposition works with, apart from the matrices.
template <typename Element>
struct Vectors {
  Vectors(std::size_t m, std::size_t n) : reals(2 * n), elements(2 * n + std::max(m, n)) {}
  explicit operator bool() const { return reals && elements; }

  Workspace<double> reals;      // the values, then the superdiagonal
  Workspace<Element> elements;  // two rows, then a column
};

template <typename Element>
AnalysisStatus decompose(Element* a, bool padsInput, std::int32_t rows, std::int32_t columns,
                         Element* u, Element* s, Element* v) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!fits<Element>(rows, columns)) return FATHOM_ERR_MEMORY;
  const auto m = static_cast<std::size_t>(rows), n = static_cast<std::size_t>(columns);
  const std::size_t capacity = Rotations<Element>::capacityFor(n);
  Vectors<Element> work(m, n);
  Workspace<Rotation> lists(2 * capacity);
  Workspace<double> tile(n * kTileRows);
  Workspace<std::int32_t> order(n);
  if (!work || !lists || !tile || !order) return FATHOM_ERR_MEMORY;

  if (padsInput) padded(a, m, n, a);
  const MatrixBlock<Element> left = padded<Element>(a, m, n, u);
  const MatrixBlock<Element> right = {v, n, n, n};
  double *values = work.reals.data(), *e = values + n;
  Element *f = work.elements.data(), *column = f + 2 * n;
  const double bound = bidiagonalise(left, values, e, f, column);
  accumulateRight(left, e, right, f, column);
  accumulateLeft(left, values, f, column);

  Rotations<Element> ofLeft(left, lists.data(), tile.data());
  Rotations<Element> ofRight(right, lists.data() + capacity, tile.data());
  const AnalysisStatus status = diagonalise(values, e, n, bound, ofLeft, ofRight);
  if (status != FATHOM_OK) return status;
  ofLeft.apply();
  ofRight.apply();
  makePositive(values, n, v);
  for (std::size_t j = 0; j < n; ++j) order[j] = static_cast<std::int32_t>(j);
  sortDescending(values, n, order.data());
  permuteColumns(left, order.data(), f);
  permuteColumns(right, order.data(), f);
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

  double *values = work.reals.data(), *e = values + n;
  Element* f = work.elements.data();
  const double bound = bidiagonalise(padded(a, m, n, copy.data()), values, e, f, f + 2 * n);
  NoRotations none;
  const AnalysisStatus status = diagonalise(values, e, n, bound, none, none);
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
