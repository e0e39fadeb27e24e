// The formulas of complex arithmetic, each written once for its scalar and its array routine. The
// order of the operations in them decides the last bits. A zero divisor is one that is no number as
// well.
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

// False for NaN as well as for zero.
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

// The polar form of a, whose angle is given. It is 0, 0 where neither part is a number but zero.
FATHOM_INLINE Polar polar(Complex a, double angle) {
  const bool nonzero = isNonzero(a.re) || isNonzero(a.im);
  return {nonzero ? sqrt(squaredModulus(a)) : 0.0, nonzero ? angle : 0.0};
}

// The rectangular form of the magnitude at an angle of this sine and cosine.
FATHOM_INLINE Complex rectangular(double magnitude, double sine, double cosine) {
  return {cosine * magnitude, sine * magnitude};
}

}  // namespace fathom

#endif
