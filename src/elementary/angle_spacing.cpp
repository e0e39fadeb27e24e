// Sine and cosine of evenly spaced angles, correctly rounded.
//
// Angles stand in groups of G = 8, 16, 32 or 64. That in the middle of a group is its node A, whose
// sine S and cosine C trigonometric_core.hpp gives. The others are A + d_j + e, where d_j = j step
// is the same in all groups and e is what rounding has done to the angle; so
//   sin x = S + C sin(d_j + e) + S (cos(d_j + e) - 1),
// and sin d_j and cos d_j come from a table made once, for |d_j| <= d <= kReach.
//
// Error: the node's, kRelativeError |S|; with T = |S| (1 - cos d_j) < |S| d^2 / 2, eight roundings
// to 53 bits of T or of sums as large; and e (sin d_j - d_j) S, which is left out, with e < 2^-46.
// Of the terms of C the node's error again, times d, and ten roundings of the cube of d_j, over 6.
// What the node's angle, the tails and e^2 add is below 2^-75 |S|, which the first leaves room for.
// (0.43 of the bound was seen.)
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "elementary/array_form.hpp"
#include "elementary/trigonometric_core.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr double kReach = 0.0257;
// Nodes are served if they, |S| and |C| are as many times d, lest S + C d_j cancel or the distance
// to the node not be exact. So the first group from 0 is not served, whatever stands in it.
constexpr double kDistance = 2.5;
static_assert(kDistance > 2.0);
// And if they are far above what the rounding of angles does, and up to where that is below 2^-46.
constexpr double kLeast = 0x1p-20;
constexpr double kMostAngle = 8.0;

constexpr std::size_t kLeastGroup = kWidestLanes;
constexpr std::size_t kMostNodes = kElementaryBlock / kLeastGroup;

FATHOM_MULTIVERSION void fill(double step, AngleSpacing& spacing) {
  for (std::size_t j = 0; j < spacing.group; ++j) {
    const double place = static_cast<double>(static_cast<std::int64_t>(j)) -
                         static_cast<double>(static_cast<std::int64_t>(spacing.group / 2));
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
  }
}

// How much a result may be off, times S and times C.
struct ErrorFactors {
  explicit ErrorFactors(double d)
      : first(kRelativeError + (0x1p-51 + 0x1p-48 * d) * d * d),
        second((kRelativeError + 0x1.bp-53 * d * d) * d) {}
  double first, second;
};

// A sine or cosine of all nodes of a block: a part of 26 bits and a tail, their sum, and how much
// the results may be off where this is the first.
struct NodeValues {
  alignas(64) double head[kMostNodes], tail[kMostNodes], sum[kMostNodes], error[kMostNodes];
};
struct Nodes {
  alignas(64) double angle[kMostNodes], turns[kMostNodes];
  NodeValues sine, cosine;
};

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

template <std::size_t bytes>
FATHOM_INLINE void findNodes(const AngleSpacing& spacing, const double* x, std::size_t count,
                             Nodes& nodes) {
  using V = Lanes<bytes>;
  const std::size_t group = spacing.group;
  const ErrorFactors factors(magnitude(spacing.offset[0]));
  for (std::size_t i = 0; i < count; ++i) nodes.angle[i] = x[i * group + group / 2];
  for (std::size_t i = count; i % kLanesOf<bytes> != 0; ++i) nodes.angle[i] = 1.0;
  for (std::size_t i = 0; i < count; i += kLanesOf<bytes>) {
    const auto a = vectorAt<V>(nodes.angle + i);
    store(nodes.turns + i, rounded(a * kStepsPerRadian) + kShift);
  }
  for (std::size_t i = 0; i < count; i += kLanesOf<bytes>) {
    V k;
    load(k, nodes.turns + i);
    SineRows<V> row;
    Angle<V> angle;
    Sum<V> s, c;
    loadRows(nodes.turns + i, row);
    reduce<true>(vectorAt<V>(nodes.angle + i), k - kShift, angle);
    sine(row, angle, s);
    cosine(row, angle, c);
    storeValues(s, c, factors, i, nodes.sine);
    storeValues(c, s, factors, i, nodes.cosine);
  }
}

// Of one node, in every lane: in registers, as the compiler could not tell what is stored
// meanwhile.
template <typename V>
struct NodeValue {
  V head, tail, sum, error;
};
template <typename V>
FATHOM_INLINE void broadcast(const NodeValues& values, std::size_t i, NodeValue<V>& node) {
  node.head = V{} + values.head[i];
  node.tail = V{} + values.tail[i];
  node.sum = V{} + values.sum[i];
  node.error = V{} + values.error[i];
}

// first cos r + second sin r, or the difference.
template <bool minus, typename V>
FATHOM_INLINE Bits<V> rotateNode(const NodeValue<V>& first, const NodeValue<V>& second,
                                 const Angle<V>& angle, V& value) {
  Sum<V> sum;
  rotate<minus>(first.head, first.tail, first.sum, second.head, second.tail, second.sum, angle,
                sum);
  return roundWithin<V>(sum.high, sum.low, first.error, value);
}

