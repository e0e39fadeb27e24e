// The product kernel. A tile of a result, a few rows by a few vectors of columns, keeps its sums in
// registers while the terms run; complex elements keep real and imaginary parts in vectors of their
// own. A panel of B, as wide as a tile, is first copied to contiguous storage with the parts apart.
// After each panel's terms the sums go to C, and for the next they come back.
#include "linalg/kernel.hpp"

#include <algorithm>
#include <cstddef>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"
#include "linalg/tile.hpp"

namespace {

// A product of blocks of elements of 1 or 2 doubles. All steps are in doubles.
struct Product {
  const double* a;
  std::size_t aRowStep;
  const double* b;
  std::size_t bTermStep;
  double* c;
  std::size_t cRowStep;
  std::size_t rows, terms, columns;
  bool subtracted;
};

constexpr std::size_t kPanelTerms = 256;

// Rows of A that stay in the second-level cache, with the terms of a panel, for all panels.
constexpr std::size_t kBlockRows = 256;

// The tile's sums, the vectors of B and the temporaries fit in the registers.
constexpr std::size_t kTileRows = 4;
template <std::size_t bytes>
constexpr std::size_t kTileSums = bytes == 64 ? 4 : 2;  // vectors per row; 32 or 16 registers

template <bool subtracted, typename L>
FATHOM_INLINE void take(L& sum, const L& product) {
  sum = subtracted ? sum - product : sum + product;
}

// A tile of the result from element (row, column) on: `terms` terms from `first` on. `panel` holds
// those terms of B, `panelStep` doubles apart.
template <bool subtracted, std::size_t rows, typename R, std::size_t parts>
FATHOM_INLINE void runTile(const Product& o, std::size_t row, std::size_t column, std::size_t first,
                           std::size_t terms, const double* panel, std::size_t panelStep) {
  constexpr std::size_t kVectors = R::kDoubles / parts / R::kLanes;
  R sums[rows];
  double* const c = o.c + row * o.cRowStep + column * parts;
  FATHOM_UNROLL
  for (std::size_t r = 0; r < rows; ++r) {
    if (!subtracted && first == 0) {
      sums[r] = {};
    } else {
      sums[r].gather(c + r * o.cRowStep);
    }
  }
  const double* a = o.a + row * o.aRowStep + first * parts;
  for (std::size_t t = 0; t < terms; ++t) {
    R x;
    x.load(panel);
    FATHOM_UNROLL
    for (std::size_t r = 0; r < rows; ++r) {
      const double* const factor = a + r * o.aRowStep;
      FATHOM_UNROLL
      for (std::size_t v = 0; v < kVectors; ++v) {
        const auto& b = x.at[v];
        if constexpr (parts == 1) {
          take<subtracted>(sums[r].at[v][0], factor[0] * b[0]);
        } else if constexpr (R::kLanes == 1) {
          const ComplexNum product = ComplexNum{factor[0], factor[1]} * ComplexNum{b[0], b[1]};
          take<subtracted>(sums[r].at[v][0], product.real);
          take<subtracted>(sums[r].at[v][1], product.imaginary);
        } else {
          take<subtracted>(sums[r].at[v][0], factor[0] * b[0] - factor[1] * b[1]);
          take<subtracted>(sums[r].at[v][1], factor[0] * b[1] + factor[1] * b[0]);
        }
      }
    }
    a += parts;
    panel += panelStep;
  }
  FATHOM_UNROLL
  for (std::size_t r = 0; r < rows; ++r) sums[r].scatter(c + r * o.cRowStep);
}

// Rows `row` .. `end` of the columns of one panel, in tiles of `rows` rows, then of fewer.
template <bool subtracted, std::size_t rows, typename R, std::size_t parts>
FATHOM_INLINE void runTiles(const Product& o, std::size_t row, std::size_t end, std::size_t column,
                            std::size_t first, std::size_t terms, const double* panel,
                            std::size_t panelStep) {
  for (; row + rows <= end; row += rows) {
    runTile<subtracted, rows, R, parts>(o, row, column, first, terms, panel, panelStep);
  }
  if constexpr (rows > 1) {
    if (row < end) {
      runTiles<subtracted, rows / 2, R, parts>(o, row, end, column, first, terms, panel, panelStep);
    }
  }
}

// The columns from `column` on that fill whole panels of `vectors` vectors, then narrower ones.
template <std::size_t bytes, std::size_t parts, bool subtracted, std::size_t vectors>
FATHOM_INLINE void runPanels(const Product& o, std::size_t row, std::size_t end, std::size_t column,
                             std::size_t first, std::size_t terms, double* cells) {
  using R = fathom::Run<bytes, parts, vectors>;
  constexpr std::size_t kRows = vectors == 1 ? 2 * kTileRows : kTileRows;
  for (; column + R::kElements <= o.columns; column += R::kElements) {
    const double* panel = o.b + first * o.bTermStep + column * parts;
    std::size_t panelStep = o.bTermStep;
    // Where few rows use them, elements of one part may stay where they are.
    if (parts == 2 || end - row > 2 * kTileRows) {
      for (std::size_t t = 0; t < terms; ++t) {
        R x;
        x.gather(panel + t * panelStep);
        x.store(cells + t * R::kDoubles);
      }
      panel = cells;
      panelStep = R::kDoubles;
    }
    runTiles<subtracted, kRows, R, parts>(o, row, end, column, first, terms, panel, panelStep);
  }
  if (column == o.columns) return;
  if constexpr (vectors > 1) {
    runPanels<bytes, parts, subtracted, vectors / 2>(o, row, end, column, first, terms, cells);
  } else if constexpr (bytes > sizeof(double)) {
    runPanels<bytes / 2, parts, subtracted, 1>(o, row, end, column, first, terms, cells);
  }
}

template <std::size_t bytes, std::size_t parts, bool subtracted>
FATHOM_INLINE void run(const Product& o) {
  constexpr std::size_t kVectors = kTileSums<bytes> / parts;
  alignas(64) double cells[kPanelTerms * kTileSums<bytes> * fathom::kLanesOf<bytes>];
  for (std::size_t first = 0; first < o.terms; first += kPanelTerms) {
    const std::size_t terms = std::min(kPanelTerms, o.terms - first);
    for (std::size_t row = 0; row < o.rows; row += kBlockRows) {
      runPanels<bytes, parts, subtracted, kVectors>(o, row, std::min(row + kBlockRows, o.rows), 0,
                                                    first, terms, cells);
    }
  }
}

template <std::size_t bytes>
FATHOM_INLINE void runRealOf(const Product& o) {
  if (o.subtracted) {
    run<bytes, 1, true>(o);
  } else {
    run<bytes, 1, false>(o);
  }
}
FATHOM_BY_WIDTH(runReal, (const Product& o), (o))

template <std::size_t bytes>
FATHOM_INLINE void runComplexOf(const Product& o) {
  if (o.subtracted) {
    run<bytes, 2, true>(o);
  } else {
    run<bytes, 2, false>(o);
  }
}
FATHOM_BY_WIDTH(runComplex, (const Product& o), (o))

}  // namespace

