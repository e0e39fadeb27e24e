// The allocator that fails the k-th request. Programs that use it link with --wrap=malloc.
#ifndef FATHOM_TESTS_SUPPORT_FAILING_MALLOC_HPP
#define FATHOM_TESTS_SUPPORT_FAILING_MALLOC_HPP

namespace fathom::test {

// While it lives, request number `failing` (from 1) of the library returns null; 0 fails none. Only
// code linked statically is seen: the library under test, not the C++ runtime.
class FailingMalloc {
 public:
  explicit FailingMalloc(int failing);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;

  int requests() const;  // made so far
};

}  // namespace fathom::test

#endif
