// Inside of the LU factorisation, for the solvers that choose it by the type of a matrix.
#ifndef FATHOM_LINALG_LU_HPP
#define FATHOM_LINALG_LU_HPP

#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "linalg/element.hpp"

namespace fathom {

// Scratch memory is this many elements for each row of the matrix.
template <typename Element>
inline constexpr std::size_t kScratchColumns = 256 / sizeof(Element);

// The request for an n x n matrix with its scratch memory behind it. What a size_t cannot hold
// becomes a size that no workspace has.
template <typename Element>
constexpr std::size_t scratchRequest(std::int32_t n) {
  const auto rows = static_cast<std::uint64_t>(n);
  const std::uint64_t cells = rows * (rows + kScratchColumns<Element>);
  return cells < SIZE_MAX ? static_cast<std::size_t>(cells) : SIZE_MAX;
}

// The inverse, from the factor and the record of exchanges that LU or CxLU wrote. Column k is the
// forward and back substitution of the k-th unit vector, with no test for zeros in the diagonal.
template <typename Element>
void invertFactored(const Element* lu, std::size_t n, const std::int32_t* pivots, Element* inverse,
                    Element* scratch);

// 1 U(0, 0) U(1, 1) ..., negated for an odd number of exchanges.
template <typename Element>
Element determinantOfFactored(const Element* lu, std::size_t n, std::int32_t parity) {
  Element det = element<Element>(1.0);
  for (std::size_t i = 0; i < n; ++i) det = det * lu[i * n + i];
  return parity == 1 ? -det : det;
}

}  // namespace fathom

#endif
