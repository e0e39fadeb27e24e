// Cholesky factorisation of symmetric and Hermitian matrices, and the test that rests on it.
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/packed.hpp"

namespace fathom {
namespace {

constexpr double kAsymmetry = 0x1p-40;  // of the largest element

template <typename Element>
AnalysisStatus factor(const Element* a, std::int32_t size, Element* l) {
  if (size < 1) return FATHOM_ERR_NO_SAMPLES;
  Workspace<Element> packed(packedRequest(size));
  if (!packed) return FATHOM_ERR_MEMORY;
  const auto n = static_cast<std::size_t>(size);
  pack(a, n, Triangle::kLower, packed.data());
  if (!factorCholesky(packed.data(), n)) return FATHOM_ERR_SINGULAR;
  unpack(packed.data(), n, Triangle::kLower, l);
  return FATHOM_OK;
}

// A NaN makes it false.
template <typename Element>
bool isHermitian(const Element* a, std::size_t n) {
  double largest = 0.0;
  for (std::size_t k = 0; k < n * n; ++k) {
    const double size = magnitude(a[k]);
    if (size > largest) largest = size;
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      const double difference = magnitude(a[i * n + j] - conjugate(a[j * n + i]));
      if (!(difference <= kAsymmetry * largest)) return false;
    }
  }
  return true;
}

template <typename Element>
AnalysisStatus check(const Element* a, std::int32_t size, std::int32_t* positiveDefinite) {
  if (size < 1) return FATHOM_ERR_NO_SAMPLES;
  Workspace<Element> packed(packedRequest(size));
  if (!packed) return FATHOM_ERR_MEMORY;
  const auto n = static_cast<std::size_t>(size);
  pack(a, n, Triangle::kLower, packed.data());
  *positiveDefinite = isHermitian(a, n) && factorCholesky(packed.data(), n) ? 1 : 0;
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus Cholesky(const double* a, int32_t n, double* l) {
  return fathom::factor(a, n, l);
}

AnalysisStatus CxCholesky(const ComplexNum* a, int32_t n, ComplexNum* l) {
  return fathom::factor(a, n, l);
}

AnalysisStatus CheckPosDef(const double* a, int32_t n, int32_t* positiveDefinite) {
  return fathom::check(a, n, positiveDefinite);
}

AnalysisStatus CxCheckPosDef(const ComplexNum* a, int32_t n, int32_t* positiveDefinite) {
  return fathom::check(a, n, positiveDefinite);
}
