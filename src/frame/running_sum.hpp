// Running sums: value, value + step, (value + step) + step, ..., rounded each time, without waiting
// for one addition after another.
#ifndef FATHOM_FRAME_RUNNING_SUM_HPP
#define FATHOM_FRAME_RUNNING_SUM_HPP

#include <cstddef>

namespace fathom {

// The first n sums, with the bits of the additions one by one. Returns the one after them.
double runningSum(double value, double step, std::size_t n, double* y);

}  // namespace fathom

#endif
