#!/usr/bin/env python3
"""Measures the correct digits of least-squares fits on reference data, beside other libraries.

    scripts/setup accuracy
    scripts/fit_accuracy.py build/release/libfathom.so > docs/fits.md

Every library is given the same doubles. The reference is the exact solution for the data as
printed, and beside it the exact solution for those doubles, both by mpmath in 100 digits.
"""
import ctypes
import ctypes.util
import pathlib
import sys
import warnings

import numpy
import scipy.linalg
from mpmath import inf, log10, matrix, mp, mpf, qr_solve

mp.dps = 100
DATA = pathlib.Path(__file__).resolve().parent.parent / "tests/fit/strd/linear"
NAMES = ["norris", "pontius", "noint1", "noint2", "filip", "longley"] + [
    f"wampler{i}" for i in range(1, 6)]
ALGORITHMS = ["singular values", "Householder", "Givens", "Gram-Schmidt", "normal, LU",
              "normal, Cholesky"]
DIGITS = 15  # of the certified values
warnings.simplefilter("ignore")
fathom = ctypes.CDLL(sys.argv[1])
gsl_name = ctypes.util.find_library("gsl")
gsl = ctypes.CDLL(gsl_name) if gsl_name else None
REALS = numpy.ctypeslib.ndpointer(numpy.float64, flags="C")


class Problem:
    def __init__(self, name):
        lines = (DATA / f"{name}.dat").read_text().split("\n")
        self.name = lines[0]
        at = lines.index("data")
        head = [line.split() for line in lines[1:at]]
        self.first, self.last = next((int(h[1]), int(h[2])) for h in head if h[0] == "powers")
        self.certified = [mpf(h[1]) for h in head if h[0] == "coefficient"]
        rows = [line.split() for line in lines[at + 1:] if line]
        self.x = numpy.array([[float(t) for t in r[1:]] for r in rows])
        self.y = numpy.array([float(r[0]) for r in rows])
        self.h = numpy.array([self.row([float(t) for t in r[1:]], 1.0) for r in rows])
        self.exact = self.solve([self.row([mpf(t) for t in r[1:]], mpf(1)) for r in rows],
                                [mpf(r[0]) for r in rows])
        self.of_doubles = self.solve([[mpf(float(v)) for v in r] for r in self.h],
                                     [mpf(float(v)) for v in self.y])

    def row(self, xs, one):
        powers = range(max(self.first, 1), self.last + 1)
        return [one] * (self.first == 0) + [x**p for p in powers for x in xs]

    @staticmethod
    def solve(h, y):
        h, y = matrix(h), matrix(y)
        return list(qr_solve(h, y)[0]) if h.rows > h.cols else list(h**-1 * y)

    def digits(self, c, reference):
        """The correct digits of the worst coefficient."""
        if c is None:
            return None
        if not all(numpy.isfinite(float(v)) for v in c):
            return 0.0
        worst = max(abs(mpf(float(a)) - r) / abs(r) for a, r in zip(c, reference))
        return float(max(0, min(DIGITS, -log10(worst) if worst else inf)))

    def is_polynomial(self):
        return self.first == 0 and self.x.shape[1] == 1


def by_fathom(p, algorithm):
    n, k = p.h.shape
    c, fitted, error = numpy.zeros(k), numpy.zeros(n), ctypes.c_double()
    fathom.GenLSFit.argtypes = [REALS, ctypes.c_int32, ctypes.c_int32, REALS, ctypes.c_void_p,
                                ctypes.c_int32, REALS, REALS, ctypes.c_void_p, ctypes.c_void_p]
    status = fathom.GenLSFit(p.h, n, k, p.y, None, algorithm, fitted, c, None, ctypes.byref(error))
    return None if status else c


def by_polyfit(p):
    n, k = p.h.shape
    c, fitted, error = numpy.zeros(k), numpy.zeros(n), ctypes.c_double()
    fathom.PolyFit.argtypes = [REALS, REALS, ctypes.c_int32, ctypes.c_int32, REALS, REALS,
                               ctypes.c_void_p]
    fathom.PolyFit(numpy.ascontiguousarray(p.x[:, 0]), p.y, n, k - 1, fitted, c,
                   ctypes.byref(error))
    return c