template <std::size_t bytes, bool wantSine, bool wantCosine>
FATHOM_INLINE bool rotateGroups(const AngleSpacing& spacing, const Nodes& nodes, const double* x,
                                std::size_t n, double* s, double* c, std::uint64_t* doubts) {
  using V = Lanes<bytes>;
  const std::size_t group = spacing.group;
  Bits<V> any{};
  for (std::size_t start = 0, i = 0; start < n; start += group, ++i) {
    const V node = V{} + nodes.angle[i];
    NodeValue<V> sine, cosine;
    broadcast(nodes.sine, i, sine);
    broadcast(nodes.cosine, i, cosine);
    for (std::size_t j = 0; j < group; j += kLanesOf<bytes>) {
      const std::size_t at = start + j;
      const V offset = vectorAt<V>(x + at) - node;  // exact
      const V rest = offset - vectorAt<V>(spacing.offset + j);
      Angle<V> angle;
      load(angle.high, spacing.sineHead + j);
      angle.sine =
          vectorAt<V>(spacing.sineTail + j) + rounded(rest * vectorAt<V>(spacing.cosine + j));
      angle.cosine = vectorAt<V>(spacing.cosineLess1 + j) - rounded(rest * angle.high);
      Bits<V> doubt{};
      V value;
      if constexpr (wantSine) {
        doubt = rotateNode<false>(sine, cosine, angle, value);
        store(s + at, value);
      }
      if constexpr (wantCosine) {
        doubt |= rotateNode<true>(cosine, sine, angle, value);
        store(c + at, value);
      }
      storeBits(doubts + at, doubt);
      any |= doubt;
    }
  }
  return anyBits(any);
}

// A block of whole groups. What is not wanted, s or c, is null.
template <std::size_t bytes>
FATHOM_INLINE void evenBlockOf(const AngleSpacing& spacing, const double* x, std::size_t n,
                               Nodes& nodes, double* s, double* c, std::uint64_t* doubts,
                               bool& anyDoubt) {
  findNodes<bytes>(spacing, x, n / spacing.group, nodes);
  if (c == nullptr) {
    anyDoubt = rotateGroups<bytes, true, false>(spacing, nodes, x, n, s, c, doubts);
  } else if (s == nullptr) {
    anyDoubt = rotateGroups<bytes, false, true>(spacing, nodes, x, n, s, c, doubts);
  } else {
    anyDoubt = rotateGroups<bytes, true, true>(spacing, nodes, x, n, s, c, doubts);
  }
}
FATHOM_BY_WIDTH(evenBlock,
                (const AngleSpacing& spacing, const double* x, std::size_t n, Nodes& nodes,
                 double* s, double* c, std::uint64_t* doubts, bool& anyDoubt),
                (spacing, x, n, nodes, s, c, doubts, anyDoubt))

// The functions of any angles, for an array and for one.
void evaluateAny(const double* x, std::size_t n, double* s, double* c) {
  if (c == nullptr) {
    sin(x, n, s);
  } else if (s == nullptr) {
    cos(x, n, c);
  } else {
    sincos(x, n, s, c);
  }
}
void evaluateAny(double x, double* s, double* c) {
  if (c == nullptr) {
    *s = sin(x);
  } else if (s == nullptr) {
    *c = cos(x);
  } else {
    sincos(x, *s, *c);
  }
}

// Groups that the rotation does not serve are found as any angles are, and so is what is left over.
void evaluate(const AngleSpacing& spacing, const double* x, std::size_t n, double* s, double* c) {
  const std::size_t group = spacing.group;
  if (group == 0) {
    evaluateAny(x, n, s, c);
    return;
  }
  const std::size_t whole = n - n % group;
  alignas(64) double copy[kElementaryBlock];
  alignas(64) std::uint64_t doubts[kElementaryBlock];
  Nodes nodes;
  const double least = kDistance * magnitude(spacing.offset[0]) + kLeast;
  const auto isServed = [&](std::size_t i) {
    const double a = nodes.angle[i];
    return a > least && a <= kMostAngle && (s == nullptr || magnitude(nodes.sine.sum[i]) > least) &&
           (c == nullptr || magnitude(nodes.cosine.sum[i]) > least);
  };
  const auto from = [](double* y, std::size_t i) { return y == nullptr ? nullptr : y + i; };
  for (std::size_t start = 0; start < whole; start += kElementaryBlock) {
    const std::size_t count = std::min(kElementaryBlock, whole - start);
    const double* angles = x + start;
    if (x == s || x == c) {
      std::copy_n(angles, count, copy);
      angles = copy;
    }
    bool anyDoubt = false;
    evenBlock(spacing, angles, count, nodes, from(s, start), from(c, start), doubts, anyDoubt);
    for (std::size_t i = 0; i < count / group;) {
      const std::size_t first = i;
      while (i < count / group && !isServed(i)) ++i;
      if (i == first) {
        ++i;
        continue;
      }
      const std::size_t at = first * group, size = (i - first) * group;
      evaluateAny(angles + at, size, from(s, start + at), from(c, start + at));
      std::fill_n(doubts + at, size, 0);
    }
    if (!anyDoubt) continue;
    eachInDoubt(doubts, count, [&](std::size_t i) {
      evaluateAny(angles[i], from(s, start + i), from(c, start + i));
    });
  }
  evaluateAny(x + whole, n - whole, from(s, whole), from(c, whole));
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
