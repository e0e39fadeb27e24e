#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kNan;
using test::SameBits;
using Values = std::vector<double>;

struct Scaled {
  Values y;
  double first = 0.0, second = 0.0;  // offset and scale, or mean and deviation
};

using ArrayRoutine = AnalysisStatus (*)(const double*, int32_t, double*, double*, double*);
using MatrixRoutine = AnalysisStatus (*)(const double*, int32_t, int32_t, double*, double*,
                                         double*);

void expectScaled(ArrayRoutine array, MatrixRoutine matrix, const Values& x,
                  const Scaled& expected) {
  const auto n = static_cast<int32_t>(x.size());
  for (const bool inPlace : {false, true}) {
    for (const bool asMatrix : {false, true}) {
      Guarded y = inPlace ? Guarded(x) : Guarded(x.size());
      const double* in = inPlace ? y.data() : x.data();
      double first = kNan, second = kNan;
      ASSERT_EQ(asMatrix
                    ? matrix(in, n % 2 == 0 ? 2 : 1, n % 2 == 0 ? n / 2 : n, y, &first, &second)
                    : array(in, n, y, &first, &second),
                FATHOM_OK);
      ASSERT_TRUE(SameBits(first, expected.first)) << n;
      ASSERT_TRUE(SameBits(second, expected.second)) << n;
      ASSERT_TRUE(SameBits(y.values(), expected.y)) << n;
      EXPECT_TRUE(y.intact());
    }
  }
}

TEST(Scale, BetweenTheExtremesMultipliesByTheReciprocal) {
  for (std::size_t n = 1; n < 300; n += n < 70 ? 1 : 31) {
    const Values x = test::uniform(n, n);
    double maximum = x[0], minimum = x[0];
    for (const double v : x) {
      maximum = std::max(maximum, v);
      minimum = std::min(minimum, v);
    }
    Scaled expected;
    expected.second = (maximum - minimum) * 0.5;
    expected.first = minimum + expected.second;
    const double reciprocal = 1.0 / expected.second;
    for (const double v : x) expected.y.push_back((v - expected.first) * reciprocal);
    expectScaled(Scale1D, Scale2D, x, expected);
  }
  expectScaled(Scale1D, Scale2D, {2, 4}, {{-1, 1}, 3, 1});
  expectScaled(Scale1D, Scale2D, {7, 7, 7}, {{kNan, kNan, kNan}, 7, 0});
}

TEST(Scale, NormalMultipliesByTheReciprocalOfTheDeviation) {
  for (std::size_t n = 2; n < 300; n += n < 70 ? 1 : 31) {
    const Values x = test::uniform(n, n);
    Scaled expected;
    StdDev(x.data(), static_cast<int32_t>(n), &expected.first, &expected.second);
    const double reciprocal = 1.0 / expected.second;
    for (const double v : x) expected.y.push_back((v - expected.first) * reciprocal);
    expectScaled(Normal1D, Normal2D, x, expected);
  }
  expectScaled(Normal1D, Normal2D, {1, 3}, {{-1, 1}, 2, 1});
  expectScaled(Normal1D, Normal2D, {5, 5}, {{kNan, kNan}, 5, 0});
}

TEST(Scale, ByTheLargestMagnitudePassesOverNan) {
  for (std::size_t n = 1; n < 300; n += n < 70 ? 1 : 31) {
    Values x = test::uniform(n, n);
    if (n % 4 == 0) x[n / 2] = kNan;
    double largest = 0.0;
    for (const double v : x) {
      if (std::fabs(v) > largest) largest = std::fabs(v);
    }
    const double reciprocal = 1.0 / largest;
    Values expected;
    for (const double v : x) expected.push_back(v * reciprocal);
    const auto count = static_cast<int32_t>(n);
    Guarded y(n), same(x);
    double result = kNan;
    EXPECT_EQ(QScale1D(x.data(), count, y, &result), FATHOM_OK);
    ASSERT_TRUE(SameBits(result, largest)) << n;
    result = kNan;
    EXPECT_EQ(QScale2D(same, 1, count, same, &result), FATHOM_OK);
    ASSERT_TRUE(SameBits(result, largest)) << n;
    ASSERT_TRUE(SameBits(y.values(), expected)) << n;
    ASSERT_TRUE(SameBits(same.values(), expected)) << n;
    EXPECT_TRUE(y.intact());
  }
  const double zero[] = {0.0}, tiny[] = {test::kDenormal};
  double y = 0.0, largest = 1.0;
  QScale1D(zero, 1, &y, &largest);
  EXPECT_TRUE(std::isnan(y) && largest == 0.0);
  QScale1D(tiny, 1, &y, &largest);
  EXPECT_TRUE(std::isinf(y) && largest == test::kDenormal);
}

}  // namespace
}  // namespace fathom
