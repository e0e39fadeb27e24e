// Direct forms: filtering with one pair of coefficient arrays, and making that pair.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "filter/iir/forms.hpp"
#include "frame/workspace.hpp"

namespace fathom {

void multiplyPolynomial(double* p, std::size_t length, const double* q, int degree, double* copy) {
  std::copy_n(p, length, copy);
  const auto d = static_cast<std::size_t>(degree);
  for (std::size_t k = 0; k < length + d; ++k) {
    double sum = 0.0;
    const std::size_t last = std::min(k, length - 1);
    for (std::size_t j = last + 1; j-- > 0 && k - j <= d;) sum += copy[j] * q[k - j];
    p[k] = sum;
  }
}

}  // namespace fathom

namespace {

// The sum of the older inputs and outputs slides by one place as it is taken, oldest first.
void filterDirect(const double* x, std::size_t n, const double* a, double* outputs, std::size_t na,
                  const double* b, double* inputs, std::size_t nb, double* y) {
  for (std::size_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (std::size_t k = 0; k + 2 < nb; ++k) {
      sum += b[nb - 1 - k] * inputs[k];
      inputs[k] = inputs[k + 1];
    }
    if (nb > 1) {
      sum += b[1] * inputs[nb - 2];
      inputs[nb - 2] = x[i];
    }
    sum += b[0] * x[i];
    for (std::size_t k = 0; k + 2 < na; ++k) {
      sum -= a[na - 1 - k] * outputs[k];
      outputs[k] = outputs[k + 1];
    }
    if (na > 1) sum -= a[1] * outputs[na - 2];
    if (na > 0) sum /= a[0];
    if (na > 1) outputs[na - 2] = sum;
    y[i] = sum;
  }
}

}  // namespace

AnalysisStatus IIRFiltering(const double* x, int32_t n, const double* a, double* outputs,
                            int32_t na, const double* b, double* inputs, int32_t nb, double* y) {
  const bool recursive = na >= 1 && a != nullptr && outputs != nullptr;
  if (nb < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  filterDirect(x, static_cast<std::size_t>(n), a, outputs,
               recursive ? static_cast<std::size_t>(na) : 0, b, inputs,
               static_cast<std::size_t>(nb), y);
  return FATHOM_OK;
}

AnalysisStatus CascadeToDirectCoef(IIRFilterPtr record, double* a, int32_t aCapacity, double* b,
                                   int32_t bCapacity) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  if (record->order < 1) return FATHOM_ERR_ORDER;
  if (!fathom::isBand(record->type)) return FATHOM_ERR_SELECTION;
  const int m = fathom::sectionWidth(record->type);
  const std::int64_t order = record->order, sections = (order + 1) >> 1;
  const std::int64_t wanted = m == 2 ? order + 1 : 2 * order + 1;
  if (sections * m != record->na) return FATHOM_ERR_FILTER_RECORD;
  if (sections * (m + 1) != record->nb || aCapacity < wanted || bCapacity < wanted) {
    return FATHOM_ERR_FILTER_RECORD;
  }
  const auto size = static_cast<std::size_t>(sections * m) + 1;
  fathom::Workspace<double> small(static_cast<std::size_t>(m) + 1), feedback(size), forward(size);
  if (!small || !feedback || !forward) return FATHOM_ERR_MEMORY;
  small[0] = feedback[0] = 1.0;
  std::copy_n(record->a, m, feedback.data() + 1);
  std::copy_n(record->b, m + 1, forward.data());
  int32_t length = m + 1;
  for (std::int64_t s = 1; s < sections; ++s) {
    // The caller's arrays hold the running copies; the last may be cut where only zeros follow.
    std::copy_n(record->a + s * m, m, small.data() + 1);
    std::copy_n(feedback.data(), length, a);
    std::copy_n(forward.data(), length, b);
    Convolve(small.data(), m + 1, a, length, feedback.data());
    Convolve(record->b + s * (m + 1), m + 1, b, length, forward.data());
    length += m;
  }
  std::copy_n(feedback.data(), wanted, a);
  std::copy_n(forward.data(), wanted, b);
  return FATHOM_OK;
}
