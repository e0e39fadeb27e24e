// Products of blocks of matrices, on which the routines over matrices spend their time.
//
// A block lies in a matrix stored row after row: element (i, j) is at i * stride + j from its
// first. Each element of a result takes one product after another, with the second index of A and
// the first of B ascending, each product rounded before it is added or subtracted. That is the sum
// of the plain triple loop to the last bit, and so is a sum split over several calls.
//
// C may lie in the matrix of A or B but shares no element with their blocks. Nothing is allocated;
// about 64 KiB of the stack are used.
#ifndef FATHOM_LINALG_KERNEL_HPP
#define FATHOM_LINALG_KERNEL_HPP

#include <cstddef>

#include "fathom.h"

namespace fathom {

// C(i, j) = 0 + A(i, 0) B(0, j) + A(i, 1) B(1, j) + ..., for A of rows x terms and B of terms x
// columns.
void multiply(const double* a, std::size_t aStride, const double* b, std::size_t bStride, double* c,
              std::size_t cStride, std::size_t rows, std::size_t terms, std::size_t columns);
void multiply(const ComplexNum* a, std::size_t aStride, const ComplexNum* b, std::size_t bStride,
              ComplexNum* c, std::size_t cStride, std::size_t rows, std::size_t terms,
              std::size_t columns);

// C(i, j) = C(i, j) - A(i, 0) B(0, j) - A(i, 1) B(1, j) - ...
void subtractProduct(const double* a, std::size_t aStride, const double* b, std::size_t bStride,
                     double* c, std::size_t cStride, std::size_t rows, std::size_t terms,
                     std::size_t columns);
void subtractProduct(const ComplexNum* a, std::size_t aStride, const ComplexNum* b,
                     std::size_t bStride, ComplexNum* c, std::size_t cStride, std::size_t rows,
                     std::size_t terms, std::size_t columns);

}  // namespace fathom

#endif
