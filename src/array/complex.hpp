// The formulas of complex arithmetic, each written once for its scalar and its array routine. The
// order of the operations in them decides the last bits.
#ifndef FATHOM_ARRAY_COMPLEX_HPP
#define FATHOM_ARRAY_COMPLEX_HPP

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

// In the namespace of ComplexNum, so that they are found wherever one is at hand.
FATHOM_INLINE ComplexNum operator+(ComplexNum a, ComplexNum b) {
  return {a.real + b.real, a.imaginary + b.imaginary};
}

FATHOM_INLINE ComplexNum operator-(ComplexNum a, ComplexNum b) {
  return {a.real - b.real, a.imaginary - b.imaginary};
}

FATHOM_INLINE ComplexNum operator-(ComplexNum a) {
  return {-a.real, -a.imaginary};
}

FATHOM_INLINE ComplexNum operator*(ComplexNum a, ComplexNum b) {
  using fathom::rounded;
  return {rounded(a.real * b.real) - rounded(a.imaginary * b.imaginary),
          rounded(a.real * b.imaginary) + rounded(a.imaginary * b.real)};
}

namespace fathom {

using Complex = ComplexNum;

struct Polar {
  double magnitude;
  double phase;
};

// What the checks ask of a number: false for NaN as well as for zero.
FATHOM_INLINE bool isNonzero(double x) {
  return fabs(x) > 0.0;
}

FATHOM_INLINE double squaredModulus(Complex a) {
  return a.real * a.real + a.imaginary * a.imaginary;
}

// a / b, where m is the squared modulus of b. Nothing is scaled: m may underflow or overflow.
FATHOM_INLINE Complex quotient(Complex a, Complex b, double m) {
  return {(rounded(a.real * b.real) + rounded(a.imaginary * b.imaginary)) / m,
          (rounded(a.imaginary * b.real) - rounded(a.real * b.imaginary)) / m};
}

// With the angle atan2(im, re); but both are 0 where each part is zero or NaN.
FATHOM_INLINE Polar polar(Complex a, double angle) {
  const bool nonzero =
      static_cast<int>(isNonzero(a.real)) | static_cast<int>(isNonzero(a.imaginary));
  const double modulus = sqrt(squaredModulus(a));
  return {nonzero ? modulus : 0.0, nonzero ? angle : 0.0};
}

inline Complex rectangular(Polar p) {
  double sine, cosine;
  sincos(p.phase, sine, cosine);
  return {cosine * p.magnitude, sine * p.magnitude};
}

}  // namespace fathom

#endif
