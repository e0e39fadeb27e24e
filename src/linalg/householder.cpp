// The hot loops of Householder reflections: rows are contiguous, so sums over a column run side by
// side for all columns.
#include "linalg/householder.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "frame/lanes.hpp"
#include "linalg/tile.hpp"

namespace fathom {
namespace {

double* doubles(double* x) {
  return x;
}
const double* doubles(const double* x) {
  return x;
}
double* doubles(ComplexNum* x) {
  return reinterpret_cast<double*>(x);
}
const double* doubles(const ComplexNum* x) {
  return reinterpret_cast<const double*>(x);
}

// One walk over the rows of a matrix, taken as doubles: A(k, j) = A(k, j) + f[j] y[k] where there
// is f, the same with g and z where there is g, then sums[j] = sums[j] + x[k] A(k, j) where there
// is x.
struct Walk {
  double* a;
  std::size_t stride, rows, columns;
  const double *y, *f, *z, *g, *x;
  double* sums;
};

// i z for pairs of a real and an imaginary part.
template <typename L, std::size_t... i>
FATHOM_INLINE void timesI(L& z, std::index_sequence<i...>) {
  z = __builtin_shufflevector(z, -z,
                              static_cast<int>(i % 2 == 0 ? i + 1 + sizeof...(i) : i - 1)...);
}

// sum = sum + z y. With z re(y) + i z im(y), the product has the bits of the complex one.
template <std::size_t parts, typename L>
FATHOM_INLINE void addProduct(L& sum, const L& z, const double* y) {
  if constexpr (parts == 1) {
    sum = sum + z * y[0];
  } else {
    L turned = z;
    timesI(turned, std::make_index_sequence<sizeof(L) / sizeof(double)>());
    sum = sum + (z * y[0] + turned * y[1]);
  }
}

// The walk over columns `first` .. `end`, with the sums in registers. The last vector may overlap
// the one before it, so each row is read before it is written.
template <std::size_t bytes, std::size_t parts, std::size_t vectors, std::size_t additions,
          bool sums>
FATHOM_INLINE void walkPanel(const Walk& w, std::size_t first, std::size_t end) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  const auto place = [&](std::size_t v) {
    return v + 1 < vectors ? first + v * kLanes : end - kLanes;
  };
  TileLanes<bytes> f[vectors], g[vectors], sum[vectors];
  FATHOM_UNROLL
  for (std::size_t v = 0; v < vectors; ++v) {
    if constexpr (additions > 0) load(f[v], w.f + place(v));
    if constexpr (additions > 1) load(g[v], w.g + place(v));
    if constexpr (sums) load(sum[v], w.sums + place(v));
  }
  for (std::size_t k = 0; k < w.rows; ++k) {
    double* const row = w.a + k * w.stride;
    TileLanes<bytes> a[vectors];
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      load(a[v], row + place(v));
      if constexpr (additions > 0) addProduct<parts>(a[v], f[v], w.y + k * parts);
      if constexpr (additions > 1) addProduct<parts>(a[v], g[v], w.z + k * parts);
    }
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      if constexpr (additions > 0) store(row + place(v), a[v]);
      if constexpr (sums) addProduct<parts>(sum[v], a[v], w.x + k * parts);
    }
  }
  FATHOM_UNROLL
  for (std::size_t v = 0; v < vectors; ++v) {
    if constexpr (sums) store(w.sums + place(v), sum[v]);
  }
}

template <std::size_t bytes, std::size_t parts, std::size_t most>
FATHOM_INLINE void walkVectors(const Walk& w, std::size_t vectors, std::size_t first,
                               std::size_t end) {
  if (vectors < most) {
    if constexpr (most > 1) walkVectors<bytes, parts, most - 1>(w, vectors, first, end);
  } else if (w.f == nullptr) {
    walkPanel<bytes, parts, most, 0, true>(w, first, end);
  } else if (w.g != nullptr) {
    walkPanel<bytes, parts, most, 2, false>(w, first, end);
  } else if (w.x == nullptr) {
    walkPanel<bytes, parts, most, 1, false>(w, first, end);
  } else {
    walkPanel<bytes, parts, most, 1, true>(w, first, end);
  }
}

