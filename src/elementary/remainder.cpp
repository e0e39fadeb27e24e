// The remainder of a division, in integers.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "frame/elementary.hpp"

namespace fathom {

double fmod(double x, double y) {
  constexpr std::uint64_t kLeading = std::uint64_t{1} << 52;
  const double magnitude = fathom::fabs(x);
  const double modulus = fathom::fabs(y);
  // NaN, an infinite x and a y of 0 fail one of the two.
  if (!(magnitude <= std::numeric_limits<double>::max() && modulus > 0.0)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (magnitude < modulus) return x;
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const auto modulusBits = std::bit_cast<std::uint64_t>(modulus);
  const int field = static_cast<int>(bits >> 52);
  const int modulusField = static_cast<int>(modulusBits >> 52);
  const std::uint64_t m = field == 0 ? bits : (bits & (kLeading - 1)) | kLeading;
  const std::uint64_t n =
      modulusField == 0 ? modulusBits : (modulusBits & (kLeading - 1)) | kLeading;
  // Numbers below the normal range have the exponent of its lower end. At most 187 rounds.
  int exponent = std::max(modulusField, 1);
  int distance = std::max(field, 1) - exponent;
  std::uint64_t remainder = m;
  do {
    const int step = std::min(distance, 11);
    remainder = (remainder << step) % n;
    distance -= step;
  } while (distance > 0);
  if (remainder == 0) return fathom::copysign(0.0, x);
  const int shift = std::min(std::countl_zero(remainder) - 11, exponent - 1);
  exponent -= shift;
  // The leading bit, where there is one, counts for one in the exponent.
  const std::uint64_t result =
      (static_cast<std::uint64_t>(exponent - 1) << 52) + (remainder << shift);
  return fathom::copysign(std::bit_cast<double>(result), x);
}

}  // namespace fathom
