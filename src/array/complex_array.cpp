// Split complex arrays, element by element: arithmetic and the conversion between rectangular and
// polar form.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/complex.hpp"
#include "array/for_each.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::Complex;
using fathom::forEach;

struct Operand {
  const double* re;
  const double* im;
  FATHOM_INLINE Complex operator[](std::size_t i) const { return {re[i], im[i]}; }
};

struct Result {
  double* re;
  double* im;
};
FATHOM_INLINE void set(Result y, std::size_t i, Complex z) {
  y.re[i] = z.real;
  y.im[i] = z.imaginary;
}
FATHOM_INLINE std::size_t beforeLine(Result y, std::size_t n) {
  return fathom::beforeLine(y.re, n);
}
FATHOM_INLINE void fetchAhead(Result y, std::size_t start) {
  fathom::fetchAhead<fathom::kBlock>(y.re + start);
  fathom::fetchAhead<fathom::kBlock>(y.im + start);
}

FATHOM_MULTIVERSION void multiply(Operand a, Operand b, std::size_t n, Result y) {
  forEach(n, y, [=](std::size_t i) { return a[i] * b[i]; });
}

FATHOM_MULTIVERSION void evaluateLine(Operand a, std::size_t n, Complex b, Complex c, Result y) {
  forEach(n, y, [=](std::size_t i) { return a[i] * b + c; });
}

// The results may overwrite the magnitudes.
FATHOM_MULTIVERSION void polarParts(const double* re, const double* im, const double* angle,
                                    std::size_t n, double* magnitude, double* phase) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const fathom::Polar p = fathom::polar({re[i], im[i]}, angle[i]);
    magnitude[i] = p.magnitude;
    phase[i] = p.phase;
  }
}

FATHOM_MULTIVERSION void scaleParts(const double* magnitude, const double* cosine,
                                    const double* sine, std::size_t n, double* re, double* im) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double m = magnitude[i];
    re[i] = cosine[i] * m;
    im[i] = sine[i] * m;
  }
}

// Divides up to the first element whose divisor has no squared modulus to divide by; returns its
// index, or n. All divisors of a block are known to be fit before its first quotient is written.
FATHOM_MULTIVERSION std::size_t divideChecked(Operand a, Operand b, std::size_t n, Result y) {
  double m[fathom::kBlock];
  std::size_t start = 0;
  while (start < n) {
    const std::size_t head = fathom::beforeLine(y.re + start, n - start);
    const std::size_t length = head > 0 ? head : std::min(fathom::kBlock, n - start);
    std::int64_t unfit = 0;
    for (std::size_t i = 0; i < length; ++i) {
      m[i] = fathom::squaredModulus(b[start + i]);
      unfit |= fathom::isNonzero(m[i]) ? 0 : 1;
    }
    if (unfit != 0) break;
    fetchAhead(y, start);
    FATHOM_INDEPENDENT
    for (std::size_t i = 0; i < length; ++i) {
      set(y, start + i, fathom::quotient(a[start + i], b[start + i], m[i]));
    }
    start += length;
  }
  for (; start < n; ++start) {
    const double square = fathom::squaredModulus(b[start]);
    if (!fathom::isNonzero(square)) break;
    set(y, start, fathom::quotient(a[start], b[start], square));
  }
  return start;
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
  const auto size = static_cast<std::size_t>(n);
  double angle[fathom::kBlock];
  for (std::size_t start = 0; start < size; start += fathom::kBlock) {
    const std::size_t count = std::min(fathom::kBlock, size - start);
    fathom::atan2(im + start, re + start, count, angle);
    polarParts(re + start, im + start, angle, count, magnitude + start, phase + start);
  }
  return FATHOM_OK;
}

AnalysisStatus ToRect1D(const double* magnitude, const double* phase, int32_t n, double* re,
                        double* im) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  double sine[fathom::kBlock], cosine[fathom::kBlock];
  for (std::size_t start = 0; start < size; start += fathom::kBlock) {
    const std::size_t count = std::min(fathom::kBlock, size - start);
    fathom::sincos(phase + start, count, sine, cosine);
    scaleParts(magnitude + start, cosine, sine, count, re + start, im + start);
  }
  return FATHOM_OK;
}
