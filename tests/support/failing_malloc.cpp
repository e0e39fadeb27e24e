#include "support/failing_malloc.hpp"

#include <algorithm>

namespace {
thread_local bool armed = false;
thread_local int failingRequest = 0;
thread_local int requestCount = 0;
thread_local std::size_t largestGranted = 0;
thread_local std::size_t largest = 0;
}  // namespace

extern "C" {
void* __real_malloc(std::size_t size);   // NOLINT(bugprone-reserved-identifier): the linker's name
void* __wrap_malloc(std::size_t size) {  // NOLINT(bugprone-reserved-identifier): the linker's name
  if (armed) {
    largest = std::max(largest, size);
    if (++requestCount == failingRequest || size > largestGranted) return nullptr;
  }
  return __real_malloc(size);
}
}

namespace fathom::test {

FailingMalloc::FailingMalloc(int failing, std::size_t limit) {
  armed = true;
  failingRequest = failing;
  requestCount = 0;
  largestGranted = limit;
  largest = 0;
}
FailingMalloc::~FailingMalloc() {
  armed = false;
}
int FailingMalloc::requests() const {
  return requestCount;
}
std::size_t FailingMalloc::largestRequest() const {
  return largest;
}

}  // namespace fathom::test
