// What the elements of real and complex matrices have in common, so that one template serves both.
// The operators of ComplexNum are those of array/complex.hpp.
#ifndef FATHOM_LINALG_ELEMENT_HPP
#define FATHOM_LINALG_ELEMENT_HPP

#include <cstddef>
#include <type_traits>

#include "array/complex.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

// The distance from 1 to the next larger double.
inline constexpr double kEpsilon = 0x1p-52;

template <typename Element>
inline constexpr bool kIsComplex = std::is_same_v<Element, ComplexNum>;
static_assert(sizeof(ComplexNum) == 2 * sizeof(double));

// The doubles of an element.
template <typename Element>
inline constexpr std::size_t kPartsOf = sizeof(Element) / sizeof(double);

// The element of a real value; Element{} is zero.
template <typename Element>
constexpr Element element(double real) {
  if constexpr (kIsComplex<Element>) {
    return {real, 0.0};
  } else {
    return real;
  }
}

FATHOM_INLINE double conjugate(double a) {
  return a;
}
FATHOM_INLINE ComplexNum conjugate(ComplexNum a) {
  return {a.real, -a.imaginary};
}

FATHOM_INLINE double realPart(double a) {
  return a;
}
FATHOM_INLINE double realPart(ComplexNum a) {
  return a.real;
}

// squaredModulus of a complex element is in array/complex.hpp.
FATHOM_INLINE double squaredModulus(double a) {
  return a * a;
}

FATHOM_INLINE double magnitude(double a) {
  return fabs(a);
}
FATHOM_INLINE double magnitude(ComplexNum a) {
  return sqrt(squaredModulus(a));
}

FATHOM_INLINE bool isZero(double a) {
  return a == 0.0;
}
FATHOM_INLINE bool isZero(ComplexNum a) {
  return a.real == 0.0 && a.imaginary == 0.0;
}

FATHOM_INLINE double divide(double a, double b) {
  return a / b;
}
// R. L. Smith, "Algorithm 116: Complex division", Communications of the ACM, 1962: scaled by the
// larger part of the divisor, so that no square can overflow.
FATHOM_INLINE ComplexNum divide(ComplexNum a, ComplexNum b) {
  if (fabs(b.real) >= fabs(b.imaginary)) {
    const double ratio = b.imaginary / b.real;
    const double divisor = b.real + b.imaginary * ratio;
    return {(a.real + rounded(a.imaginary * ratio)) / divisor,
            (a.imaginary - rounded(a.real * ratio)) / divisor};
  }
  const double ratio = b.real / b.imaginary;
  const double divisor = b.imaginary + b.real * ratio;
  return {(rounded(a.real * ratio) + a.imaginary) / divisor,
          (rounded(a.imaginary * ratio) - a.real) / divisor};
}

FATHOM_INLINE ComplexNum divide(ComplexNum a, double b) {
  return {a.real / b, a.imaginary / b};
}

FATHOM_INLINE double scaled(double a, double factor) {
  return a * factor;
}
FATHOM_INLINE ComplexNum scaled(ComplexNum a, double factor) {
  return {a.real * factor, a.imaginary * factor};
}

// sqrt(a^2 + b^2), by way of the quotient where the squares could overflow or lose digits; NaN of
// NaN.
inline double hypotenuse(double a, double b) {
  const double sum = a * a + b * b;
  if (sum > 0x1p-900 && sum < 0x1p1000) return sqrt(sum);
  const double x = fabs(a), y = fabs(b);
  const double larger = x > y ? x : y, smaller = x > y ? y : x;
  if (larger == 0.0 && smaller == 0.0) return 0.0;
  const double ratio = smaller / larger;
  return larger * sqrt(1.0 + ratio * ratio);
}

}  // namespace fathom

#endif
