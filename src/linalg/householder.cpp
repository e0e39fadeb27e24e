// The hot loops of Householder reflections: rows are contiguous, so sums over a column run side by
// side for all columns.
#include "linalg/householder.hpp"

#include <algorithm>
#include <cstddef>

namespace fathom {
namespace {

template <typename Element>
FATHOM_INLINE void left(MatrixBlock<Element> a, const Element* v, Element tau, Element* sums) {
  const std::size_t columns = a.columns;
  for (std::size_t j = 0; j < columns; ++j) sums[j] = Element{};
  std::size_t k = 0;
  for (; k + 4 <= a.rows; k += 4) {
    const Element *a0 = a.row(k), *a1 = a.row(k + 1), *a2 = a.row(k + 2), *a3 = a.row(k + 3);
    const Element v0 = conjugate(v[k]), v1 = conjugate(v[k + 1]), v2 = conjugate(v[k + 2]),
                  v3 = conjugate(v[k + 3]);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < columns; ++j) {
      sums[j] = (((sums[j] + v0 * a0[j]) + v1 * a1[j]) + v2 * a2[j]) + v3 * a3[j];
    }
  }
  for (; k < a.rows; ++k) {
    const Element* row = a.row(k);
    const Element vk = conjugate(v[k]);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < columns; ++j) sums[j] = sums[j] + vk * row[j];
  }
  for (std::size_t j = 0; j < columns; ++j) sums[j] = tau * sums[j];
  for (k = 0; k < a.rows; ++k) {
    Element* row = a.row(k);
    const Element vk = v[k];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < columns; ++j) row[j] = row[j] - vk * sums[j];
  }
}

// Sums over a row wait for each other, so `count` rows take theirs side by side.
template <std::size_t count, typename Element>
FATHOM_INLINE void rightOf(MatrixBlock<Element> a, const Element* v, Element tau) {
  Element sum[count] = {};
  for (std::size_t j = 0; j < a.columns; ++j) {
    for (std::size_t i = 0; i < count; ++i) sum[i] = sum[i] + a.first[i * a.stride + j] * v[j];
  }
  for (std::size_t i = 0; i < count; ++i) {
    const Element factor = tau * sum[i];
    Element* row = a.row(i);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < a.columns; ++j) row[j] = row[j] - factor * conjugate(v[j]);
  }
}

template <typename Element>
FATHOM_INLINE void right(MatrixBlock<Element> a, const Element* v, Element tau) {
  std::size_t i = 0;
  for (; i + 8 <= a.rows; i += 8) rightOf<8>(a.from(i, 0), v, tau);
  for (; i < a.rows; ++i) rightOf<1>(a.from(i, 0), v, tau);
}

FATHOM_MULTIVERSION void realLeft(MatrixBlock<double> a, const double* v, double tau,
                                  double* sums) {
  left(a, v, tau, sums);
}
FATHOM_MULTIVERSION void complexLeft(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau,
                                     ComplexNum* sums) {
  left(a, v, tau, sums);
}
FATHOM_MULTIVERSION void realRight(MatrixBlock<double> a, const double* v, double tau) {
  right(a, v, tau);
}
FATHOM_MULTIVERSION void complexRight(MatrixBlock<ComplexNum> a, const ComplexNum* v,
                                      ComplexNum tau) {
  right(a, v, tau);
}

}  // namespace

void reflectLeft(MatrixBlock<double> a, const double* v, double tau, double* sums) {
  realLeft(a, v, tau, sums);
}
void reflectLeft(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau, ComplexNum* sums) {
  complexLeft(a, v, tau, sums);
}
void reflectRight(MatrixBlock<double> a, const double* v, double tau) {
  realRight(a, v, tau);
}
void reflectRight(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau) {
  complexRight(a, v, tau);
}

}  // namespace fathom
