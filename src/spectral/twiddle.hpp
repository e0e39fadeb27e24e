// Twiddle factors of the split-radix transforms: sine and cosine of the angle a and of 3a.
#ifndef FATHOM_SPECTRAL_TWIDDLE_HPP
#define FATHOM_SPECTRAL_TWIDDLE_HPP

#include <cstddef>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

struct Twiddles {
  const double *cos1, *sin1, *cos3, *sin3;

  FATHOM_INLINE Twiddles from(std::size_t j) const {
    return {cos1 + j, sin1 + j, cos3 + j, sin3 + j};
  }
};

// Room for a table of them, on the stack.
template <std::size_t size>
class TwiddleStore {
 public:
  // Entries at .. at + count for the angles a, a + e, ..., each the rounded sum of the one before
  // and e; returns the one after them. In one loop, where the calls hide the additions' latency.
  double fill(double a, double e, std::size_t count, std::size_t at) {
    for (std::size_t j = at; j < at + count; ++j) {
      sincos(a, sin1_[j], cos1_[j]);
      sincos(3.0 * a, sin3_[j], cos3_[j]);
      a += e;
    }
    return a;
  }
  // An entry whose products are never used.
  void pad(std::size_t at) { cos1_[at] = sin1_[at] = cos3_[at] = sin3_[at] = 0.0; }
  Twiddles twiddles() const { return {cos1_, sin1_, cos3_, sin3_}; }

 private:
  // A cache line more than needed: arrays a power of two apart would compete for the same sets.
  static constexpr std::size_t kLength = size + 8;
  alignas(64) double cos1_[kLength], sin1_[kLength], cos3_[kLength], sin3_[kLength];
};

}  // namespace fathom

#endif
