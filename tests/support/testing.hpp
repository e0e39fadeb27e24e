// What the tests of the routines share: data, sizes, and the comparison out of place and in place.
#ifndef FATHOM_TESTS_SUPPORT_TESTING_HPP
#define FATHOM_TESTS_SUPPORT_TESTING_HPP

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom::test {

using Values = std::vector<double>;

inline int32_t count(const Values& x) {
  return static_cast<int32_t>(x.size());
}

// 1 to 70, for every remainder of tiles and registers, and the larger ones given.
inline std::vector<std::size_t> sizes(std::vector<std::size_t> larger) {
  for (std::size_t n = 1; n <= 70; ++n) larger.push_back(n);
  return larger;
}

// Uniform values with the awkward ones strewn in.
inline Values awkward(std::size_t n, std::uint64_t seed) {
  const Values special = {0.0, -0.0, kInf, -kInf, kNan, kDenormal, 1.7e308, -0.5, 0.5, 1e200};
  Values x = uniform(n, seed);
  for (std::size_t i = seed % 5; i < n; i += 5) x[i] = special[(i / 5 + seed) % special.size()];
  return x;
}

// routine(x, y) gives the expected bits separately and with y = x, and writes nothing else.
template <typename Routine>
void expectBits(const Values& x, const Values& expected, Routine routine) {
  Guarded y(expected.size()), same(x);
  ASSERT_EQ(routine(x.data(), y.data()), FATHOM_OK);
  ASSERT_TRUE(SameBits(y.values(), expected) && y.intact()) << x.size();
  ASSERT_EQ(routine(same.data(), same.data()), FATHOM_OK);
  Values results = same.values();
  results.resize(expected.size());
  ASSERT_TRUE(SameBits(results, expected) && same.intact()) << x.size() << " in place";
}

// Correct digits of the worst value; absolute where the certified value is 0.
inline double digits(const double* actual, const Values& certified) {
  double worst = 1e-16;
  for (std::size_t j = 0; j < certified.size(); ++j) {
    const double unit = certified[j] == 0.0 ? 1.0 : std::fabs(certified[j]);
    const double error = std::fabs(actual[j] - certified[j]) / unit;
    if (!std::isnan(worst) && !(error <= worst)) worst = error;
  }
  return -std::log10(worst);
}

// What the routine returned and wrote, and what a plain version did.
inline void expectSame(AnalysisStatus status, const Guarded& actual, AnalysisStatus plainStatus,
                       const Guarded& plain) {
  ASSERT_EQ(status, plainStatus) << plain.size();
  ASSERT_TRUE(SameBits(actual.values(), plain.values()) && actual.intact()) << plain.size();
}

}  // namespace fathom::test

#endif
