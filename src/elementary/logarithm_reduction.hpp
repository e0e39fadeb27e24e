// The reduction that log, log10 and pow share.
//
// x = 2^e m with m in [11/16, 11/8). The leading 9 bits of the mantissa choose a cell, f is what
// they leave, below 2^-9 and of 43 bits, and r is 1/m to 10 bits: z = r m - 1 = r f + t, and
//   ln x = e ln 2 - ln r + ln(1 + z).
// Everything is exact but the rests of the two logarithms: r f has 53 bits; z is a multiple of
// 2^-62 and |z| <= 2^-9; e ln 2 - ln r is a multiple of 2^-42 below 2^10. In the two cells beside
// 1, r = 1: there ln x = ln(1 + z) with z = x - 1.
#ifndef FATHOM_ELEMENTARY_LOGARITHM_REDUCTION_HPP
#define FATHOM_ELEMENTARY_LOGARITHM_REDUCTION_HPP

#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/logarithm_table.hpp"
#include "elementary/table_rows.hpp"

namespace fathom {

// The bits of x with e + 1024 in place of the exponent, and the number of the cell below it.
FATHOM_INLINE std::uint64_t cellBits(double x) {
  return std::bit_cast<std::uint64_t>(x) + 0x001A'0000'0000'0000;
}
FATHOM_INLINE std::uint64_t cellOf(double x) {
  return (cellBits(x) >> 43) % kLogarithmCells;
}

// The rows of a block of arguments.
struct LogarithmRows {
  alignas(64) TableRow reduction[kElementaryBlock];
  alignas(64) TableRow logarithm[kElementaryBlock];

  FATHOM_INLINE LogarithmRow operator[](std::size_t i) const {
    return {reduction[i], logarithm[i]};
  }
};

// n is a multiple of 2.
FATHOM_INLINE void lookUpLogarithms(const double* x, std::size_t n, LogarithmRows& rows) {
  alignas(64) std::uint64_t cells[kElementaryBlock];
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) cells[i] = cellOf(x[i]);
  for (std::size_t i = 0; i < n; i += 2) {
    const LogarithmRow& row = kLogarithmTable[cells[i]];
    const LogarithmRow& next = kLogarithmTable[cells[i + 1]];
    rows.reduction[i] = row.reduction;
    rows.logarithm[i] = row.logarithm;
    rows.reduction[i + 1] = next.reduction;
    rows.logarithm[i + 1] = next.logarithm;
  }
}

// Not 0 unless x is above 0, normal and below 1.375 2^1023, where cellBits reach bit 63.
FATHOM_INLINE std::uint64_t outsideCells(double x) {
  constexpr std::uint64_t kLeastNormal = 0x0010'0000'0000'0000;
  const std::uint64_t room = std::bit_cast<std::uint64_t>(x) - kLeastNormal;
  return (room | cellBits(x)) & (std::uint64_t{1} << 63);
}

struct ReducedLogarithm {
  double z;
  double leading;  // of e ln 2 - ln r,
  double rest;     // which is off by less than 2^-80 |leading|
};

FATHOM_INLINE ReducedLogarithm reduceLogarithm(double x, const LogarithmRow& row) {
  const std::uint64_t cell = cellBits(x);
  constexpr double kTwo52 = 0x1p52;
  constexpr auto kOneBits = std::bit_cast<std::uint64_t>(1.0);
  const auto biased = std::bit_cast<double>((cell >> 52) | std::bit_cast<std::uint64_t>(kTwo52));
  const double e = biased - (kTwo52 + 1024.0);
  constexpr std::uint64_t kBelowCell = (std::uint64_t{1} << 43) - 1;
  const double f = std::bit_cast<double>((cell & kBelowCell) | kOneBits) - 1.0;
  return {rounded(row.reduction.first * f) + row.reduction.second,
          rounded(e * kLn2) + row.logarithm.first, rounded(e * kLn2Rest) + row.logarithm.second};
}

// ln x as high + low, off by less than 5 2^-53 |cube| + 2^-82 |high|, where cube is z^3 or nearly
// so: z^2 / 2 is taken exactly, but for roundings of 2^-25 of it; the term z^3 Q(z), Q near 1/3,
// carries five roundings and kFromCubeError; and the sums of `low` are below 0.35 |cube| + 2^-24
// z^2 + 2^-43 |high|.
static_assert(kFromCubeError <= 0x1.2p-52);

struct LogarithmSum {
  double high;
  double low;
  double cube;
};

FATHOM_INLINE LogarithmSum accurateLogarithm(const ReducedLogarithm& x) {
  const double z = x.z;
  const DoubleDouble parts = split(z);
  const double half = 0.5 * parts.high;
  const double squareHigh = rounded(half * parts.high);
  const double squareLow = rounded(0.5 * parts.low * (z + parts.high));
  const double s = x.leading + z;
  const double lost = (x.leading - s) + z;
  const double high = s - squareHigh;
  const double lost2 = (s - high) - squareHigh;
  const double square = rounded(z * z);
  const double cube = rounded(square * z);
  const double a = kFromCube[0] + rounded(z * kFromCube[1]);
  const double b = kFromCube[2] + rounded(z * kFromCube[3]);
  const double q = a + rounded(square * (b + rounded(square * kFromCube[4])));
  const double low = (rounded(cube * q) - squareLow) + ((lost + lost2) + x.rest);
  return {high, low, cube};
}

}  // namespace fathom

#endif
