// Start and stop of the module: one lock, and the exit functions that it guards.
#include "frame/module.hpp"

#include <pthread.h>

namespace fathom {
namespace {

pthread_mutex_t lock;
bool started = false;
int held = 0;
void (*exitFunctions[kMaxExitFunctions])();

// Recursive, so that an exit function may add another.
bool makeLock() {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                    pthread_mutex_init(&lock, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return made;
}

}  // namespace

int addExitFunction(void (*function)()) {
  if (!started) return -1;
  pthread_mutex_lock(&lock);
  int result = -1;
  if (held < kMaxExitFunctions) {
    exitFunctions[held++] = function;
    result = 0;
  }
  pthread_mutex_unlock(&lock);
  return result;
}

bool startModule() {
  if (!started) started = makeLock();
  return started;
}

void stopModule() {
  if (!started) return;
  pthread_mutex_lock(&lock);
  while (held > 0) {
    void (*const function)() = exitFunctions[--held];
    function();
  }
  pthread_mutex_unlock(&lock);
  pthread_mutex_destroy(&lock);
  started = false;
}

}  // namespace fathom

#if defined(__GNUC__)
namespace {
// An ELF constructor cannot refuse the load: without its lock the module is left stopped, and
// addExitFunction says so. No other routine depends on it.
[[gnu::constructor]] void onLoad() {
  fathom::startModule();
}
[[gnu::destructor]] void onUnload() {
  fathom::stopModule();
}
}  // namespace
#endif
