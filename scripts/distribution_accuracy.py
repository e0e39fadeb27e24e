#!/usr/bin/env python3
"""Measures the errors of the probability distributions against a reference of 50 digits.

    scripts/setup accuracy
    scripts/distribution_accuracy.py build/release/libfathom.so > docs/distributions.md

The reference sums series of positive terms in integers, and takes ln Gamma and erfc from mpmath.
"""
import ctypes
import math
import sys

from mpmath import exp, log, loggamma, mp, mpf

mp.dps = 80  # 50 and more are left after powers of 2^31 and differences
BITS = 230
LARGEST = 2**31 - 1
library = ctypes.CDLL(sys.argv[1])


def call(name, x, *df):
    result = ctypes.c_double(math.nan)
    status = getattr(library, name)(ctypes.c_double(x), *map(ctypes.c_int32, df), ctypes.byref(result))
    if status:
        sys.exit(f"{name}{(x, *df)}: status {status}")
    return result.value


def positive_series(ratio):
    """1 + r(1) + r(1) r(2) + ..., r given as numerator and denominator, until nothing is added."""
    total = term = 1 << BITS
    n = 1
    while term:
        above, below = ratio(n)
        term = term * above // below
        total += term
        n += 1
    return mpf(total) / (1 << BITS)


def terms(x, a, b):
    """About how many terms the series of I_x(a, b) needs."""
    n = 64
    while n < 2**40 and n * math.log(x) + math.lgamma(a + b + n) - math.lgamma(a + b) - (
            math.lgamma(a + 1 + n) - math.lgamma(a + 1)) > -160:
        n *= 2
    return n


def beta(x, y, a2, b2):
    """I_x(a2/2, b2/2), with y = 1 - x, to 60 digits after the point."""
    a, b = mpf(a2) / 2, mpf(b2) / 2
    scale = exp(loggamma(a + b) - loggamma(a) - loggamma(b) + a * log(x) + b * log(y))
    if scale < mpf("1e-90"):
        return mpf(0 if x * (a + b) < a else 1)
    if terms(x, a2 / 2, b2 / 2) > terms(y, b2 / 2, a2 / 2):
        return 1 - beta(y, x, b2, a2)
    scaled = int(x * (1 << BITS))
    total = positive_series(lambda n: ((a2 + b2 + 2 * n - 2) * scaled, (a2 + 2 * n) << BITS))
    return scale / a * total


def normal(x):
    return mp.erfc(-mpf(x) / mp.sqrt(2)) / 2


def student(t, df):
    square = mpf(t) ** 2
    if square == 0:
        return mpf(1) / 2
    tail = beta(df / (df + square), square / (df + square), df, 1) / 2
    return tail if t < 0 else 1 - tail


def fisher(f, df1, df2):
    product = df1 * mpf(f)
    return beta(product / (df2 + product), df2 / (df2 + product), df1, df2)


def chi_square(x, df):
    a, h = mpf(df) / 2, mpf(x) / 2
    scaled = int(h * (1 << BITS))
    total = positive_series(lambda n: (2 * scaled, (df + 2 * n) << BITS))
    return exp(a * log(h) - h - loggamma(a + 1)) * total


def quantile(forward, start, p, df):
    """Root of forward - p near start, by secants."""
    x0, x1 = mpf(start), mpf(start) * (1 + mpf("1e-6")) + mpf("1e-9")
    f0, f1 = forward(x0, *df) - p, forward(x1, *df) - p
    for _ in range(60):
        if f1 == f0 or abs(x1 - x0) < mpf(10) ** -25 * abs(x1):
            break
        step = f1 * (x1 - x0) / (f1 - f0)
        if forward in (fisher, chi_square):
            step = min(step, x1 / 2)
        x0, x1, f0 = x1, x1 - step, f1
        f1 = forward(x1, *df) - p
    return x1


class Worst:
    def __init__(self):
        self.error, self.at = -1, None

    def see(self, error, at):
        if error > self.error:
            self.error, self.at = error, at

    def cells(self, names):
        at = ", ".join(f"{name} = {value:.4g}" if isinstance(value, float) else f"{name} = {value}"
                       for name, value in zip(names, self.at))
        return f"{float(self.error):.1e} | {at}" if mp.isfinite(self.error) else f"not finite | {at}"


def row(label, name, forward, points, names, central):
    absolute, relative, inside = Worst(), Worst(), Worst()
    for point in points:
        got = call(name, *point)
        if name.startswith("Inv"):
            expected = quantile(forward, got, mpf(point[0]), point[1:])
            size, important = abs(expected), True
        else:
            expected = size = forward(*point)
            important = expected >= mpf("0.001")
        error = abs(mpf(got) - expected) if math.isfinite(got) else mp.inf
        absolute.see(error, point)
        if size > mpf("1e-40"):
            relative.see(error / size, point)
        if important:
            inside.see(error / size, point)
    cells = [label, absolute.cells(names), relative.cells(names)]
    if central:
        cells.append(inside.cells(names))
    print("| " + " | ".join(cells) + " |", flush=True)


def spread(low, high, count):
    return [low * (high / low) ** (k / (count - 1)) for k in range(count)]


def degrees(low, high):
    return sorted({round(df) for df in spread(low, high, 10)} | {low + 1, high - 1})


