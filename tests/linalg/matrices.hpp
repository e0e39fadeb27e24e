// Matrices that try factorisations, and the measure of their results: norms of residuals in units
// of n 2^-53 times the norm of the matrix.
#ifndef FATHOM_TESTS_LINALG_MATRICES_HPP
#define FATHOM_TESTS_LINALG_MATRICES_HPP

#include <complex>

#include "support/testing.hpp"

namespace fathom::test {

using Complex = std::complex<double>;

constexpr double kLargestResidual = 30.0;

template <typename T>
struct Matrix {
  std::size_t rows, columns;
  std::vector<T> at = std::vector<T>(rows * columns);

  T& operator()(std::size_t i, std::size_t j) { return at[i * columns + j]; }
  const T& operator()(std::size_t i, std::size_t j) const { return at[i * columns + j]; }
  friend bool operator==(const Matrix&, const Matrix&) = default;
};

inline double conj(double x) {
  return x;
}

template <typename T>
auto* pointer(std::vector<T>& x) {
  if constexpr (std::is_same_v<T, double>) {
    return x.data();
  } else {
    return reinterpret_cast<ComplexNum*>(x.data());
  }
}

template <typename T>
Matrix<T> adjoint(const Matrix<T>& a) {
  Matrix<T> t{a.columns, a.rows};
  for (std::size_t i = 0; i < a.rows; ++i) {
    for (std::size_t j = 0; j < a.columns; ++j) t(j, i) = conj(a(i, j));
  }
  return t;
}

template <typename A, typename B>
auto product(const Matrix<A>& a, const Matrix<B>& b) {
  Matrix<decltype(A() * B())> c{a.rows, b.columns};
  for (std::size_t i = 0; i < a.rows; ++i) {
    for (std::size_t k = 0; k < a.columns; ++k) {
      for (std::size_t j = 0; j < b.columns; ++j) c(i, j) += a(i, k) * b(k, j);
    }
  }
  return c;
}

template <typename T>
double norm(const std::vector<T>& x) {
  double sum = 0.0;
  for (const T& v : x) sum += std::norm(v);
  return std::sqrt(sum);
}

// ||a - b|| in the units of a matrix of the given norm.
template <typename A, typename B>
double residual(const Matrix<A>& a, const Matrix<B>& b, double ofMatrix) {
  std::vector<Complex> difference(a.at.size());
  for (std::size_t i = 0; i < difference.size(); ++i) difference[i] = a.at[i] - b.at[i];
  const double unit = static_cast<double>(std::max(a.rows, a.columns)) * 0x1p-53 * ofMatrix;
  return norm(difference) == 0.0 ? 0.0 : norm(difference) / unit;
}

template <typename T>
double departureFromUnitary(const Matrix<T>& q) {
  Matrix<T> one{q.columns, q.columns};
  for (std::size_t i = 0; i < one.rows; ++i) one(i, i) = 1.0;
  return residual(product(adjoint(q), q), one, 1.0);
}

enum class Kind {
  kUniform,
  kGradedDown,
  kGradedUp,
  kHilbert,
  kVandermonde,
  kCompanion,
  kJordan,
  kCirculant,
  kPermutedTriangle,
  kZero,
  kOnes,
  kNearlySingular,
  kFarOff,
  kCount
};

template <typename T>
Matrix<T> make(Kind kind, std::size_t m, std::size_t n) {
  Matrix<T> a{m, n};
  const Values draws = uniform(2 * m * n, m + 3 * n);
  const auto draw = [&](std::size_t i, std::size_t j) -> T {
    const double* x = &draws[2 * (i * n + j)];
    if constexpr (std::is_same_v<T, double>) {
      return *x;
    } else {
      return T(x[0], x[1]);
    }
  };
  const auto element = [&](std::size_t i, std::size_t j) -> T {
    const double r = static_cast<double>(i), c = static_cast<double>(j);
    const double height = static_cast<double>(m), fraction = (r + c) / static_cast<double>(m + n);
    switch (kind) {
      case Kind::kUniform:
        return draw(i, j);
      case Kind::kGradedDown:
        return draw(i, j) * std::pow(1e-14, fraction);
      case Kind::kGradedUp:
        return draw(i, j) * std::pow(1e-14, 1 - fraction);
      case Kind::kHilbert:
        return 1.0 / (r + c + 1.0);
      case Kind::kVandermonde:
        return std::pow((r + 1.0) / height, c);
      case Kind::kCompanion:
        return i == 0 ? draw(i, j) : T(i == j + 1 ? 1.0 : 0.0);
      case Kind::kJordan:
        return i == j ? 2.0 : j == i + 1 ? 1.0 : 0.0;
      case Kind::kCirculant:
        return j == (i + 1) % n ? 1.0 : 0.0;
      case Kind::kPermutedTriangle:
        return 7 * i % m <= 7 * j % m ? draw(i, j) : T(0.0);
      case Kind::kOnes:
        return 1.0;
      case Kind::kNearlySingular:
        return i + 1 == m ? a(0, j) * (1.0 + 1e-15) : draw(i, j);
      case Kind::kFarOff:
        return draw(i, j) * 0x1p-520;
      default:
        return 0.0;
    }
  };
  for (std::size_t i = 0; i < m * n; ++i) a.at[i] = element(i / n, i % n);
  return a;
}

template <typename Check>
void forEachKind(const Check& check) {
  for (int kind = 0; kind < static_cast<int>(Kind::kCount); ++kind) {
    SCOPED_TRACE("kind " + std::to_string(kind));
    check(static_cast<Kind>(kind));
  }
}

}  // namespace fathom::test

#endif