namespace fathom {

void multiply(const double* a, std::size_t aStride, const double* b, std::size_t bStride, double* c,
              std::size_t cStride, std::size_t rows, std::size_t terms, std::size_t columns) {
  runReal({a, aStride, b, bStride, c, cStride, rows, terms, columns, false});
}

void subtractProduct(const double* a, std::size_t aStride, const double* b, std::size_t bStride,
                     double* c, std::size_t cStride, std::size_t rows, std::size_t terms,
                     std::size_t columns) {
  runReal({a, aStride, b, bStride, c, cStride, rows, terms, columns, true});
}

void multiply(const ComplexNum* a, std::size_t aStride, const ComplexNum* b, std::size_t bStride,
              ComplexNum* c, std::size_t cStride, std::size_t rows, std::size_t terms,
              std::size_t columns) {
  runComplex({&a->real, 2 * aStride, &b->real, 2 * bStride, &c->real, 2 * cStride, rows, terms,
              columns, false});
}

void subtractProduct(const ComplexNum* a, std::size_t aStride, const ComplexNum* b,
                     std::size_t bStride, ComplexNum* c, std::size_t cStride, std::size_t rows,
                     std::size_t terms, std::size_t columns) {
  runComplex({&a->real, 2 * aStride, &b->real, 2 * bStride, &c->real, 2 * cStride, rows, terms,
              columns, true});
}

}  // namespace fathom
