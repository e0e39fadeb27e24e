// Pearson's chi-square test: whether the rows and columns of a table are independent.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

constexpr std::size_t kTile = 64;

struct RowTotal {
  int64_t sum;
  int32_t signs;  // negative if any count is
};

// Adds a row's counts to the sums of their columns, and to each other.
FATHOM_MULTIVERSION RowTotal addRow(const int32_t* count, std::size_t n, double* columnSum) {
  int64_t sum = 0;
  int32_t signs = 0;
  FATHOM_INDEPENDENT
  for (std::size_t j = 0; j < n; ++j) {
    sum += count[j];
    signs |= count[j];
    columnSum[j] += count[j];
  }
  return {sum, signs};
}

// Sum plus each count in turn. While the sum stays a whole number that a double holds, no addition
// rounds and their order is nothing; `rowSum` is the counts' own sum.
double addInTurn(double sum, const int32_t* count, std::size_t n, int64_t rowSum) {
  constexpr double kExact = 9007199254740992.0;
  const auto whole = static_cast<double>(rowSum);
  if (sum + whole < kExact) return sum + whole;
  for (std::size_t j = 0; j < n; ++j) sum += count[j];
  return sum;
}

// (observed - expected)^2 / expected for the cells of one row.
FATHOM_MULTIVERSION void deviations(const int32_t* count, std::size_t n, double rowSum,
                                    const double* columnSum, double total, double* deviation) {
  FATHOM_INDEPENDENT
  for (std::size_t j = 0; j < n; ++j) {
    const double expected = rowSum * columnSum[j] / total;
    const double difference = count[j] - expected;
    deviation[j] = difference * difference / expected;
  }
}

// The degrees of freedom as XX_Dist takes them. Where int32_t does not hold them, the largest
// number of the same parity: its sums have long reached their limit there.
int32_t degreesOfFreedom(int32_t r, int32_t c) {
  const int64_t degrees = (int64_t{r} - 1) * (int64_t{c} - 1);
  return static_cast<int32_t>(std::min(degrees, INT32_MAX - 1 + degrees % 2));
}

}  // namespace

AnalysisStatus Contingency_Table(int32_t r, int32_t c, const int32_t* counts, double* chi2,
                                 double* p) {
  if (r < 0 || c < 0) return FATHOM_ERR_NO_SAMPLES;
  const auto rows = static_cast<std::size_t>(r);
  const auto columns = static_cast<std::size_t>(c);
  // Room for the whole table, so that one too large to be there is refused before it is read. Its
  // first cells serve every tile, and stay in the cache.
  const bool fits = columns == 0 || rows <= SIZE_MAX / columns;
  fathom::Workspace<double> deviation(fits ? rows * columns : SIZE_MAX);
  if (!deviation) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> rowSum(rows);
  if (!rowSum) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> columnSum(columns);
  if (!columnSum) return FATHOM_ERR_MEMORY;
  if (r < 2 || c < 2) return FATHOM_ERR_CATEGORIES;

  std::fill_n(columnSum.data(), columns, 0.0);
  double total = 0.0;
  for (std::size_t i = 0; i < rows; ++i) {
    const int32_t* row = counts + i * columns;
    const RowTotal sums = addRow(row, columns, columnSum.data());
    if (sums.signs < 0) return FATHOM_ERR_NEGATIVE_TABLE;
    rowSum[i] = addInTurn(0.0, row, columns, sums.sum);
    total = addInTurn(total, row, columns, sums.sum);
  }

  double sum = 0.0;
  for (std::size_t i = 0; i < rows; ++i) {
    const int32_t* row = counts + i * columns;
    for (std::size_t start = 0; start < columns; start += kTile) {
      const std::size_t length = std::min(kTile, columns - start);
      deviations(row + start, length, rowSum[i], columnSum.data() + start, total, deviation.data());
      for (std::size_t j = 0; j < length; ++j) sum += deviation[j];
    }
  }
  double lowerTail = 0.0;
  const AnalysisStatus status = XX_Dist(sum, degreesOfFreedom(r, c), &lowerTail);
  if (status != FATHOM_OK) return status;
  *chi2 = sum;
  *p = 1.0 - lowerTail;
  return FATHOM_OK;
}
