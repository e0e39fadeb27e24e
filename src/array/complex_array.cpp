// Split complex arrays, element by element: arithmetic and the conversion between rectangular and
// polar form. An element is read whole before its result is written.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/complex.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::Complex;

struct Operand {
  const double* re;
  const double* im;
  FATHOM_INLINE Complex operator[](std::size_t i) const { return {re[i], im[i]}; }
};

struct Result {
  double* re;
  double* im;
  FATHOM_INLINE void set(std::size_t i, Complex z) const {
    re[i] = z.re;
    im[i] = z.im;
  }
};

// y[i] = element(i) for every i. Long outputs are brought to a cache line first.
template <typename Element>
FATHOM_INLINE void forEach(std::size_t n, Result y, Element element) {
  constexpr std::size_t kLine = 64;
  std::size_t start = 0;
  if (n >= 256) {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(y.re) % kLine;
    const std::size_t head = (kLine - past) % kLine / sizeof(double);
    for (; start < head; ++start) y.set(start, element(start));
  }
  FATHOM_INDEPENDENT
  for (std::size_t i = start; i < n; ++i) y.set(i, element(i));
}

FATHOM_MULTIVERSION void multiply(Operand a, Operand b, std::size_t n, Result y) {
  forEach(n, y, [=](std::size_t i) { return a[i] * b[i]; });
}

FATHOM_MULTIVERSION void evaluateLine(Operand a, std::size_t n, Complex b, Complex c, Result y) {
  forEach(n, y, [=](std::size_t i) { return a[i] * b + c; });
}

// Divides up to the first element whose divisor has no squared modulus to divide by; returns its
// index, or n. All divisors of a block are known to be fit before its first quotient is written.
FATHOM_MULTIVERSION std::size_t divideChecked(Operand a, Operand b, std::size_t n, Result y) {
  constexpr std::size_t kBlock = 64;
  double m[kBlock];
  std::size_t start = 0;
  while (start < n) {
    const std::size_t length = std::min(kBlock, n - start);
    std::int64_t unfit = 0;
    for (std::size_t i = 0; i < length; ++i) {
      m[i] = fathom::squaredModulus(b[start + i]);
      unfit |= fathom::isNonzero(m[i]) ? 0 : 1;
    }
    if (unfit != 0) break;
    FATHOM_INDEPENDENT
    for (std::size_t i = 0; i < length; ++i) {
      y.set(start + i, fathom::quotient(a[start + i], b[start + i], m[i]));
    }
    start += length;
  }
  for (; start < n; ++start) {
    const double modulus = fathom::squaredModulus(b[start]);
    if (!fathom::isNonzero(modulus)) break;
    y.set(start, fathom::quotient(a[start], b[start], modulus));
  }
  return start;
}

// The conversions take their angles, sines and cosines from tiles.
constexpr std::size_t kTile = 128;

FATHOM_MULTIVERSION void toPolar(Operand a, const double* angle, std::size_t n, double* magnitude,
                                 double* phase) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const fathom::Polar p = fathom::polar(a[i], angle[i]);
    magnitude[i] = p.magnitude;
    phase[i] = p.phase;
  }
}

FATHOM_MULTIVERSION void toRectangular(const double* magnitude, const double* sine,
                                       const double* cosine, std::size_t n, Result y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    y.set(i, fathom::rectangular(magnitude[i], sine[i], cosine[i]));
  }
}

}  // namespace

AnalysisStatus CxAdd1D(const double* ar, const double* ai, const double* br, const double* bi,
                       int32_t n, double* re, double* im) {
  const AnalysisStatus status = Add1D(ar, br, n, re);
  return status == FATHOM_OK ? Add1D(ai, bi, n, im) : status;
}

AnalysisStatus CxSub1D(const double* ar, const double* ai, const double* br, const double* bi,
                       int32_t n, double* re, double* im) {
  const AnalysisStatus status = Sub1D(ar, br, n, re);
  return status == FATHOM_OK ? Sub1D(ai, bi, n, im) : status;
}

AnalysisStatus CxMul1D(const double* ar, const double* ai, const double* br, const double* bi,
                       int32_t n, double* re, double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  multiply({ar, ai}, {br, bi}, static_cast<std::size_t>(n), {re, im});
  return FATHOM_OK;
}

AnalysisStatus CxDiv1D(const double* ar, const double* ai, const double* br, const double* bi,
                       int32_t n, double* re, double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  const std::size_t divided = divideChecked({ar, ai}, {br, bi}, count, {re, im});
  return divided == count ? FATHOM_OK : FATHOM_ERR_DIVIDE_BY_ZERO;
}

AnalysisStatus CxLinEv1D(const double* ar, const double* ai, int32_t n, double br, double bi,
                         double cr, double ci, double* re, double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluateLine({ar, ai}, static_cast<std::size_t>(n), {br, bi}, {cr, ci}, {re, im});
  return FATHOM_OK;
}

AnalysisStatus ToPolar1D(const double* re, const double* im, int32_t n, double* magnitude,
                         double* phase) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  double angle[kTile];
  for (std::size_t start = 0; start < count; start += kTile) {
    const std::size_t length = std::min(kTile, count - start);
    fathom::atan2(im + start, re + start, length, angle);
    toPolar({re + start, im + start}, angle, length, magnitude + start, phase + start);
  }
  return FATHOM_OK;
}

AnalysisStatus ToRect1D(const double* magnitude, const double* phase, int32_t n, double* re,
                        double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  double sine[kTile];
  double cosine[kTile];
  for (std::size_t start = 0; start < count; start += kTile) {
    const std::size_t length = std::min(kTile, count - start);
    fathom::sincos(phase + start, length, sine, cosine);
    toRectangular(magnitude + start, sine, cosine, length, {re + start, im + start});
  }
  return FATHOM_OK;
}
