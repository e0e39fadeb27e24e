// The three forms of a design, written once for all families: the sections of a record, one pair of
// direct-form coefficients, and data filtered in one call.
//
// Family is a class that is constructed from a Design whose checks have passed, and whose next()
// returns the sections one after another, in the order in which a signal passes them.
#ifndef FATHOM_FILTER_IIR_FORMS_HPP
#define FATHOM_FILTER_IIR_FORMS_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "filter/iir/design.hpp"
#include "frame/workspace.hpp"

namespace fathom {

// Columns of a record's section: feedback coefficients of each.
inline int sectionWidth(std::int32_t type) {
  return isBandType(type) ? 4 : 2;
}

// The record's counts are large enough for its type and order.
bool holdsSections(const IIRFilter& record);
void storeSection(IIRFilter& record, std::int32_t s, const Section& section);

// Multiplies the `length` coefficients of p by the section's polynomial q; `copy` is as long.
void multiplyPolynomial(double* p, std::size_t length, const double* q, int degree, double* copy);

// Runs the samples through the sections, one after another, each from zero state. y may be x.
void runSections(const Section* sections, std::size_t count, const double* x, std::size_t n,
                 double* y);

// The request that a record and the edges make.
inline Design designOf(const IIRFilter& record, double fs, double low, double high) {
  const double top = hasOneEdge(record.type) ? highOfOneEdge(fs, low) : high;
  return {record.type, record.order, fs, low, top};
}

template <typename Family>
AnalysisStatus fillRecord(Design d, std::initializer_list<Check> checks, IIRFilter& record) {
  d.fits = holdsSections(record);
  if (const AnalysisStatus status = firstFailure(d, checks); status != FATHOM_OK) return status;
  if (!isBand(d.type)) return FATHOM_OK;
  Family family(d);
  for (std::int32_t s = 0; s < d.sections(); ++s) storeSection(record, s, family.next());
  return FATHOM_OK;
}

template <typename Family>
AnalysisStatus directForm(Design d, std::initializer_list<Check> checks, double* a,
                          std::int32_t aCapacity, double* b, std::int32_t bCapacity) {
  d.fits = aCapacity >= d.length() && bCapacity >= d.length();
  if (const AnalysisStatus status = firstFailure(d, checks); status != FATHOM_OK) return status;
  const auto aSize = static_cast<std::size_t>(aCapacity),
             bSize = static_cast<std::size_t>(bCapacity);
  Workspace<double> feedback(aSize), feedbackCopy(aSize), forward(bSize), forwardCopy(bSize);
  if (!feedback || !feedbackCopy || !forward || !forwardCopy) return FATHOM_ERR_MEMORY;
  feedback[0] = forward[0] = 1.0;
  std::size_t length = 1;
  Family family(d);
  for (std::int32_t s = 0; s < d.sections(); ++s) {
    const Section section = family.next();
    const double denominator[] = {1.0, section.a[0], section.a[1], section.a[2], section.a[3]};
    multiplyPolynomial(feedback.data(), length, denominator, section.degree, feedbackCopy.data());
    multiplyPolynomial(forward.data(), length, section.b, section.degree, forwardCopy.data());
    length += static_cast<std::size_t>(section.degree);
  }
  std::copy_n(feedback.data(), length, a);
  std::copy_n(forward.data(), length, b);
  return FATHOM_OK;
}

template <typename Family>
AnalysisStatus filterOnce(const Design& d, std::initializer_list<Check> checks, const double* x,
                          std::int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (const AnalysisStatus status = firstFailure(d, checks); status != FATHOM_OK) return status;
  Family family(d);
  constexpr std::int32_t kBatch = 8;
  Section batch[kBatch + 1];
  for (std::int32_t done = 0; done < d.sections();) {
    // An odd order's first section is one more: it runs beside the others.
    const std::int32_t room = done == 0 && d.odd() ? kBatch + 1 : kBatch;
    const std::int32_t size = std::min(room, d.sections() - done);
    for (std::int32_t s = 0; s < size; ++s) batch[s] = family.next();
    runSections(batch, static_cast<std::size_t>(size), x, static_cast<std::size_t>(n), y);
    x = y;
    done += size;
  }
  return FATHOM_OK;
}

}  // namespace fathom

#endif
