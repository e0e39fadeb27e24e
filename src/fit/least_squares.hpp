// A linear least-squares problem with its factorisation and solution: what the two halves of the
// general fit, the six factorisations and what is made of them, share.
#ifndef FATHOM_FIT_LEAST_SQUARES_HPP
#define FATHOM_FIT_LEAST_SQUARES_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace fathom {

inline constexpr std::size_t kPartial = 8;  // sums over rows that run side by side

// A Householder reflection I - v v^T / gamma of a row of R, whose element of v is `pivot`, and the
// rows of a block. Where nothing is to be done, gamma is 0.
struct Reflection {
  double pivot;
  double gamma;
};

// Rotates pairs x and z. With the sines negated it is the rotation back.
FATHOM_INLINE void rotate(double* x, double* z, const double* cosines, const double* sines,
                          double sign, std::size_t count) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    const double c = cosines[i], s = sign * sines[i], before = x[i];
    x[i] = rounded(before * c) + rounded(z[i] * s);
    z[i] = rounded(z[i] * c) - rounded(before * s);
  }
}

// The matrix is kept column after column in blocks of rows that fit the first-level cache, its
// columns, the right-hand side and the deviations scaled by powers of two. The last block is filled
// up with rows of zeros, so that no loop over rows has a remainder. All of it is one piece of
// memory.
class LeastSquares {
 public:
  LeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
               const double* deviations, std::int32_t algorithm);

  explicit operator bool() const { return memory_ && pivots_; }

  // All that can fail is in these two; the second is for the covariance only.
  AnalysisStatus solve();
  AnalysisStatus invert();

  void coefficients(double* c) const;
  // `fitted` may be `y`.
  void fitted(const double* y, double* fitted) const;
  // Of the residuals in units of their deviations.
  double sumOfSquares() const;
  // The inverse of the matrix of the normal equations times a factor.
  void covariance(double factor, double* c) const;

 private:
  std::size_t rowsOf(std::size_t block) const {
    return std::min(blockRows_, rows_ - block * blockRows_);
  }
  std::size_t firstOf(std::size_t block) const { return block * blockRows_; }

  // Calls run(block of a or q, first row, rows) for all blocks, or from the last to the first.
  template <typename Run>
  void forBlocks(double* matrix, bool backwards, const Run& run) const {
    for (std::size_t i = 0; i < blocks_; ++i) {
      const std::size_t block = backwards ? blocks_ - 1 - i : i;
      run(matrix + firstOf(block) * k_, firstOf(block), rowsOf(block));
    }
  }
  const double* deviationsFrom(std::size_t first) const {
    return weighted_ ? deviations_ + first : nullptr;
  }
  double tolerance() const { return 0x1p-52 * static_cast<double>(points_); }
  double& nullVector(std::size_t i, std::size_t t) { return v_[i * k_ + t]; }
  double& basis(std::size_t i, std::size_t t) { return r_[i * k_ + t]; }

  // In factorisation.cpp:

  // Scales the columns of a block, and makes the copy that is factored.
  void prepare(std::size_t first, std::size_t rows);
  AnalysisStatus factor();
  // Whether what is left of each column is above its part of the column, whose norm is that of R's.
  bool isRegular(double part) const;
  void orthonormalise();
  AnalysisStatus decompose();
  AnalysisStatus factorNormal();
  // x = R^-1 x and x = R^-T x, with the triangle or its singular values.
  void solveFactor(double* x);
  void solveTransposed(double* x);
  // x = to S^+ from^T x
  void turn(const double* from, const double* to, double* x);
  // The block reflections or rotations applied to (top, f).
  void applyFactor(bool backwards);
  // Solves r + A x = f, A^T r = g: x goes to dx_, r to f_.
  void correct();
  // f = f - (q^T f - kept) q for column q of Q; returns q^T f.
  double projected(std::size_t j, double kept);
  void columnSums(double* sums);

  // In least_squares.cpp:

  std::size_t request() const;
  void load(const double* h, const double* y, const double* deviations);
  // What x and the residuals leave over of the equations: f = b - r - A x, g = -A^T r.
  void leftOver();
  // A first correction of the size of the solution means that the factorisation saw dependent
  // columns, though it found none.
  AnalysisStatus refine();
  // The solution of smallest norm, of those that the numerical rank leaves.
  void solveDeficient();
  // The last columns of V turned among each other so that the elements that were scaled up most are
  // zero in all but one of them, each the lead of its column; and, in place of R, an orthonormal
  // basis of what they are without the scaling of the columns, built from the first lead on.
  void makeNullSpace();
  void dropComponent(double* x, std::size_t stride, std::size_t t);
  // Takes from x what the matrix maps to zero: first so that the leads vanish, which are the
  // largest elements without the scaling, then by the basis.
  void shorten(double* x);

  std::size_t points_, k_, blockRows_, rows_, blocks_;
  bool weighted_;
  std::int32_t algorithm_;
  Workspace<double> memory_;
  Workspace<std::int32_t> pivots_;  // of LU, or the leads of null vectors
  std::size_t rank_ = 0;
  // What the right-hand side and the deviations were divided by.
  double unit_ = 1.0, deviationUnit_ = 1.0, largestScale_ = 1.0;
  // The matrix with its columns scaled; the same divided by the deviations, which becomes Q, the
  // reflections, or the sines of the rotations; their cosines.
  double *a_ = nullptr, *q_ = nullptr, *cosines_ = nullptr;
  // Of a column each: the right-hand side, the residuals in two parts, and room.
  double *b_ = nullptr, *deviations_ = nullptr, *residual_ = nullptr, *residualLow_ = nullptr;
  double *f_ = nullptr, *low_ = nullptr, *weight_ = nullptr, *weightLow_ = nullptr;
  // k x k: R or its LU factor; its singular vectors, or the matrix of the normal equations; and the
  // inverse of the factor, of which the covariance is the product with its transpose, or, with LU,
  // that product itself.
  double *r_ = nullptr, *u_ = nullptr, *v_ = nullptr, *root_ = nullptr;
  // Of a row each: the factors of the columns, the singular values, the solution, and room.
  double *scale_ = nullptr, *s_ = nullptr, *x_ = nullptr, *dx_ = nullptr;
  double *g_ = nullptr, *top_ = nullptr, *h_ = nullptr, *sums_ = nullptr, *partial_ = nullptr;
  Reflection* reflections_ = nullptr;
};

}  // namespace fathom

#endif
