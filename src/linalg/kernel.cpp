// The product kernel. A tile of a result, a few rows by a few vectors of columns, keeps its sums in
// registers while the terms run; complex elements keep real and imaginary parts in vectors of their
// own. A panel of B, as wide as a tile, is first copied to contiguous storage with the parts apart.
// After each panel's terms the sums go to C, and for the next they come back.
#include "linalg/kernel.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"

namespace {

using fathom::Lanes;

// A product of blocks of elements of 1 or 2 doubles. All steps are in doubles.
struct Product {
  const double* a;
  std::size_t aRowStep, aTermStep;
  const double* b;
  std::size_t bTermStep;
  double* c;
  std::size_t cRowStep;
  std::size_t rows, terms, columns;
  bool subtracted;
};

constexpr std::size_t kPanelTerms = 256;

// The tile's sums, the vectors of B and the temporaries fit in the registers.
constexpr std::size_t kTileRows = 4;
template <std::size_t bytes>
constexpr std::size_t kTileSums = bytes == 64 ? 4 : 2;  // vectors per row; 32 or 16 registers

template <std::size_t bytes, std::size_t parts>
constexpr std::size_t kTileVectors = kTileSums<bytes> / parts;

// Vectors x and y hold pairs; afterwards x has their firsts and y their seconds. And back.
template <std::size_t bytes, std::size_t... i>
FATHOM_INLINE void splitPairs(Lanes<bytes>& x, Lanes<bytes>& y, std::index_sequence<i...>) {
  const Lanes<bytes> first = __builtin_shufflevector(x, y, static_cast<int>(2 * i)...);
  y = __builtin_shufflevector(x, y, static_cast<int>(2 * i + 1)...);
  x = first;
}
template <std::size_t bytes, std::size_t... i>
FATHOM_INLINE void joinPairs(Lanes<bytes>& x, Lanes<bytes>& y, std::index_sequence<i...>) {
  constexpr std::size_t kLanes = sizeof...(i);
  constexpr auto kSource = [](std::size_t k) {
    return static_cast<int>(k / 2 + (k % 2 == 0 ? 0 : kLanes));
  };
  const Lanes<bytes> low = __builtin_shufflevector(x, y, kSource(i)...);
  y = __builtin_shufflevector(x, y, kSource(kLanes + i)...);
  x = low;
}

// `vectors` vectors of consecutive elements, their parts apart.
template <std::size_t bytes, std::size_t parts, std::size_t vectors>
struct Run {
  static constexpr std::size_t kLanes = bytes / sizeof(double);
  static constexpr std::size_t kElements = vectors * kLanes;
  static constexpr std::size_t kDoubles = kElements * parts;

  Lanes<bytes> at[vectors][parts];

  FATHOM_INLINE void gather(const double* x) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::load(at[v][p], x + (v * parts + p) * kLanes);
      if constexpr (parts == 2)
        splitPairs<bytes>(at[v][0], at[v][1], std::make_index_sequence<kLanes>());
    }
  }
  FATHOM_INLINE void scatter(double* x) const {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      Lanes<bytes> out[parts];
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) out[p] = at[v][p];
      if constexpr (parts == 2)
        joinPairs<bytes>(out[0], out[1], std::make_index_sequence<kLanes>());
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::store(x + (v * parts + p) * kLanes, out[p]);
    }
  }

  // The same for the first `doubles` of the doubles alone; what other lanes hold is of no account.
  FATHOM_INLINE void gatherFew(const double* x, std::size_t doubles) {
    double cells[kDoubles] = {};
    for (std::size_t i = 0; i < doubles; ++i) cells[i] = x[i];
    gather(cells);
  }
  FATHOM_INLINE void scatterFew(double* x, std::size_t doubles) const {
    double cells[kDoubles];
    scatter(cells);
    for (std::size_t i = 0; i < doubles; ++i) x[i] = cells[i];
  }

  FATHOM_INLINE void load(const double* x) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::load(at[v][p], x + (v * parts + p) * kLanes);
    }
  }
  FATHOM_INLINE void store(double* x) const {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::store(x + (v * parts + p) * kLanes, at[v][p]);
    }
  }
};

template <bool subtracted, typename L>
FATHOM_INLINE void take(L& sum, const L& product) {
  sum = subtracted ? sum - product : sum + product;
}

// Rows `row`.. of the result, elements `column`.. of `columns` of them, terms `first` .. `end`.
// `panel` holds those terms of B, `panelStep` doubles apart.
template <std::size_t bytes, std::size_t parts, bool subtracted, std::size_t rows,
          std::size_t vectors>
FATHOM_INLINE void runTile(const Product& o, std::size_t row, std::size_t column,
                           std::size_t columns, std::size_t first, std::size_t terms,
                           const double* panel, std::size_t panelStep) {
  using R = Run<bytes, parts, vectors>;
  R sums[rows];
  double* const c = o.c + row * o.cRowStep + column * parts;
  const bool whole = columns >= R::kElements;
  FATHOM_UNROLL
  for (std::size_t r = 0; r < rows; ++r) {
    if (!subtracted && first == 0) {
      sums[r] = {};
    } else if (whole) {
      sums[r].gather(c + r * o.cRowStep);
    } else {
      sums[r].gatherFew(c + r * o.cRowStep, columns * parts);
    }
  }
  const double* a = o.a + row * o.aRowStep + first * o.aTermStep;
  for (std::size_t t = 0; t < terms; ++t) {
    R x;
    x.load(panel);
    FATHOM_UNROLL
    for (std::size_t r = 0; r < rows; ++r) {
      const double* const factor = a + r * o.aRowStep;
      FATHOM_UNROLL
      for (std::size_t v = 0; v < vectors; ++v) {
        if constexpr (parts == 1) {
          take<subtracted>(sums[r].at[v][0], factor[0] * x.at[v][0]);
        } else {
          take<subtracted>(sums[r].at[v][0], factor[0] * x.at[v][0] - factor[1] * x.at[v][1]);
          take<subtracted>(sums[r].at[v][1], factor[0] * x.at[v][1] + factor[1] * x.at[v][0]);
        }
      }
    }
    a += o.aTermStep;
    panel += panelStep;
  }
  FATHOM_UNROLL
  for (std::size_t r = 0; r < rows; ++r) {
    if (whole) {
      sums[r].scatter(c + r * o.cRowStep);
    } else {
      sums[r].scatterFew(c + r * o.cRowStep, columns * parts);
    }
  }
}

