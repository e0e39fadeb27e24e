#include "elementary/wide.hpp"

#include <mpfr.h>

#include "elementary/reference.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

constexpr mpfr_prec_t kExact = 2000;

// Other tests narrow it to that of doubles.
void widestRange() {
  mpfr_set_emin(mpfr_get_emin_min());
  mpfr_set_emax(mpfr_get_emax_max());
}

class Number {
 public:
  Number() { mpfr_init2(value, kExact); }
  ~Number() { mpfr_clear(value); }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;
  template <int n>
  explicit Number(const Wide<n>& w) : Number() {
    mpfr_set_zero(value, 1);
    for (int i = n - 1; i >= 0; --i) {
      Number limb;
      mpfr_set_uj_2exp(limb.value, w.fraction.limb[i], w.exponent + 64 * (i - n), MPFR_RNDN);
      mpfr_add(value, value, limb.value, MPFR_RNDN);
    }
    mpfr_setsign(value, value, w.negative, MPFR_RNDN);
  }
  mpfr_t value;
};

// Limbs of chance, of zeros and of ones, and exponents near enough to meet.
template <int n>
Wide<n> draw(Random& random) {
  Fixed<n> fraction{};
  for (std::uint64_t& limb : fraction.limb) {
    const std::uint64_t choices[] = {random.bits(), random.bits(), 0, ~std::uint64_t{0}};
    limb = choices[random.integer(0, 3)];
  }
  if (random.integer(0, 3) == 0) fraction = fraction >> random.integer(1, 64 * n - 1);
  return Wide<n>(fraction, random.integer(-70 * n, 70 * n) / (random.coin() ? 1 : 60),
                 random.coin());
}

// |actual - expected| < 2^bits |scale|
template <int n>
::testing::AssertionResult Within(const Wide<n>& actual, const Number& expected, long bits,
                                  const Number& scale) {
  Number error, bound;
  mpfr_sub(error.value, Number(actual).value, expected.value, MPFR_RNDN);
  mpfr_mul_2si(bound.value, scale.value, bits, MPFR_RNDN);
  if (mpfr_cmpabs(error.value, bound.value) <= 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "error 2^" << mpfr_get_exp(error.value) << ", result 2^"
                                       << mpfr_get_exp(expected.value);
}

template <int n>
void expectArithmetic() {
  widestRange();
  Random random(n);
  for (int i = 0; i < 20000; ++i) {
    const Wide<n> a = draw<n>(random);
    Wide<n> b = draw<n>(random);
    if (i % 4 == 0) {  // nearly cancels
      b = -a;
      b.fraction.limb[random.integer(0, n - 1)] ^= random.bits() >> 1;
      b.exponent += random.integer(-1, 1);
      if (b.isZero()) b = a;
    }
    const Number x(a), y(b);
    Number expected;
    mpfr_add(expected.value, x.value, y.value, MPFR_RNDN);
    ASSERT_TRUE(Within(a + b, expected, 1 - 64 * n, expected));
    mpfr_sub(expected.value, x.value, y.value, MPFR_RNDN);
    ASSERT_TRUE(Within(a - b, expected, 1 - 64 * n, expected));
    ASSERT_EQ(lessInMagnitude(a, b), mpfr_cmpabs(x.value, y.value) < 0);
    mpfr_mul(expected.value, x.value, y.value, MPFR_RNDN);
    ASSERT_TRUE(Within(a * b, expected, 3 - 64 * n, expected));
    if (!b.isZero()) {
      mpfr_div(expected.value, x.value, y.value, MPFR_RNDN);
      ASSERT_TRUE(Within(a / b, expected, 5 - 64 * n, expected));
    }
    const Wide<n> magnitude = a.negative ? -a : a;
    mpfr_sqrt(expected.value, Number(magnitude).value, MPFR_RNDN);
    ASSERT_TRUE(Within(squareRoot(magnitude), expected, 5 - 64 * n, expected));
  }
}

TEST(Wide, ArithmeticIsWithinItsBounds) {
  expectArithmetic<2>();
  expectArithmetic<4>();
  expectArithmetic<5>();
  expectArithmetic<6>();
}

// By MPFR: to nearest, ties to even, rounded once; at both ends of the range of doubles, too.
TEST(Wide, RoundsToTheNearestDouble) {
  widestRange();
  Random random(1);
  for (int i = 0; i < 200000; ++i) {
    Fixed<3> fraction{{0, 0, random.bits() | std::uint64_t{1} << 63}};
    // Cut to some bits, so that ties come about, and moved a little off them.
    fraction.limb[2] &= ~std::uint64_t{0} << random.integer(0, 63);
    if (random.coin())
      fraction.limb[random.integer(0, 2)] |= random.bits() >> random.integer(0, 63);
    if (random.integer(0, 3) == 0) fraction = fraction - Fixed<3>{{1, 0, 0}};
    constexpr int kRegions[] = {-1074, -1022, 0, 1024};
    const Wide<3> w(fraction, kRegions[random.integer(0, 3)] + random.integer(-60, 60),
                    random.coin());
    ASSERT_TRUE(SameBits(w.toDouble(), mpfr_get_d(Number(w).value, MPFR_RNDN)));
    const double x = w.toDouble();
    if (!std::isfinite(x)) continue;
    ASSERT_TRUE(SameBits(Wide<2>(x).toDouble(), x));
  }
}

TEST(Wide, ProductsOfLimbsNeedNoWiderIntegers) {
  Random random(1);
  for (int i = 0; i < 100000; ++i) {
    std::uint64_t v[4];
    for (std::uint64_t& limb : v)
      limb = random.coin() ? random.bits() : ~std::uint64_t{0} << (i % 64);
    const LimbPair product = multiplyAdd(v[0], v[1], v[2], v[3]);
    const LimbPair portable = portableMultiplyAdd(v[0], v[1], v[2], v[3]);
    ASSERT_EQ(product.high, portable.high);
    ASSERT_EQ(product.low, portable.low);
  }
}

}  // namespace
}  // namespace fathom::test
