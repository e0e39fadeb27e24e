// The filter record: one heap block that holds the header, the coefficients of the sections and
// their delay state.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fathom.h"
#include "filter/iir/forms.hpp"

// On a 32-bit target nine fields of 32 bits; elsewhere the arrays begin at a multiple of eight.
static_assert(sizeof(void*) != 4 || sizeof(IIRFilter) == 36);
static_assert(sizeof(void*) == 4 || sizeof(IIRFilter) % sizeof(double) == 0);

namespace fathom {

bool holdsSections(const IIRFilter& record) {
  const std::int64_t order = record.order, sections = (order + 1) >> 1;
  switch (record.type) {
    case FATHOM_LOWPASS:
    case FATHOM_HIGHPASS:
      return record.na >= ((order + 1) & ~std::int64_t{1}) && record.nb >= 3 * sections;
    case FATHOM_BANDPASS:
    case FATHOM_BANDSTOP:
      return record.na >= 4 * sections && record.nb >= 5 * sections;
    default:
      return true;
  }
}

void storeSection(IIRFilter& record, std::int32_t s, const Section& section) {
  const int m = sectionWidth(record.type);
  std::copy_n(section.a, m, record.a + std::ptrdiff_t{s} * m);
  const int written = section.shortNumerator ? section.degree + 1 : m + 1;
  std::copy_n(section.b, written, record.b + std::ptrdiff_t{s} * (m + 1));
}

}  // namespace fathom

IIRFilterPtr AllocIIRFilterPtr(int32_t type, int32_t order) {
  if (order < 1 || !fathom::isBand(type)) return nullptr;
  const std::int64_t m = fathom::sectionWidth(type), sections = (std::int64_t{order} + 1) >> 1;
  const std::int64_t na = sections * m, nb = sections * (m + 1);
  if (nb > INT32_MAX) return nullptr;
  const std::uint64_t size =
      sizeof(IIRFilter) + static_cast<std::uint64_t>(nb + 2 * na) * sizeof(double);
  if (size > PTRDIFF_MAX) return nullptr;
  void* block = std::malloc(static_cast<std::size_t>(size));
  if (block == nullptr) return nullptr;
  auto* record = static_cast<IIRFilter*>(block);
  auto* a = reinterpret_cast<double*>(record + 1);
  const auto feedback = static_cast<std::int32_t>(na), forward = static_cast<std::int32_t>(nb);
  *record = {type, order, 0, feedback, a, forward, a + na, feedback, a + na + nb};
  std::fill_n(a, nb + 2 * na, 0.0);
  return record;
}

void FreeIIRFilterPtr(IIRFilterPtr record) {
  std::free(record);
}

AnalysisStatus ResetIIRFilter(IIRFilterPtr record) {
  if (record != nullptr) record->reset = 1;
  return FATHOM_OK;
}
