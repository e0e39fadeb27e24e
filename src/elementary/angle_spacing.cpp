// Sine and cosine of evenly spaced angles, correctly rounded.
//
// Angles stand in groups of G = 8, 16, 32 or 64. That in the middle of a group is its node A, whose
// sine S and cosine C trigonometric_core.hpp gives. The others are A + d_j + e, where d_j = j step
// is the same in all groups and e is what rounding has done to the angle; so
//   sin x = S + C sin(d_j + e) + S (cos(d_j + e) - 1),
// and sin d_j and cos d_j come from a table made once, for |d_j| <= d <= kReach.
//
// Error: the node's, kRelativeError |S|; with T = |S| (1 - cos d_j) < |S| d_j^2 / 2, eight
// roundings to 53 bits of T or of sums as large; and e (sin d_j - d_j) S, which is left out, with e
// < 2^-45. Of the terms of C the node's error again, times d_j, and eleven roundings of the cube of
// d_j, over 6. What the node's angle, the series, the tails and e^2 add is below 2^-69 |S|, which
// the first leaves room for. (0.62 of the bound was seen.)
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "elementary/array_form.hpp"
#include "elementary/careful.hpp"
#include "elementary/trigonometric_core.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr double kReach = 0.037;
// Nodes are served if they, |S| and |C| are as many times d, lest S + C d_j cancel or the distance
// to the node not be exact. So the first group from 0 is not served, whatever stands in it.
constexpr double kDistance = 2.5;
static_assert(kDistance > 2.0);
// And if they are far above what the rounding of angles does, and up to where that is below 2^-45:
// 32 roundings of 2^-50, or three times as many of 2^-52.
constexpr double kLeast = 0x1p-20;
constexpr double kMostAngle = 8.0;

constexpr std::size_t kLeastGroup = kWidestLanes;
constexpr std::size_t kMostNodes = kElementaryBlock / kLeastGroup;

// How much a result may be off, times S and times C, at offsets up to d. The last term lets two of
// them be divided, whatever d.
struct ErrorFactors {
  explicit ErrorFactors(double d)
      : first(kRelativeError + (0x1p-51 + 0x1.6p-48 * d) * d * d),
        second((kRelativeError + 0x1.ep-53 * d * d) * d + 0x1p-900) {}
  double first, second;
};

FATHOM_MULTIVERSION void fill(double step, AngleSpacing& spacing) {
  const auto middle = static_cast<double>(static_cast<std::int64_t>(spacing.group / 2));
  const ErrorFactors most(magnitude(step) * middle);
  const double perFirst = 1.0 / most.first, perSecond = 1.0 / most.second;
  for (std::size_t j = 0; j < spacing.group; ++j) {
    const double place = static_cast<double>(static_cast<std::int64_t>(j)) - middle;
    const double d = place * step;
    const double square = rounded(d * d);
    double cubic, fourth;
    longSeries(square, cubic, fourth);
    const double less1 = rounded(square * (-0.5 + rounded(square * fourth)));
    const double head = leading26Bits(d);
    spacing.offset[j] = d;
    spacing.sineHead[j] = head;
    spacing.sineTail[j] = (d - head) + rounded(rounded(d * square) * cubic);
    spacing.cosine[j] = 1.0 + less1;
    spacing.cosineLess1[j] = less1;
    const ErrorFactors here(magnitude(d));
    spacing.errorShare[j] = larger(here.first * perFirst, here.second * perSecond);
  }
}

// A sine or cosine of all nodes of a block: a part of 26 bits and a tail, their sum, and how much
// the results farthest from the node may be off where this is the first. Nearer ones have a share.
struct NodeValues {
  alignas(64) double head[kMostNodes], tail[kMostNodes], sum[kMostNodes], error[kMostNodes];
};
struct Nodes {
  std::size_t count;
  alignas(64) double angle[kMostNodes], turns[kMostNodes];
  NodeValues sine, cosine;
  // Not 0 where the rotation does not serve.
  alignas(64) std::uint64_t unserved[kMostNodes];
};

