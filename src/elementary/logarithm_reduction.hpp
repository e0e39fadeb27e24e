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

#include "elementary/logarithm_table.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"

namespace fathom {

// The bits of x with e + 1024 in place of the exponent, and the number of the cell below it.
template <typename V>
FATHOM_INLINE Bits<V> cellBits(const V& x) {
  return std::bit_cast<Bits<V>>(x) + 0x001A'0000'0000'0000;
}
template <typename V>
FATHOM_INLINE Bits<V> cellOf(const V& x) {
  return (cellBits(x) >> 43) % kLogarithmCells;
}

// Bit 63 is set unless x is above 0, normal and below 1.375 2^1023, where cellBits reach it.
template <typename V>
FATHOM_INLINE Bits<V> outsideCellsSign(const V& x) {
  constexpr std::uint64_t kLeastNormal = 0x0010'0000'0000'0000;
  return (std::bit_cast<Bits<V>>(x) - kLeastNormal) | cellBits(x);
}
FATHOM_INLINE std::uint64_t outsideCells(double x) {
  return outsideCellsSign(x) & kSignBit;
}

template <typename V>
struct LogarithmRow {
  V scale, offset;    // r and t
  V logarithm, rest;  // of -ln r
};
template <typename V>
FATHOM_INLINE void loadRow(const std::uint64_t* cells, LogarithmRow<V>& r) {
  const auto row = [cells](std::size_t lane) -> const double* {
    return kLogarithmTable[cells[lane]];
  };
  loadColumns(row, r.scale, r.offset, r.logarithm, r.rest);
}

template <typename V>
struct ReducedLogarithm {
  V z;
  V leading;  // of e ln 2 - ln r,
  V rest;     // which is off by less than 2^-80 |leading|
};

template <typename V>
FATHOM_INLINE void reduceLogarithm(const V& x, const std::uint64_t* cells,
                                   ReducedLogarithm<V>& reduced) {
  LogarithmRow<V> row;
  loadRow(cells, row);
  const Bits<V> cell = cellBits(x);
  constexpr double kTwo52 = 0x1p52;
  const auto biased = std::bit_cast<V>((cell >> 52) | std::bit_cast<std::uint64_t>(kTwo52));
  const V e = biased - (kTwo52 + 1024.0);
  constexpr std::uint64_t kBelowCell = (std::uint64_t{1} << 43) - 1;
  const V f = std::bit_cast<V>((cell & kBelowCell) | std::bit_cast<std::uint64_t>(1.0)) - 1.0;
  reduced.z = rounded(row.scale * f) + row.offset;
  reduced.leading = rounded(e * kLn2) + row.logarithm;
  reduced.rest = rounded(e * kLn2Rest) + row.rest;
}

// ln x as high + low, off by less than 5 2^-53 |cube| + 2^-82 |high|, where cube is z^3 or nearly
// so: z^2 / 2 is taken exactly, but for roundings of 2^-25 of it; the term z^3 Q(z), Q near 1/3,
// carries five roundings and kFromCubeError; and the sums of `low` are below 0.35 |cube| + 2^-24
// z^2 + 2^-43 |high|.
static_assert(kFromCubeError <= 0x1.2p-52);

template <typename V>
struct LogarithmSum {
  V high;
  V low;
  V cube;
};

template <typename V>
FATHOM_INLINE void accurateLogarithm(const ReducedLogarithm<V>& x, LogarithmSum<V>& sum) {
  const V& z = x.z;
  const V leading = leading26Bits(z);
  const V half = 0.5 * leading;
  const V squareHigh = rounded(half * leading);
  const V squareLow = rounded(0.5 * (z - leading) * (z + leading));
  const V s = x.leading + z;
  const V lost = (x.leading - s) + z;
  sum.high = s - squareHigh;
  const V lost2 = (s - sum.high) - squareHigh;
  const V square = rounded(z * z);
  sum.cube = rounded(square * z);
  const V a = kFromCube[0] + rounded(z * kFromCube[1]);
  const V b = kFromCube[2] + rounded(z * kFromCube[3]);
  const V q = a + rounded(square * (b + rounded(square * kFromCube[4])));
  sum.low = (rounded(sum.cube * q) - squareLow) + ((lost + lost2) + x.rest);
}

}  // namespace fathom

#endif