// All columns in panels of about equal width, so that none is left alone; in narrower vectors where
// they do not fill one.
template <std::size_t bytes, std::size_t parts, std::size_t most>
FATHOM_INLINE void walkColumns(const Walk& w) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  if (w.columns < kLanes) {
    if constexpr (kLanes > parts) walkColumns<bytes / 2, parts, std::min(most, std::size_t{2})>(w);
    return;
  }
  for (std::size_t first = 0; first < w.columns;) {
    const std::size_t left = (w.columns - first + kLanes - 1) / kLanes;
    const std::size_t vectors = left / ((left + most - 1) / most);
    const std::size_t end = std::min(first + vectors * kLanes, w.columns);
    walkVectors<bytes, parts, most>(w, vectors, first, end);
    first = end;
  }
}

// Those whose factors, sums and rows fit in 32 or 16 registers.
template <std::size_t bytes, std::size_t parts>
constexpr std::size_t kMostVectors = (bytes == 64 ? 8 : 4) / parts;

template <std::size_t bytes>
FATHOM_INLINE void walkRealOf(const Walk& w) {
  walkColumns<bytes, 1, kMostVectors<bytes, 1>>(w);
}
template <std::size_t bytes>
FATHOM_INLINE void walkComplexOf(const Walk& w) {
  walkColumns<bytes, 2, kMostVectors<bytes, 2>>(w);
}
FATHOM_BY_WIDTH(walkReal, (const Walk& w), (w))
FATHOM_BY_WIDTH(walkComplex, (const Walk& w), (w))

// Rows of a matrix, taken as doubles.
struct Strip {
  double* a;
  std::size_t stride, columns;
};

// sums[k] = A(k, 0) conj(r[0]) + A(k, 1) conj(r[1]) + ..., with f[j] v[k] added to A(k, j) where
// `adds`. Lanes are rows, for which squares of the matrix are transposed: as large as fit in the
// registers, the last one overlapping, and smaller ones where there are few columns. The parts of
// complex sums are apart.
template <std::size_t bytes, std::size_t rows, std::size_t parts, bool adds>
FATHOM_INLINE void sumStrip(Strip strip, const double* v, const double* f, const double* r,
                            double* sums) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kGroups = rows / kLanes;
  if (strip.columns < kLanes) {
    if constexpr (kLanes > parts) sumStrip<bytes / 2, rows, parts, adds>(strip, v, f, r, sums);
    return;
  }
  TileLanes<bytes> sum[kGroups][parts] = {};
  const auto take = [&](std::size_t j, std::size_t skipped) __attribute__((always_inline)) {
    TileLanes<bytes> fj = {};
    if constexpr (adds) load(fj, f + j);
    FATHOM_UNROLL
    for (std::size_t g = 0; g < kGroups; ++g) {
      TileLanes<bytes> square[kLanes];
      FATHOM_UNROLL
      for (std::size_t i = 0; i < kLanes; ++i) {
        const std::size_t row = g * kLanes + i;
        load(square[i], strip.a + row * strip.stride + j);
        if constexpr (adds) addProduct<parts>(square[i], fj, v + row * parts);
      }
      transpose<1>(square);
      FATHOM_UNROLL
      for (std::size_t k = 0; k < kLanes; k += parts) {
        if (k < skipped) continue;
        const double re = r[j + k];
        if constexpr (parts == 1) {
          sum[g][0] = sum[g][0] + square[k] * re;
        } else {
          const double im = r[j + k + 1];
          sum[g][0] = sum[g][0] + (square[k] * re + square[k + 1] * im);
          sum[g][1] = sum[g][1] + (square[k + 1] * re - square[k] * im);
        }
      }
    }
  };
  std::size_t j = 0;
  for (; j + kLanes <= strip.columns; j += kLanes) take(j, 0);
  if (j < strip.columns) take(strip.columns - kLanes, j + kLanes - strip.columns);
  FATHOM_UNROLL
  for (std::size_t g = 0; g < kGroups; ++g) {
    FATHOM_UNROLL
    for (std::size_t p = 0; p < parts; ++p) store(sums + p * rows + g * kLanes, sum[g][p]);
  }
}

// To each row: the column reflection's f[j] v[k] is added where there is one, then the row
// reflection's sum of A(k, j) conj(r[j]) times t[j] where there is one. `first` gets the first
// column of what becomes of A.
struct Reflections {
  const double *v, *f, *r, *t;
  double* first;
};

