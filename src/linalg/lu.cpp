// LU factorisation with partial pivoting, and the systems, inverses and determinants that it gives.
// Every element takes its products one by one in ascending order, whatever the order in which the
// elements are visited; so the factorisation proceeds by halves of the columns, and most of its
// work is in products of blocks.
#include "linalg/lu.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/kernel.hpp"

namespace fathom {
namespace {

// No pivot of the real factorisation is this small.
constexpr double kSmallestPivot = 1e-12;

// The columns that are factored in storage of their own, and the rows of a triangle that are solved
// one by one.
constexpr std::size_t kPanelColumns = 16;
constexpr std::size_t kTriangleRows = 8;
static_assert(kPanelColumns <= kScratchColumns<ComplexNum>);

void clearRecord(std::size_t n, std::int32_t* pivots, std::int32_t* parity) {
  for (std::size_t i = 0; i < n; ++i) pivots[i] = static_cast<std::int32_t>(i);
  *parity = 0;
}

template <typename Element>
void setIdentity(Element* a, std::size_t n) {
  std::fill_n(a, n * n, Element{});
  for (std::size_t i = 0; i < n; ++i) a[i * n + i] = element<Element>(1.0);
}

// Partial pivoting: the element of largest magnitude, the first of several.
struct LargestElement {
  // The row of the pivot, from `first` on and before `last`, or `last` if there is none. The
  // column's elements are `step` apart.
  static std::size_t choose(const double* column, std::size_t first, std::size_t last,
                            std::size_t /*start*/, std::size_t step = 1) {
    double best = kSmallestPivot;
    std::size_t row = last;
    for (std::size_t i = first; i < last; ++i) {
      const double size = fabs(column[i * step]);
      if (size > best) {
        best = size;
        row = i;
      }
    }
    return row;
  }
  static void exchanged(std::size_t /*row*/, std::size_t /*pivot*/) {}
};

// Scaled partial pivoting: each row's elements count relative to its largest before elimination.
struct LargestInRow {
  double* scale;

  // The column begins with row `start` of the matrix.
  std::size_t choose(const ComplexNum* column, std::size_t first, std::size_t last,
                     std::size_t start) const {
    double best = 0.0;
    std::size_t row = first;
    for (std::size_t i = first; i < last; ++i) {
      const double size = squaredModulus(column[i]) * scale[start + i];
      if (size > best) {
        best = size;
        row = i;
      }
    }
    return isZero(column[row]) ? last : row;
  }
  void exchanged(std::size_t row, std::size_t pivot) const { scale[pivot] = scale[row]; }
};

// Solves L X = B for the unit lower triangle L of `terms` rows; X replaces B.
template <typename Element>
void solveUnitLower(const Element* l, std::size_t lStride, std::size_t terms, Element* b,
                    std::size_t bStride, std::size_t columns) {
  if (terms <= kTriangleRows) {
    for (std::size_t i = 1; i < terms; ++i) {
      subtractProduct(l + i * lStride, lStride, b, bStride, b + i * bStride, bStride, 1, i,
                      columns);
    }
    return;
  }
  const std::size_t top = (terms / 2 + kTriangleRows - 1) / kTriangleRows * kTriangleRows;
  solveUnitLower(l, lStride, top, b, bStride, columns);
  subtractProduct(l + top * lStride, lStride, b, bStride, b + top * bStride, bStride, terms - top,
                  top, columns);
  solveUnitLower(l + top * lStride + top, lStride, terms - top, b + top * bStride, bStride,
                 columns);
}

template <typename Element>
FATHOM_INLINE void divideAllOf(Element* x, std::size_t n, Element divisor) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) x[i] = divide(x[i], divisor);
}
FATHOM_MULTIVERSION void divideAll(double* x, std::size_t n, double divisor) {
  divideAllOf(x, n, divisor);
}
FATHOM_MULTIVERSION void divideAll(ComplexNum* x, std::size_t n, ComplexNum divisor) {
  divideAllOf(x, n, divisor);
}

