// The formulas of complex arithmetic, each written once for its scalar and its array routine. The
// order of the operations in them decides the last bits.
#ifndef FATHOM_ARRAY_COMPLEX_HPP
#define FATHOM_ARRAY_COMPLEX_HPP

#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

struct Complex {
  double re;
  double im;
};

struct Polar {
  double magnitude;
  double phase;
};

// What the checks ask of a number: false for NaN as well as for zero.
FATHOM_INLINE bool isNonzero(double x) {
  return fabs(x) > 0.0;
}

FATHOM_INLINE Complex operator+(Complex a, Complex b) {
  return {a.re + b.re, a.im + b.im};
}

FATHOM_INLINE Complex operator-(Complex a, Complex b) {
  return {a.re - b.re, a.im - b.im};
}

FATHOM_INLINE Complex operator*(Complex a, Complex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

FATHOM_INLINE double squaredModulus(Complex a) {
  return a.re * a.re + a.im * a.im;
}

// a / b, where m is the squared modulus of b. Nothing is scaled: m may underflow or overflow.
FATHOM_INLINE Complex quotient(Complex a, Complex b, double m) {
  return {(a.re * b.re + a.im * b.im) / m, (a.im * b.re - a.re * b.im) / m};
}

// Both are 0 where each part is zero or NaN.
inline Polar polar(Complex a) {
  if (!isNonzero(a.re) && !isNonzero(a.im)) return {0.0, 0.0};
  return {sqrt(squaredModulus(a)), atan2(a.im, a.re)};
}

inline Complex rectangular(Polar p) {
  double sine, cosine;
  sincos(p.phase, sine, cosine);
  return {cosine * p.magnitude, sine * p.magnitude};
}

}  // namespace fathom

#endif
