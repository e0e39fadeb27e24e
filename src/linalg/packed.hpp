// Triangles of matrices, packed column after column into n (n + 1) / 2 elements: the lower one with
// rows j to n - 1 of each column j, the upper one with rows 0 to j. Elements are double or
// ComplexNum; products with a transposed element take its conjugate.
#ifndef FATHOM_LINALG_PACKED_HPP
#define FATHOM_LINALG_PACKED_HPP

#include <cstddef>
#include <cstdint>

#include "fathom.h"

namespace fathom {

enum class Triangle { kLower, kUpper };

// The request for a packed triangle and, behind it, a vector of n elements. What a size_t cannot
// hold becomes a size that no workspace has.
constexpr std::size_t packedRequest(std::int32_t n) {
  const auto side = static_cast<std::uint64_t>(n);
  const std::uint64_t cells = side * (side + 1) / 2 + side;
  return cells < SIZE_MAX ? static_cast<std::size_t>(cells) : SIZE_MAX;
}

// From and to a matrix. Unpacking sets the other triangle to zero, or, of a lower triangle, to its
// mirror image.
template <typename Element>
void pack(const Element* a, std::size_t n, Triangle triangle, Element* packed);
template <typename Element>
void unpack(const Element* packed, std::size_t n, Triangle triangle, Element* a);
template <typename Element>
void unpackSymmetric(const Element* packed, std::size_t n, Element* a);

// Replaces a lower triangle by the factor L of L L^H; false if it is not positive definite.
template <typename Element>
bool factorCholesky(Element* packed, std::size_t n);

// Solves L L^H x = b; x replaces b.
template <typename Element>
void solveCholesky(const Element* packed, std::size_t n, Element* x);

// Replaces L by the lower triangle of the inverse of L L^H. `column` has room for n elements.
void invertCholesky(double* packed, std::size_t n, double* column);

// Whether all elements of the diagonal are above 2^-63 of the largest in magnitude of the triangle.
template <typename Element>
bool isRegular(const Element* packed, std::size_t n, Triangle triangle);

// Solves T x = b; x replaces b.
template <typename Element>
void solveTriangular(const Element* packed, std::size_t n, Triangle triangle, Element* x);

// 1 times the elements of the diagonal, from the first on.
template <typename Element>
Element productOfDiagonal(const Element* packed, std::size_t n, Triangle triangle);

// Replaces a triangle by its inverse.
template <typename Element>
void invertTriangular(Element* packed, std::size_t n, Triangle triangle);

}  // namespace fathom

#endif
