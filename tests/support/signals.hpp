// Reproducible data for tests: uniform values from a fixed linear congruential generator.
#ifndef FATHOM_TESTS_SUPPORT_SIGNALS_HPP
#define FATHOM_TESTS_SUPPORT_SIGNALS_HPP

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace fathom::test {

inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kDenormal = std::numeric_limits<double>::denorm_min();

// n values in [-1, 1), the same on every machine.
inline std::vector<double> uniform(std::size_t n, std::uint64_t seed = 1) {
  std::vector<double> x(n);
  for (double& v : x) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    v = static_cast<double>(static_cast<std::int64_t>(seed) >> 11) / 4503599627370496.0;
  }
  return x;
}

}  // namespace fathom::test

#endif
