// Packed triangles: Cholesky factorisation and substitution by columns, each of which is
// contiguous.
#include "linalg/packed.hpp"

#include <algorithm>
#include <cstddef>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"

namespace fathom {
namespace {

constexpr double kSmallestOfFactor = 3.2927225399135965e-10;  // sqrt(2^-63)
constexpr double kSmallestOfTriangle = 0x1p-63;

// The columns that Cholesky factorisation brings up to date together, and the rows of them that
// stay in the first-level cache meanwhile.
constexpr std::size_t kBlockColumns = 4;
constexpr std::size_t kBlockRows = 512;

// Column j such that x[i] is element (i, j).
template <typename Element>
FATHOM_INLINE Element* lowerColumn(Element* packed, std::size_t n, std::size_t j) {
  return packed + (2 * n - 1 - j) * j / 2;
}
template <typename Element>
FATHOM_INLINE Element* upperColumn(Element* packed, std::size_t j) {
  return packed + j * (j + 1) / 2;
}

template <typename Element>
FATHOM_INLINE Element& diagonal(Element* packed, std::size_t n, Triangle triangle, std::size_t j) {
  return triangle == Triangle::kLower ? lowerColumn(packed, n, j)[j] : upperColumn(packed, j)[j];
}

// y -= factor x
template <typename Element>
FATHOM_INLINE void subtractMultipleOf(Element* y, const Element* x, Element factor, std::size_t n) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = y[i] - x[i] * factor;
}
FATHOM_MULTIVERSION void subtractMultiple(double* y, const double* x, double factor,
                                          std::size_t n) {
  subtractMultipleOf(y, x, factor, n);
}
FATHOM_MULTIVERSION void subtractMultiple(ComplexNum* y, const ComplexNum* x, ComplexNum factor,
                                          std::size_t n) {
  subtractMultipleOf(y, x, factor, n);
}

// Subtracts columns 0 .. j - 1 from rows `from` .. `to` of columns j to j + 3, below all four of
// their diagonal elements. Two columns go in one walk.
template <typename Element>
FATHOM_INLINE void subtractColumnsOf(Element* packed, std::size_t n, std::size_t j,
                                     std::size_t from, std::size_t to) {
  Element *const y0 = lowerColumn(packed, n, j), *const y1 = lowerColumn(packed, n, j + 1),
                 *const y2 = lowerColumn(packed, n, j + 2),
                 *const y3 = lowerColumn(packed, n, j + 3);
  std::size_t t = 0;
  for (; t + 2 <= j; t += 2) {
    const Element *const a = lowerColumn(packed, n, t), *const b = lowerColumn(packed, n, t + 1);
    const Element a0 = conjugate(a[j]), a1 = conjugate(a[j + 1]), a2 = conjugate(a[j + 2]),
                  a3 = conjugate(a[j + 3]);
    const Element b0 = conjugate(b[j]), b1 = conjugate(b[j + 1]), b2 = conjugate(b[j + 2]),
                  b3 = conjugate(b[j + 3]);
    FATHOM_INDEPENDENT
    for (std::size_t i = from; i < to; ++i) {
      y0[i] = y0[i] - a[i] * a0 - b[i] * b0;
      y1[i] = y1[i] - a[i] * a1 - b[i] * b1;
      y2[i] = y2[i] - a[i] * a2 - b[i] * b2;
      y3[i] = y3[i] - a[i] * a3 - b[i] * b3;
    }
  }
  static_assert(kBlockColumns % 2 == 0);  // so that no column is left over
}
FATHOM_MULTIVERSION void subtractColumns(double* packed, std::size_t n, std::size_t j,
                                         std::size_t from, std::size_t to) {
  subtractColumnsOf(packed, n, j, from, to);
}
FATHOM_MULTIVERSION void subtractColumns(ComplexNum* packed, std::size_t n, std::size_t j,
                                         std::size_t from, std::size_t to) {
  subtractColumnsOf(packed, n, j, from, to);
}

// The same for the triangle of `columns` columns and rows that is not below all of the diagonal.
template <typename Element>
void subtractFromTriangle(Element* packed, std::size_t n, std::size_t j, std::size_t columns) {
  Element sums[kBlockColumns][kBlockColumns];
  for (std::size_t k = 0; k < columns; ++k) {
    for (std::size_t i = k; i < columns; ++i) sums[k][i] = lowerColumn(packed, n, j + k)[j + i];
  }
  for (std::size_t t = 0; t < j; ++t) {
    const Element* const x = lowerColumn(packed, n, t) + j;
    for (std::size_t k = 0; k < columns; ++k) {
      for (std::size_t i = k; i < columns; ++i) sums[k][i] = sums[k][i] - x[i] * conjugate(x[k]);
    }
  }
  for (std::size_t k = 0; k < columns; ++k) {
    for (std::size_t i = k; i < columns; ++i) lowerColumn(packed, n, j + k)[j + i] = sums[k][i];
  }
}

// Rows j, j - 1, ..., `rows` of them, of the back substitution with L^H, side by side: row n - 1 of
// L comes first, and the rows that depend on each other last.
template <std::size_t rows, typename Element>
FATHOM_INLINE void substituteBack(const Element* packed, std::size_t n, std::size_t j, Element* x) {
  const Element* columns[rows];
  Element s[rows];
  for (std::size_t r = 0; r < rows; ++r) {
    columns[r] = lowerColumn(packed, n, j - r);
    s[r] = x[j - r];
  }
  for (std::size_t i = n - 1; i > j; --i) {
    for (std::size_t r = 0; r < rows; ++r) s[r] = s[r] - conjugate(columns[r][i]) * x[i];
  }
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t q = 0; q < r; ++q) s[r] = s[r] - conjugate(columns[r][j - q]) * s[q];
    s[r] = divide(s[r], columns[r][j - r]);
    x[j - r] = s[r];
  }
}

