// Rows of tables, for one index or for as many as a vector has lanes. Rows are loaded whole and
// transposed in registers, which is faster than gathering; and their indices come from memory,
// where a pass of its own has put them for a block of arguments.
#ifndef FATHOM_ELEMENTARY_TABLE_ROWS_HPP
#define FATHOM_ELEMENTARY_TABLE_ROWS_HPP

#include <cstddef>

#include "elementary/vector.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

template <typename V>
FATHOM_INLINE V vectorAt(const double* x) {
  V v;
  load(v, x);
  return v;
}

// The doubles at p in the lower half, those at q in the upper one.
[[maybe_unused]] FATHOM_INLINE void joinHalves(const double* p, const double* q, Lanes<32>& v) {
  using Half = Lanes<16>;
  v = __builtin_shufflevector(vectorAt<Half>(p), vectorAt<Half>(q), 0, 1, 2, 3);
}
[[maybe_unused]] FATHOM_INLINE void joinHalves(const double* p, const double* q, Lanes<64>& v) {
  using Half = Lanes<32>;
  v = __builtin_shufflevector(vectorAt<Half>(p), vectorAt<Half>(q), 0, 1, 2, 3, 4, 5, 6, 7);
}

// The columns of rows of four doubles, those at row(0), row(1), ...
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, double& a, double& b, double& c, double& d) {
  const double* const p = row(0);
  a = p[0];
  b = p[1];
  c = p[2];
  d = p[3];
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<16>& a, Lanes<16>& b, Lanes<16>& c, Lanes<16>& d) {
  using Half = Lanes<16>;
  const double *const p = row(0), *const q = row(1);
  const Half first = vectorAt<Half>(p), second = vectorAt<Half>(q);
  const Half third = vectorAt<Half>(p + 2), fourth = vectorAt<Half>(q + 2);
  a = __builtin_shufflevector(first, second, 0, 2);
  b = __builtin_shufflevector(first, second, 1, 3);
  c = __builtin_shufflevector(third, fourth, 0, 2);
  d = __builtin_shufflevector(third, fourth, 1, 3);
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<32>& a, Lanes<32>& b, Lanes<32>& c, Lanes<32>& d) {
  Lanes<32> first, second, third, fourth;
  joinHalves(row(0), row(2), first);
  joinHalves(row(1), row(3), second);
  joinHalves(row(0) + 2, row(2) + 2, third);
  joinHalves(row(1) + 2, row(3) + 2, fourth);
  a = __builtin_shufflevector(first, second, 0, 4, 2, 6);
  b = __builtin_shufflevector(first, second, 1, 5, 3, 7);
  c = __builtin_shufflevector(third, fourth, 0, 4, 2, 6);
  d = __builtin_shufflevector(third, fourth, 1, 5, 3, 7);
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<64>& a, Lanes<64>& b, Lanes<64>& c, Lanes<64>& d) {
  using Whole = Lanes<64>;
  Whole p, q, r, s;
  joinHalves(row(0), row(4), p);
  joinHalves(row(1), row(5), q);
  joinHalves(row(2), row(6), r);
  joinHalves(row(3), row(7), s);
  const Whole first = __builtin_shufflevector(p, q, 0, 8, 2, 10, 4, 12, 6, 14);
  const Whole second = __builtin_shufflevector(p, q, 1, 9, 3, 11, 5, 13, 7, 15);
  const Whole third = __builtin_shufflevector(r, s, 0, 8, 2, 10, 4, 12, 6, 14);
  const Whole fourth = __builtin_shufflevector(r, s, 1, 9, 3, 11, 5, 13, 7, 15);
  a = __builtin_shufflevector(first, third, 0, 1, 8, 9, 4, 5, 12, 13);
  b = __builtin_shufflevector(second, fourth, 0, 1, 8, 9, 4, 5, 12, 13);
  c = __builtin_shufflevector(first, third, 2, 3, 10, 11, 6, 7, 14, 15);
  d = __builtin_shufflevector(second, fourth, 2, 3, 10, 11, 6, 7, 14, 15);
}

// The columns of rows of two.
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, double& a, double& b) {
  const double* const p = row(0);
  a = p[0];
  b = p[1];
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<16>& a, Lanes<16>& b) {
  using Whole = Lanes<16>;
  const Whole even = vectorAt<Whole>(row(0)), odd = vectorAt<Whole>(row(1));
  a = __builtin_shufflevector(even, odd, 0, 2);
  b = __builtin_shufflevector(even, odd, 1, 3);
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<32>& a, Lanes<32>& b) {
  Lanes<32> even, odd;
  joinHalves(row(0), row(2), even);
  joinHalves(row(1), row(3), odd);
  a = __builtin_shufflevector(even, odd, 0, 4, 2, 6);
  b = __builtin_shufflevector(even, odd, 1, 5, 3, 7);
}
template <typename Row>
FATHOM_INLINE void loadColumns(Row row, Lanes<64>& a, Lanes<64>& b) {
  using Whole = Lanes<64>;
  Lanes<32> low, high;
  joinHalves(row(0), row(2), low);
  joinHalves(row(4), row(6), high);
  const Whole even = __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
  joinHalves(row(1), row(3), low);
  joinHalves(row(5), row(7), high);
  const Whole odd = __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
  a = __builtin_shufflevector(even, odd, 0, 8, 2, 10, 4, 12, 6, 14);
  b = __builtin_shufflevector(even, odd, 1, 9, 3, 11, 5, 13, 7, 15);
}

}  // namespace fathom

#endif