def table(title, central=True):
    columns = ["largest absolute error", "at", "largest relative error", "at"]
    columns += ["the same where p >= 0.001", "at"] if central else []
    print(f"\n## {title}\n\n| range | " + " | ".join(columns) + " |")
    print("|---" * (len(columns) + 1) + "|")


PROBABILITIES = [1e-4, 1e-3, 0.01, 0.025, 0.05, 0.1, 0.3, 0.45, 0.5, 0.55, 0.7, 0.9, 0.95, 0.975, 0.99,
                 0.999, 0.9999]
RANGES = [(1, 10), (11, 100), (101, 1000), (1001, 10_000), (10_001, 100_000),
          (100_001, 1_000_000), (1_000_001, LARGEST)]


def label(low, high):
    return f"{low} to {'2^31 - 1' if high == LARGEST else high}"


def main():
    print("""# Errors of the probability distributions

Written by `scripts/distribution_accuracy.py`; the reference has 50 digits. An error is the largest
over a grid, relative errors those where the probability is 1e-40 or more; degrees of freedom of
each range are its ends and points spread evenly in logarithm.
""", end="")

    table("N_Dist")
    line = [x / 50 for x in range(-2000, 2001)]
    row("-40 to 40", "N_Dist", normal, [(x,) for x in line], ["x"], True)
    row("-3 to 40", "N_Dist", normal, [(x,) for x in line if x >= -3], ["x"], True)

    table("InvN_Dist", False)
    centre = [k / 1000 for k in range(1, 1000) if k != 500]
    for text, points in [("p 1e-154 to 0.001", spread(1e-154, 1e-3, 300)),
                         ("p 0.001 to 0.999, but 0.5", centre),
                         ("p 0.999 to 1 - 1e-15", [1 - d for d in spread(1e-15, 1e-3, 100)])]:
        row(text, "InvN_Dist", normal, [(p,) for p in points], ["p"], False)

    table("T_Dist (t from -10000 to 10000)")
    side = spread(1e-4, 1e4, 60) + [k / 4 for k in range(1, 41)]
    for low, high in RANGES:
        row("df " + label(low, high), "T_Dist", student,
            [(t, df) for df in degrees(low, high) for s in side for t in (s, -s)], ["t", "df"], True)

    table("InvT_Dist (p from 0.0001 to 0.9999)", False)
    for low, high in RANGES:
        row("df " + label(low, high), "InvT_Dist", student,
            [(p, df) for df in degrees(low, high) for p in PROBABILITIES], ["p", "df"], False)

    table("F_Dist (f from 1e-6 to 10000; the range is that of the larger of df1 and df2)")
    pairs = {}
    for low, high in RANGES:
        smaller = [1, 2, 3, 10, 33, 100, 1000, 10_000, 1_000_000]
        larger = [low, round(math.sqrt(low * high)), high]
        pairs[low] = sorted({pair for m in larger for s in smaller + [m] if s <= m
                             for pair in ((s, m), (m, s))})
        points = []
        for df1, df2 in pairs[low]:
            width = math.sqrt(2 / df1 + 2 / df2)
            points += [(f, df1, df2) for f in spread(1e-6, 1e4, 21)]
            points += [(math.exp(z * width / 3), df1, df2) for z in range(-12, 13)]
        row("df " + label(low, high), "F_Dist", fisher, points, ["f", "df1", "df2"], True)

    table("InvF_Dist (p from 0.0001 to 0.9999, quantiles from 0.001 to 9999)", False)
    for low, high in RANGES[:4]:
        points = [(p, *df) for df in pairs[low] for p in PROBABILITIES[::2]
                  if fisher(0.001, *df) < p < fisher(9999.0, *df)]
        row("df " + label(low, high), "InvF_Dist", fisher, points, ["p", "df1", "df2"], False)

    for name, odd in (("even", 0), ("odd", 1)):
        table(f"XX_Dist, {name} df")
        for low, high, largest in [(1, 155, 1e4), (156, 257, 0), (258, 1000, 0)]:
            points = []
            for df in sorted({df - df % 2 + odd for df in degrees(low, high)}):
                if not low <= df <= high or df == 0:
                    continue
                width = math.sqrt(2 * df)
                xs = [df + z * width / 4 for z in range(-16, 1)] + [df + 4] + spread(1e-3, df, 15)
                xs += spread(df, largest, 30) if largest else []
                points += [(float(x), df) for x in xs if x > 0]
            span = f"x to {largest:.0f}" if largest else "x to df + 4"
            row(f"df {low} to {high}, {span}", "XX_Dist", chi_square, points, ["x", "df"], True)

    table("InvXX_Dist (p from 0.0001 to 0.9999, quantiles from 0.001)", False)
    for text, odd in (("even", 0), ("odd", 1)):
        points = [(p, df) for df in sorted({d - d % 2 + odd for d in degrees(1, 201)} - {0, 202})
                  for p in PROBABILITIES if chi_square(0.001, df) < p]
        row(f"df 1 to 201, {text}", "InvXX_Dist", chi_square, points, ["p", "df"], False)
    print("""
From df = 202 on, steps of the bisection meet sums that have overflowed, and the result can be any
point of the bracket.""")


main()
