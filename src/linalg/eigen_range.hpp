// Matrices whose eigenvalues are asked for, brought to a range in which no square of an element
// overflows, and none that matters underflows.
#ifndef FATHOM_LINALG_EIGEN_RANGE_HPP
#define FATHOM_LINALG_EIGEN_RANGE_HPP

#include <limits>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace fathom {

// Finds the power of two to multiply by, from one part after another.
class EigenRange {
 public:
  void add(double x) {
    const double size = fabs(x);
    if (size > largest_) largest_ = size;
    if (!(size < kInfinite)) finite_ = false;
  }
  void add(ComplexNum x) {
    add(x.real);
    add(x.imaginary);
  }

  bool finite() const { return finite_; }
  double factor() const {
    if (largest_ > 0x1p300) return 0x1p-600;
    return largest_ < 0x1p-300 && largest_ > 0.0 ? 0x1p600 : 1.0;
  }

 private:
  static constexpr double kInfinite = std::numeric_limits<double>::infinity();

  double largest_ = 0.0;
  bool finite_ = true;
};

// An element that couples two diagonal ones whose magnitudes have the sum `neighbours`, so small
// beside them, or so far below the norm of the matrix, that it counts as zero.
inline bool negligible(double x, double neighbours, double norm) {
  return neighbours + fabs(x) == neighbours || fabs(x) <= 0x1p-400 * norm;
}

}  // namespace fathom

#endif