template <std::size_t parts>
FATHOM_INLINE void sumRow(Strip strip, const double* v, const double* f, const double* r,
                          double* sum) {
  for (std::size_t j = 0; j < strip.columns; j += parts) {
    const double* const a = strip.a + j;
    if constexpr (parts == 1) {
      sum[0] += (f != nullptr ? a[0] + rounded(f[j] * v[0]) : a[0]) * r[j];
    } else {
      ComplexNum x = {a[0], a[1]};
      if (f != nullptr) x = x + ComplexNum{f[j], f[j + 1]} * ComplexNum{v[0], v[1]};
      const ComplexNum product = x * ComplexNum{r[j], -r[j + 1]};
      sum[0] += product.real;
      sum[1] += product.imaginary;
    }
  }
}

template <std::size_t bytes, std::size_t rows, std::size_t parts>
FATHOM_INLINE void reflectStrip(Strip strip, const Reflections& o, std::size_t row) {
  strip.a += row * strip.stride;
  const double* const v = o.v + row * parts;
  double sums[rows * parts] = {}, factors[rows * parts];
  if (o.r != nullptr) {
    if constexpr (rows == 1) {
      sumRow<parts>(strip, v, o.f, o.r, sums);
    } else if (o.f != nullptr) {
      sumStrip<bytes, rows, parts, true>(strip, v, o.f, o.r, sums);
    } else {
      sumStrip<bytes, rows, parts, false>(strip, v, o.f, o.r, sums);
    }
    for (std::size_t i = 0; i < rows * parts; ++i) factors[i] = sums[i % parts * rows + i / parts];
  }
  Walk w = {strip.a, strip.stride, rows, strip.columns, v, o.f, factors, o.t, nullptr, nullptr};
  if (o.r == nullptr) w.g = nullptr;
  if (o.f == nullptr) w.y = w.z, w.f = w.g, w.g = nullptr;
  if (w.f != nullptr) walkColumns<bytes, parts, kMostVectors<bytes, parts>>(w);
  for (std::size_t i = 0; i < rows * parts; ++i) {
    o.first[row * parts + i] = strip.a[i / parts * strip.stride + i % parts];
  }
}

template <std::size_t bytes, std::size_t parts>
FATHOM_INLINE void reflectRows(Strip strip, std::size_t rows, const Reflections& o) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  std::size_t k = 0;
  for (; k + 2 * kLanes <= rows; k += 2 * kLanes) {
    reflectStrip<bytes, 2 * kLanes, parts>(strip, o, k);
  }
  if (k + kLanes <= rows) {
    reflectStrip<bytes, kLanes, parts>(strip, o, k);
    k += kLanes;
  }
  for (; k < rows; ++k) reflectStrip<bytes, 1, parts>(strip, o, k);
}

template <std::size_t bytes>
FATHOM_INLINE void reflectRealOf(Strip strip, std::size_t rows, const Reflections& o) {
  reflectRows<bytes, 1>(strip, rows, o);
}
template <std::size_t bytes>
FATHOM_INLINE void reflectComplexOf(Strip strip, std::size_t rows, const Reflections& o) {
  reflectRows<bytes, 2>(strip, rows, o);
}
FATHOM_BY_WIDTH(reflectReal, (Strip strip, std::size_t rows, const Reflections& o),
                (strip, rows, o))
FATHOM_BY_WIDTH(reflectComplex, (Strip strip, std::size_t rows, const Reflections& o),
                (strip, rows, o))

template <typename Element>
void walk(MatrixBlock<Element> a, const Element* y, const Element* f, const Element* x,
          Element* sums) {
  constexpr std::size_t kParts = kPartsOf<Element>;
  if ((f == nullptr && x == nullptr) || a.columns == 0) return;
  const Walk w = {doubles(a.first), a.stride * kParts, a.rows,  a.columns * kParts, doubles(y),
                  doubles(f),       nullptr,           nullptr, doubles(x),         doubles(sums)};
  if constexpr (kParts == 1) {
    walkReal(w);
  } else {
    walkComplex(w);
  }
}