template <typename Element, typename Pivoting>
struct Factorisation {
  Element* a;
  std::size_t n;
  std::int32_t* pivots;
  std::int32_t* parity;
  Pivoting pivoting;
  Element* panel;  // kPanelColumns columns of at most n rows, stored column after column

  // Factors the whole matrix and returns n, or the first column without a pivot, up to which all
  // elements are then reduced.
  std::size_t run() {
    clearRecord(n, pivots, parity);
    return run(0, n);
  }

 private:
  Element* at(std::size_t i, std::size_t j) { return a + i * n + j; }

  // Factors `columns` columns from `first` on, whose earlier terms are subtracted. Returns how many
  // got a pivot; the terms of these are subtracted from the others.
  std::size_t run(std::size_t first, std::size_t columns) {
    if (columns <= kPanelColumns) return runPanel(first, columns);
    const std::size_t left = (columns / 2 + kPanelColumns - 1) / kPanelColumns * kPanelColumns;
    const std::size_t done = run(first, left);
    Element* const right = at(first, first + left);
    solveUnitLower(at(first, first), n, done, right, n, columns - left);
    subtractProduct(at(first + done, first), n, right, n, right + done * n, n, n - first - done,
                    done, columns - left);
    return done < left ? done : left + run(first + left, columns - left);
  }

  std::size_t runPanel(std::size_t first, std::size_t columns) {
    const std::size_t rows = n - first;
    for (std::size_t i = 0; i < rows; ++i) {
      for (std::size_t j = 0; j < columns; ++j) panel[j * rows + i] = at(first + i, first)[j];
    }
    std::size_t done = columns;
    for (std::size_t j = 0; j < columns; ++j) {
      reduce(j, std::min(j, done), rows);
      if (done < columns) continue;
      Element* const column = panel + j * rows;
      const std::size_t pivot = pivoting.choose(column, j, rows, first);
      if (pivot == rows) {
        done = j;
        continue;
      }
      pivots[first + j] = static_cast<std::int32_t>(first + pivot);
      if (pivot != j) {
        std::swap_ranges(at(first + j, 0), at(first + j, 0) + n, at(first + pivot, 0));
        for (std::size_t k = 0; k < columns; ++k) {
          std::swap(panel[k * rows + j], panel[k * rows + pivot]);
        }
        pivoting.exchanged(first + j, first + pivot);
        *parity ^= 1;
      }
      divideAll(column + j + 1, rows - j - 1, column[j]);
    }
    for (std::size_t i = 0; i < rows; ++i) {
      for (std::size_t j = 0; j < columns; ++j) at(first + i, first)[j] = panel[j * rows + i];
    }
    return done;
  }

  // Subtracts the panel's first `terms` terms from its column j.
  void reduce(std::size_t j, std::size_t terms, std::size_t rows) {
    Element* const column = panel + j * rows;
    for (std::size_t t = 0; t < terms; ++t) {
      const Element* const l = panel + t * rows;
      for (std::size_t i = t + 1; i < terms; ++i) column[i] = column[i] - l[i] * column[t];
    }
    subtractProduct(column, rows, panel + terms, rows, column + terms, rows, 1, terms,
                    rows - terms);
  }
};

std::size_t factorise(double* a, std::size_t n, std::int32_t* pivots, std::int32_t* parity,
                      double* scratch) {
  return Factorisation<double, LargestElement>{a, n, pivots, parity, {}, scratch}.run();
}

// The same one column after the other, which needs no memory and leaves the columns after one
// without a pivot as they were.
std::size_t factoriseByColumns(double* a, std::size_t n, std::int32_t* pivots,
                               std::int32_t* parity) {
  clearRecord(n, pivots, parity);
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t i = 0; i < n; ++i) {
      double s = a[i * n + j];
      for (std::size_t t = 0; t < std::min(i, j); ++t) s -= a[i * n + t] * a[t * n + j];
      a[i * n + j] = s;
    }
    const std::size_t pivot = LargestElement::choose(a + j, j, n, 0, n);
    if (pivot == n) return j;
    if (pivot != j) {
      std::swap_ranges(a + j * n, a + (j + 1) * n, a + pivot * n);
      pivots[j] = static_cast<std::int32_t>(pivot);
      *parity ^= 1;
    }
    for (std::size_t i = j + 1; i < n; ++i) a[i * n + j] /= a[j * n + j];
  }
  return n;
}

