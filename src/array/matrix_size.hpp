// Number of elements of a matrix whose rows and columns have passed their checks.
#ifndef FATHOM_ARRAY_MATRIX_SIZE_HPP
#define FATHOM_ARRAY_MATRIX_SIZE_HPP

#include <cstddef>
#include <cstdint>

namespace fathom {

// Where it cannot be expressed, SIZE_MAX, which no Workspace grants.
inline std::size_t matrixSize(std::int32_t rows, std::int32_t columns) {
  const std::uint64_t size =
      std::uint64_t{static_cast<std::uint32_t>(rows)} * static_cast<std::uint32_t>(columns);
  return size <= SIZE_MAX ? static_cast<std::size_t>(size) : SIZE_MAX;
}

}  // namespace fathom

#endif
