// Householder reflections H = I - tau v v^H of real and complex vectors, and their application to
// blocks of matrices. Real and imaginary parts apart, only + - * / and square roots are taken, in
// an order that does not depend on the processor.
#ifndef FATHOM_LINALG_HOUSEHOLDER_HPP
#define FATHOM_LINALG_HOUSEHOLDER_HPP

#include <cstddef>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"

namespace fathom {

// Part of a matrix stored row after row: element (i, j) is at i * stride + j from its first.
template <typename Element>
struct MatrixBlock {
  Element* first;
  std::size_t stride;
  std::size_t rows;
  std::size_t columns;

  FATHOM_INLINE Element* row(std::size_t i) const { return first + i * stride; }
  // Without its first i rows and j columns.
  FATHOM_INLINE MatrixBlock from(std::size_t i, std::size_t j) const {
    return {row(i) + j, stride, rows - i, columns - j};
  }
};

// The sum of the magnitudes of its parts: cheaper than the modulus where only the size matters.
FATHOM_INLINE double partSum(double x) {
  return fabs(x);
}
FATHOM_INLINE double partSum(ComplexNum x) {
  return fabs(x.real) + fabs(x.imaginary);
}

template <typename Element>
struct Reflector {
  Element tau;
  double beta;
};

// H^H turns the vector of `pivot` and the n values of `rest` into beta, which is real, and zeros.
// They become v: 1 and what goes with `rest`. Where nothing is to be done, tau is 0.
template <typename Element>
Reflector<Element> reflector(Element& pivot, Element* rest, std::size_t n) {
  const Element first = pivot;
  pivot = element<Element>(1.0);
  double restLargest = 0.0;
  for (std::size_t k = 0; k < n; ++k) {
    const double size = partSum(rest[k]);
    if (size > restLargest || isNan(size)) restLargest = size;
  }
  if (restLargest == 0.0 && partSum(first) == fabs(realPart(first))) {
    return {Element{}, realPart(first)};
  }
  const double largest = partSum(first) > restLargest ? partSum(first) : restLargest;
  const Element alpha = divide(first, largest);
  double sum = squaredModulus(alpha);
  for (std::size_t k = 0; k < n; ++k) {
    rest[k] = divide(rest[k], largest);
    sum += squaredModulus(rest[k]);
  }
  // The sign that makes alpha - beta a sum.
  const double beta = realPart(alpha) > 0.0 ? -sqrt(sum) : sqrt(sum);
  const Element difference = alpha - element<Element>(beta);
  for (std::size_t k = 0; k < n; ++k) rest[k] = divide(rest[k], difference);
  return {divide(-difference, beta), beta * largest};
}

// A(k, j) = A(k, j) + f[j] y[k] where there is f, then sums[j] = sums[j] + x[k] A(k, j) where there
// is x, in ascending k: all columns side by side in one walk over the rows.
void walkRows(MatrixBlock<double> a, const double* y, const double* f, const double* x,
              double* sums);
void walkRows(MatrixBlock<ComplexNum> a, const ComplexNum* y, const ComplexNum* f,
              const ComplexNum* x, ComplexNum* sums);

// To each row: A(k, j) = A(k, j) + f[j] v[k] where there is f, then A(k, j) = A(k, j) + s t[j]
// where there is r, for the sum s of A(k, j) conj(r[j]) in ascending j. `first` gets the first
// column of the result.
void reflectBoth(MatrixBlock<double> a, const double* v, const double* f, const double* r,
                 const double* t, double* first);
void reflectBoth(MatrixBlock<ComplexNum> a, const ComplexNum* v, const ComplexNum* f,
                 const ComplexNum* r, const ComplexNum* t, ComplexNum* first);

// A = A - tau v (v^H A). `sums` has room for a row of A.
void reflectLeft(MatrixBlock<double> a, const double* v, double tau, double* sums);
void reflectLeft(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau, ComplexNum* sums);

// A = A - tau (A v) v^H.
void reflectRight(MatrixBlock<double> a, const double* v, double tau);
void reflectRight(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau);

// The reflections whose vectors, from the 1 on, lie in the columns of `vectors` from its diagonal
// down, the 1 left out: `q` becomes their product H_0 H_1 ... H_{count - 1}. `column` and `sums`
// have room for a column of `vectors` and a row of q.
template <typename Element>
void accumulate(MatrixBlock<Element> vectors, const Element* tau, std::size_t count,
                MatrixBlock<Element> q, Element* column, Element* sums) {
  for (std::size_t i = 0; i < q.rows; ++i) {
    for (std::size_t j = 0; j < q.columns; ++j) q.row(i)[j] = element<Element>(i == j ? 1.0 : 0.0);
  }
  for (std::size_t k = count; k-- > 0;) {
    if (isZero(tau[k])) continue;
    column[0] = element<Element>(1.0);
    for (std::size_t i = k + 1; i < vectors.rows; ++i) column[i - k] = vectors.row(i)[k];
    reflectLeft(q.from(k, k), column, tau[k], sums);
  }
}

}  // namespace fathom

#endif
