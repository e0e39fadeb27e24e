// The transforms as plain loops: slow, one butterfly after another, the reference for the last bit.
#ifndef FATHOM_TESTS_SPECTRAL_PLAIN_TRANSFORMS_HPP
#define FATHOM_TESTS_SPECTRAL_PLAIN_TRANSFORMS_HPP

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "frame/elementary.hpp"

namespace fathom::test::plain {

using Index = std::int64_t;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kRootHalf = 0.7071067811865476;

// The heads of the blocks that take part in a stage of `span`, shifted by j.
template <typename Body>
void splitRadixBlocks(Index n, Index span, Index j, Body body) {
  Index is = j;
  for (Index id = 2 * span; is < n; id *= 4) {
    for (Index i0 = is; i0 < n; i0 += id) body(i0);
    is = 2 * id - span + j;
  }
}

inline void reverse(std::vector<double>& x) {
  const Index n = static_cast<Index>(x.size());
  Index j = 0;
  for (Index i = 1; i < n; ++i) {
    Index k = n / 2;
    while (j + k >= n) k /= 2;
    j = k + j % k;
    if (j > i) std::swap(x[i], x[j]);
  }
}

inline void lengthTwo(std::vector<double>& x) {
  splitRadixBlocks(static_cast<Index>(x.size()), 2, 0, [&](Index i) {
    const double t = x[i];
    x[i] = t + x[i + 1];
    x[i + 1] = t - x[i + 1];
  });
}

inline void fft(std::vector<double>& x, std::vector<double>& y) {
  const Index n = static_cast<Index>(x.size());
  if (n <= 1) return;
  for (Index n2 = n; n2 > 2; n2 /= 2) {
    const Index n4 = n2 / 4;
    const double e = kTwoPi / static_cast<double>(n2);
    double a = 0.0;
    for (Index j = 0; j < n4; ++j) {
      const double a3 = 3.0 * a;
      const double c1 = fathom::cos(a), s1 = fathom::sin(a), c3 = fathom::cos(a3),
                   s3 = fathom::sin(a3);
      a += e;
      splitRadixBlocks(n, n2, j, [&](Index i0) {
        const Index i1 = i0 + n4, i2 = i1 + n4, i3 = i2 + n4;
        const double r1 = x[i0] - x[i2], r2 = x[i1] - x[i3];
        const double q1 = y[i0] - y[i2], q2 = y[i1] - y[i3];
        x[i0] += x[i2];
        x[i1] += x[i3];
        y[i0] += y[i2];
        y[i1] += y[i3];
        x[i2] = r1 + q2;
        x[i3] = r1 - q2;
        y[i2] = q1 - r2;
        y[i3] = q1 + r2;
        if (j == 0) return;
        const double x2 = x[i2], x3 = x[i3];
        x[i2] = x2 * c1 + y[i2] * s1;
        y[i2] = y[i2] * c1 - x2 * s1;
        x[i3] = x3 * c3 + y[i3] * s3;
        y[i3] = y[i3] * c3 - x3 * s3;
      });
    }
  }
  lengthTwo(x);
  lengthTwo(y);
  reverse(x);
  reverse(y);
}

inline void packedRealFft(std::vector<double>& x) {
  const Index n = static_cast<Index>(x.size());
  if (n <= 1) return;
  reverse(x);
  lengthTwo(x);
  double e = kTwoPi / 4;
  for (Index n2 = 4; n2 <= n; n2 *= 2, e /= 2) {
    const Index n4 = n2 / 4, n8 = n2 / 8;
    splitRadixBlocks(n, n2, 0, [&](Index i0) {
      Index i1 = i0 + n4, i2 = i1 + n4, i3 = i2 + n4;
      double t1 = x[i3] + x[i2];
      x[i3] = x[i3] - x[i2];
      x[i2] = x[i0] - t1;
      x[i0] = x[i0] + t1;
      if (n2 == 4) return;
      i0 += n8, i1 += n8, i2 += n8, i3 += n8;
      t1 = (x[i2] + x[i3]) * kRootHalf;
      const double t2 = (x[i2] - x[i3]) * kRootHalf;
      x[i3] = x[i1] - t1;
      x[i2] = -(x[i1] + t1);
      x[i1] = x[i0] - t2;
      x[i0] = x[i0] + t2;
    });
    double a = e;
    for (Index j = 1; j < n8; ++j, a += e) {
      const double a3 = 3.0 * a;
      const double c1 = fathom::cos(a), s1 = fathom::sin(a), c3 = fathom::cos(a3),
                   s3 = fathom::sin(a3);
      splitRadixBlocks(n, n2, 0, [&](Index i0) {
        double *p = &x[i0 + j], *q = &x[i0 + n4 - j];
        const double p0 = p[0], p1 = p[n4], p2 = p[2 * n4], p3 = p[3 * n4];
        const double q0 = q[0], q1 = q[n4], q2 = q[2 * n4], q3 = q[3 * n4];
        const double t1 = p2 * c1 + q2 * s1, t2 = q2 * c1 - p2 * s1;
        const double t3 = p3 * c3 + q3 * s3, t4 = q3 * c3 - p3 * s3;
        q[3 * n4] = q1 + (t2 + t4);
        p[2 * n4] = (t2 + t4) - q1;
        p[3 * n4] = p1 - (t1 - t3);
        q[2 * n4] = -(p1 + (t1 - t3));
        q[n4] = p0 - (t1 + t3);
        p[0] = p0 + (t1 + t3);
        p[n4] = q0 + (t2 - t4);
        q[0] = q0 - (t2 - t4);
      });
    }
  }
}

inline void packedRealInvFft(std::vector<double>& x) {
  const Index n = static_cast<Index>(x.size());
  if (n < 2) return;
  const double factor = 1.0 / static_cast<double>(n);
  for (double& v : x) v *= factor;
  for (Index n2 = n; n2 > 2; n2 /= 2) {
    const Index n4 = n2 / 4, n8 = n2 / 8;
    const double e = kTwoPi / static_cast<double>(n2);
    splitRadixBlocks(n, n2, 0, [&](Index i0) {
      Index i1 = i0 + n4, i2 = i1 + n4, i3 = i2 + n4;
      double t1 = x[i0] - x[i2];
      x[i0] = x[i0] + x[i2];
      x[i1] = 2.0 * x[i1];
      x[i2] = t1 - 2.0 * x[i3];
      x[i3] = t1 + 2.0 * x[i3];
      if (n2 == 4) return;
      i0 += n8, i1 += n8, i2 += n8, i3 += n8;
      t1 = (x[i1] - x[i0]) * kRootHalf;
      const double t2 = (x[i3] + x[i2]) * kRootHalf;
      x[i0] = x[i0] + x[i1];
      x[i1] = x[i3] - x[i2];
      x[i2] = 2.0 * (-t2 - t1);
      x[i3] = 2.0 * (-t2 + t1);
    });
    double a = e;
    for (Index j = 1; j < n8; ++j, a += e) {
      const double a3 = 3.0 * a;
      const double c1 = fathom::cos(a), s1 = fathom::sin(a), c3 = fathom::cos(a3),
                   s3 = fathom::sin(a3);
      splitRadixBlocks(n, n2, 0, [&](Index i0) {
        double *p = &x[i0 + j], *q = &x[i0 + n4 - j];
        const double t1 = p[0] - q[n4], t2 = q[0] - p[n4];
        const double t3 = q[3 * n4] + p[2 * n4], t4 = p[3 * n4] + q[2 * n4];
        p[0] = p[0] + q[n4];
        q[0] = p[n4] + q[0];
        q[n4] = q[3 * n4] - p[2 * n4];
        p[n4] = p[3 * n4] - q[2 * n4];
        const double t5 = t1 - t4, t6 = t1 + t4, t7 = t2 - t3, t8 = t2 + t3;
        p[2 * n4] = t5 * c1 + t7 * s1;
        q[2 * n4] = t5 * s1 - t7 * c1;
        p[3 * n4] = t6 * c3 - t8 * s3;
        q[3 * n4] = t8 * c3 + t6 * s3;
      });
    }
  }
  lengthTwo(x);
  reverse(x);
}

inline void fht(std::vector<double>& x) {
  const Index n = static_cast<Index>(x.size());
  if (n <= 1) return;
  double e = kTwoPi / static_cast<double>(n);
  for (Index span = n; span > 2; span /= 2, e *= 2.0) {
    const Index half = span / 2;
    for (Index i = 0; i < half; ++i) {
      for (Index k = i; k < n; k += span) {
        const double t = x[k];
        x[k] = t + x[k + half];
        x[k + half] = t - x[k + half];
      }
    }
    double a = e;
    for (Index j = 1; j < half / 2; ++j, a += e) {
      const double c = fathom::cos(a), s = fathom::sin(a);
      for (Index b = 0; b < n; b += span) {
        const Index p = b + half + j, q = b + span - j;
        const double t = x[p];
        x[p] = t * c + x[q] * s;
        x[q] = t * s - x[q] * c;
      }
    }
  }
  for (Index k = 0; k < n; k += 2) {
    const double t = x[k];
    x[k] = t + x[k + 1];
    x[k + 1] = t - x[k + 1];
  }
  reverse(x);
}

}  // namespace fathom::test::plain

#endif
