#include <bit>

#include "support/testing.hpp"

namespace fathom::test {
namespace {

TEST(Reorder, CopyReverseAndShiftSeparateAndInPlace) {
  for (int32_t n = 1; n <= 300; n += n < 40 ? 1 : 37) {
    const Values x = uniform(static_cast<std::size_t>(n), 8);
    expectBits(x, x, [n](auto in, auto out) { return Copy1D(in, n, out); });
    expectBits(x, Values(x.rbegin(), x.rend()),
               [n](auto in, auto out) { return Reverse(in, n, out); });
    for (int32_t shift = 1 - n; shift < n; shift += n < 10 ? 1 : n / 5) {
      Values expected(x.size(), 0.0);
      for (int32_t i = std::max(0, shift); i < std::min(n, n + shift); ++i) {
        expected[static_cast<std::size_t>(i)] = x[static_cast<std::size_t>(i - shift)];
      }
      expectBits(x, expected, [=](auto in, auto out) { return Shift(in, n, shift, out); });
    }
  }
}

TEST(Reorder, ShiftAndSubsetCheckTheirRanges) {
  const double x[] = {1, 2, 3, 4};
  Guarded y(4);
  for (const int32_t shift : {4, -4, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(Shift(x, 4, shift, y), FATHOM_ERR_SHIFT_RANGE);
  }
  EXPECT_EQ(Shift(x, 0, 4, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, -1, 9, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, 4, 0, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Subset1D(x, 4, 4, 1, y), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_EQ(Subset1D(x, 4, INT32_MAX, INT32_MAX, y), FATHOM_ERR_INDEX_LENGTH);
  EXPECT_TRUE(y.untouched());
  EXPECT_EQ(Subset1D(x, 4, 1, 3, y), FATHOM_OK);
  EXPECT_TRUE(SameBits(y.values(), {2, 3, 4, Guarded::kFill}));
}

void expectSorted(const Values& x) {
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
    expectBits(x, expected, [&](auto in, auto out) { return Sort(in, count(x), direction, out); });
  }
}

TEST(Reorder, SortsEveryKindOfInput) {
  for (std::size_t n = 1; n < 3000; n += n < 70 ? 1 : 311) {
    Values x = uniform(n, n), ramp(n), pipe(n), coarse(n), half(n), spread(n);
    for (std::size_t i = 0; i < n; ++i) {
      ramp[i] = static_cast<double>(i) - 5.0;
      pipe[i] = static_cast<double>(std::min(i, n - i));
      coarse[i] = std::trunc(x[i] * 4);  // both zeros among them
      half[i] = std::max(x[i], 0.0);
      spread[i] = std::ldexp(x[i], static_cast<int>(i % 2000) - 1000);
    }
    Values broken = x;
    for (std::size_t i = 0; i < n; i += 3) broken[i] = i % 2 == 0 ? kNan : -kNan;
    if (n > 4) broken[1] = kInf, broken[4] = -kInf;
    for (const Values& v : {x, ramp, Values(ramp.rbegin(), ramp.rend()), pipe, coarse, half, spread,
                            Values(n, -1.0), Values(n, -kInf), broken}) {
      expectSorted(v);
    }
  }
}

TEST(Reorder, SortKeepsTheBitsOfNans) {
  const auto payload = std::bit_cast<double>(std::uint64_t{0xFFF8000000001234});
  double x[] = {payload, 1.0};
  Sort(x, 2, 0, x);
  EXPECT_EQ(x[0], 1.0);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(x[1]), 0xFFF8000000001234u);
}

}  // namespace
}  // namespace fathom::test
