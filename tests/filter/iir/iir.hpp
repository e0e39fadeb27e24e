// What the tests of IIR filters share.
#ifndef FATHOM_TESTS_FILTER_IIR_IIR_HPP
#define FATHOM_TESTS_FILTER_IIR_IIR_HPP

#include "support/testing.hpp"

namespace fathom::test {

// A filter record that releases itself.
class Record {
 public:
  Record(int32_t type, int32_t order) : filter_(AllocIIRFilterPtr(type, order)) {}
  ~Record() { FreeIIRFilterPtr(filter_); }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  operator IIRFilterPtr() const { return filter_; }
  IIRFilterPtr operator->() const { return filter_; }
  IIRFilter& operator*() const { return *filter_; }

 private:
  IIRFilterPtr filter_;
};

}  // namespace fathom::test

#endif