template <std::size_t bytes, std::size_t parts, bool subtracted, std::size_t vectors>
FATHOM_INLINE void runPanel(const Product& o, std::size_t column, std::size_t columns,
                            std::size_t first, std::size_t terms, double* cells) {
  using R = Run<bytes, parts, vectors>;
  const bool whole = columns >= R::kElements;
  const double* panel = o.b + first * o.bTermStep + column * parts;
  std::size_t panelStep = o.bTermStep;
  // Where each element is used but once, and has one part, it may stay where it is.
  if (parts == 2 || !whole || o.rows > kTileRows) {
    for (std::size_t t = 0; t < terms; ++t) {
      R x;
      if (whole) {
        x.gather(panel + t * panelStep);
      } else {
        x.gatherFew(panel + t * panelStep, columns * parts);
      }
      x.store(cells + t * R::kDoubles);
    }
    panel = cells;
    panelStep = R::kDoubles;
  }
  std::size_t row = 0;
  for (; row + kTileRows <= o.rows; row += kTileRows) {
    runTile<bytes, parts, subtracted, kTileRows, vectors>(o, row, column, columns, first, terms,
                                                          panel, panelStep);
  }
  if (row + 2 <= o.rows) {
    runTile<bytes, parts, subtracted, 2, vectors>(o, row, column, columns, first, terms, panel,
                                                  panelStep);
    row += 2;
  }
  if (row < o.rows) {
    runTile<bytes, parts, subtracted, 1, vectors>(o, row, column, columns, first, terms, panel,
                                                  panelStep);
  }
}

template <std::size_t bytes, std::size_t parts, bool subtracted>
FATHOM_INLINE void runPanels(const Product& o) {
  constexpr std::size_t kVectors = kTileVectors<bytes, parts>;
  constexpr std::size_t kLanes = bytes / sizeof(double);
  alignas(64) double cells[kPanelTerms * kVectors * kLanes * parts];
  for (std::size_t first = 0; first < o.terms; first += kPanelTerms) {
    const std::size_t terms = std::min(kPanelTerms, o.terms - first);
    std::size_t column = 0;
    for (; column + kVectors * kLanes <= o.columns; column += kVectors * kLanes) {
      runPanel<bytes, parts, subtracted, kVectors>(o, column, kVectors * kLanes, first, terms,
                                                   cells);
    }
    if constexpr (kVectors > 2) {
      if (o.columns - column > kLanes) {
        const std::size_t columns = std::min(2 * kLanes, o.columns - column);
        runPanel<bytes, parts, subtracted, 2>(o, column, columns, first, terms, cells);
        column += columns;
      }
    }
    for (; column < o.columns; column += kLanes) {
      runPanel<bytes, parts, subtracted, 1>(o, column, std::min(kLanes, o.columns - column), first,
                                            terms, cells);
    }
  }
}

template <std::size_t bytes>
FATHOM_INLINE void runRealOf(const Product& o) {
  if (o.subtracted) {
    runPanels<bytes, 1, true>(o);
  } else {
    runPanels<bytes, 1, false>(o);
  }
}
FATHOM_BY_WIDTH(runReal, (const Product& o), (o))

template <std::size_t bytes>
FATHOM_INLINE void runComplexOf(const Product& o) {
  if (o.subtracted) {
    runPanels<bytes, 2, true>(o);
  } else {
    runPanels<bytes, 2, false>(o);
  }
}
FATHOM_BY_WIDTH(runComplex, (const Product& o), (o))

}  // namespace

namespace fathom {

void multiply(const double* a, std::size_t aStride, const double* b, std::size_t bStride, double* c,
              std::size_t cStride, std::size_t rows, std::size_t terms, std::size_t columns) {
  runReal({a, aStride, 1, b, bStride, c, cStride, rows, terms, columns, false});
}

void subtractProduct(const double* a, std::size_t aStride, const double* b, std::size_t bStride,
                     double* c, std::size_t cStride, std::size_t rows, std::size_t terms,
                     std::size_t columns) {
  runReal({a, aStride, 1, b, bStride, c, cStride, rows, terms, columns, true});
}

void multiply(const ComplexNum* a, std::size_t aStride, const ComplexNum* b, std::size_t bStride,
              ComplexNum* c, std::size_t cStride, std::size_t rows, std::size_t terms,
              std::size_t columns) {
  runComplex({&a->real, 2 * aStride, 2, &b->real, 2 * bStride, &c->real, 2 * cStride, rows, terms,
              columns, false});
}

void subtractProduct(const ComplexNum* a, std::size_t aStride, const ComplexNum* b,
                     std::size_t bStride, ComplexNum* c, std::size_t cStride, std::size_t rows,
                     std::size_t terms, std::size_t columns) {
  runComplex({&a->real, 2 * aStride, 2, &b->real, 2 * bStride, &c->real, 2 * cStride, rows, terms,
              columns, true});
}

}  // namespace fathom
