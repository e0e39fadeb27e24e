// The allocator that fails the k-th request, or large ones. Programs that use it link with
// --wrap=malloc.
#ifndef FATHOM_TESTS_SUPPORT_FAILING_MALLOC_HPP
#define FATHOM_TESTS_SUPPORT_FAILING_MALLOC_HPP

#include <cstddef>
#include <cstdint>

namespace fathom::test {

// While it lives, request number `failing` (from 1) of the library returns null, 0 for none, and so
// does every request of more than `limit` bytes. Only code linked statically is seen: the library
// under test, not the C++ runtime.
class FailingMalloc {
 public:
  explicit FailingMalloc(int failing, std::size_t limit = SIZE_MAX);
  ~FailingMalloc();
  FailingMalloc(const FailingMalloc&) = delete;
  FailingMalloc& operator=(const FailingMalloc&) = delete;

  int requests() const;                // made so far
  std::size_t largestRequest() const;  // in bytes, granted or not
};

}  // namespace fathom::test

#endif
