// exp: the table and polynomial of exponential_core.hpp, and a rounding test.
//
// (The test: Ziv, Fast evaluation of elementary mathematical functions with correctly rounded last
// bit, ACM Transactions on Mathematical Software 17, 1991.)
#include <cstddef>
#include <cstdint>
#include <limits>

#include "elementary/array_form.hpp"
#include "elementary/exponential_core.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"

namespace fathom {
namespace {

// Returns bits that are not 0 where the value is in doubt.
template <typename V>
FATHOM_INLINE Bits<V> fastExp(const V& x, const double* steps, V& value) {
  ScaledSum<V> sum;
  exponential(x, V{}, steps, sum);
  return roundAndScale(sum, inAllLanes<V>(kExponentialError), value) |
         outsideBits(x, kLargestExponent);
}

// A block of the array form. First the steps, so that the table's indices come from memory.
template <std::size_t bytes>
FATHOM_INLINE void expBlockOf(const double* x, std::size_t n, double* y, std::uint64_t* doubts,
                              bool& anyDoubt) {
  using V = Lanes<bytes>;
  alignas(64) double steps[kElementaryBlock];
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>)
    store(steps + i, stepsOf(vectorAt<V>(x + i)));
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    V value;
    const Bits<V> doubt = fastExp(vectorAt<V>(x + i), steps + i, value);
    store(y + i, value);
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  anyDoubt = anyBits(any);
}
FATHOM_BY_WIDTH(expBlock,
                (const double* x, std::size_t n, double* y, std::uint64_t* doubts, bool& anyDoubt),
                (x, n, y, doubts, anyDoubt))

// Beyond the range of doubles nothing needs to be computed.
double exactExp(double x) {
  if (x > 710.0) return std::numeric_limits<double>::infinity();
  if (x < -746.0) return 0.0;
  return slow::exp(x);
}

}  // namespace

double exp(double x) {
  const double steps = stepsOf(x);
  double value;
  return fastExp(x, &steps, value) == 0 ? value : exactExp(x);
}

void exp(const double* x, std::size_t n, double* e) {
  const auto fast = [](const double* argument, std::size_t count, double* value,
                       std::uint64_t* doubts,
                       bool& any) { expBlock(argument, count, value, doubts, any); };
  evaluateArray(x, n, e, fast, exactExp);
}

}  // namespace fathom