// A factor of a copy of a matrix.
struct FactoredCopy {
  explicit FactoredCopy(std::int32_t size)
      : n(static_cast<std::size_t>(size)), lu(scratchRequest<double>(size)), pivots(lu ? n : 0) {}
  explicit operator bool() const { return lu && pivots; }
  double* scratch() { return lu.data() + n * n; }

  // Returns whether `a` is regular.
  bool factor(const double* a) {
    std::copy_n(a, n * n, lu.data());
    return factorise(lu.data(), n, pivots.data(), &parity, scratch()) == n;
  }

  std::size_t n;
  Workspace<double> lu;
  Workspace<std::int32_t> pivots;
  std::int32_t parity = 0;
};

// Never so in a record that LU wrote.
FATHOM_INLINE bool exchangesBack(const std::int32_t* pivots, std::size_t i) {
  return pivots[i] >= 0 && static_cast<std::size_t>(pivots[i]) < i;
}

// `rows` rows of a forward substitution side by side, from `first` on. Their exchanges may all come
// first, unless one goes back.
template <std::size_t rows>
FATHOM_INLINE void substituteForward(const double* lu, std::size_t n, const std::int32_t* pivots,
                                     std::size_t first, double* y) {
  double s[rows];
  for (std::size_t r = 0; r < rows; ++r) {
    const auto p = static_cast<std::size_t>(pivots[first + r]);
    s[r] = y[first + r];
    if (p < n) {
      s[r] = y[p];
      y[p] = y[first + r];
    }
    y[first + r] = s[r];
  }
  for (std::size_t r = 0; r < rows; ++r) s[r] = y[first + r];
  const double* l = lu + first * n;
  for (std::size_t t = 0; t < first; ++t) {
    for (std::size_t r = 0; r < rows; ++r) s[r] -= l[r * n + t] * y[t];
  }
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t t = 0; t < r; ++t) s[r] -= l[r * n + first + t] * s[t];
    y[first + r] = s[r];
  }
}

}  // namespace

template <typename Element>
void invertFactored(const Element* lu, std::size_t n, const std::int32_t* pivots, Element* inverse,
                    Element* scratch) {
  setIdentity(inverse, n);
  for (std::size_t i = 0; i < n; ++i) {
    const auto p = static_cast<std::size_t>(pivots[i]);
    if (p != i) {
      std::swap_ranges(inverse + i * n, inverse + (i + 1) * n, inverse + p * n);
    }
  }
  solveUnitLower(lu, n, n, inverse, n, n);
  // A row waits for the one below it: its first term. Only the columns are independent.
  for (std::size_t first = 0; first < n; first += kScratchColumns<Element>) {
    const std::size_t columns = std::min(kScratchColumns<Element>, n - first);
    for (std::size_t i = n; i-- > 0;) {
      Element* const x = scratch + i * columns;
      std::copy_n(inverse + i * n + first, columns, x);
      subtractProduct(lu + i * n + i + 1, n, x + columns, columns, x, columns, 1, n - 1 - i,
                      columns);
      divideAll(x, columns, lu[i * n + i]);
      std::copy_n(x, columns, inverse + i * n + first);
    }
  }
}
template void invertFactored(const double*, std::size_t, const std::int32_t*, double*, double*);
template void invertFactored(const ComplexNum*, std::size_t, const std::int32_t*, ComplexNum*,
                             ComplexNum*);

}  // namespace fathom