// Where group i of n angles begins. The last one ends with them, if need be by beginning within the
// one before.
std::size_t groupStart(std::size_t i, std::size_t group, std::size_t n) {
  return std::min(i * group, n - group);
}

template <typename V>
FATHOM_INLINE void storeValues(const Sum<V>& sum, const Sum<V>& other, const ErrorFactors& factors,
                               std::size_t i, NodeValues& values) {
  const V value = sum.high + sum.low;
  const V head = leading26Bits(value);
  store(values.head + i, head);
  store(values.tail + i, (value - head) + ((sum.high - value) + sum.low));
  store(values.sum + i, value);
  store(values.error + i, rounded(magnitude(value) * factors.first) +
                              rounded(magnitude(other.high) * factors.second));
}

// Whether the rotation serves all groups.
template <std::size_t bytes, bool wantSine, bool wantCosine>
FATHOM_INLINE bool findNodes(const AngleSpacing& spacing, const double* x, std::size_t n,
                             Nodes& nodes) {
  using V = Lanes<bytes>;
  const std::size_t group = spacing.group;
  const double d = magnitude(spacing.offset[0]);
  const ErrorFactors factors(d);
  const auto least = inAllLanes<V>(kDistance * d + kLeast), most = inAllLanes<V>(kMostAngle);
  std::size_t count = 0;
  for (; count * group < n; ++count) {
    nodes.angle[count] = x[groupStart(count, group, n) + group / 2];
  }
  nodes.count = count;
  for (std::size_t i = count; i % kLanesOf<bytes> != 0; ++i) nodes.angle[i] = 1.0;
  for (std::size_t i = 0; i < count; i += kLanesOf<bytes>) {
    const auto a = vectorAt<V>(nodes.angle + i);
    store(nodes.turns + i, rounded(a * kStepsPerRadian) + kShift);
  }
  Bits<V> anyUnserved{};
  for (std::size_t i = 0; i < count; i += kLanesOf<bytes>) {
    const auto a = vectorAt<V>(nodes.angle + i);
    V k;
    load(k, nodes.turns + i);
    SineRows<V> row;
    Angle<V> angle;
    Sum<V> s, c;
    loadRows(nodes.turns + i, row);
    reduce<true>(a, k - kShift, angle);
    sine(row, angle, s);
    cosine(row, angle, c);
    storeValues(s, c, factors, i, nodes.sine);
    storeValues(c, s, factors, i, nodes.cosine);
    Bits<V> served = bitsWhereLess<V>(least, a) & bitsWhereLess<V>(a, most);
    if constexpr (wantSine) served &= bitsWhereLess<V>(least, magnitude(s.high));
    if constexpr (wantCosine) served &= bitsWhereLess<V>(least, magnitude(c.high));
    storeBits(nodes.unserved + i, ~served);
    anyUnserved |= ~served;
  }
  return !anyBits(anyUnserved);
}

// Of one node, in every lane: in registers, as the compiler could not tell what is stored
// meanwhile.
template <typename V>
struct NodeValue {
  V head, tail, sum, error;
};
template <typename V>
FATHOM_INLINE NodeValue<V> broadcast(const NodeValues& values, std::size_t i) {
  return {inAllLanes<V>(values.head[i]), inAllLanes<V>(values.tail[i]),
          inAllLanes<V>(values.sum[i]), inAllLanes<V>(values.error[i])};
}

// first cos r + second sin r, or the difference.
template <bool minus, typename V>
FATHOM_INLINE Bits<V> rotateNode(const NodeValue<V>& first, const NodeValue<V>& second,
                                 const Angle<V>& angle, const V& errorShare, V& value) {
  Sum<V> sum;
  rotate<minus>(first.head, first.tail, first.sum, second.head, second.tail, second.sum, angle,
                sum);
  return roundWithin<V>(sum.high, sum.low, rounded(first.error * errorShare), value);
}

