// Eigenvalues and eigenvectors of general real matrices: balancing, Hessenberg form, QR sweeps with
// two implicit shifts to a quasi-triangular form, and back substitution.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "linalg/hessenberg.hpp"

namespace fathom {
namespace {

// A reflection I - a b^T of two or three neighbouring rows or columns.
struct Small {
  double a[3];
  double b[3];
};

template <std::size_t count>
FATHOM_INLINE void reflectRowsOf(double* first, std::size_t stride, std::size_t n, const double* a,
                                 const double* b) {
  double *x = first, *y = first + stride, *z = first + (count - 1) * stride;
  FATHOM_INDEPENDENT
  for (std::size_t j = 0; j < n; ++j) {
    double p = b[0] * x[j] + b[1] * y[j];
    if constexpr (count == 3) p += b[2] * z[j];
    x[j] -= p * a[0];
    y[j] -= p * a[1];
    if constexpr (count == 3) z[j] -= p * a[2];
  }
}

// Rows, n elements each, become (I - a b^T) times themselves.
FATHOM_MULTIVERSION void reflectRows(double* first, std::size_t stride, std::size_t n,
                                     std::size_t count, const double* a, const double* b) {
  const double a0 = a[0], a1 = a[1], a2 = a[2], b0 = b[0], b1 = b[1], b2 = b[2];
  const double as[] = {a0, a1, a2}, bs[] = {b0, b1, b2};
  if (count == 3) {
    reflectRowsOf<3>(first, stride, n, as, bs);
  } else {
    reflectRowsOf<2>(first, stride, n, as, bs);
  }
}

// Columns, n elements each, become themselves times (I - a b^T).
void reflectColumns(double* first, std::size_t stride, std::size_t n, std::size_t count,
                    const Small& h) {
  for (std::size_t i = 0; i < n; ++i) {
    double* x = first + i * stride;
    double p = h.a[0] * x[0] + h.a[1] * x[1];
    if (count == 3) p += h.a[2] * x[2];
    x[0] -= p * h.b[0];
    x[1] -= p * h.b[1];
    if (count == 3) x[2] -= p * h.b[2];
  }
}

FATHOM_MULTIVERSION void dot(const double* row, const double* x, std::size_t n, double& sum) {
  const double* const vectors[] = {x};
  double sums[1];
  dotsOf(row, vectors, n, sums);
  sum = sums[0];
}
FATHOM_MULTIVERSION void dots(const double* row, const double* x, const double* y, std::size_t n,
                              ComplexNum& sum) {
  const double* const vectors[] = {x, y};
  double sums[2];
  dotsOf(row, vectors, n, sums);
  sum = {sums[0], sums[1]};
}

// The Hessenberg matrix on its way to quasi-triangular form.
class RealSchur {
 public:
  // zRows may be null: then only the diagonal blocks become those of the form.
  RealSchur(double* h, std::size_t n, double* zRows, ComplexNum* values)
      : h_(h), n_(n), zRows_(zRows), values_(values) {
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = i > 0 ? i - 1 : 0; j < n; ++j) norm_ += fabs(at(i, j));
    }
  }

  double norm() const { return norm_; }

  // False if it takes too many sweeps.
  bool iterate(const Balance& balance) {
    low_ = balance.low;
    for (std::size_t i = 0; i < n_; ++i) values_[i] = {at(i, i), 0.0};  // isolated ones are final
    std::size_t sweepsLeft = 30 * n_;
    int sweepsOfBlock = 0;
    for (std::size_t end = balance.high + 1; end > low_;) {
      const std::size_t last = end - 1, first = startOfBlock(last);
      if (first + 1 < last) {
        if (sweepsLeft-- == 0) return false;
        sweep(first, last, ++sweepsOfBlock % 10 == 0);
        continue;
      }
      sweepsOfBlock = 0;
      if (first == last) {
        values_[last] = {at(last, last), 0.0};
      } else {
        split(first);
      }
      end = first;
    }
    return true;
  }

 private:
  double& at(std::size_t i, std::size_t j) { return h_[i * n_ + j]; }

  // The largest l up to `last` whose subdiagonal element is negligible, and so becomes zero.
  std::size_t startOfBlock(std::size_t last) {
    std::size_t l = last;
    for (; l > low_; --l) {
      double neighbours = fabs(at(l - 1, l - 1)) + fabs(at(l, l));
      if (neighbours == 0.0) neighbours = norm_;
      if (negligible(at(l, l - 1), neighbours, norm_)) {
        at(l, l - 1) = 0.0;
        break;
      }
    }
    return l;
  }

