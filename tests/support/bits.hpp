// Comparison of doubles bit for bit, with a report that shows both values and both patterns.
#ifndef FATHOM_TESTS_SUPPORT_BITS_HPP
#define FATHOM_TESTS_SUPPORT_BITS_HPP

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

namespace fathom::test {

// Equal bits, or both NaN: the payload of a NaN is no result.
inline bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

inline ::testing::AssertionResult SameBits(double actual, double expected) {
  if (sameBits(actual, expected)) return ::testing::AssertionSuccess();
  char text[128];
  std::snprintf(text, sizeof text, "%.17g (%a), expected %.17g (%a)", actual, actual, expected,
                expected);
  return ::testing::AssertionFailure() << text;
}

inline ::testing::AssertionResult SameBits(const std::vector<double>& actual,
                                           const std::vector<double>& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " elements, expected " << expected.size();
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (!sameBits(actual[i], expected[i])) {
      return ::testing::AssertionFailure()
             << "element " << i << ": " << SameBits(actual[i], expected[i]).message();
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace fathom::test

#endif