template <std::size_t bytes, bool wantSine, bool wantCosine>
FATHOM_INLINE bool rotateGroups(const AngleSpacing& spacing, const Nodes& nodes, const double* x,
                                std::size_t n, double* s, double* c, std::uint64_t* doubts) {
  using V = Lanes<bytes>;
  const std::size_t group = spacing.group;
  Bits<V> any{};
  for (std::size_t i = 0, count = nodes.count; i < count; ++i) {
    if (nodes.unserved[i] != 0) continue;
    const std::size_t start = groupStart(i, group, n);
    const auto node = inAllLanes<V>(nodes.angle[i]);
    const NodeValue<V> sine = broadcast<V>(nodes.sine, i), cosine = broadcast<V>(nodes.cosine, i);
    for (std::size_t j = 0; j < group; j += kLanesOf<bytes>) {
      const std::size_t at = start + j;
      const V offset = vectorAt<V>(x + at) - node;  // exact
      const V rest = offset - vectorAt<V>(spacing.offset + j);
      Angle<V> angle;
      load(angle.high, spacing.sineHead + j);
      angle.sine =
          vectorAt<V>(spacing.sineTail + j) + rounded(rest * vectorAt<V>(spacing.cosine + j));
      angle.cosine = vectorAt<V>(spacing.cosineLess1 + j) - rounded(rest * angle.high);
      const auto errorShare = vectorAt<V>(spacing.errorShare + j);
      Bits<V> doubt{};
      V value;
      if constexpr (wantSine) {
        doubt = rotateNode<false>(sine, cosine, angle, errorShare, value);
        store(s + at, value);
      }
      if constexpr (wantCosine) {
        doubt |= rotateNode<true>(cosine, sine, angle, errorShare, value);
        store(c + at, value);
      }
      storeBits(doubts + at, doubt);
      any |= doubt;
    }
  }
  return anyBits(any);
}

// What the rotation leaves of a block.
struct Left {
  bool groups, doubts;
};

template <std::size_t bytes, bool wantSine, bool wantCosine>
FATHOM_INLINE void evenBlock(const AngleSpacing& spacing, const double* x, std::size_t n,
                             Nodes& nodes, double* s, double* c, std::uint64_t* doubts,
                             Left& left) {
  left.groups = !findNodes<bytes, wantSine, wantCosine>(spacing, x, n, nodes);
  left.doubts = rotateGroups<bytes, wantSine, wantCosine>(spacing, nodes, x, n, s, c, doubts);
}

// A block of at least one group. What is not wanted, s or c, is null.
template <std::size_t bytes>
FATHOM_INLINE void evenBlockOf(const AngleSpacing& spacing, const double* x, std::size_t n,
                               Nodes& nodes, double* s, double* c, std::uint64_t* doubts,
                               Left& left) {
  if (c == nullptr) {
    evenBlock<bytes, true, false>(spacing, x, n, nodes, s, c, doubts, left);
  } else if (s == nullptr) {
    evenBlock<bytes, false, true>(spacing, x, n, nodes, s, c, doubts, left);
  } else {
    evenBlock<bytes, true, true>(spacing, x, n, nodes, s, c, doubts, left);
  }
}
FATHOM_BY_WIDTH(evenBlock,
                (const AngleSpacing& spacing, const double* x, std::size_t n, Nodes& nodes,
                 double* s, double* c, std::uint64_t* doubts, Left& left),
                (spacing, x, n, nodes, s, c, doubts, left))

// Sines of the group that begins at 0 or next to it, as x + x^3 P(x^2). Error: of x^3 / 6, five
// roundings to 53 bits and that of 1 / 6; the series leaves out less than 2^-55 x^3. (0.65 of the
// bound was seen.) Other angles are put in doubt, and 0, whose sign would be lost.
constexpr double kLeastSmall = 0x1p-300;  // the cube is a normal number
constexpr double kMostSmall = 0.075;
static_assert(kMostSmall > 2.0 * kReach);