  // The columns, or rows, that a similarity within first..last has to reach.
  std::size_t columnsEnd(std::size_t last) const { return zRows_ != nullptr ? n_ : last + 1; }
  std::size_t rowsBegin(std::size_t first) const { return zRows_ != nullptr ? 0 : first; }

  void apply(const Small& h, std::size_t k, std::size_t count, std::size_t first,
             std::size_t last) {
    reflectRows(&at(k, k), n_, columnsEnd(last) - k, count, h.a, h.b);
    const std::size_t begin = rowsBegin(first), end = std::min(last, k + 3) + 1;
    reflectColumns(&at(begin, k), n_, end - begin, count, h);
    if (zRows_ != nullptr) reflectRows(zRows_ + k * n_, n_, n_, count, h.b, h.a);
  }

  // One double step with the shifts of the trailing 2 x 2 block, or others if they do not help.
  void sweep(std::size_t first, std::size_t last, bool exceptional) {
    double x = at(last, last), y = at(last - 1, last - 1);
    double w = at(last, last - 1) * at(last - 1, last);
    if (exceptional) {
      const double s = fabs(at(last, last - 1)) + fabs(at(last - 1, last - 2));
      x = y = x + 0.75 * s;
      w = -0.4375 * s * s;
    }
    // Starts where two subdiagonal elements together are negligible.
    double p, q, r;
    std::size_t start = last - 2;
    for (;; --start) {
      const double z = at(start, start);
      r = x - z;
      const double s = y - z;
      p = (r * s - w) / at(start + 1, start) + at(start, start + 1);
      q = at(start + 1, start + 1) - z - r - s;
      r = at(start + 2, start + 1);
      const double size = fabs(p) + fabs(q) + fabs(r);
      p /= size;
      q /= size;
      r /= size;
      if (start == first) break;
      const double neighbours =
          fabs(p) * (fabs(at(start - 1, start - 1)) + fabs(z) + fabs(at(start + 1, start + 1)));
      if (neighbours + fabs(at(start, start - 1)) * (fabs(q) + fabs(r)) == neighbours) break;
    }
    for (std::size_t k = start; k < last; ++k) {
      const std::size_t count = k + 1 < last ? 3 : 2;
      double size = 1.0;
      if (k > start) {
        p = at(k, k - 1);
        q = at(k + 1, k - 1);
        r = count == 3 ? at(k + 2, k - 1) : 0.0;
        size = fabs(p) + fabs(q) + fabs(r);
        if (size == 0.0) continue;
        p /= size;
        q /= size;
        r /= size;
      }
      const double s = copysign(sqrt(p * p + q * q + r * r), p);
      if (k > start) {
        at(k, k - 1) = -s * size;
        at(k + 1, k - 1) = 0.0;
        if (count == 3) at(k + 2, k - 1) = 0.0;
      } else if (start > first) {
        at(k, k - 1) = -at(k, k - 1);
      }
      p += s;
      apply({{p / s, q / s, r / s}, {1.0, q / p, r / p}}, k, count, first, last);
    }
  }

  // Eigenvalues of the 2 x 2 block at i; a block with real ones becomes triangular.
  void split(std::size_t i) {
    const double x = at(i + 1, i + 1), w = at(i + 1, i) * at(i, i + 1);
    const double p = 0.5 * (at(i, i) - x), q = p * p + w, root = sqrt(fabs(q));
    if (q < 0.0) {
      values_[i] = {x + p, root};
      values_[i + 1] = {x + p, -root};
      return;
    }
    const double z = p + copysign(root, p);
    values_[i] = {x + z, 0.0};
    values_[i + 1] = {z != 0.0 ? x - w / z : x, 0.0};
    const double below = at(i + 1, i), length = hypotenuse(below, z);
    if (zRows_ == nullptr || length == 0.0) return;
    const double sine = below / length, cosine = z / length;
    rotate(&at(i, i), &at(i + 1, i), n_ - i, 1, sine, cosine);
    rotate(&at(0, i), &at(0, i + 1), i + 2, n_, sine, cosine);
    rotate(zRows_ + i * n_, zRows_ + (i + 1) * n_, n_, 1, sine, cosine);
    at(i, i) = values_[i].real;
    at(i + 1, i) = 0.0;
    at(i + 1, i + 1) = values_[i + 1].real;
  }

