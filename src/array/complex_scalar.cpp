// Complex scalars: arithmetic, elementary functions, conversion between rectangular and polar form.
// Results are complete before the first is written.
#include "array/complex.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"

namespace {

using fathom::Complex;
using fathom::isNonzero;
using fathom::rectangular;
using fathom::squaredModulus;

constexpr double kLog10OfE = 0.434294481903252;  // to these digits, not to the last bit

AnalysisStatus give(Complex z, double* re, double* im) {
  *re = z.real;
  *im = z.imaginary;
  return FATHOM_OK;
}

}  // namespace

AnalysisStatus CxAdd(double ar, double ai, double br, double bi, double* re, double* im) {
  return give(Complex{ar, ai} + Complex{br, bi}, re, im);
}

AnalysisStatus CxSub(double ar, double ai, double br, double bi, double* re, double* im) {
  return give(Complex{ar, ai} - Complex{br, bi}, re, im);
}

AnalysisStatus CxMul(double ar, double ai, double br, double bi, double* re, double* im) {
  return give(Complex{ar, ai} * Complex{br, bi}, re, im);
}

AnalysisStatus CxDiv(double ar, double ai, double br, double bi, double* re, double* im) {
  if (!isNonzero(br) && !isNonzero(bi)) return FATHOM_ERR_DIVIDE_BY_ZERO;
  const Complex b = {br, bi};
  return give(fathom::quotient({ar, ai}, b, squaredModulus(b)), re, im);
}

AnalysisStatus CxRecip(double ar, double ai, double* re, double* im) {
  const double m = squaredModulus({ar, ai});
  if (!isNonzero(m)) return FATHOM_ERR_DIVIDE_BY_ZERO;  // as it is when both parts are zero
  return give({ar / m, -ai / m}, re, im);
}

AnalysisStatus CxSqrt(double ar, double ai, double* re, double* im) {
  const double q = squaredModulus({ar, ai});
  if (!isNonzero(q)) return give({0.0, 0.0}, re, im);
  return give(rectangular({fathom::sqrt(fathom::sqrt(q)), fathom::atan2(ai, ar) * 0.5}), re, im);
}

AnalysisStatus CxExp(double ar, double ai, double* re, double* im) {
  return give(rectangular({fathom::exp(ar), ai}), re, im);
}

AnalysisStatus CxLn(double ar, double ai, double* re, double* im) {
  const double q = squaredModulus({ar, ai});
  if (!isNonzero(q)) return FATHOM_ERR_DIVIDE_BY_ZERO;
  return give({fathom::log(q) * 0.5, fathom::atan2(ai, ar)}, re, im);
}

AnalysisStatus CxLog(double ar, double ai, double* re, double* im) {
  const double q = squaredModulus({ar, ai});
  if (!isNonzero(q)) return FATHOM_ERR_DIVIDE_BY_ZERO;
  return give({fathom::log10(q) * 0.5, fathom::atan2(ai, ar) * kLog10OfE}, re, im);
}

AnalysisStatus CxPow(double ar, double ai, double p, double* re, double* im) {
  const double q = squaredModulus({ar, ai});
  if (isNonzero(q)) {
    return give(rectangular({fathom::pow(q, 0.5 * p), fathom::atan2(ai, ar) * p}), re, im);
  }
  if (!isNonzero(p)) return FATHOM_ERR_DIVIDE_BY_ZERO;
  return give({0.0, 0.0}, re, im);
}

AnalysisStatus ToPolar(double re, double im, double* magnitude, double* phase) {
  const fathom::Polar a = fathom::polar({re, im}, fathom::atan2(im, re));
  *magnitude = a.magnitude;
  *phase = a.phase;
  return FATHOM_OK;
}

AnalysisStatus ToRect(double magnitude, double phase, double* re, double* im) {
  return give(rectangular({magnitude, phase}), re, im);
}
