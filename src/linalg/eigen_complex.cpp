// Eigenvalues and eigenvectors of complex matrices: balancing, Hessenberg form, QR sweeps with one
// implicit shift to a triangular form, and back substitution.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "linalg/hessenberg.hpp"

namespace fathom {
namespace {

// x = c x + s y and y = c y - conj(s) x.
FATHOM_INLINE void rotate(ComplexNum& x, ComplexNum& y, double c, ComplexNum s) {
  const ComplexNum turned = scaled(x, c) + s * y;
  y = scaled(y, c) - conjugate(s) * x;
  x = turned;
}

template <typename L, std::size_t... i>
FATHOM_INLINE void swapPairs(L& swapped, const L& x, std::index_sequence<i...>) {
  swapped = __builtin_shufflevector(x, x, static_cast<int>(i ^ 1)...);
}

// As rotate, with real and imaginary parts where they are: the products with the imaginary part of
// s take theirs exchanged, and the sign is in the factor.
template <std::size_t bytes>
FATHOM_INLINE void rotateRowsOf(ComplexNum* x, ComplexNum* y, std::size_t n, double c,
                                ComplexNum s) {
  constexpr std::size_t kLanes = bytes / sizeof(double);
  constexpr auto kIndices = std::make_index_sequence<kLanes>();
  double signedParts[kLanes];
  for (std::size_t k = 0; k < kLanes; ++k) {
    signedParts[k] = k % 2 == 0 ? -s.imaginary : s.imaginary;
  }
  Lanes<bytes> factor;
  load(factor, signedParts);
  std::size_t j = 0;
  for (; j + kLanes / 2 <= n; j += kLanes / 2) {
    double *p = reinterpret_cast<double*>(x + j), *q = reinterpret_cast<double*>(y + j);
    Lanes<bytes> a, b, swappedA, swappedB;
    load(a, p);
    load(b, q);
    swapPairs(swappedA, a, kIndices);
    swapPairs(swappedB, b, kIndices);
    store(p, c * a + (s.real * b + factor * swappedB));
    store(q, c * b - (s.real * a - factor * swappedA));
  }
  for (; j < n; ++j) rotate(x[j], y[j], c, s);
}
FATHOM_BY_WIDTH(rotateRows, (ComplexNum * x, ComplexNum* y, std::size_t n, double c, ComplexNum s),
                (x, y, n, c, s))

// Two neighbouring columns, the first element of each at `first`.
void rotateColumns(ComplexNum* first, std::size_t stride, std::size_t n, double c, ComplexNum s) {
  for (std::size_t i = 0; i < n; ++i) rotate(first[i * stride], first[i * stride + 1], c, s);
}

FATHOM_MULTIVERSION void dot(const ComplexNum* row, const ComplexNum* x, std::size_t n,
                             ComplexNum& sum) {
  const ComplexNum* const vectors[] = {x};
  ComplexNum sums[1];
  dotsOf(row, vectors, n, sums);
  sum = sums[0];
}

double modulus(ComplexNum x) {
  return hypotenuse(x.real, x.imaginary);
}

// The root with a real part of 0 or more.
ComplexNum squareRoot(ComplexNum x) {
  const double larger = sqrt(0.5 * (modulus(x) + fabs(x.real)));
  if (larger == 0.0) return {0.0, 0.0};
  const double smaller = 0.5 * x.imaginary / larger;
  return x.real >= 0.0 ? ComplexNum{larger, smaller}
                       : ComplexNum{fabs(smaller), copysign(larger, x.imaginary)};
}

// The Hessenberg matrix on its way to triangular form.
class ComplexSchur {
 public:
  // zRows may be null: then only the diagonal becomes that of the form.
  ComplexSchur(ComplexNum* h, std::size_t n, ComplexNum* zRows) : h_(h), n_(n), zRows_(zRows) {
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = i > 0 ? i - 1 : 0; j < n; ++j) norm_ += partSum(at(i, j));
    }
  }

  double norm() const { return norm_; }

  // False if it takes too many sweeps.
  bool iterate(const Balance& balance) {
    std::size_t sweepsLeft = 30 * n_;
    int sweepsOfValue = 0;
    for (std::size_t last = balance.high; last > balance.low;) {
      const std::size_t first = startOfBlock(balance.low, last);
      if (first == last) {
        --last;
        sweepsOfValue = 0;
        continue;
      }
      if (sweepsLeft-- == 0) return false;
      sweep(first, last, ++sweepsOfValue % 10 == 0);
    }
    return true;
  }

 private:
  ComplexNum& at(std::size_t i, std::size_t j) { return h_[i * n_ + j]; }

  // The largest l up to `last` whose subdiagonal element is negligible, and so becomes zero.
  std::size_t startOfBlock(std::size_t low, std::size_t last) {
    std::size_t l = last;
    for (; l > low; --l) {
      double neighbours = partSum(at(l - 1, l - 1)) + partSum(at(l, l));
      if (neighbours == 0.0) neighbours = norm_;
      if (negligible(partSum(at(l, l - 1)), neighbours, norm_)) {
        at(l, l - 1) = {0.0, 0.0};
        break;
      }
    }
    return l;
  }

