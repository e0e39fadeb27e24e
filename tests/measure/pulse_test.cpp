#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::kNan;
using test::SameBits;

struct Result {
  double amplitude, high, middle, low, top, base, overshoot, preshoot, slew;
  std::int32_t delay, width, rise, fall;
};

Result measure(const std::vector<double>& x) {
  Result r{};
  EXPECT_EQ(PulseParam(x.data(), static_cast<std::int32_t>(x.size()), &r.amplitude, &r.high,
                       &r.middle, &r.low, &r.top, &r.base, &r.overshoot, &r.preshoot, &r.delay,
                       &r.width, &r.rise, &r.fall, &r.slew),
            FATHOM_OK);
  return r;
}

TEST(Pulse, LevelsAndTimes) {
  const struct {
    std::vector<double> x;
    double base, top, slew;
    std::int32_t delay, width, rise, fall;
  } cases[] = {
      {{0, 0, 0, .05, .15, .25, .45, .65, .85, .95, 1, 1, 1, .95, .7, .45, .3, .05, 0},
       .02,
       .98,
       .768 / 6,
       7,
       8,
       6,
       4},
      {{0, 0, 0, 1, 1, 1}, .02, .98, .768, 3, 3, 1, 1},                // never falls
      {{1, 1, 1, 0, 0}, .02, .98, 1e30, 0, 3, 0, 1},                   // never rises
      {{0, 1, 0, 1}, .02, .98, .768, 1, 1, 1, 1},                      // the first of two
      {{0, .4, .4, 0, .6, .6, 1, 1}, .02, .98, .768 / 3, 4, 4, 3, 1},  // ties go to the ends
      {{0, .21, .21, .51, .51, .51, .51, .79, .79, 1}, .22, .78, .448 / 5, 3, 7, 5, 1},  // not the
                                                                                         // middle
      {{0, 0, kNan, 0, 1, 1}, .02, .98, .768, 2, 0, 1, 0},  // stops every search
      {{3, 3, 3}, 3, 3, 1e30, 0, 0, 0, 0},
      {{-2.5}, -2.5, -2.5, 1e30, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    const Result r = measure(c.x);
    const std::size_t i = static_cast<std::size_t>(&c - cases);
    EXPECT_NEAR(r.base, c.base, 1e-12) << i;
    EXPECT_NEAR(r.top, c.top, 1e-12) << i;
    EXPECT_NEAR(r.slew, c.slew, 1e-12) << i;
    EXPECT_EQ(r.delay, c.delay) << i;
    EXPECT_EQ(r.width, c.width) << i;
    EXPECT_EQ(r.rise, c.rise) << i;
    EXPECT_EQ(r.fall, c.fall) << i;
    EXPECT_TRUE(SameBits(r.amplitude, r.top - r.base)) << i;
    EXPECT_TRUE(
        SameBits({r.low, r.middle, r.high}, {.1 * r.amplitude, .5 * r.amplitude, .9 * r.amplitude}))
        << i;
  }
  EXPECT_TRUE(SameBits(measure({kNan, 0, 1}).top, kNan));
}

// Each sample in turn is the largest, then the smallest, with a NaN behind it.
TEST(Pulse, ShootsAreOfTheExtremes) {
  for (std::size_t n : {2u, 33u, 70u, 129u}) {
    for (std::size_t p = 0; p < n; ++p) {
      std::vector<double> x = test::uniform(n);
      if (p + 1 < n) x[p + 1] = kNan;
      x[p] = 5.0;
      const Result up = measure(x);
      EXPECT_TRUE(SameBits(up.overshoot, 5.0 - up.top)) << n << ' ' << p;
      x[p] = -5.0;
      const Result down = measure(x);
      EXPECT_TRUE(SameBits(down.preshoot, down.base + 5.0)) << n << ' ' << p;
    }
  }
}

}  // namespace
}  // namespace fathom
