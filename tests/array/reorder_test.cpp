#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kInf;
using test::kNan;
using test::SameBits;
using Values = std::vector<double>;

TEST(Reorder, CopyReverseAndShiftSeparateAndInPlace) {
  for (int32_t n = 1; n <= 300; n += n < 40 ? 1 : 37) {
    const auto count = static_cast<std::size_t>(n);
    const Values x = test::uniform(count, 8);
    const auto expectBoth = [&](auto routine, const Values& expected) {
      Guarded y(count), same(x);
      EXPECT_EQ(routine(x.data(), y), FATHOM_OK);
      EXPECT_EQ(routine(same.data(), same), FATHOM_OK);
      ASSERT_TRUE(SameBits(y.values(), expected)) << n;
      ASSERT_TRUE(SameBits(same.values(), expected)) << n;
      EXPECT_TRUE(y.intact() && same.intact());
    };
    expectBoth([n](const double* in, double* out) { return Copy1D(in, n, out); }, x);
    expectBoth([n](const double* in, double* out) { return Reverse(in, n, out); },
               Values(x.rbegin(), x.rend()));
    for (int32_t shift = 1 - n; shift < n; shift += n < 10 ? 1 : n / 5) {
      Values expected(count, 0.0);
      for (int32_t i = std::max(0, shift); i < std::min(n, n + shift); ++i) {
        expected[static_cast<std::size_t>(i)] = x[static_cast<std::size_t>(i - shift)];
      }
      expectBoth([=](const double* in, double* out) { return Shift(in, n, shift, out); }, expected);
    }
  }
}

TEST(Reorder, ShiftAndSubsetCheckTheirRanges) {
  constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();
  constexpr int32_t kSmallest = std::numeric_limits<int32_t>::min();
  const double x[] = {1, 2, 3, 4};
  Guarded y(4);
  for (const int32_t shift : {4, -4, kLargest, kSmallest}) {
    EXPECT_EQ(Shift(x, 4, shift, y), FATHOM_ERR_SHIFT_RANGE);
  }
  EXPECT_EQ(Shift(x, 0, 4, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 0, 0, 1, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, -1, 9, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, 4, 0, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, 4, 1, y), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_EQ(Subset1D(x, 4, kLargest, kLargest, y), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_TRUE(y.untouched());
  EXPECT_EQ(Subset1D(x, 4, 3, 1, y), FATHOM_OK);
  EXPECT_EQ(y[0], 4.0);
  EXPECT_EQ(Subset1D(x, 4, 1, 3, y), FATHOM_OK);
  EXPECT_TRUE(SameBits(y.values(), {2, 3, 4, Guarded::kFill}));
}

void expectSorted(const Values& x, const char* what) {
  const auto n = static_cast<int32_t>(x.size());
  // The order promised: NaNs last both ways, -0.0 below +0.0.
  const auto before = [](double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return !std::isnan(a) && std::isnan(b);
    return a < b || (a == b && std::signbit(a) && !std::signbit(b));
  };
  for (const int32_t direction : {0, 1, -1}) {
    Values expected = x;
    std::sort(expected.begin(), expected.end(), [&](double a, double b) {
      return direction == 0 || std::isnan(a) || std::isnan(b) ? before(a, b) : before(b, a);
    });
    Guarded y(x.size()), same(x);
    EXPECT_EQ(Sort(x.data(), n, direction, y), FATHOM_OK);
    EXPECT_EQ(Sort(same, n, direction, same), FATHOM_OK);
    ASSERT_TRUE(SameBits(y.values(), expected)) << what << ' ' << n;
    ASSERT_TRUE(SameBits(same.values(), expected)) << what << ' ' << n;
    EXPECT_TRUE(y.intact() && same.intact());
  }
}

TEST(Reorder, SortsEveryKindOfInput) {
  for (std::size_t n = 1; n < 3000; n += n < 70 ? 1 : 311) {
    Values x = test::uniform(n, n);
    expectSorted(x, "uniform");
    Values ramp(n), pipe(n), coarse(n), half(n), spread(n);
    for (std::size_t i = 0; i < n; ++i) {
      ramp[i] = static_cast<double>(i) - 5.0;
      pipe[i] = static_cast<double>(std::min(i, n - i));
      coarse[i] = std::trunc(x[i] * 4);  // both zeros among them
      half[i] = std::max(x[i], 0.0);
      spread[i] = std::ldexp(x[i], static_cast<int>(i % 2000) - 1000);
    }
    expectSorted(ramp, "ascending");
    expectSorted(Values(ramp.rbegin(), ramp.rend()), "descending");
    expectSorted(pipe, "organ pipe");
    expectSorted(coarse, "few values");
    expectSorted(half, "half of them equal");
    expectSorted(spread, "all exponents");
    expectSorted(Values(n, -1.0), "all equal");
    expectSorted(Values(n, -kInf), "all the smallest");
    for (std::size_t i = 0; i < n; i += 3) x[i] = i % 2 == 0 ? kNan : -kNan;
    if (n > 4) {
      x[1] = kInf;
      x[4] = -kInf;
    }
    expectSorted(x, "with NaNs of both signs");
  }
}

// Payloads and signs of NaNs travel through the sort.
TEST(Reorder, SortKeepsTheBitsOfNans) {
  const auto payload = std::bit_cast<double>(std::uint64_t{0xFFF8000000001234});
  const double x[] = {payload, 1.0};
  double y[2];
  Sort(x, 2, 0, y);
  EXPECT_EQ(y[0], 1.0);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(y[1]), 0xFFF8000000001234u);
}

}  // namespace
}  // namespace fathom
