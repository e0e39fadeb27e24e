// QR factorisation of real and complex matrices by Householder reflections.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/householder.hpp"

namespace fathom {
namespace {

template <typename Element>
AnalysisStatus factor(const Element* a, std::int32_t rows, std::int32_t columns, Element* q,
                      Element* r) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  const std::size_t elements = std::max(matrixSize(rows, columns), matrixSize(rows, rows));
  if (elements > PTRDIFF_MAX / sizeof(Element)) return FATHOM_ERR_MEMORY;
  const auto m = static_cast<std::size_t>(rows), n = static_cast<std::size_t>(columns);
  Workspace<Element> column(m), sums(std::max(m, n)), tau(std::min(m, n));
  if (!column || !sums || !tau) return FATHOM_ERR_MEMORY;

  std::fill_n(tau.data(), std::min(m, n), Element{});
  // The reflections' vectors take the place of what they annihilate in R, until Q is made of them.
  std::copy_n(a, m * n, r);
  const MatrixBlock<Element> block = {r, n, m, n};
  const std::size_t count = std::min(m, n);
  for (std::size_t k = 0; k < count; ++k) {
    for (std::size_t i = k; i < m; ++i) column[i - k] = r[i * n + k];
    const Reflector<Element> h = reflector(column[0], &column[0] + 1, m - k - 1);
    tau[k] = h.tau;
    r[k * n + k] = element<Element>(h.beta);
    for (std::size_t i = k + 1; i < m; ++i) r[i * n + k] = column[i - k];
    if (!isZero(h.tau) && k + 1 < n) {
      reflectLeft(block.from(k, k + 1), column.data(), conjugate(h.tau), sums.data());
    }
  }
  accumulate(block, tau.data(), count, MatrixBlock<Element>{q, m, m, m}, column.data(),
             sums.data());
  for (std::size_t i = 1; i < m; ++i) std::fill_n(r + i * n, std::min(i, n), Element{});
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus QR(const double* a, int32_t m, int32_t n, double* q, double* r) {
  return fathom::factor(a, m, n, q, r);
}

AnalysisStatus CxQR(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* q, ComplexNum* r) {
  return fathom::factor(a, m, n, q, r);
}
