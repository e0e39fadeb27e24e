// Running sums. Within a binade, sums are multiples of one unit in the last place, and every
// addition adds the same increment: the multiple of the unit that is nearest to the step. So value
// + i increment, of which no part is rounded, is the i-th sum.
#include "frame/running_sum.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

// Runs are not worth their set-up below the one, and counted in 32 bits up to the other.
constexpr std::size_t kShortRun = 32;
constexpr std::size_t kLongRun = std::size_t{1} << 30;
// Sums from the end of a run into the next binade.
constexpr std::size_t kBeyondRun = 2;

// How many sums from `value` on certainly lie an increment apart; perStep is 1 / |step|.
std::size_t steadyRun(double value, double step, double perStep, double increment) {
  const double magnitude = fabs(value);
  const double power = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) &
                                             0x7FF0'0000'0000'0000);  // at most the magnitude
  if (!(power >= 0x1p-900 && magnitude < 0x1p900)) return 0;
  // A step halfway between two multiples would be rounded to even, to one side and the other.
  if (!(fabs(step - increment) < power * 0x1p-53)) return 0;
  if (increment == 0.0) return kLongRun;
  const bool outward = (increment < 0.0) == (value < 0.0);
  const double room = outward ? 2.0 * power - magnitude : magnitude - power;
  // A step of 2^-13 of the power or more is within 2^-40 of the increment.
  const double most = fabs(step) >= power * 0x1p-13
                          ? room * perStep
                          : std::min(room / fabs(increment), static_cast<double>(kLongRun));
  return static_cast<std::size_t>(static_cast<std::int64_t>(std::max(most - 1.0, 0.0)));
}

FATHOM_MULTIVERSION void fillSteadyRun(double value, double increment, std::int32_t n, double* y) {
  for (std::int32_t i = 0; i < n; ++i) y[i] = value + i * increment;
}

FATHOM_MULTIVERSION void doubleRuns(std::size_t most, double* y) {
  for (std::size_t count = most / 2; count > 1; count /= 2) {
    FATHOM_INDEPENDENT
    for (std::size_t i = 0; i < count; ++i) y[count + i] = 2.0 * y[2 * count + i];
  }
}

}  // namespace

double runningSum(double value, double step, std::size_t n, double* y) {
  const double perStep = 1.0 / fabs(step);
  for (std::size_t i = 0; i < n;) {
    std::size_t single = kShortRun;  // that follow one by one
    if (n - i >= kShortRun) {
      const double increment = (value + step) - value;
      const std::size_t run = std::min(steadyRun(value, step, perStep, increment), n - i);
      if (run >= kShortRun) {
        // Whole vectors; what is too much of them is written again.
        const std::size_t count = std::min((run + 7) / 8 * 8, n - i);
        fillSteadyRun(value, increment, static_cast<std::int32_t>(count), y + i);
        i += run;
        value = y[i - 1] + step;
        single = kBeyondRun;
      } else if (run > 0 && fabs(value + step) > fabs(value) &&
                 2.0 * fabs(value) >= fabs(step) * kShortRun) {
        single = run + kBeyondRun;  // the next binade has twice as many
      }
    }
    for (const std::size_t end = std::min(i + single, n); i < end; ++i) {
      y[i] = value;
      value += step;
    }
  }
  return value;
}

void doubleSums(std::size_t most, double* y) {
  doubleRuns(most, y);
}

}  // namespace fathom
