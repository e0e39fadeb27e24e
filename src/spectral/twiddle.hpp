// Twiddle factors of the split-radix transforms: sine and cosine of the angle a and of 3a.
#ifndef FATHOM_SPECTRAL_TWIDDLE_HPP
#define FATHOM_SPECTRAL_TWIDDLE_HPP

#include <cstddef>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/running_sum.hpp"

namespace fathom {

struct Twiddles {
  const double *cos1, *sin1, *cos3, *sin3;

  FATHOM_INLINE Twiddles from(std::size_t j) const {
    return {cos1 + j, sin1 + j, cos3 + j, sin3 + j};
  }
};

// Of angles that lie e apart.
struct TwiddleSpacing {
  explicit TwiddleSpacing(double e) : first(e), third(3.0 * e) {}
  AngleSpacing first, third;
};

// Room for a table of them, on the stack.
template <std::size_t size>
class TwiddleStore {
 public:
  // Entries at .. at + count: the angles a, a + e, ..., each the rounded sum of the one before and
  // e, whose sines and cosines come with evaluate(). Returns the angle after them.
  double setAngles(double a, double e, std::size_t count, std::size_t at) {
    const double next = runningSum(a, e, count, cos1_ + at);
    triple(cos1_ + at, count, cos3_ + at);
    return next;
  }
  // The angles of all stages of a block: at `most` so many from a on, e apart, at most / 2 half as
  // many from 2 a on, 2 e apart, and so on down to 2.
  void setStages(double a, double e, std::size_t most) {
    setAngles(a, e, most, most);
    doubleSums(most, cos1_);
    doubleSums(most, cos3_);
  }
  // An entry whose products are never used, at the angle 1.
  void pad(std::size_t at) { cos1_[at] = cos3_[at] = 1.0; }
  void evaluate(std::size_t count, std::size_t at) {
    sincos(cos1_ + at, count, sin1_ + at, cos1_ + at);
    sincos(cos3_ + at, count, sin3_ + at, cos3_ + at);
  }
  // The same for angles of one spacing.
  void evaluate(const TwiddleSpacing& spacing, std::size_t count) {
    sincos(spacing.first, cos1_, count, sin1_, cos1_);
    sincos(spacing.third, cos3_, count, sin3_, cos3_);
  }
  Twiddles twiddles() const { return {cos1_, sin1_, cos3_, sin3_}; }

 private:
  static void triple(const double* a, std::size_t count, double* tripled) {
    for (std::size_t j = 0; j < count; ++j) tripled[j] = 3.0 * a[j];
  }

  // A cache line more than needed: arrays a power of two apart would compete for the same sets.
  static constexpr std::size_t kLength = size + 8;
  alignas(64) double cos1_[kLength], sin1_[kLength], cos3_[kLength], sin3_[kLength];
};

}  // namespace fathom

#endif