template <std::size_t bytes>
FATHOM_INLINE void smallSinesOf(const double* x, std::size_t n, double* s, std::uint64_t* doubts,
                                bool& anyDoubt) {
  using V = Lanes<bytes>;
  const auto least = inAllLanes<V>(kLeastSmall), most = inAllLanes<V>(kMostSmall);
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const auto angle = vectorAt<V>(x + i);
    const V square = rounded(angle * angle);
    const V cube = rounded(angle * square);
    V cubic, fourth, value;
    longSeries(square, cubic, fourth);
    Bits<V> doubt = roundWithin<V>(angle, rounded(cube * cubic), rounded(cube * 0x1.3p-53), value);
    doubt |= ~(bitsWhereLess<V>(least, angle) & bitsWhereLess<V>(angle, most));
    store(s + i, value);
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  anyDoubt |= anyBits(any);
}
FATHOM_BY_WIDTH(smallSines,
                (const double* x, std::size_t n, double* s, std::uint64_t* doubts, bool& anyDoubt),
                (x, n, s, doubts, anyDoubt))

// The functions of any angles, for an array, and of one angle in doubt.
void evaluateAny(const double* x, std::size_t n, double* s, double* c) {
  if (c == nullptr) {
    sin(x, n, s);
  } else if (s == nullptr) {
    cos(x, n, c);
  } else {
    sincos(x, n, s, c);
  }
}
void evaluateCarefully(double x, double* s, double* c) {
  if (c == nullptr) {
    *s = careful::sin(x);
  } else if (s == nullptr) {
    *c = careful::cos(x);
  } else {
    careful::sincos(x, *s, *c);
  }
}

double* from(double* y, std::size_t i) {
  return y == nullptr ? nullptr : y + i;
}

void evaluateUnserved(const Nodes& nodes, std::size_t group, const double* x, std::size_t n,
                      double* s, double* c, std::uint64_t* doubts, bool& anyDoubt) {
  for (std::size_t i = 0; i < nodes.count; ++i) {
    if (nodes.unserved[i] == 0) continue;
    const std::size_t at = groupStart(i, group, n);
    if (c == nullptr && x[at + group - 1] < kMostSmall) {
      smallSines(x + at, group, s + at, doubts + at, anyDoubt);
    } else {
      evaluateAny(x + at, group, from(s, at), from(c, at));
      std::fill_n(doubts + at, group, 0);
    }
  }
}

// What is less than a group is found as any angles are.
void evaluate(const AngleSpacing& spacing, const double* x, std::size_t n, double* s, double* c) {
  const std::size_t group = spacing.group;
  alignas(64) double copy[kElementaryBlock];
  alignas(64) std::uint64_t doubts[kElementaryBlock];
  Nodes nodes;
  for (std::size_t start = 0; start < n; start += kElementaryBlock) {
    const std::size_t count = std::min(kElementaryBlock, n - start);
    const double* angles = x + start;
    double* const sines = from(s, start);
    double* const cosines = from(c, start);
    if (group == 0 || count < group) {
      evaluateAny(angles, count, sines, cosines);
      continue;
    }
    if (x == s || x == c) {
      std::copy_n(angles, count, copy);
      angles = copy;
    }
    Left left;
    evenBlock(spacing, angles, count, nodes, sines, cosines, doubts, left);
    if (left.groups) {
      evaluateUnserved(nodes, group, angles, count, sines, cosines, doubts, left.doubts);
    }
    if (!left.doubts) continue;
    std::fill(doubts + count, doubts + inWholeVectors(count), 0);
    eachInDoubt(doubts, count, [&](std::size_t i) {
      evaluateCarefully(angles[i], from(sines, i), from(cosines, i));
    });
  }
}

}  // namespace

AngleSpacing::AngleSpacing(double step) {
  for (std::size_t size = kLeastGroup; size <= kMost; size *= 2) {
    const double reach = magnitude(step) * static_cast<double>(static_cast<std::int64_t>(size / 2));
    if (!(reach <= kReach)) break;
    group = size;
  }
  fill(step, *this);
}

void sin(const AngleSpacing& spacing, const double* x, std::size_t n, double* s) {
  evaluate(spacing, x, n, s, nullptr);
}

void cos(const AngleSpacing& spacing, const double* x, std::size_t n, double* c) {
  evaluate(spacing, x, n, nullptr, c);
}

void sincos(const AngleSpacing& spacing, const double* x, std::size_t n, double* s, double* c) {
  evaluate(spacing, x, n, s, c);
}

}  // namespace fathom
