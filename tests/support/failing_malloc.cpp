#include "support/failing_malloc.hpp"

#include <cstddef>

namespace {
thread_local bool armed = false;
thread_local int failingRequest = 0;
thread_local int requestCount = 0;
}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);   // NOLINT(bugprone-reserved-identifier): the linker's name
void* __wrap_malloc(std::size_t size) {  // NOLINT(bugprone-reserved-identifier): the linker's name
  if (armed && ++requestCount == failingRequest) return nullptr;
  return __real_malloc(size);
}
}

namespace fathom::test {

FailingMalloc::FailingMalloc(int failing) {
  armed = true;
  failingRequest = failing;
  requestCount = 0;
}
FailingMalloc::~FailingMalloc() {
  armed = false;
}
int FailingMalloc::requests() const {
  return requestCount;
}

}  // namespace fathom::test
