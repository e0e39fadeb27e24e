// Kernels that hold their work in vector registers, written once for every register width.
//
// Lanes<bytes> is a vector of doubles with the usual element-wise operators. A kernel is a template
// `nameOf<bytes>`, marked FATHOM_INLINE, and FATHOM_BY_WIDTH(name, (parameters), (arguments)) in an
// unnamed namespace defines the function `name` that runs it at the width of the processor's
// registers. A vector wider than the registers is correct but slow, hence no fixed width.
#ifndef FATHOM_FRAME_LANES_HPP
#define FATHOM_FRAME_LANES_HPP

#include <cstddef>
#include <cstring>

#include "frame/multiversion.hpp"

namespace fathom {

template <std::size_t bytes>
struct LanesOf {
  typedef double Type __attribute__((vector_size(bytes)));  // NOLINT(modernize-use-using)
};
template <std::size_t bytes>
using Lanes = typename LanesOf<bytes>::Type;
template <std::size_t bytes>
inline constexpr std::size_t kLanesOf = bytes / sizeof(double);

template <typename L>
FATHOM_INLINE void load(L& lanes, const double* x) {
  std::memcpy(&lanes, x, sizeof lanes);
}
template <typename L>
FATHOM_INLINE void store(double* y, const L& lanes) {
  std::memcpy(y, &lanes, sizeof lanes);
}

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"  // inlined: no vector is ever passed
#endif
// Products that are rounded before they are added or subtracted, as in multiversion.hpp.
template <typename L>
FATHOM_INLINE L rounded(const L& products) {
#if defined(__has_builtin)
#if __has_builtin(__builtin_assoc_barrier)
  return __builtin_assoc_barrier(products);
#else
  return products;
#endif
#else
  return products;
#endif
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#if defined(__AVX512F__)
inline constexpr std::size_t kRegisterBytes = 64;
#elif defined(__AVX__)
inline constexpr std::size_t kRegisterBytes = 32;
#else
inline constexpr std::size_t kRegisterBytes = 16;
#endif

}  // namespace fathom

// For the loops over the few registers of a tile: without it they would live in memory.
#if defined(__clang__)
#define FATHOM_UNROLL _Pragma("clang loop unroll(full)")
#else
#define FATHOM_UNROLL _Pragma("GCC unroll 8")
#endif

// NOLINTBEGIN(bugprone-macro-parentheses): parameter lists and arguments come in parentheses
#if defined(FATHOM_DISPATCH) && defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define FATHOM_BY_WIDTH(name, parameters, arguments)               \
  __attribute__((target("default"))) void name parameters {        \
    name##Of<16> arguments;                                        \
  }                                                                \
  __attribute__((target("arch=x86-64-v3"))) void name parameters { \
    name##Of<32> arguments;                                        \
  }                                                                \
  __attribute__((target("arch=x86-64-v4"))) void name parameters { \
    name##Of<64> arguments;                                        \
  }
#else
#define FATHOM_BY_WIDTH(name, parameters, arguments) \
  void name parameters {                             \
    name##Of<fathom::kRegisterBytes> arguments;      \
  }
#endif
// NOLINTEND(bugprone-macro-parentheses)

#endif
