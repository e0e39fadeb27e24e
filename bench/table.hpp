// The table of ratios: each row times one Fathom call beside the peer that does the same work.
#ifndef FATHOM_BENCH_TABLE_HPP
#define FATHOM_BENCH_TABLE_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fathom.h"

namespace fathom::bench {

// The two timed calls of a row; they own their data. Where a call would wear its input out, `reset`
// restores it, untimed, before each batch of at most `maxBatch` calls.
struct Sides {
  std::function<AnalysisStatus()> fathom;
  std::function<void()> peer;
  std::function<void()> reset = {};
  std::int64_t maxBatch = INT64_MAX;
};

struct Row {
  std::string work;
  std::int32_t n;
  std::string peer;
  double goal;  // the least ratio peer time / Fathom time; 0 where there is none
  std::function<Sides()> prepare;
};

inline constexpr double kNoGoal = 0.0;

// Sizes whose arrays lie in the first-level cache, in the second-level cache, and beyond it.
inline constexpr std::int32_t kSizes[] = {1'000, 30'000, 4'000'000};

// A goal that depends on the vectors that the library uses: of 512, 256 or 128 bits.
double byLevel(double wide, double middle, double narrow);

void addRow(Row row);

// Processor seconds that a Python program measures and prints; 0 where no Python can run it.
double secondsByPython(const std::string& program);
// Spends as much processor time again: the side of a peer that was measured elsewhere.
void spend(double seconds);

void leaveOut(const std::string& peer, const std::string& work);

// One function per source file, each adding its rows.
void addElementaryRows();
void addArrayRows();
void addArrayComplexRows();
void addStatsRows();
void addDistributionRows();
void addGenerateRows();
void addWindowRows();
void addSpectralRows();
void addConvolveRows();
void addFirRows();
void addUnitsRows();
void addLinalgRows();
void addSvdRows();
void addEigenvalueRows();
void addLuRows();
void addFilterRows();
void addInterpolationRows();
void addFitRows();
void addNonlinearRows();

using Array = std::shared_ptr<std::vector<double>>;

Array constant(std::int32_t n, double value);
// The same pseudo-random values in [low, high) for the same n.
Array uniform(std::int32_t n, double low, double high);

}  // namespace fathom::bench

#endif
