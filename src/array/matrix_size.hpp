// Number of elements of a matrix whose rows and columns have passed their checks.
#ifndef FATHOM_ARRAY_MATRIX_SIZE_HPP
#define FATHOM_ARRAY_MATRIX_SIZE_HPP

#include <cstddef>
#include <cstdint>

namespace fathom {

inline std::size_t matrixSize(std::int32_t rows, std::int32_t columns) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
}

}  // namespace fathom

#endif
