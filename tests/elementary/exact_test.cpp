#include <cfloat>

#include "frame/elementary.hpp"
#include "support/signals.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Doubles of every size: evenly spread bit patterns, and steps around zeros, halves and the largest
// numbers with a fraction.
Values everySize() {
  Values x = {0.0, -0.0, kInf, -kInf, kNan, kDenormal, -kDenormal, DBL_MIN, -DBL_MIN, DBL_MAX, 1.5};
  for (std::uint64_t k = 0; k < 20000; ++k) {
    x.push_back(std::bit_cast<double>(k * 0x9E37'79B9'7F4A'7C15));
  }
  for (double scale : {4.0, 1e3, 0x1p51, 0x1p52, 0x1p53, 0x1p54}) {
    for (double v : uniform(200)) {
      x.insert(x.end(), {v * scale, std::rint(v * scale), std::rint(v * scale) + 0.5,
                         std::nextafter(std::rint(v * scale), 0.0)});
    }
  }
  return x;
}

TEST(Exact, FloorAndCeiling) {
  for (double x : everySize()) {
    ASSERT_TRUE(SameBits(fathom::floor(x), std::floor(x))) << x;
    ASSERT_TRUE(SameBits(fathom::ceil(x), std::ceil(x))) << x;
  }
}

TEST(Exact, Remainder) {
  const Values values = everySize();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double x = values[i];
    const double other = values[(i * 7919) % values.size()];
    const double divisor = values[i % 11];
    for (double y : {other, divisor, x / 3.0, x / 1e5, x, x * 0x1p-30, kPi, 1.0}) {
      ASSERT_TRUE(SameBits(fathom::fmod(x, y), std::fmod(x, y))) << x << ", " << y;
    }
  }
}

}  // namespace
}  // namespace fathom::test
