// Least squares of a triangle R and a right side q for any damping: u that makes
// |R u - q|^2 + damping |u|^2 least. Rotations make R V orthogonal, so that each solution is a sum
// over its columns. (M. R. Hestenes, "Inversion of matrices by biorthogonalization and related
// results", Journal of the Society for Industrial and Applied Mathematics, 1958.)
#ifndef FATHOM_FIT_DAMPED_LEAST_SQUARES_HPP
#define FATHOM_FIT_DAMPED_LEAST_SQUARES_HPP

#include <algorithm>
#include <cstddef>

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"
#include "linalg/householder.hpp"

namespace fathom {

class DampedLeastSquares {
 public:
  DampedLeastSquares(double* columns, double* turns, double* squares, double* projections)
      : w_(columns), v_(turns), squares_(squares), t_(projections) {}

  // Rows of w_ and v_ are columns of the matrices. Without damping, columns of R V shorter than
  // `negligible` times the longest take no part.
  void set(MatrixBlock<double> r, std::size_t k, const double* q, double negligible) {
    k_ = k;
    for (std::size_t i = 0; i < k; ++i) {
      for (std::size_t j = 0; j < k; ++j) {
        w_[i * k + j] = j <= i ? r.row(j)[i] : 0.0;
        v_[i * k + j] = i == j ? 1.0 : 0.0;
      }
    }
    bool turned = true;
    for (int sweep = 0; sweep < kSweeps && turned; ++sweep) {
      turned = false;
      for (std::size_t i = 0; i + 1 < k; ++i) {
        for (std::size_t j = i + 1; j < k; ++j) turned = makeOrthogonal(i, j) || turned;
      }
    }
    least_ = 0.0;
    for (std::size_t i = 0; i < k; ++i) {
      squares_[i] = dot(w_ + i * k, w_ + i * k, k);
      least_ = std::max(least_, squares_[i] * negligible * negligible);
      t_[i] = dot(w_ + i * k, q, k);
    }
  }

  void solve(double damping, double* u) const {
    std::fill_n(u, k_, 0.0);
    for (std::size_t i = 0; i < k_; ++i) {
      const double factor = part(i, damping);
      for (std::size_t j = 0; j < k_; ++j) u[j] += factor * v_[i * k_ + j];
    }
  }

  // |u|
  double length(double damping) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < k_; ++i) sum += part(i, damping) * part(i, damping);
    return sqrt(sum);
  }

  // |q|^2 - |R u - q|^2, but for what rounding leaves of it.
  double gain(double damping) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < k_; ++i) {
      const double a = part(i, damping);
      sum += a * a * (squares_[i] + 2.0 * damping);
    }
    return sum;
  }

  // What makes |u| the radius, or little more; 0 where it is no longer without. Newton's method on
  // 1 / |u| climbs to it from the bound that the largest part sets.
  double dampingFor(double radius) const {
    if (length(0.0) <= radius) return 0.0;
    double damping = 0.0;
    for (std::size_t i = 0; i < k_; ++i) {
      damping = std::max(damping, fabs(t_[i]) / radius - squares_[i]);
    }
    for (int step = 0; step < kClimb; ++step) {
      double sum = 0.0, slope = 0.0;
      for (std::size_t i = 0; i < k_; ++i) {
        const double a = part(i, damping);
        sum += a * a;
        if (a != 0.0) slope += a * a / (squares_[i] + damping);
      }
      const double reached = sqrt(sum);
      if (!(reached > 1.05 * radius)) break;
      damping += (reached / radius - 1.0) * (sum / slope);
    }
    return damping;
  }

 private:
  static constexpr int kSweeps = 40;
  static constexpr int kClimb = 50;

  static double dot(const double* a, const double* b, std::size_t n) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) sum += a[i] * b[i];
    return sum;
  }

  // The part of u along column i of V.
  double part(std::size_t i, double damping) const {
    if (damping == 0.0 && !(squares_[i] > least_)) return 0.0;
    return t_[i] / (squares_[i] + damping);
  }

  bool makeOrthogonal(std::size_t i, std::size_t j) {
    double *a = w_ + i * k_, *b = w_ + j * k_;
    const double alpha = dot(a, a, k_), beta = dot(b, b, k_), gamma = dot(a, b, k_);
    if (!(fabs(gamma) > kEpsilon * sqrt(alpha * beta))) return false;
    const double zeta = (beta - alpha) / (2.0 * gamma);
    const double root = fabs(zeta) + hypotenuse(1.0, zeta);
    const double tangent = zeta > 0.0 ? 1.0 / root : -1.0 / root;
    const double cosine = 1.0 / sqrt(1.0 + tangent * tangent), sine = cosine * tangent;
    turn(a, b, cosine, sine);
    turn(v_ + i * k_, v_ + j * k_, cosine, sine);
    return true;
  }

  void turn(double* a, double* b, double cosine, double sine) const {
    for (std::size_t i = 0; i < k_; ++i) {
      const double first = a[i], second = b[i];
      a[i] = rounded(cosine * first) - rounded(sine * second);
      b[i] = rounded(sine * first) + rounded(cosine * second);
    }
  }

  std::size_t k_ = 0;
  double *w_, *v_, *squares_, *t_;
  double least_ = 0.0;
};

}  // namespace fathom

#endif
