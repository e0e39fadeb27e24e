// What the eigenvalue routines of general real and complex matrices share: balancing, reduction to
// Hessenberg form, and the way back of the eigenvectors.
#ifndef FATHOM_LINALG_HESSENBERG_HPP
#define FATHOM_LINALG_HESSENBERG_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/workspace.hpp"
#include "linalg/eigen_range.hpp"
#include "linalg/householder.hpp"
#include "linalg/kernel.hpp"

namespace fathom {

// Copies an n x n matrix, brought to range. False if an element is infinite or NaN.
template <typename Element>
bool copyInRange(const Element* a, std::size_t n, Element* copy, double& inverse) {
  EigenRange range;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) range.add(a[i * n + j]);
  }
  const double factor = range.factor();
  inverse = 1.0 / factor;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) copy[i * n + j] = scaled(a[i * n + j], factor);
  }
  return range.finite();
}

// What balancing did: rows and columns low to high are neither isolated nor done with. Outside
// them, scale[i] is the place with which i was exchanged; inside, the power of two.
struct Balance {
  std::size_t low;
  std::size_t high;
  double* scale;
};

template <typename Element>
void exchange(MatrixBlock<Element> a, std::size_t i, std::size_t j) {
  if (i == j) return;
  for (std::size_t k = 0; k < a.rows; ++k) std::swap(a.row(k)[i], a.row(k)[j]);
  std::swap_ranges(a.row(i), a.row(i) + a.columns, a.row(j));
}

// Whether row i, or column i, of those from low to high is zero but for its diagonal.
template <bool byRow, typename Element>
bool isolated(MatrixBlock<Element> a, std::size_t i, std::size_t low, std::size_t high) {
  for (std::size_t k = low; k <= high; ++k) {
    if (k != i && !isZero(byRow ? a.row(i)[k] : a.row(k)[i])) return false;
  }
  return true;
}

// Exchanges rows that isolate an eigenvalue to the bottom, and columns that do to the left.
template <typename Element>
void permute(MatrixBlock<Element> a, Balance& balance) {
  std::size_t& low = balance.low;
  std::size_t& high = balance.high;
  const auto moveTo = [&](std::size_t place, std::size_t i) {
    balance.scale[place] = static_cast<double>(i);
    exchange(a, i, place);
  };
  for (std::size_t i = high + 1; i-- > 0;) {
    if (!isolated<true>(a, i, 0, high)) continue;
    moveTo(high, i);
    if (high == 0) return;
    i = high--;  // from the new last row again
  }
  for (std::size_t i = low; i <= high; ++i) {
    if (!isolated<false>(a, i, low, high)) continue;
    moveTo(low, i);
    i = low++;  // the next is the new first column
  }
}

// B. N. Parlett and C. Reinsch, 1969: powers of two that bring the norms of each row and its column
// together. Kept within a range in which they neither overflow nor underflow.
template <typename Element>
Balance balanced(MatrixBlock<Element> a, double* scale) {
  constexpr double kLargest = 0x1p200, kGain = 0.95;
  constexpr int kPasses = 100;
  Balance balance = {0, a.rows - 1, scale};
  permute(a, balance);
  const std::size_t low = balance.low, high = balance.high;
  if (low >= high) {
    scale[low] = scale[high] = static_cast<double>(low);
    return balance;
  }
  std::fill(scale + low, scale + high + 1, 1.0);
  bool changed = true;
  for (int pass = 0; changed && pass < kPasses; ++pass) {
    changed = false;
    for (std::size_t i = low; i <= high; ++i) {
      double column = 0.0, row = 0.0;
      for (std::size_t k = low; k <= high; ++k) {
        if (k == i) continue;
        column += squaredModulus(a.row(k)[i]);
        row += squaredModulus(a.row(i)[k]);
      }
      column = sqrt(column);
      row = sqrt(row);
      if (column == 0.0 || row == 0.0) continue;
      const double sum = column + row;
      double factor = 1.0;
      while (column < row * 0.5 && factor < kLargest) factor *= 2.0, column *= 4.0;
      while (column >= row * 2.0 && factor > 1.0 / kLargest) factor *= 0.5, column *= 0.25;
      const double total = scale[i] * factor;
      if (factor == 1.0 || total > kLargest || total < 1.0 / kLargest) continue;
      if (!((column + row) / factor < kGain * sum)) continue;
      changed = true;
      scale[i] = total;
      for (std::size_t k = low; k < a.columns; ++k) a.row(i)[k] = scaled(a.row(i)[k], 1.0 / factor);
      for (std::size_t k = 0; k <= high; ++k) a.row(k)[i] = scaled(a.row(k)[i], factor);
    }
  }
  return balance;
}

