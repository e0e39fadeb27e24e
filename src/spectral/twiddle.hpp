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
  // Entries at .. at + count, for the angles given, which are lost.
  void fill(double* angle, std::size_t count, std::size_t at) {
    sincos(angle, count, sin1_ + at, cos1_ + at);
    for (std::size_t j = 0; j < count; ++j) angle[j] = 3.0 * angle[j];
    sincos(angle, count, sin3_ + at, cos3_ + at);
  }
  // An entry whose products are never used.
  void pad(std::size_t at) { cos1_[at] = sin1_[at] = cos3_[at] = sin3_[at] = 0.0; }
  Twiddles twiddles() const { return {cos1_, sin1_, cos3_, sin3_}; }

 private:
  double cos1_[size], sin1_[size], cos3_[size], sin3_[size];
};

}  // namespace fathom

#endif