AnalysisStatus LU(double* a, int32_t n, int32_t* pivots, int32_t* parity) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  // At a column without a pivot, those after it must be what they were but for the exchanges.
  fathom::Workspace<double> original(fathom::scratchRequest<double>(n));
  if (!original) {
    return fathom::factoriseByColumns(a, size, pivots, parity) == size ? FATHOM_OK
                                                                       : FATHOM_ERR_SINGULAR;
  }
  double* const copy = original.data();
  std::copy_n(a, size * size, copy);
  const std::size_t done = fathom::factorise(a, size, pivots, parity, copy + size * size);
  if (done == size) return FATHOM_OK;
  for (std::size_t i = 0; i < done; ++i) {
    const auto p = static_cast<std::size_t>(pivots[i]);
    if (p != i) std::swap_ranges(copy + i * size, copy + (i + 1) * size, copy + p * size);
  }
  for (std::size_t i = 0; i < size; ++i) {
    std::copy_n(copy + i * size + done + 1, size - done - 1, a + i * size + done + 1);
  }
  return FATHOM_ERR_SINGULAR;
}

AnalysisStatus ForwSub(const double* lu, const double* b, int32_t n, double* y,
                       const int32_t* pivots) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  if (y != b) std::copy_n(b, size, y);
  constexpr std::size_t kRows = 8;
  for (std::size_t i = 0; i < size;) {
    std::size_t rows = 0;
    while (rows < kRows && i + rows < size && !fathom::exchangesBack(pivots, i + rows)) ++rows;
    if (rows == kRows) {
      fathom::substituteForward<kRows>(lu, size, pivots, i, y);
      i += kRows;
    } else {
      fathom::substituteForward<1>(lu, size, pivots, i, y);
      i += 1;
    }
  }
  return FATHOM_OK;
}

AnalysisStatus BackSub(const double* lu, const double* y, int32_t n, double* x) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  if (x != y) std::copy_n(y, size, x);
  for (std::size_t i = size; i-- > 0;) {
    const double* const u = lu + i * size;
    double s = x[i];
    for (std::size_t t = i + 1; t < size; ++t) s -= u[t] * x[t];
    if (u[i] == 0.0) return FATHOM_ERR_SINGULAR;
    x[i] = s / u[i];
  }
  return FATHOM_OK;
}

AnalysisStatus LinEqs(const double* a, const double* b, int32_t n, double* x) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  fathom::FactoredCopy copy(n);
  if (!copy) return FATHOM_ERR_MEMORY;
  if (x != b) std::copy_n(b, copy.n, x);
  if (!copy.factor(a)) return FATHOM_ERR_SINGULAR;
  ForwSub(copy.lu.data(), x, n, x, copy.pivots.data());
  BackSub(copy.lu.data(), x, n, x);
  return FATHOM_OK;
}

AnalysisStatus InvMatrix(const double* a, int32_t n, double* inverse) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  fathom::FactoredCopy copy(n);
  if (!copy) return FATHOM_ERR_MEMORY;
  if (!copy.factor(a)) {
    fathom::setIdentity(inverse, copy.n);
    return FATHOM_ERR_SINGULAR;
  }
  fathom::invertFactored(copy.lu.data(), copy.n, copy.pivots.data(), inverse, copy.scratch());
  return FATHOM_OK;
}

AnalysisStatus Determinant(const double* a, int32_t n, double* det) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  fathom::FactoredCopy copy(n);
  if (!copy) return FATHOM_ERR_MEMORY;
  *det = copy.factor(a) ? fathom::determinantOfFactored(copy.lu.data(), copy.n, copy.parity) : 0.0;
  return FATHOM_OK;
}

AnalysisStatus CxLU(ComplexNum* a, int32_t n, int32_t* pivots, int32_t* parity) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> scale(size);
  fathom::Workspace<ComplexNum> panel(size * fathom::kPanelColumns);
  if (!scale || !panel) return FATHOM_ERR_MEMORY;
  fathom::clearRecord(size, pivots, parity);
  for (std::size_t i = 0; i < size; ++i) {
    double largest = 0.0;
    for (std::size_t j = 0; j < size; ++j) {
      const double squared = fathom::squaredModulus(a[i * size + j]);
      if (squared > largest) largest = squared;
    }
    if (largest == 0.0) return FATHOM_ERR_SINGULAR;
    scale[i] = 1.0 / largest;
  }
  fathom::Factorisation<ComplexNum, fathom::LargestInRow> factorisation{
      a, size, pivots, parity, {scale.data()}, panel.data()};
  return factorisation.run() == size ? FATHOM_OK : FATHOM_ERR_SINGULAR;
}
