// Products with constants that are held to 64 bits of mantissa.
//
// A product runs left to right. From the factor where the constant enters, each step is rounded to
// 64 bits of mantissa (nearest, ties to even), and the finished product once more to double:
//
//   const double k = (kOneSixth * dt).toDouble();                    // (1/6) x dt
//   const double p = (x * h * kOneSixth).toDouble();                 // double x h, then extended
//   const double q = (length * kOne360th * phase).toDouble();        // extended throughout
//
// Where long double has 64 bits (x87), it does the work; elsewhere integers do, with the same bits.
#ifndef FATHOM_FRAME_EXTENDED_HPP
#define FATHOM_FRAME_EXTENDED_HPP

#include <bit>
#include <cstdint>
#include <limits>

namespace fathom {

// mantissa x 2^exponent, with the mantissa's top bit set.
struct ExtendedConstant {
  std::uint64_t mantissa;
  int exponent;
};

// 1 / x to 64 bits, for x > 0 that is no power of two.
constexpr ExtendedConstant extendedReciprocal(double x) {
  // x = n 2^exponent; long division of 2^shift by n, until the quotient has 64 bits.
  const auto bits = std::bit_cast<std::uint64_t>(x);
  const std::uint64_t n = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
  const int exponent = static_cast<int>(bits >> 52) - 1075;
  std::uint64_t quotient = 0;
  std::uint64_t remainder = 1;
  int shift = 0;
  while ((quotient >> 63) == 0) {
    remainder *= 2;
    quotient *= 2;
    if (remainder >= n) {
      remainder -= n;
      quotient += 1;
    }
    ++shift;
  }
  if (2 * remainder > n) ++quotient;
  return {quotient, -shift - exponent};
}

// The extended product in integer arithmetic: sign, 64-bit mantissa, unlimited exponent.
class SoftExtended {
 public:
  constexpr explicit SoftExtended(ExtendedConstant c)
      : kind_(Kind::kFinite), negative_(false), mantissa_(c.mantissa), exponent_(c.exponent) {}

  constexpr explicit SoftExtended(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const int field = static_cast<int>((bits >> 52) & 0x7FF);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    negative_ = (bits >> 63) != 0;
    if (field == 0x7FF) {
      kind_ = fraction == 0 ? Kind::kInfinite : Kind::kNan;
      mantissa_ = fraction;
    } else if (field == 0 && fraction == 0) {
      kind_ = Kind::kZero;
    } else {
      kind_ = Kind::kFinite;
      const std::uint64_t significand = field == 0 ? fraction : fraction | (std::uint64_t{1} << 52);
      const int shift = std::countl_zero(significand);
      mantissa_ = significand << shift;
      exponent_ = (field == 0 ? 1 : field) - 1075 - shift;
    }
  }

  friend constexpr SoftExtended operator*(const SoftExtended& a, const SoftExtended& b) {
    if (a.kind_ == Kind::kNan) return a;
    if (b.kind_ == Kind::kNan) return b;
    SoftExtended p(0.0);
    p.negative_ = a.negative_ != b.negative_;
    if (a.kind_ == Kind::kInfinite || b.kind_ == Kind::kInfinite) {
      const bool undefined = a.kind_ == Kind::kZero || b.kind_ == Kind::kZero;
      p.kind_ = undefined ? Kind::kNan : Kind::kInfinite;
      if (undefined) p.negative_ = true;  // the default NaN of x86 has its sign bit set
      return p;
    }
    if (a.kind_ == Kind::kZero || b.kind_ == Kind::kZero) return p;
    // Schoolbook product of 32-bit halves: high x 2^64 + low.
    const std::uint64_t a1 = a.mantissa_ >> 32, a0 = a.mantissa_ & 0xFFFFFFFFu;
    const std::uint64_t b1 = b.mantissa_ >> 32, b0 = b.mantissa_ & 0xFFFFFFFFu;
    const std::uint64_t middle = a1 * b0 + ((a0 * b0) >> 32);
    const std::uint64_t middle2 = a0 * b1 + (middle & 0xFFFFFFFFu);
    std::uint64_t high = a1 * b1 + (middle >> 32) + (middle2 >> 32);
    std::uint64_t low = a.mantissa_ * b.mantissa_;
    p.kind_ = Kind::kFinite;
    p.exponent_ = a.exponent_ + b.exponent_ + 64;
    if ((high >> 63) == 0) {
      high = (high << 1) | (low >> 63);
      low <<= 1;
      --p.exponent_;
    }
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
    if (low > kHalf || (low == kHalf && (high & 1) != 0)) ++high;
    if (high == 0) {  // rounded up to the next power of two
      high = kHalf;
      ++p.exponent_;
    }
    p.mantissa_ = high;
    return p;
  }