// Solves L^H x = y for rows n - 1 down to `first`.
template <typename Element>
void solveConjugated(const Element* packed, std::size_t n, std::size_t first, Element* x) {
  constexpr std::size_t kRows = 4;
  std::size_t end = n;
  for (; end >= first + kRows; end -= kRows) substituteBack<kRows>(packed, n, end - 1, x);
  for (; end > first; --end) substituteBack<1>(packed, n, end - 1, x);
}

// Solves L x = b from row `first` on, before which x is zero.
template <typename Element>
void solveLower(const Element* packed, std::size_t n, std::size_t first, Element* x) {
  for (std::size_t j = first; j < n; ++j) {
    const Element* const l = lowerColumn(packed, n, j);
    x[j] = divide(x[j], l[j]);
    subtractMultiple(x + j + 1, l + j + 1, x[j], n - 1 - j);
  }
}

// Solves U x = b in the rows before `end`, from which on x is zero.
template <typename Element>
void solveUpper(const Element* packed, std::size_t end, Element* x) {
  for (std::size_t j = end; j-- > 0;) {
    const Element* const u = upperColumn(packed, j);
    x[j] = divide(x[j], u[j]);
    subtractMultiple(x, u, x[j], j);
  }
}

}  // namespace

template <typename Element>
void pack(const Element* a, std::size_t n, Triangle triangle, Element* packed) {
  for (std::size_t i = 0; i < n; ++i) {
    if (triangle == Triangle::kLower) {
      for (std::size_t j = 0; j <= i; ++j) lowerColumn(packed, n, j)[i] = a[i * n + j];
    } else {
      for (std::size_t j = i; j < n; ++j) upperColumn(packed, j)[i] = a[i * n + j];
    }
  }
}

template <typename Element>
void unpack(const Element* packed, std::size_t n, Triangle triangle, Element* a) {
  std::fill_n(a, n * n, Element{});
  for (std::size_t i = 0; i < n; ++i) {
    if (triangle == Triangle::kLower) {
      for (std::size_t j = 0; j <= i; ++j) a[i * n + j] = lowerColumn(packed, n, j)[i];
    } else {
      for (std::size_t j = i; j < n; ++j) a[i * n + j] = upperColumn(packed, j)[i];
    }
  }
}

template <typename Element>
void unpackSymmetric(const Element* packed, std::size_t n, Element* a) {
  unpack(packed, n, Triangle::kLower, a);
  for (std::size_t i = 0; i < n; ++i) {
    std::copy_n(lowerColumn(packed, n, i) + i, n - i, a + i * n + i);
  }
}