  static void rotate(double* x, double* y, std::size_t n, std::size_t stride, double sine,
                     double cosine) {
    for (std::size_t k = 0; k < n * stride; k += stride) {
      const double turned = rounded(cosine * x[k]) + rounded(sine * y[k]);
      y[k] = rounded(cosine * y[k]) - rounded(sine * x[k]);
      x[k] = turned;
    }
  }

  double* h_;
  std::size_t n_;
  double* zRows_;
  ComplexNum* values_;
  double norm_ = 0.0;
  std::size_t low_ = 0;
};

// A divisor that is not too small beside the eigenvalue and the matrix.
ComplexNum divisor(ComplexNum x, double smallest) {
  return partSum(x) < smallest ? ComplexNum{smallest, 0.0} : x;
}

// Solutions of (T - lambda) x = 0 for the quasi-triangular T with the given eigenvalues.
class BackSubstitution {
 public:
  BackSubstitution(const double* t, std::size_t n, const ComplexNum* values, double norm)
      : t_(t), n_(n), values_(values), norm_(norm) {}

  // For the real eigenvalue at `last`; n elements of which those from last + 1 on are 0.
  void real(std::size_t last, double* x) const {
    const double lambda = values_[last].real, smallest = smallestDivisor(values_[last]);
    std::fill_n(x, n_, 0.0);
    x[last] = 1.0;
    for (std::size_t i = last; i-- > 0;) {
      const std::size_t next = i + 1;
      double r;
      dot(row(i) + next, x + next, last - i, r);
      const double w = row(i)[i] - lambda;
      if (values_[i].imaginary == 0.0) {
        x[i] = -r / divisor({w, 0.0}, smallest).real;
        limit(x, nullptr, i, 1, last);
        continue;
      }
      // Rows i - 1 and i of a pair's block.
      const std::size_t k = i - 1;
      double s;
      dot(row(k) + next, x + next, last - i, s);
      const double above = row(k)[i], below = row(i)[k], v = row(k)[k] - lambda;
      const double a = values_[k].real - lambda, b = values_[k].imaginary;
      double determinant = a * a + b * b;
      if (determinant < smallest * smallest) determinant = smallest * smallest;
      x[k] = (above * r - w * s) / determinant;
      x[i] = fabs(above) > fabs(w) ? (-s - v * x[k]) / above : (-r - below * x[k]) / w;
      limit(x, nullptr, k, 2, last);
      i = k;
    }
  }

  // For the eigenvalue with positive imaginary part at `first`, its conjugate behind it: real parts
  // to x, imaginary parts to y.
  void complex(std::size_t first, double* x, double* y) const {
    const std::size_t last = first + 1;
    const ComplexNum lambda = values_[first];
    const double smallest = smallestDivisor(lambda);
    std::fill_n(x, n_, 0.0);
    std::fill_n(y, n_, 0.0);
    y[last] = 1.0;
    const double above = row(first)[last], below = row(last)[first];
    if (fabs(below) > fabs(above)) {
      x[first] = -lambda.imaginary / below;
      y[first] = -(row(last)[last] - lambda.real) / below;
    } else {
      set(x, y, first, divide(ComplexNum{0.0, -above}, divisor(shifted(first, lambda), smallest)));
    }
    for (std::size_t i = first; i-- > 0;) {
      const std::size_t next = i + 1;
      ComplexNum r;
      dots(row(i) + next, x + next, y + next, last - i, r);
      const ComplexNum w = shifted(i, lambda);
      if (values_[i].imaginary == 0.0) {
        set(x, y, i, divide(-r, divisor(w, smallest)));
        limit(x, y, i, 1, last);
        continue;
      }
      const std::size_t k = i - 1;
      ComplexNum s;
      dots(row(k) + next, x + next, y + next, last - i, s);
      const ComplexNum v = shifted(k, lambda);
      const double a = values_[k].real - lambda.real, b = values_[k].imaginary;
      const ComplexNum determinant = {a * a + (b - lambda.imaginary) * (b + lambda.imaginary),
                                      -2.0 * a * lambda.imaginary};
      const double right = row(k)[i], left = row(i)[k];
      const ComplexNum xk =
          divide(scaled(r, right) - w * s, divisor(determinant, smallest * smallest));
      set(x, y, k, xk);
      set(x, y, i,
          fabs(right) > partSum(w) ? divide(-s - v * xk, right) : divide(-r - scaled(xk, left), w));
      limit(x, y, k, 2, last);
      i = k;
    }
  }

