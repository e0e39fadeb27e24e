// Start and stop of the module, and the functions that it runs when it stops.
#ifndef FATHOM_FRAME_MODULE_HPP
#define FATHOM_FRAME_MODULE_HPP

namespace fathom {

inline constexpr int kMaxExitFunctions = 32;

// Has `function` called when the module stops, before those added earlier. Returns 0, or -1 when
// kMaxExitFunctions are already held or the module is not started. Safe from several threads.
int addExitFunction(void (*function)());

// Run by the loader when the library is loaded and unloaded. startModule returns false, with
// nothing held, when the lock cannot be made.
bool startModule();
void stopModule();

}  // namespace fathom

#endif