template <typename Element>
bool factorCholesky(Element* packed, std::size_t n) {
  double largest = 0.0, smallest = 0.0;
  const auto note = [&](double size) {
    if (size > largest) largest = size;
  };
  for (std::size_t first = 0; first < n; first += kBlockColumns) {
    const std::size_t columns = std::min(kBlockColumns, n - first);
    subtractFromTriangle(packed, n, first, columns);
    for (std::size_t row = first + columns; row < n; row += kBlockRows) {
      subtractColumns(packed, n, first, row, std::min(row + kBlockRows, n));
    }
    for (std::size_t j = first; j < first + columns; ++j) {
      Element* const column = lowerColumn(packed, n, j);
      for (std::size_t t = first; t < j; ++t) {
        const Element* const x = lowerColumn(packed, n, t);
        subtractMultiple(column + j, x + j, conjugate(x[j]), n - j);
      }
      if (!(realPart(column[j]) > 0.0)) return false;
      const double root = sqrt(realPart(column[j]));
      column[j] = element<Element>(root);
      note(root);
      for (std::size_t i = j + 1; i < n; ++i) {
        column[i] = divide(column[i], root);
        note(magnitude(column[i]));
      }
      if (j == 0 || root < smallest) smallest = root;
      if (smallest < kSmallestOfFactor * largest) return false;
    }
  }
  return true;
}

template <typename Element>
void solveCholesky(const Element* packed, std::size_t n, Element* x) {
  solveLower(packed, n, 0, x);
  solveConjugated(packed, n, 0, x);
}

void invertCholesky(double* packed, std::size_t n, double* column) {
  for (std::size_t j = 0; j < n; ++j) {
    std::fill(column + j, column + n, 0.0);
    column[j] = 1.0;
    solveLower(packed, n, j, column);
    solveConjugated(packed, n, j, column);
    std::copy(column + j, column + n, lowerColumn(packed, n, j) + j);
  }
}

template <typename Element>
bool isRegular(const Element* packed, std::size_t n, Triangle triangle) {
  double largest = 0.0;
  for (std::size_t k = 0; k < n * (n + 1) / 2; ++k) {
    const double size = magnitude(packed[k]);
    if (size > largest) largest = size;
  }
  for (std::size_t j = 0; j < n; ++j) {
    if (magnitude(diagonal(packed, n, triangle, j)) <= kSmallestOfTriangle * largest) return false;
  }
  return true;
}

template <typename Element>
void solveTriangular(const Element* packed, std::size_t n, Triangle triangle, Element* x) {
  if (triangle == Triangle::kLower) {
    solveLower(packed, n, 0, x);
  } else {
    solveUpper(packed, n, x);
  }
}

// Column j of the inverse solves T x = e_j and depends on columns that still stand: those after j
// of a lower triangle, those before j of an upper one.
template <typename Element>
void invertTriangular(Element* packed, std::size_t n, Triangle triangle) {
  for (std::size_t k = 0; k < n; ++k) {
    const bool lower = triangle == Triangle::kLower;
    const std::size_t j = lower ? k : n - 1 - k;
    Element* const x = lower ? lowerColumn(packed, n, j) : upperColumn(packed, j);
    const std::size_t from = lower ? j + 1 : 0, to = lower ? n : j;
    x[j] = divide(element<Element>(1.0), x[j]);
    for (std::size_t i = from; i < to; ++i) x[i] = Element{} - x[i] * x[j];
    if (lower) {
      solveLower(packed, n, j + 1, x);
    } else {
      solveUpper(packed, j, x);
    }
  }
}

template <typename Element>
Element productOfDiagonal(const Element* packed, std::size_t n, Triangle triangle) {
  Element product = element<Element>(1.0);
  for (std::size_t j = 0; j < n; ++j) product = product * diagonal(packed, n, triangle, j);
  return product;
}

template void pack(const double*, std::size_t, Triangle, double*);
template void pack(const ComplexNum*, std::size_t, Triangle, ComplexNum*);
template void unpack(const double*, std::size_t, Triangle, double*);
template void unpack(const ComplexNum*, std::size_t, Triangle, ComplexNum*);
template void unpackSymmetric(const double*, std::size_t, double*);
template bool factorCholesky(double*, std::size_t);
template bool factorCholesky(ComplexNum*, std::size_t);
template void solveCholesky(const double*, std::size_t, double*);
template void solveCholesky(const ComplexNum*, std::size_t, ComplexNum*);
template bool isRegular(const double*, std::size_t, Triangle);
template bool isRegular(const ComplexNum*, std::size_t, Triangle);
template double productOfDiagonal(const double*, std::size_t, Triangle);
template ComplexNum productOfDiagonal(const ComplexNum*, std::size_t, Triangle);
template void solveTriangular(const double*, std::size_t, Triangle, double*);
template void solveTriangular(const ComplexNum*, std::size_t, Triangle, ComplexNum*);
template void invertTriangular(double*, std::size_t, Triangle);
template void invertTriangular(ComplexNum*, std::size_t, Triangle);

}  // namespace fathom
