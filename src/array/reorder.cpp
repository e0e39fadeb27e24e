// Copying and reordering of real arrays: parts, reversal, shift and sort.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "fathom.h"
#include "frame/multiversion.hpp"

namespace {

// y[i] and y[n - 1 - i] from x[n - 1 - i] and x[i], both read before either is written.
FATHOM_MULTIVERSION void reverse(const double* x, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n / 2; ++i) {
    const double low = x[i];
    y[i] = x[n - 1 - i];
    y[n - 1 - i] = low;
  }
  if (n % 2 != 0) y[n / 2] = x[n / 2];
}

// Sorting works on integer keys that order as the values do, kept as bit patterns in the cells of
// y, so that comparing two is one instruction, total, and never a branch. From smallest to largest:
// -infinity ... -0.0, +0.0 ... +infinity, and then every NaN.
using Key = std::uint64_t;
constexpr Key kSign = Key{1} << 63;
constexpr Key kKeyOfNegativeInfinity = 0x000FFFFFFFFFFFFF;  // before the NaNs below it wrap around

// Toggling all signs first gives the descending order.
FATHOM_INLINE Key keyOf(double x, Key toggled) {
  const Key bits = std::bit_cast<Key>(x) ^ toggled;
  return (bits ^ ((bits & kSign) != 0 ? ~Key{0} : kSign)) - kKeyOfNegativeInfinity;
}
FATHOM_INLINE double valueOf(Key key, Key toggled) {
  const Key ordered = key + kKeyOfNegativeInfinity;
  const Key bits = ordered ^ ((ordered & kSign) != 0 ? kSign : ~Key{0});
  return std::bit_cast<double>(bits ^ toggled);
}
FATHOM_INLINE Key keyAt(const double& cell) {
  return std::bit_cast<Key>(cell);
}
FATHOM_INLINE void putKey(double& cell, Key key) {
  cell = std::bit_cast<double>(key);
}

FATHOM_MULTIVERSION void toKeys(const double* x, std::size_t n, Key toggled, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) putKey(y[i], keyOf(x[i], toggled));
}

FATHOM_MULTIVERSION void toValues(double* y, std::size_t n, Key toggled) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = valueOf(keyAt(y[i]), toggled);
}

void insertionSort(double* y, std::size_t n) {
  for (std::size_t i = 1; i < n; ++i) {
    const Key key = keyAt(y[i]);
    std::size_t j = i;
    for (; j > 0 && keyAt(y[j - 1]) > key; --j) y[j] = y[j - 1];
    putKey(y[j], key);
  }
}

// Moves the keys up to and including `pivot` to the front and returns their number. No branch
// depends on a key.
std::size_t partition(double* y, std::size_t n, Key pivot) {
  std::size_t front = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const Key key = keyAt(y[i]);
    y[i] = y[front];
    putKey(y[front], key);
    front += key <= pivot ? 1 : 0;
  }
  return front;
}

Key median(Key a, Key b, Key c) {
  return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

Key medianOfSample(const double* y, std::size_t n) {
  const std::size_t step = n / 9;
  const double* const at = y + step / 2;
  const auto medianOfThree = [at, step](std::size_t i) {
    return median(keyAt(at[i * step]), keyAt(at[(i + 1) * step]), keyAt(at[(i + 2) * step]));
  };
  return median(medianOfThree(0), medianOfThree(3), medianOfThree(6));
}

// The middle between the smallest and the largest key: both sides of it hold keys, unless all keys
// are equal.
Key middleOfRange(const double* y, std::size_t n) {
  Key smallest = keyAt(y[0]);
  Key largest = smallest;
  for (std::size_t i = 1; i < n; ++i) {
    smallest = std::min(smallest, keyAt(y[i]));
    largest = std::max(largest, keyAt(y[i]));
  }
  return smallest + (largest - smallest) / 2;
}

// Quicksort. A split that leaves one side small is followed by one at the middle of the key range,
// which halves that range, so that no order of the input costs more than n (log n + 64) steps.
void sortKeys(double* y, std::size_t n) {
  constexpr std::size_t kSmall = 24;
  bool balanced = true;
  while (n > kSmall) {
    Key pivot = balanced ? medianOfSample(y, n) : middleOfRange(y, n);
    std::size_t front = partition(y, n, pivot);
    if (front == n) {
      // The pivot is the largest key: set it and its equals aside, and go on with the rest.
      if (pivot == 0) return;
      front = partition(y, n, pivot - 1);
      balanced = balanced && n - front >= n / 8;
      n = front;
      continue;
    }
    const std::size_t back = n - front;
    balanced = std::min(front, back) >= n / 8;
    if (front < back) {
      sortKeys(y, front);
      y += front;
      n = back;
    } else {
      sortKeys(y + front, back);
      n = front;
    }
  }
  insertionSort(y, n);
}

bool isAscending(const double* y, std::size_t n) {
  std::size_t i = 1;
  while (i < n && keyAt(y[i - 1]) <= keyAt(y[i])) ++i;
  return i == n;
}

bool isDescending(const double* y, std::size_t n) {
  std::size_t i = 1;
  while (i < n && keyAt(y[i - 1]) >= keyAt(y[i])) ++i;
  return i == n;
}

}  // namespace

AnalysisStatus Copy1D(const double* x, int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  std::copy_n(x, n, y);
  return FATHOM_OK;
}

AnalysisStatus Subset1D(const double* x, int32_t n, int32_t start, int32_t length, double* y) {
  if (n < 1 || start < 0 || length < 1) return FATHOM_ERR_NO_SAMPLES;
  if (n < int64_t{start} + length) return FATHOM_ERR_INDEX_LENGTH;
  std::copy_n(x + start, length, y);
  return FATHOM_OK;
}

AnalysisStatus Reverse(const double* x, int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  reverse(x, static_cast<std::size_t>(n), y);
  return FATHOM_OK;
}

AnalysisStatus Shift(const double* x, int32_t n, int32_t shift, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const int64_t distance = shift < 0 ? -int64_t{shift} : int64_t{shift};
  if (distance >= n) return FATHOM_ERR_SHIFT_RANGE;
  if (shift == 0) {
    Copy1D(x, n, y);
    return FATHOM_OK;
  }
  const auto vacated = static_cast<std::size_t>(distance);
  const std::size_t kept = static_cast<std::size_t>(n) - vacated;
  // memmove, because y may be x.
  if (shift > 0) {
    std::memmove(y + vacated, x, kept * sizeof(double));
    std::fill_n(y, vacated, 0.0);
  } else {
    std::memmove(y, x + vacated, kept * sizeof(double));
    std::fill_n(y + kept, vacated, 0.0);
  }
  return FATHOM_OK;
}

AnalysisStatus Sort(const double* x, int32_t n, int32_t direction, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  const Key toggled = direction == 0 ? 0 : kSign;
  toKeys(x, count, toggled, y);
  if (isDescending(y, count)) {
    reverse(y, count, y);
  } else if (!isAscending(y, count)) {
    sortKeys(y, count);
  }
  toValues(y, count, toggled);
  return FATHOM_OK;
}
