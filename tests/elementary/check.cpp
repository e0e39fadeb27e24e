// Counts results that are not correctly rounded, for runs longer than a test may be:
//   elementary_check FUNCTION COUNT SEED [slow]
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "elementary/reference.hpp"
#include "support/bits.hpp"

int main(int argc, char** argv) {
  using namespace fathom::test;
  if (argc < 4) {
    std::fprintf(stderr, "usage: elementary_check FUNCTION COUNT SEED [slow]\n");
    return 2;
  }
  for (const Elementary& f : elementaryFunctions()) {
    if (std::strcmp(f.name, argv[1]) != 0) continue;
    const auto form = argc > 4 ? f.slow : f.function;
    const std::uint64_t count = std::strtoull(argv[2], nullptr, 10);
    Random random(std::strtoull(argv[3], nullptr, 10));
    std::uint64_t wrong = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      const Arguments a = f.draw(random);
      const double actual = form(a.first, a.second);
      const double expected = correctlyRounded(f, a);
      if (sameBits(actual, expected)) continue;
      if (++wrong <= 10) {
        std::printf("%s(%a, %a) = %a, not %a\n", f.name, a.first, a.second, actual, expected);
      }
    }
    std::printf("%s: %" PRIu64 " of %" PRIu64 " wrong\n", f.name, wrong, count);
    return wrong != 0 ? 1 : 0;
  }
  std::fprintf(stderr, "elementary_check: no such function: %s\n", argv[1]);
  return 2;
}
