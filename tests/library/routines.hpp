// The table of routines that the whole-library checks walk. A new routine joins every check by one
// line in routines.cpp.
#ifndef FATHOM_TESTS_LIBRARY_ROUTINES_HPP
#define FATHOM_TESTS_LIBRARY_ROUTINES_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "fathom.h"

namespace fathom::test {

// What an argument is to its routine, and so what the checks may do to it.
enum class Role {
  kInput,   // array that is read
  kInOut,   // array, or variable, that is read and written
  kLevels,  // array of integers that is read: 0 to limit - 1, each `value` times, over and over
  kText,    // buffer of text that is read and written
  kReset,   // variable that is written, and set before any check
  kOutput,  // array, or variable, that is written
  kCount,   // element count: takes the size of the run, or a fixed one; checked from below
  kChoice,  // integer that may take any value at all
  kFixed,   // integer that the caller must keep in step with its arrays
  kReal     // real scalar
};

struct Argument {
  Role role;
  double value = 0.0;                               // of a scalar; of a count, 0 for the run's size
  std::int32_t limit = INT32_MAX;                   // of a count: the largest that the run gives it
  AnalysisStatus negative = FATHOM_ERR_NO_SAMPLES;  // status of a negative count
  AnalysisStatus zero = FATHOM_ERR_NO_SAMPLES;      // status of a zero count
};

// What the nonlinear fits are given to fit, of three coefficients.
double resonance(double x, const double* c, std::int32_t k);

// An argument's storage for one call: arrays between guard cells, scalars by value.
struct Slot {
  static constexpr std::size_t kGuard = 4;
  static constexpr double kFill = -7.0e77;
  static constexpr std::int32_t kIntegerFill = -1234567;

  std::vector<double> reals;
  std::vector<std::int32_t> integers;
  double real = 0.0;
  std::int32_t integer = 0;

  template <typename P>
  P as() {
    if constexpr (std::is_same_v<P, double>) {
      return real;
    } else if constexpr (std::is_same_v<P, std::int32_t>) {
      return integer;
    } else if constexpr (std::is_same_v<P, std::int32_t*> ||
                         std::is_same_v<P, const std::int32_t*>) {
      return integers.data() + kGuard;
    } else if constexpr (std::is_same_v<P, char*>) {
      return reinterpret_cast<char*>(integers.data() + kGuard);
    } else if constexpr (std::is_same_v<P, WindowProperties*>) {
      return reinterpret_cast<WindowProperties*>(reals.data() + kGuard);
    } else if constexpr (std::is_same_v<P, ComplexNum*> || std::is_same_v<P, const ComplexNum*>) {
      return reinterpret_cast<P>(reals.data() + kGuard);
    } else if constexpr (std::is_same_v<P, FathomModel>) {
      return resonance;
    } else {
      static_assert(std::is_same_v<P, double*> || std::is_same_v<P, const double*>);
      return reals.data() + kGuard;
    }
  }
  friend bool operator==(const Slot&, const Slot&) = default;
};

using Slots = std::vector<Slot>;

struct Routine {
  std::string name;
  std::vector<Argument> arguments;
  std::function<AnalysisStatus(Slots&)> call;

  // Statuses when the first, second, ... request for memory fails; -20001 past the end.
  std::vector<AnalysisStatus> failedRequests = {};
  // What it may have written when a request fails.
  bool writesBeforeFailure = false;
};

const std::vector<Routine>& routines();

// Storage for a call of `routine` at `size`, with data drawn from `seed`.
Slots prepare(const Routine& routine, std::int32_t size, std::uint64_t seed);

// Nothing was written outside the arrays.
bool guardsIntact(const Slots& slots);

// A routine's results over the fixed set of inputs, condensed to one number.
std::uint64_t digest(const Routine& routine);

}  // namespace fathom::test

#endif