// sums = x^H A.
template <typename Element>
void sumColumns(MatrixBlock<Element> a, const Element* x, Element* sums) {
  constexpr std::size_t kRows = 64;
  std::fill_n(sums, a.columns, Element{});
  for (std::size_t k = 0; k < a.rows; k += kRows) {
    const std::size_t rows = std::min(kRows, a.rows - k);
    Element factors[kRows];
    for (std::size_t i = 0; i < rows; ++i) factors[i] = conjugate(x[k + i]);
    walkRows({a.row(k), a.stride, rows, a.columns}, nullptr, nullptr, factors, sums);
  }
}

// A = A - v sums.
template <typename Element>
FATHOM_INLINE void subtractOf(MatrixBlock<Element> a, const Element* v, const Element* sums) {
  for (std::size_t k = 0; k < a.rows; ++k) {
    Element* row = a.row(k);
    const Element vk = v[k];
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < a.columns; ++j) row[j] = row[j] - vk * sums[j];
  }
}

// Sums over a row wait for each other, so `count` rows take theirs side by side.
template <std::size_t count, typename Element>
FATHOM_INLINE void rightOf(MatrixBlock<Element> a, const Element* v, Element tau) {
  Element sum[count] = {};
  for (std::size_t j = 0; j < a.columns; ++j) {
    for (std::size_t i = 0; i < count; ++i) sum[i] = sum[i] + a.first[i * a.stride + j] * v[j];
  }
  for (std::size_t i = 0; i < count; ++i) {
    const Element factor = tau * sum[i];
    Element* row = a.row(i);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < a.columns; ++j) row[j] = row[j] - factor * conjugate(v[j]);
  }
}

template <typename Element>
FATHOM_INLINE void right(MatrixBlock<Element> a, const Element* v, Element tau) {
  std::size_t i = 0;
  for (; i + 8 <= a.rows; i += 8) rightOf<8>(a.from(i, 0), v, tau);
  for (; i < a.rows; ++i) rightOf<1>(a.from(i, 0), v, tau);
}

FATHOM_MULTIVERSION void subtract(MatrixBlock<double> a, const double* v, const double* sums) {
  subtractOf(a, v, sums);
}
FATHOM_MULTIVERSION void subtract(MatrixBlock<ComplexNum> a, const ComplexNum* v,
                                  const ComplexNum* sums) {
  subtractOf(a, v, sums);
}
FATHOM_MULTIVERSION void realRight(MatrixBlock<double> a, const double* v, double tau) {
  right(a, v, tau);
}
FATHOM_MULTIVERSION void complexRight(MatrixBlock<ComplexNum> a, const ComplexNum* v,
                                      ComplexNum tau) {
  right(a, v, tau);
}

template <typename Element>
void left(MatrixBlock<Element> a, const Element* v, Element tau, Element* sums) {
  sumColumns(a, v, sums);
  for (std::size_t j = 0; j < a.columns; ++j) sums[j] = tau * sums[j];
  subtract(a, v, sums);
}

}  // namespace

void walkRows(MatrixBlock<double> a, const double* y, const double* f, const double* x,
              double* sums) {
  walk(a, y, f, x, sums);
}
void walkRows(MatrixBlock<ComplexNum> a, const ComplexNum* y, const ComplexNum* f,
              const ComplexNum* x, ComplexNum* sums) {
  walk(a, y, f, x, sums);
}
void reflectBoth(MatrixBlock<double> a, const double* v, const double* f, const double* r,
                 const double* t, double* first) {
  reflectReal({a.first, a.stride, a.columns}, a.rows, {v, f, r, t, first});
}
void reflectBoth(MatrixBlock<ComplexNum> a, const ComplexNum* v, const ComplexNum* f,
                 const ComplexNum* r, const ComplexNum* t, ComplexNum* first) {
  reflectComplex({doubles(a.first), 2 * a.stride, 2 * a.columns}, a.rows,
                 {doubles(v), doubles(f), doubles(r), doubles(t), doubles(first)});
}
void reflectLeft(MatrixBlock<double> a, const double* v, double tau, double* sums) {
  left(a, v, tau, sums);
}
void reflectLeft(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau, ComplexNum* sums) {
  left(a, v, tau, sums);
}
void reflectRight(MatrixBlock<double> a, const double* v, double tau) {
  realRight(a, v, tau);
}
void reflectRight(MatrixBlock<ComplexNum> a, const ComplexNum* v, ComplexNum tau) {
  complexRight(a, v, tau);
}

}  // namespace fathom