// The Hessenberg form H of a, with A = Z H Z^H. If there is room for it, the transpose of Z goes to
// `zRows`, whose rows turn into the eigenvectors. `work` has room for 3n elements.
template <typename Element>
void reduce(MatrixBlock<Element> a, const Balance& balance, Element* zRows, Element* work) {
  const std::size_t n = a.rows, low = balance.low, end = balance.high + 1;
  Element *tau = work, *column = tau + n, *sums = column + n;
  const std::size_t count = end - low > 2 ? end - low - 2 : 0;
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t first = low + k + 1, length = end - first;
    for (std::size_t i = 0; i < length; ++i) column[i] = a.row(first + i)[first - 1];
    const Reflector<Element> h = reflector(column[0], column + 1, length - 1);
    tau[k] = h.tau;
    a.row(first)[first - 1] = element<Element>(h.beta);
    for (std::size_t i = 1; i < length; ++i) a.row(first + i)[first - 1] = column[i];
    if (isZero(h.tau)) continue;
    reflectLeft(MatrixBlock<Element>{a.row(first) + first, n, length, n - first}, column,
                conjugate(h.tau), sums);
    reflectRight(MatrixBlock<Element>{a.first + first, n, end, length}, column, h.tau);
  }
  if (zRows != nullptr) {
    const MatrixBlock<Element> z = {zRows, n, n, n};
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) z.row(i)[j] = element<Element>(i == j ? 1.0 : 0.0);
    }
    if (count > 0) {
      const std::size_t side = end - low - 1;
      accumulate(MatrixBlock<Element>{a.row(low + 1) + low, n, side, count}, tau, count,
                 MatrixBlock<Element>{z.row(low + 1) + low + 1, n, side, side}, column, sums);
    }
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < i; ++j) std::swap(z.row(i)[j], z.row(j)[i]);
    }
  }
  for (std::size_t i = 2; i < n; ++i) std::fill_n(a.row(i), i - 1, Element{});
}

// Undoes the balancing of a vector of n elements: the powers of two, then the exchanges, the last
// first.
template <typename Element>
void restore(Element* v, std::size_t n, const Balance& balance) {
  const auto swapBack = [&](std::size_t i) {
    std::swap(v[i], v[static_cast<std::size_t>(balance.scale[i])]);
  };
  const std::size_t low = balance.low, high = balance.high;
  for (std::size_t i = 0; i < n; ++i) {
    if (low < high && i >= low && i <= high) v[i] = scaled(v[i], balance.scale[i]);
  }
  for (std::size_t i = low; i-- > 0;) swapBack(i);
  for (std::size_t i = high + 1; i < n; ++i) swapBack(i);
}

// To unit length, with the first of the largest elements real and positive.
inline void normalise(ComplexNum* v, std::size_t n) {
  double largest = 0.0;
  for (std::size_t i = 0; i < n; ++i) largest = std::max(largest, partSum(v[i]));
  if (!(largest > 0.0)) return;
  double sum = 0.0, peak = 0.0;
  std::size_t place = 0;
  for (std::size_t i = 0; i < n; ++i) {
    v[i] = divide(v[i], largest);
    const double square = squaredModulus(v[i]);
    sum += square;
    if (square > peak) {
      peak = square;
      place = i;
    }
  }
  const double length = sqrt(sum), modulus = sqrt(peak);
  const ComplexNum turn = {v[place].real / modulus, -v[place].imaginary / modulus};
  for (std::size_t i = 0; i < n; ++i) v[i] = divide(v[i] * turn, length);
  v[place] = {modulus / length, 0.0};
}

// Sums of products over n elements of a row, in eight partial sums that do not wait for each other.
template <typename Element, std::size_t count>
FATHOM_INLINE void dotsOf(const Element* row, const Element* const (&x)[count], std::size_t n,
                          Element (&sums)[count]) {
  constexpr std::size_t kPartial = 8;
  Element partial[count][kPartial] = {};
  std::size_t j = 0;
  for (; j + kPartial <= n; j += kPartial) {
    for (std::size_t c = 0; c < count; ++c) {
      for (std::size_t k = 0; k < kPartial; ++k) {
        partial[c][k] = partial[c][k] + row[j + k] * x[c][j + k];
      }
    }
  }
  for (std::size_t c = 0; c < count; ++c) {
    for (std::size_t k = 0; j + k < n; ++k) {
      partial[c][k] = partial[c][k] + row[j + k] * x[c][j + k];
    }
    for (std::size_t half = kPartial / 2; half > 0; half /= 2) {
      for (std::size_t k = 0; k < half; ++k) partial[c][k] = partial[c][k] + partial[c][k + half];
    }
    sums[c] = partial[c][0];
  }
}

}  // namespace fathom

#endif
