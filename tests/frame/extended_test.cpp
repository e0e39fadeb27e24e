#include "frame/extended.hpp"

#include <bit>

#include "support/testing.hpp"

namespace fathom::test {
namespace {

Values awkwardDoubles() {
  Values values = awkward(50, 1);
  for (const double v : {0x1p-1022, 0x1.fffffffffffffp-1022, 0x1.fffffffffffffp1023, 0x1.8p-1074,
                         3 * kDenormal, 1.0, -3.0, 6.0, 360.0}) {
    values.push_back(v);
  }
  std::uint64_t bits = 88172645463325252u;  // xorshift: every exponent turns up
  for (int i = 0; i < 2000; ++i) {
    bits ^= bits << 13;
    bits ^= bits >> 7;
    bits ^= bits << 17;
    values.push_back(std::bit_cast<double>(bits));
  }
  return values;
}

TEST(Extended, ReciprocalsAreRoundedToSixtyFourBits) {
  EXPECT_EQ(extendedReciprocal(6).mantissa, 0xAAAAAAAAAAAAAAABu);
  EXPECT_EQ(extendedReciprocal(6).exponent, -66);
  EXPECT_EQ(extendedReciprocal(360).mantissa, 0xB60B60B60B60B60Bu);
  EXPECT_EQ(extendedReciprocal(360).exponent, -72);
  EXPECT_EQ(extendedReciprocal(0.375).mantissa, 0xAAAAAAAAAAAAAAABu);
  EXPECT_EQ(extendedReciprocal(0.375).exponent, -62);
}

// One sixth of a double: the 64-bit constant makes it right where the double 1/6 does not.
TEST(Extended, KeepsTheBitsThatADoubleLoses) {
  EXPECT_TRUE(SameBits((kOneSixth * 6.0).toDouble(), 1.0));
  int differ = 0;
  for (double x : uniform(1000)) {
    const double extended = (kOneSixth * x).toDouble();
    EXPECT_TRUE(SameBits(extended, x / 6.0));
    differ += sameBits(extended, x * (1.0 / 6.0)) ? 0 : 1;
  }
  EXPECT_GT(differ, 100);
}

TEST(Extended, IntegersGiveTheBitsOfTheHardware) {
  if (!HardExtended::kAvailable) GTEST_SKIP() << "long double has no 64-bit mantissa here";
  const Values values = awkwardDoubles();
  for (ExtendedConstant c :
       {extendedReciprocal(6), extendedReciprocal(360), extendedReciprocal(7)}) {
    const SoftExtended soft(c);
    const HardExtended hard(c);
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double x = values[i];
      const double y = values[(i * 7 + 3) % values.size()];
      ASSERT_TRUE(SameBits((soft * x).toDouble(), (hard * x).toDouble())) << x;
      ASSERT_TRUE(SameBits((x * soft * y).toDouble(), (x * hard * y).toDouble())) << x << ' ' << y;
      ASSERT_TRUE(SameBits(SoftExtended(x).toDouble(), x));
    }
  }
}

}  // namespace
}  // namespace fathom::test
