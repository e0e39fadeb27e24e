// Noise from the combined generator of Wichmann and Hill: three multiplicative congruences, whose
// sum of fractions gives one draw. All routines share its three seeds. Draws are made a block at a
// time: the seeds of a block's draws are the seeds of the block before, times one power each.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"

namespace {

// seed <- multiplier x seed mod modulus, the modulus a prime below 2^15.
struct Congruence {
  int32_t multiplier;
  int32_t modulus;
  double reciprocal;

  constexpr int32_t next(int32_t seed) const { return multiplier * seed % modulus; }
  constexpr uint32_t power(int32_t exponent) const {
    const auto m = static_cast<uint32_t>(modulus);
    uint32_t result = 1;
    for (auto factor = static_cast<uint32_t>(multiplier); exponent > 0; exponent /= 2) {
      if (exponent % 2 != 0) result = result * factor % m;
      factor = factor * factor % m;
    }
    return result;
  }
};
constexpr Congruence kFirst = {171, 30269, 3.3037100664045725e-05};
constexpr Congruence kSecond = {172, 30307, 3.2995677566238825e-05};
constexpr Congruence kThird = {170, 30323, 3.297826732183491e-05};

constexpr int32_t kLevels = 32768;
constexpr int32_t kMiddle = 16383;
constexpr int32_t kTerms = 12;  // draws in a Gaussian sample
constexpr std::size_t kLanes = 8 * kTerms;
// Draws from which a block costs less than one draw after another.
constexpr std::size_t kWorthABlock = 24;

// The first may be negative and keeps its sign; all lie within their moduli.
struct Seeds {
  int32_t first, second, third;
};
Seeds sharedSeeds = {1234, 2345, 3456};

void restart(int32_t value) {
  constexpr uint32_t kMultiplier = 8191;
  constexpr uint32_t kMask = 0x3FFF;
  const uint32_t first = value == 0 ? 32767 : static_cast<uint32_t>(value);
  const uint32_t second = first * kMultiplier & kMask;
  const uint32_t third = second * kMultiplier & kMask;
  // The product of a large first seed wraps around. Kept is the seed within the modulus that has
  // the same successor, so that no later product does.
  const auto product = static_cast<int32_t>(first * static_cast<uint32_t>(kFirst.multiplier));
  constexpr auto kInverse = static_cast<int32_t>(kFirst.power(kFirst.modulus - 2));
  sharedSeeds = {product % kFirst.modulus * kInverse % kFirst.modulus, static_cast<int32_t>(second),
                 static_cast<int32_t>(third)};
}

// One draw: in [0, kLevels), or in (-kLevels, kLevels) while the first seed is negative.
int32_t draw(Seeds& seeds) {
  seeds = {kFirst.next(seeds.first), kSecond.next(seeds.second), kThird.next(seeds.third)};
  const double sum = seeds.first * kFirst.reciprocal + seeds.second * kSecond.reciprocal +
                     seeds.third * kThird.reciprocal;
  const double fraction = sum - static_cast<int32_t>(sum);
  return static_cast<int32_t>(fraction * kLevels);
}

// A product modulo m < 2^15 with a factor that comes with its quotient floor(2^16 factor / m):
// that estimates the product's quotient, at most one too low.
struct Factor {
  uint16_t value, quotient;
};
constexpr Factor factorOf(uint32_t value, const Congruence& g) {
  return {static_cast<uint16_t>(value),
          static_cast<uint16_t>((value << 16) / static_cast<uint32_t>(g.modulus))};
}
FATHOM_INLINE uint16_t product(uint16_t seed, uint16_t value, uint16_t quotient, uint16_t m) {
  const auto estimate = static_cast<uint16_t>((uint32_t{seed} * quotient) >> 16);
  const auto high = static_cast<uint16_t>(uint32_t{seed} * value - uint32_t{estimate} * m);
  const auto low = static_cast<uint16_t>(high - m);
  return high < low ? high : low;  // low wraps around when high is the remainder
}

// Where the draws of a block lie: one after another, or the terms of each sum one below another.
constexpr std::size_t laneOf(std::size_t draw, bool sums) {
  constexpr std::size_t kSums = kLanes / kTerms;
  return sums ? draw % kTerms * kSums + draw / kTerms : draw;
}

// Factors from the seed before the first block to the block before that.
struct Start {
  uint16_t values[kLanes] = {};
  uint16_t quotients[kLanes] = {};
  constexpr Start(const Congruence& g, bool sums) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const auto back = static_cast<int32_t>(kLanes - 1 - i);
      const Factor f = factorOf(g.power(g.modulus - 1 - back), g);  // the order divides modulus - 1
      values[laneOf(i, sums)] = f.value;
      quotients[laneOf(i, sums)] = f.quotient;
    }
  }
};

// The seeds of a block's draws.
template <bool sums>
class Block {
 public:
  FATHOM_INLINE explicit Block(const Seeds& seeds) : negative_(seeds.first < 0) {
    start<0>(first_, negative_ ? -seeds.first : seeds.first);
    start<1>(second_, seeds.second);
    start<2>(third_, seeds.third);
  }

