// Running sums: value, value + step, (value + step) + step, ..., rounded each time, without waiting
// for one addition after another.
#ifndef FATHOM_FRAME_RUNNING_SUM_HPP
#define FATHOM_FRAME_RUNNING_SUM_HPP

#include <cstddef>

namespace fathom {

// The first n sums, with the bits of the additions one by one. Returns the one after them.
double runningSum(double value, double step, std::size_t n, double* y);

// From the sums y[most] .. y[2 most - 1], a power of two of them, those of twice the value and
// twice the step: half as many, at y[most / 2] .. y[most - 1]; from these the next, and so on down
// to y[2]. Doubling is exact, so that the first ones doubled are their bits.
void doubleSums(std::size_t most, double* y);

}  // namespace fathom

#endif
