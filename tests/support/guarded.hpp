// An output array between guard cells: sees writes past either end, and writes that should not be.
#ifndef FATHOM_TESTS_SUPPORT_GUARDED_HPP
#define FATHOM_TESTS_SUPPORT_GUARDED_HPP

#include <algorithm>
#include <cstddef>
#include <vector>

#include "support/bits.hpp"

namespace fathom::test {

class Guarded {
 public:
  static constexpr std::size_t kGuard = 8;
  static constexpr double kFill = -7.0e77;  // a value that no routine computes

  explicit Guarded(std::size_t n) : cells_(n + 2 * kGuard, kFill) {}
  explicit Guarded(const std::vector<double>& values) : Guarded(values.size()) {
    std::copy(values.begin(), values.end(), cells_.begin() + kGuard);
  }

  double* data() { return cells_.data() + kGuard; }
  operator double*() { return data(); }
  std::size_t size() const { return cells_.size() - 2 * kGuard; }
  std::vector<double> values() const { return {cells_.begin() + kGuard, cells_.end() - kGuard}; }

  // The guard cells still hold their fill.
  bool intact() const { return onlyFill(0, kGuard) && onlyFill(cells_.size() - kGuard, kGuard); }
  // Nothing at all was written since construction by size.
  bool untouched() const { return onlyFill(0, cells_.size()); }

 private:
  bool onlyFill(std::size_t start, std::size_t count) const {
    return std::all_of(cells_.begin() + static_cast<std::ptrdiff_t>(start),
                       cells_.begin() + static_cast<std::ptrdiff_t>(start + count),
                       [](double v) { return sameBits(v, kFill); });
  }
  std::vector<double> cells_;
};

}  // namespace fathom::test

#endif
