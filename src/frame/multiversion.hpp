// Hot loops: variants per instruction-set level, and the promise that iterations are independent.
//
// FATHOM_MULTIVERSION on an internal function makes the compiler emit a baseline, an x86-64-v3 and
// an x86-64-v4 variant, one of which is chosen when the library is loaded. The bits are the same in
// all three, because no operation is fused or reassociated. Never put it on an exported routine:
// the variants would become exported names of their own.
//
// A product in rounded() is rounded before it is added or subtracted. GCC needs to be told where a
// sum of products stands beside a difference, as in a complex product: from version 12 on it fuses
// such a pair, although contraction is off.
//
// FATHOM_INDEPENDENT before a loop says that no iteration reads what another writes, so that the
// compiler vectorises it although the output may be one of the inputs.
#ifndef FATHOM_FRAME_MULTIVERSION_HPP
#define FATHOM_FRAME_MULTIVERSION_HPP

#if defined(FATHOM_DISPATCH) && defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define FATHOM_MULTIVERSION \
  __attribute__((target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")))
#else
#define FATHOM_MULTIVERSION
#endif

#if defined(__clang__)
#define FATHOM_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define FATHOM_INDEPENDENT _Pragma("GCC ivdep")
#else
#define FATHOM_INDEPENDENT
#endif

// Inlined into each variant of the hot loop that uses it, so that it is compiled for that level.
#if defined(__GNUC__)
#define FATHOM_INLINE inline __attribute__((always_inline))
#else
#define FATHOM_INLINE inline
#endif

namespace fathom {

FATHOM_INLINE double rounded(double product) {
#if defined(__has_builtin)
#if __has_builtin(__builtin_assoc_barrier)
  return __builtin_assoc_barrier(product);
#else
  return product;
#endif
#else
  return product;
#endif
}

}  // namespace fathom

#endif
