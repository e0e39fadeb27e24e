// Checks of the library as a whole, over the table of routines.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "library/routines.hpp"
#include "support/failing_malloc.hpp"
#include "support/signals.hpp"

namespace fathom::test {
namespace {

constexpr std::int32_t kSizes[] = {1, 2, 3, 16, 64};

// The last word before the first parenthesis of every line that begins a declaration.
std::set<std::string> declaredNames() {
  std::ifstream header(FATHOM_HEADER);
  std::set<std::string> names;
  for (std::string line; std::getline(header, line);) {
    if (!line.starts_with("FATHOM_API ")) continue;
    const std::string before = line.substr(0, line.find('('));
    names.insert(before.substr(before.rfind(' ') + 1));
  }
  return names;
}

std::string outputOf(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[4096];
  while (std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, got);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return text;
}

TEST(Library, TheTableHoldsEveryDeclaredRoutine) {
  std::set<std::string> names = {"GetAnalysisErrorString", "FreeAnalysisMem"};
  for (const Routine& r : routines()) EXPECT_TRUE(names.insert(r.name).second) << r.name;
  EXPECT_EQ(names, declaredNames());
}

TEST(Library, ExportsExactlyWhatTheHeaderDeclares) {
  std::istringstream lines(outputOf("nm -D --defined-only " FATHOM_SHARED));
  std::set<std::string> exported;
  for (std::string address, kind, name; lines >> address >> kind >> name;) exported.insert(name);
  EXPECT_EQ(exported, declaredNames());
}

TEST(Library, NeedsTheCLibraryOnly) {
  const std::string dynamic = outputOf("readelf -d " FATHOM_SHARED);
  EXPECT_NE(dynamic.find("Library soname: [libfathom.so.0]"), std::string::npos);
  if (FATHOM_SANITIZED) GTEST_SKIP() << "the checkers' own libraries are needed here";
  std::istringstream lines(dynamic);
  int needed = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("(NEEDED)") == std::string::npos) continue;
    ++needed;
    const std::string name = line.substr(line.find('[') + 1);
    EXPECT_TRUE(name == "libc.so.6]" || name.starts_with("ld-linux")) << name;
  }
  EXPECT_GT(needed, 0);
}

// Nothing was written but variables that are set before any check.
bool untouched(const Routine& r, const Slots& slots, const Slots& before) {
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (r.arguments[i].role != Role::kReset && !(slots[i] == before[i])) return false;
  }
  return true;
}

// Bad counts: the stated status, and nothing written.
TEST(Library, RefusesCountsThatAreTooSmall) {
  for (const Routine& r : routines()) {
    for (std::size_t i = 0; i < r.arguments.size(); ++i) {
      const Argument& a = r.arguments[i];
      if (a.role != Role::kCount) continue;
      for (std::int32_t value : {0, -1, INT32_MIN}) {
        Slots slots = prepare(r, 16, 1);
        slots[i].integer = value;
        const Slots before = slots;
        const AnalysisStatus expected = value == 0 ? a.zero : a.negative;
        EXPECT_EQ(r.call(slots), expected) << r.name << " argument " << i << " = " << value;
        if (expected != FATHOM_OK) {
          EXPECT_TRUE(untouched(r, slots, before))
              << r.name << " wrote, argument " << i << " = " << value;
        }
      }
    }
  }
}

// Each request for memory fails in turn; the leak checker sees what is not released.
TEST(Library, SurvivesEveryFailedAllocation) {
  int requests = 0;
  for (const Routine& r : routines()) {
    for (std::int32_t size : kSizes) {
      for (int k = 1;; ++k) {
        Slots slots = prepare(r, size, 1);
        const Slots before = slots;
        const auto [status, made] = [&] {
          const FailingMalloc failing(k);
          const AnalysisStatus returned = r.call(slots);
          return std::pair(returned, failing.requests());
        }();
        if (made < k) break;
        ++requests;
        const std::size_t index = static_cast<std::size_t>(k) - 1;
        const AnalysisStatus expected =
            index < r.failedRequests.size() ? r.failedRequests[index] : FATHOM_ERR_MEMORY;
        EXPECT_EQ(status, expected) << r.name << " size " << size << " request " << k;
        if (!r.writesBeforeFailure) {
          EXPECT_TRUE(untouched(r, slots, before))
              << r.name << " wrote, size " << size << " request " << k;
        }
      }
    }
  }
  EXPECT_GT(requests, 50);  // or the wrapped malloc is not the library's
}

// Any data at all: the call returns, inside its arrays, and no checker speaks.
TEST(Library, ReturnsForAnyData) {
  const double hostile[] = {kNan, kInf, -kInf, kDenormal, -0.0, 0.0, 1e308, -1e308, 1e-300, -3.0};
  for (const Routine& r : routines()) {
    for (std::int32_t size : kSizes) {
      const auto run = [&](Slots slots, const std::string& what) {
        r.call(slots);
        EXPECT_TRUE(guardsIntact(slots)) << r.name << " size " << size << ' ' << what;
      };
      const auto fill = [&](auto&& value) {
        Slots slots = prepare(r, size, 1);
        for (std::size_t i = 0; i < slots.size(); ++i) {
          if (r.arguments[i].role > Role::kInOut) continue;
          std::size_t j = 0;
          for (auto v = slots[i].reals.begin() + Slot::kGuard;
               v != slots[i].reals.end() - Slot::kGuard; ++v, ++j) {
            *v = value(j, *v);
          }
        }
        return slots;
      };
      for (double h : hostile) {
        run(fill([h](std::size_t, double) { return h; }), "all hostile");
        run(fill([h](std::size_t j, double v) { return j % 5 == 3 ? h : v; }), "some hostile");
      }
      run(fill([&](std::size_t j, double) { return hostile[j * 7 % 10]; }), "mixed");
      for (std::size_t i = 0; i < r.arguments.size(); ++i) {
        Slots slots = prepare(r, size, 1);
        if (r.arguments[i].role == Role::kReal) {
          for (double h : hostile) {
            slots[i].real = h;
            run(slots, "scalar " + std::to_string(i));
          }
        } else if (r.arguments[i].role == Role::kLevels) {
          for (std::int32_t h : {-1, r.arguments[i].limit, INT32_MIN, INT32_MAX}) {
            slots[i].integers[Slot::kGuard + 2] = h;
            run(slots, "level " + std::to_string(h));
          }
        } else if (r.arguments[i].role == Role::kChoice) {
          for (std::int32_t h : {0, 1, -1, 2, 7, 8, 63, 64, INT32_MIN, INT32_MIN + 1, INT32_MAX}) {
            slots[i].integer = h;
            run(slots, "choice " + std::to_string(i) + " = " + std::to_string(h));
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace fathom::test
