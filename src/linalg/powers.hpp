// Matrices of powers.
#ifndef FATHOM_LINALG_POWERS_HPP
#define FATHOM_LINALG_POWERS_HPP

#include <algorithm>
#include <cstddef>

#include "frame/elementary.hpp"

namespace fathom {

// m[i][j] = x[i]^(first + j step), a column of a few rows at a time.
inline void fillPowers(const double* x, std::size_t rows, std::size_t columns, double first,
                       double step, double* m) {
  constexpr std::size_t kTile = 128;
  double power[kTile];
  for (std::size_t start = 0; start < rows; start += kTile) {
    const std::size_t count = std::min(kTile, rows - start);
    for (std::size_t j = 0; j < columns; ++j) {
      pow(x + start, first + step * static_cast<double>(j), count, power);
      for (std::size_t i = 0; i < count; ++i) m[i * columns + j] = power[i];
    }
    m += count * columns;
  }
}

}  // namespace fathom

#endif