  constexpr double toDouble() const {
    const std::uint64_t sign = negative_ ? std::uint64_t{1} << 63 : 0;
    constexpr std::uint64_t kInfinity = std::uint64_t{0x7FF} << 52;
    constexpr std::uint64_t kQuiet = std::uint64_t{1} << 51;
    if (kind_ == Kind::kNan) return std::bit_cast<double>(sign | kInfinity | kQuiet | mantissa_);
    if (kind_ == Kind::kInfinite) return std::bit_cast<double>(sign | kInfinity);
    if (kind_ == Kind::kZero) return std::bit_cast<double>(sign);
    // The value is 1.f x 2^(field - 1023); below the normal range the mantissa loses more bits.
    int field = exponent_ + 63 + 1023;
    if (field >= 0x7FF) return std::bit_cast<double>(sign | kInfinity);
    const int drop = field > 0 ? 11 : 12 - field;
    if (drop > 64) return std::bit_cast<double>(sign);
    std::uint64_t kept = drop == 64 ? 0 : mantissa_ >> drop;
    const std::uint64_t half = std::uint64_t{1} << (drop - 1);
    const std::uint64_t lost = mantissa_ & (half + (half - 1));
    if (lost > half || (lost == half && (kept & 1) != 0)) ++kept;
    // A carry out of the fraction moves into the exponent field, as it should.
    if (field <= 0) return std::bit_cast<double>(sign | kept);
    return std::bit_cast<double>(
        sign | ((static_cast<std::uint64_t>(field) << 52) + (kept - (std::uint64_t{1} << 52))));
  }

 private:
  enum class Kind { kZero, kFinite, kInfinite, kNan };
  Kind kind_ = Kind::kZero;
  bool negative_ = false;
  std::uint64_t mantissa_ = 0;  // top bit set when finite; the payload when a NaN
  int exponent_ = 0;
};

// The extended product in x87 arithmetic, where long double is that.
class HardExtended {
 public:
  static constexpr bool kAvailable = std::numeric_limits<long double>::digits == 64;

  constexpr explicit HardExtended(ExtendedConstant c)
      : value_(static_cast<long double>(c.mantissa)) {
    for (int e = c.exponent; e < 0; ++e) value_ *= 0.5L;
    for (int e = c.exponent; e > 0; --e) value_ *= 2.0L;
  }
  constexpr explicit HardExtended(double x) : value_(x) {}

  friend constexpr HardExtended operator*(const HardExtended& a, const HardExtended& b) {
    HardExtended p(0.0);
    p.value_ = a.value_ * b.value_;
    return p;
  }
  constexpr double toDouble() const { return static_cast<double>(value_); }

 private:
  long double value_;
};

template <bool hard>
struct ExtendedOf {
  using Type = HardExtended;
};
template <>
struct ExtendedOf<false> {
  using Type = SoftExtended;
};
using Extended = ExtendedOf<HardExtended::kAvailable>::Type;

template <typename E>
requires requires(const E& e) {
  e.toDouble();
}
constexpr E operator*(const E& a, double b) {
  return a * E(b);
}
template <typename E>
requires requires(const E& e) {
  e.toDouble();
}
constexpr E operator*(double a, const E& b) {
  return E(a) * b;
}

inline constexpr Extended kOneThird{extendedReciprocal(3)};
inline constexpr Extended kOneSixth{extendedReciprocal(6)};
inline constexpr Extended kOne45th{extendedReciprocal(45)};
inline constexpr Extended kOne360th{extendedReciprocal(360)};

}  // namespace fathom

#endif
