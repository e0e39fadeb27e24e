// Prints the digest of every routine's results: the name, the digest. Exit status 77 when the
// processor lacks the level that the library was built for.
#include <cinttypes>
#include <cstdio>
#include <string>

#include "library/routines.hpp"

namespace {

bool processorHas(const std::string& level) {
#if defined(__x86_64__)
  __builtin_cpu_init();
  const bool v3 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                  __builtin_cpu_supports("bmi2");
  const bool v4 = v3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                  __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                  __builtin_cpu_supports("avx512vl");
  if (level == "x86-64-v3") return v3;
  if (level == "x86-64-v4") return v4;
#endif
  return level.empty() || level == "x86-64";
}

}  // namespace

int main() {
  if (!processorHas(FATHOM_DIGEST_LEVEL)) return 77;
  for (const fathom::test::Routine& r : fathom::test::routines()) {
    std::printf("%s %016" PRIx64 "\n", r.name.c_str(), fathom::test::digest(r));
  }
  return 0;
}