def by_gsl(p):
    if gsl is None:
        return None
    n, k = p.h.shape
    pointer, size = ctypes.c_void_p, ctypes.c_size_t
    for name, result, arguments in [
            ("gsl_matrix_alloc", pointer, [size, size]), ("gsl_vector_alloc", pointer, [size]),
            ("gsl_matrix_set", None, [pointer, size, size, ctypes.c_double]),
            ("gsl_vector_set", None, [pointer, size, ctypes.c_double]),
            ("gsl_vector_get", ctypes.c_double, [pointer, size]),
            ("gsl_multifit_linear_alloc", pointer, [size, size]),
            ("gsl_multifit_linear", ctypes.c_int, [pointer] * 6)]:
        getattr(gsl, name).restype, getattr(gsl, name).argtypes = result, arguments
    h, y = gsl.gsl_matrix_alloc(n, k), gsl.gsl_vector_alloc(n)
    c, covariance = gsl.gsl_vector_alloc(k), gsl.gsl_matrix_alloc(k, k)
    for i in range(n):
        gsl.gsl_vector_set(y, i, p.y[i])
        for j in range(k):
            gsl.gsl_matrix_set(h, i, j, p.h[i, j])
    squares = ctypes.c_double()
    gsl.gsl_multifit_linear(h, y, c, covariance, ctypes.addressof(squares),
                            gsl.gsl_multifit_linear_alloc(n, k))
    return [gsl.gsl_vector_get(c, j) for j in range(k)]


PEERS = {
    "GSL multifit": by_gsl,
    "NumPy lstsq": lambda p: numpy.linalg.lstsq(p.h, p.y, rcond=None)[0],
    "SciPy lstsq": lambda p: scipy.linalg.lstsq(p.h, p.y)[0],
    "NumPy polyfit": lambda p: numpy.polyfit(p.x[:, 0], p.y, p.h.shape[1] - 1)[::-1]
    if p.is_polynomial() else None,
}


def cell(value):
    return "" if value is None else f"{value:.1f}"


def table(problems, title, reference, columns):
    print(f"| {title} | " + " | ".join(columns) + " |")
    print("|---" * (len(columns) + 1) + "|")
    for p in problems:
        cells = [cell(p.digits(f(p), reference(p))) for f in columns.values()]
        print(f"| {p.name} | " + " | ".join(cells) + " |")
    print()


def main():
    problems = [Problem(name) for name in NAMES]
    for p in problems:
        if p.digits([float(c) for c in p.exact], p.certified) < 14.2:
            sys.exit(f"{p.name}: the exact solution is not the certified one")
    own = {a: (lambda p, i=i: by_fathom(p, i)) for i, a in enumerate(ALGORITHMS)}
    versions = f"NumPy {numpy.__version__}, SciPy {scipy.__version__}"
    if gsl is not None:
        versions = "GSL " + ctypes.c_char_p.in_dll(gsl, "gsl_version").value.decode() + ", " + versions
    print(f"""# Fits: accuracy

Made by `scripts/fit_accuracy.py` ({versions}).

## Linear least squares

The problems are the linear ones of NIST's Statistical Reference Datasets. A number is how many
digits of the worst coefficient are correct, -log10 of its relative error, {DIGITS} at the most. Every
library got the same doubles: the powers of x as `pow` rounds them, and the observations. An empty
cell is a problem that the algorithm reports as singular, or that is not the routine's.

### Against the certified coefficients

Rounding the powers and the observations to doubles already moves the solution. "Exact" is the
solution of the rounded problem, without any further error: it is what an algorithm can be asked
for, and where a peer shows more digits than that, its errors happened to cancel it. NumPy's lstsq
takes Filip's matrix for rank-deficient, as it does not scale the columns; polyfit does, and makes
the powers itself, by repeated multiplication.
""")
    exact = {"exact": lambda p: p.of_doubles}
    columns = {**exact, **{f"{i} {a}": f for i, (a, f) in enumerate(own.items())}, **PEERS}
    table(problems, "problem", lambda p: p.certified, columns)
    print("""### Against the exact solution for the same doubles
""")
    columns = {**{f"{i} {a}": f for i, (a, f) in enumerate(own.items())}, **PEERS}
    table(problems, "problem", lambda p: p.of_doubles, columns)


if __name__ == "__main__":
    main()
