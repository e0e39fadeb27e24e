// exp: the table and polynomial of exponential_core.hpp, and a rounding test.
//
// (The test: Ziv, Fast evaluation of elementary mathematical functions with correctly rounded last
// bit, ACM Transactions on Mathematical Software 17, 1991.)
#include <cstddef>
#include <cstdint>
#include <limits>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/exponential_core.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

FATHOM_INLINE RoundedResult fastExp(double x, double steps, TableRow row) {
  return roundedAndScaled(exponential(x, 0.0, steps, row), kExponentialError,
                          outsideBits(x, kLargestExponent));
}

FATHOM_MULTIVERSION bool fastExps(const double* x, std::size_t n, double* y, std::uint64_t* doubt) {
  alignas(64) double steps[kElementaryBlock];
  alignas(64) TableRow rows[kElementaryBlock];
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) steps[i] = stepsOf(x[i]);
  lookUpExponentials(steps, n, rows);
  std::uint64_t any = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const RoundedResult result = fastExp(x[i], steps[i], rows[i]);
    y[i] = result.value;
    doubt[i] = result.doubt;
    any |= result.doubt;
  }
  return any != 0;
}

// Beyond the range of doubles nothing needs to be computed.
double exactExp(double x) {
  if (x > 710.0) return std::numeric_limits<double>::infinity();
  if (x < -746.0) return 0.0;
  return slow::exp(x);
}

}  // namespace

double exp(double x) {
  const double steps = stepsOf(x);
  const RoundedResult result = fastExp(x, steps, kExponentialTable[rowOf(steps)]);
  return result.doubt == 0 ? result.value : exactExp(x);
}

void exp(const double* x, std::size_t n, double* e) {
  evaluateArray(x, n, e, fastExps, exactExp);
}

}  // namespace fathom