  // The eigenvalue of the trailing 2 x 2 block that is closer to its last element.
  ComplexNum shift(std::size_t last) {
    const ComplexNum d = at(last, last), product = at(last - 1, last) * at(last, last - 1);
    const ComplexNum half = scaled(at(last - 1, last - 1) - d, 0.5);
    const ComplexNum root = squareRoot(half * half + product);
    const ComplexNum sum = half + root, difference = half - root;
    const ComplexNum larger = partSum(sum) > partSum(difference) ? sum : difference;
    return isZero(larger) ? d : d - divide(product, larger);
  }

  void sweep(std::size_t first, std::size_t last, bool exceptional) {
    const ComplexNum sigma =
        exceptional ? at(last, last) + ComplexNum{0.75 * partSum(at(last, last - 1)), 0.0}
                    : shift(last);
    ComplexNum x = at(first, first) - sigma, y = at(first + 1, first);
    for (std::size_t k = first; k < last; ++k) {
      if (k > first) {
        x = at(k, k - 1);
        y = at(k + 1, k - 1);
      }
      const double size = partSum(x) + partSum(y);
      if (size == 0.0) continue;
      x = divide(x, size);
      y = divide(y, size);
      const double length = sqrt(squaredModulus(x) + squaredModulus(y)), ofX = modulus(x);
      // Turns x and y into phase * length and 0.
      const ComplexNum phase = ofX > 0.0 ? divide(x, ofX) : ComplexNum{1.0, 0.0};
      const double c = ofX / length;
      const ComplexNum s = divide(phase * conjugate(y), length);
      if (k > first) {
        at(k, k - 1) = scaled(phase, length * size);
        at(k + 1, k - 1) = {0.0, 0.0};
      }
      const std::size_t end = zRows_ != nullptr ? n_ : last + 1;
      const std::size_t begin = zRows_ != nullptr ? 0 : first;
      rotateRows(&at(k, k), &at(k + 1, k), end - k, c, s);
      rotateColumns(&at(begin, k), n_, std::min(last, k + 2) + 1 - begin, c, conjugate(s));
      if (zRows_ != nullptr) {
        rotateRows(zRows_ + k * n_, zRows_ + (k + 1) * n_, n_, c, conjugate(s));
      }
    }
  }

  ComplexNum* h_;
  std::size_t n_;
  ComplexNum* zRows_;
  double norm_ = 0.0;
};

// x becomes the solution of (T - T(j, j)) x = 0 for the triangular T.
void solve(const ComplexNum* t, std::size_t n, std::size_t j, double norm, ComplexNum* x) {
  const ComplexNum lambda = t[j * n + j];
  const double size = std::max(partSum(lambda), 0x1p-200 * norm);
  const double smallest = size > 0.0 ? kEpsilon * size : 1.0;
  std::fill_n(x, n, ComplexNum{});
  x[j] = {1.0, 0.0};
  for (std::size_t i = j; i-- > 0;) {
    const ComplexNum* row = t + i * n;
    ComplexNum r, divisor = row[i] - lambda;
    dot(row + i + 1, x + i + 1, j - i, r);
    if (partSum(divisor) < smallest) divisor = {smallest, 0.0};
    x[i] = divide(-r, divisor);
    // So large that the next could overflow.
    const double large = partSum(x[i]);
    if (!(large > 0x1p26)) continue;
    for (std::size_t k = i; k <= j; ++k) x[k] = divide(x[k], large);
  }
}

}  // namespace
}  // namespace fathom

AnalysisStatus CxEigenValueVector(const ComplexNum* a, int32_t n, int32_t option,
                                  ComplexNum* values, ComplexNum* vectors) {
  using fathom::Workspace;
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (option != FATHOM_EIGEN_VALUES && option != FATHOM_EIGEN_VECTORS) return FATHOM_ERR_SELECTION;
  const bool both = option == FATHOM_EIGEN_VECTORS;
  const auto size = static_cast<std::size_t>(n);
  const std::size_t elements = fathom::matrixSize(n, n);
  Workspace<ComplexNum> h(elements), z(both ? elements : 0), x(both ? elements : 0);
  if (!h || !z || !x) return FATHOM_ERR_MEMORY;
  Workspace<ComplexNum> work(3 * size);
  Workspace<double> scale(size);
  if (!work || !scale) return FATHOM_ERR_MEMORY;

  double inverse;
  if (!fathom::copyInRange(a, size, h.data(), inverse)) return FATHOM_ERR_ITERATIONS;
  const fathom::MatrixBlock<ComplexNum> block = {h.data(), size, size, size};
  const fathom::Balance balance = fathom::balanced(block, scale.data());
  fathom::reduce(block, balance, both ? z.data() : nullptr, work.data());
  fathom::ComplexSchur schur(h.data(), size, both ? z.data() : nullptr);
  if (!schur.iterate(balance)) return FATHOM_ERR_ITERATIONS;
  for (std::size_t i = 0; i < size; ++i) {
    values[i] = fathom::scaled(h[i * size + i], inverse);
  }
  if (!both) return FATHOM_OK;
  for (std::size_t j = 0; j < size; ++j) {
    fathom::solve(h.data(), size, j, schur.norm(), x.data() + j * size);
  }
  fathom::multiply(x.data(), size, z.data(), size, h.data(), size, size, size, size);
  for (std::size_t j = 0; j < size; ++j) {
    ComplexNum* vector = h.data() + j * size;
    fathom::restore(vector, size, balance);
    fathom::normalise(vector, size);
    for (std::size_t i = 0; i < size; ++i) vectors[i * size + j] = vector[i];
  }
  return FATHOM_OK;
}