 private:
  const double* row(std::size_t i) const { return t_ + i * n_; }
  ComplexNum shifted(std::size_t i, ComplexNum lambda) const {
    return {row(i)[i] - lambda.real, -lambda.imaginary};
  }
  static void set(double* x, double* y, std::size_t i, ComplexNum value) {
    x[i] = value.real;
    y[i] = value.imaginary;
  }

  double smallestDivisor(ComplexNum lambda) const {
    const double size = std::max(partSum(lambda), 0x1p-200 * norm_);
    return size > 0.0 ? kEpsilon * size : 1.0;
  }

  // Scales the solution down when elements i.. of it are so large that the next could overflow.
  static void limit(double* x, double* y, std::size_t i, std::size_t count, std::size_t last) {
    double largest = 0.0;
    for (std::size_t k = i; k < i + count; ++k) {
      largest = std::max(largest, std::max(fabs(x[k]), y != nullptr ? fabs(y[k]) : 0.0));
    }
    if (!(largest > 0x1p26)) return;
    for (std::size_t k = i; k <= last; ++k) {
      x[k] /= largest;
      if (y != nullptr) y[k] /= largest;
    }
  }

  const double* t_;
  std::size_t n_;
  const ComplexNum* values_;
  double norm_;
};

void solve(const double* t, std::size_t n, const ComplexNum* values, double norm, double* x) {
  const BackSubstitution back(t, n, values, norm);
  for (std::size_t j = 0; j < n; ++j) {
    if (values[j].imaginary == 0.0) {
      back.real(j, x + j * n);
    } else {
      back.complex(j, x + j * n, x + (j + 1) * n);
      ++j;
    }
  }
}

// The rows of `v`, of conjugate pairs the real and the imaginary parts, as the columns of
// `vectors`.
void writeVectors(double* v, std::size_t n, const ComplexNum* values, const Balance& balance,
                  ComplexNum* vector, ComplexNum* vectors) {
  for (std::size_t j = 0; j < n; ++j) {
    const bool pair = values[j].imaginary != 0.0;
    const double *x = v + j * n, *y = x + n;
    for (std::size_t i = 0; i < n; ++i) vector[i] = {x[i], pair ? y[i] : 0.0};
    restore(vector, n, balance);
    normalise(vector, n);
    for (std::size_t i = 0; i < n; ++i) {
      vectors[i * n + j] = pair ? vector[i] : ComplexNum{vector[i].real, 0.0};
      if (pair) vectors[i * n + j + 1] = conjugate(vector[i]);
    }
    if (pair) ++j;
  }
}

}  // namespace
}  // namespace fathom

AnalysisStatus GenEigenValueVector(const double* a, int32_t n, int32_t option, ComplexNum* values,
                                   ComplexNum* vectors) {
  using fathom::Workspace;
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (option != FATHOM_EIGEN_VALUES && option != FATHOM_EIGEN_VECTORS) return FATHOM_ERR_SELECTION;
  const bool both = option == FATHOM_EIGEN_VECTORS;
  const auto size = static_cast<std::size_t>(n);
  const std::size_t elements = fathom::matrixSize(n, n);
  Workspace<double> h(elements), z(both ? elements : 0), x(both ? elements : 0);
  if (!h || !z || !x) return FATHOM_ERR_MEMORY;
  Workspace<double> scale(size), work(3 * size);
  Workspace<ComplexNum> found(size), vector(both ? size : 0);
  if (!scale || !work || !found || !vector) return FATHOM_ERR_MEMORY;

  double inverse;
  if (!fathom::copyInRange(a, size, h.data(), inverse)) return FATHOM_ERR_ITERATIONS;
  const fathom::MatrixBlock<double> block = {h.data(), size, size, size};
  const fathom::Balance balance = fathom::balanced(block, scale.data());
  fathom::reduce(block, balance, both ? z.data() : nullptr, work.data());
  fathom::RealSchur schur(h.data(), size, both ? z.data() : nullptr, found.data());
  if (!schur.iterate(balance)) return FATHOM_ERR_ITERATIONS;
  if (both) {
    fathom::solve(h.data(), size, found.data(), schur.norm(), x.data());
    fathom::multiply(x.data(), size, z.data(), size, h.data(), size, size, size, size);
    fathom::writeVectors(h.data(), size, found.data(), balance, vector.data(), vectors);
  }
  for (std::size_t i = 0; i < size; ++i) values[i] = fathom::scaled(found[i], inverse);
  return FATHOM_OK;
}
