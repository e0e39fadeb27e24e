// Filtering through the sections of a record, which keeps its delay state between calls.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"

namespace {

// Width of the record's sections, or 0 when its counts contradict each other.
int32_t widthOf(const IIRFilter& record) {
  const std::int64_t sections = (std::int64_t{record.order} + 1) >> 1;
  if (sections < 1) return 0;
  const std::int64_t m = record.na / sections;
  if (m != 2 && m != 4) return 0;
  if (m * sections != record.na || (m + 1) * sections != record.nb) return 0;
  return record.stateCount == record.na ? static_cast<std::int32_t>(m) : 0;
}

void filter(const double* x, std::size_t n, const IIRFilter& record, std::size_t m, double* y) {
  const std::size_t sections = static_cast<std::size_t>(record.na) / m;
  for (std::size_t i = 0; i < n; ++i) {
    double t = x[i];
    for (std::size_t s = 0; s < sections; ++s) {
      const double *a = record.a + s * m, *b = record.b + s * (m + 1);
      double* state = record.state + s * m;
      for (std::size_t j = 0; j < m; ++j) t -= a[j] * state[j];
      const double w = t;
      t *= b[0];
      for (std::size_t j = 0; j < m; ++j) t += b[j + 1] * state[j];
      for (std::size_t j = m - 1; j > 0; --j) state[j] = state[j - 1];
      state[0] = w;
    }
    y[i] = t;
  }
}

}  // namespace

AnalysisStatus IIRCascadeFiltering(const double* x, int32_t n, IIRFilterPtr record, double* y) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  const int32_t m = widthOf(*record);
  if (m == 0) return FATHOM_ERR_FILTER_RECORD;
  if (record->reset != 0) {
    std::fill_n(record->state, record->stateCount, 0.0);
    record->reset = 0;
  }
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  filter(x, static_cast<std::size_t>(n), *record, static_cast<std::size_t>(m), y);
  return FATHOM_OK;
}