  // Advances to the next block and makes its draws.
  FATHOM_INLINE void draw(int32_t* r) {
    step<0>(first_);
    step<1>(second_);
    step<2>(third_);
    // Scaled by kLevels, a power of two, before the sum: the same roundings.
    const double k1 = (negative_ ? -kLevels : kLevels) * kFirst.reciprocal;
    const double k2 = kLevels * kSecond.reciprocal;
    const double k3 = kLevels * kThird.reciprocal;
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < kLanes; ++j) {
      const double sum =
          int32_t{first_[j]} * k1 + int32_t{second_[j]} * k2 + int32_t{third_[j]} * k3;
      const auto whole = static_cast<int32_t>(sum);
      r[j] = whole & ((kLevels - 1) | whole >> 31);  // modulo kLevels; above -kLevels if negative
    }
  }

  // The seeds after the block's first `draws` draws.
  Seeds after(std::size_t draws) const {
    const std::size_t j = laneOf(draws - 1, sums);
    return {negative_ ? -first_[j] : first_[j], second_[j], third_[j]};
  }

 private:
  static constexpr Congruence kCongruences[] = {kFirst, kSecond, kThird};

  template <int k>
  FATHOM_INLINE static void start(uint16_t* lanes, int32_t seed) {
    static constexpr Start kStart(kCongruences[k], sums);
    constexpr auto kModulus = static_cast<uint16_t>(kCongruences[k].modulus);
    const auto s = static_cast<uint16_t>(seed);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < kLanes; ++j) {
      lanes[j] = product(s, kStart.values[j], kStart.quotients[j], kModulus);
    }
  }
  template <int k>
  FATHOM_INLINE static void step(uint16_t* lanes) {
    constexpr Factor kStep = factorOf(kCongruences[k].power(kLanes), kCongruences[k]);
    constexpr auto kModulus = static_cast<uint16_t>(kCongruences[k].modulus);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < kLanes; ++j) {
      lanes[j] = product(lanes[j], kStep.value, kStep.quotient, kModulus);
    }
  }

  bool negative_;
  alignas(64) uint16_t first_[kLanes];
  alignas(64) uint16_t second_[kLanes];
  alignas(64) uint16_t third_[kLanes];
};

// Samples from a draw, or from a sum of draws.
struct White {
  double k;
  FATHOM_INLINE double operator()(int32_t r) const { return (r - kMiddle) * k; }
};
struct Gauss {
  double k;
  FATHOM_INLINE double operator()(int32_t sum) const { return (sum - kTerms * kMiddle) * k; }
};
// The extended product with 1 / 32767, from two parts of that constant. A draw's product with the
// high part is exact. That with the low part is rounded to a multiple of 2^-64 where the extended
// product is and makes a tie of it: in draws near 32000. In all others that rounding decides
// nothing.
struct Unit {
  static constexpr double kHigh = 0x1p-15 - 0x1p-27;
  static constexpr double kLow = 0x1p-27 + 0x1p-30 + 0x1p-45 + 0x1p-60 + 0x1p-75;
  static_assert(fathom::extendedReciprocal(32767).mantissa == 0x8001'0002'0004'0008);
  static_assert(fathom::extendedReciprocal(32767).exponent == -78);
  FATHOM_INLINE double operator()(int32_t r) const { return r * kHigh + r * kLow; }
};

// Samples of one draw each, in blocks.
template <typename Sample>
FATHOM_INLINE void fillBlocks(Seeds& seeds, std::size_t n, Sample sample, double* y) {
  Block<false> block(seeds);
  std::size_t count = 0;
  for (; n > 0; n -= count, y += count) {
    int32_t r[kLanes];
    block.draw(r);
    count = std::min(n, kLanes);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < count; ++j) y[j] = sample(r[j]);
  }
  seeds = block.after(count);
}
FATHOM_MULTIVERSION void fill(Seeds& seeds, std::size_t n, White sample, double* y) {
  fillBlocks(seeds, n, sample, y);
}
FATHOM_MULTIVERSION void fill(Seeds& seeds, std::size_t n, Unit sample, double* y) {
  fillBlocks(seeds, n, sample, y);
}

FATHOM_MULTIVERSION void fill(Seeds& seeds, std::size_t n, Gauss sample, double* y) {
  constexpr std::size_t kSums = kLanes / kTerms;
  Block<true> block(seeds);
  std::size_t count = 0;
  for (; n > 0; n -= count, y += count) {
    int32_t r[kLanes];
    block.draw(r);
    int32_t sums[kSums] = {};
    for (std::size_t i = 0; i < kLanes; i += kSums) {
      FATHOM_INDEPENDENT
      for (std::size_t j = 0; j < kSums; ++j) sums[j] += r[i + j];
    }
    count = std::min(n, kSums);
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < count; ++j) y[j] = sample(sums[j]);
  }
  seeds = block.after(kTerms * count);
}

// The frame of the routines: samples of `terms` draws each.
template <int32_t terms, typename Sample>
AnalysisStatus generate(int32_t n, int32_t seed, Sample sample, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (seed >= 0) restart(seed);
  const auto size = static_cast<std::size_t>(n);
  if (size >= kWorthABlock / terms) {
    fill(sharedSeeds, size, sample, y);
  } else {
    for (std::size_t i = 0; i < size; ++i) {
      int32_t sum = 0;
      for (int32_t j = 0; j < terms; ++j) sum += draw(sharedSeeds);
      y[i] = sample(sum);
    }
  }
  return FATHOM_OK;
}

}  // namespace

AnalysisStatus WhiteNoise(int32_t n, double amplitude, int32_t seed, double* y) {
  return generate<1>(n, seed, White{amplitude * 0x1p-14}, y);
}

AnalysisStatus GaussNoise(int32_t n, double deviation, int32_t seed, double* y) {
  return generate<kTerms>(n, seed, Gauss{deviation * 0x1p-15}, y);
}

AnalysisStatus Uniform(int32_t n, int32_t seed, double* y) {
  return generate<1>(n, seed, Unit{}, y);
}
