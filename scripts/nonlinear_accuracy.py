#!/usr/bin/env python3
"""Measures the correct digits of nonlinear fits on reference data, and the calls of the model that
they cost, beside other libraries.

    scripts/setup accuracy
    scripts/nonlinear_accuracy.py build/release/libfathom.so > docs/fits_nonlinear.md

Every library gets the same Python function.
"""
import ctypes
import ctypes.util
import math
import pathlib
import sys
import warnings

import numpy
import scipy
import scipy.optimize

DATA = pathlib.Path(__file__).resolve().parent.parent / "tests/fit/strd/nonlinear"
DIGITS = 11  # of the certified values
ENOUGH = 6
PATIENCE = 10000  # iterations granted to everyone
TOLERANCES = [1e-8, 1e-12]
warnings.simplefilter("ignore")
numpy.seterr(all="ignore")
fathom = ctypes.CDLL(sys.argv[1])
REAL, INT, POINTER, SIZE = ctypes.c_double, ctypes.c_int32, ctypes.c_void_p, ctypes.c_size_t
REALS = numpy.ctypeslib.ndpointer(numpy.float64, flags="C")
exp, power = numpy.exp, numpy.power


def rise(x, b):
    return b[0] * (1 - exp(-b[1] * x))


def decay(x, b):
    return exp(-b[0] * x) / (b[1] + b[2] * x)


def decays(x, b):
    return b[0] * exp(-b[1] * x) + b[2] * exp(-b[3] * x) + b[4] * exp(-b[5] * x)


def peaks(x, b):
    return (b[0] * exp(-b[1] * x) + b[2] * exp(-((x - b[3]) / b[4])**2)
            + b[5] * exp(-((x - b[6]) / b[7])**2))


def cubics(x, b):
    return ((b[0] + x * (b[1] + x * (b[2] + x * b[3])))
            / (1 + x * (b[4] + x * (b[5] + x * b[6]))))


def enso(x, b):
    year, u, v = (2 * math.pi * x / period for period in (12, b[3], b[6]))
    return (b[0] + b[1] * numpy.cos(year) + b[2] * numpy.sin(year) + b[4] * numpy.cos(u)
            + b[5] * numpy.sin(u) + b[7] * numpy.cos(v) + b[8] * numpy.sin(v))


MODELS = {
    "Misra1a": rise,
    "Chwirut2": decay,
    "Chwirut1": decay,
    "Lanczos3": decays,
    "Gauss1": peaks,
    "Gauss2": peaks,
    "DanWood": lambda x, b: b[0] * power(x, b[1]),
    "Misra1b": lambda x, b: b[0] * (1 - power(1 + b[1] * x / 2, -2.0)),
    "Kirby2": lambda x, b: (b[0] + x * (b[1] + x * b[2])) / (1 + x * (b[3] + x * b[4])),
    "Hahn1": cubics,
    "Nelson": lambda x, b: b[0] - b[1] * x[0] * exp(-b[2] * x[1]),
    "MGH17": lambda x, b: b[0] + b[1] * exp(-x * b[3]) + b[2] * exp(-x * b[4]),
    "Lanczos1": decays,
    "Lanczos2": decays,
    "Gauss3": peaks,
    "Misra1c": lambda x, b: b[0] * (1 - power(1 + 2 * b[1] * x, -0.5)),
    "Misra1d": lambda x, b: b[0] * b[1] * x / (1 + b[1] * x),
    "Roszman1": lambda x, b: b[0] - b[1] * x - numpy.arctan(b[2] / (x - b[3])) / math.pi,
    "ENSO": enso,
    "MGH09": lambda x, b: b[0] * (x * x + x * b[1]) / (x * x + x * b[2] + b[3]),
    "Thurber": cubics,
    "BoxBOD": rise,
    "Rat42": lambda x, b: b[0] / (1 + exp(b[1] - b[2] * x)),
    "MGH10": lambda x, b: b[0] * exp(b[1] / (x + b[2])),
    "Eckerle4": lambda x, b: b[0] / b[1] * exp(-0.5 * ((x - b[2]) / b[1])**2),
    "Rat43": lambda x, b: b[0] / power(1 + exp(b[1] - b[2] * x), 1 / b[3]),
    "Bennett5": lambda x, b: b[0] * power(b[1] + x, -1 / b[2]),
}


class Problem:
    def __init__(self, name):
        lines = (DATA / f"{name.lower()}.dat").read_text().split("\n")
        rows = {line.split()[0]: [float(t) for t in line.split()[1:]] for line in lines[1:6]}
        self.name, self.starts, self.certified = name, (rows["start1"], rows["start2"]), rows[
            "certified"]
        data = numpy.array([[float(t) for t in line.split()] for line in lines[6:] if line])
        self.x = data[:, 0] if data.shape[1] == 2 else data[:, :-1].T
        self.y = numpy.log(data[:, -1]) if name == "Nelson" else data[:, -1].copy()
        self.n, self.evaluations, self.last = len(self.y), 0, None

    def residuals(self, c):
        """Of all points at once, which is one evaluation."""
        self.evaluations += 1
        return MODELS[self.name](self.x, c) - self.y

    def values_at(self, i, c, k):
        """The value at one point; all points of one set of coefficients are evaluated together."""
        key = bytes(ctypes.string_at(c, 8 * k))
        if i == 0 or self.last is None or self.last[0] != key:
            b = numpy.frombuffer(key)
            self.last = key, (MODELS[self.name](self.x, b)).tolist()
        self.evaluations += 1 / self.n
        return self.last[1][i]

    def digits(self, c):
        """The correct digits of the worst coefficient."""
        errors = [abs(a - b) / abs(b) for a, b in zip(c, self.certified)]
        if not all(math.isfinite(e) for e in errors):
            return 0.0
        return max(0.0, min([DIGITS] + [-math.log10(e) for e in errors if e]))


def by_fathom(iterations):

    def fit(p, start):
        model = ctypes.CFUNCTYPE(REAL, REAL, POINTER, INT)(
            lambda x, c, k: p.values_at(int(x), c, k))
        c, fitted, error = numpy.array(start), numpy.zeros(p.n), REAL()
        fathom.NonLinearFitWithMaxIters.argtypes = [REALS, REALS, INT, POINTER, REALS, INT, INT,
                                                    REALS, POINTER]
        status = fathom.NonLinearFitWithMaxIters(
            numpy.arange(p.n, dtype=float), p.y, p.n, ctypes.cast(model, POINTER), c, len(start),
            iterations, fitted, ctypes.byref(error))
        return c if status == 0 else None

    return fit


class Vector(ctypes.Structure):
    _fields_ = [("size", SIZE), ("stride", SIZE), ("data", ctypes.POINTER(REAL)),
                ("block", POINTER), ("owner", ctypes.c_int)]

    def array(self):
        every = numpy.ctypeslib.as_array(self.data, ((self.size - 1) * self.stride + 1,))
        return every[::self.stride]


VECTOR = ctypes.POINTER(Vector)


class Parameters(ctypes.Structure):
    _fields_ = [("trs", POINTER), ("scale", POINTER), ("solver", POINTER), ("fdtype", ctypes.c_int)
                ] + [(name, REAL) for name in ("up", "down", "avmax", "df", "fvv")]


class System(ctypes.Structure):
    _fields_ = [("f", POINTER), ("df", POINTER), ("fvv", POINTER), ("n", SIZE), ("p", SIZE),
                ("params", POINTER)] + [(f"count{i}", SIZE) for i in range(3)]


def by_gsl(gsl, tolerance, accelerated):
    trust = POINTER.in_dll(gsl, "gsl_multifit_nlinear_trust")
    gsl.gsl_set_error_handler_off()
    gsl.gsl_multifit_nlinear_default_parameters.restype = Parameters
    gsl.gsl_multifit_nlinear_alloc.restype = POINTER
    gsl.gsl_multifit_nlinear_alloc.argtypes = [POINTER, POINTER, SIZE, SIZE]
    gsl.gsl_multifit_nlinear_init.argtypes = [VECTOR, POINTER, POINTER]
    gsl.gsl_multifit_nlinear_driver.argtypes = [SIZE, REAL, REAL, REAL] + 4 * [POINTER]
    gsl.gsl_multifit_nlinear_position.restype = VECTOR
    gsl.gsl_multifit_nlinear_position.argtypes = [POINTER]
    gsl.gsl_multifit_nlinear_free.argtypes = [POINTER]

    def fit(p, start):

        def evaluate(c, _, f):
            f.contents.array()[:] = p.residuals(c.contents.array())
            return 0

        function = ctypes.CFUNCTYPE(ctypes.c_int, VECTOR, POINTER, VECTOR)(evaluate)
        system = System(ctypes.cast(function, POINTER), None, None, p.n, len(start), None, 0, 0, 0)
        parameters = gsl.gsl_multifit_nlinear_default_parameters()
        parameters.fdtype = 1  # central differences
        if accelerated:
            parameters.trs = POINTER.in_dll(gsl, "gsl_multifit_nlinear_trs_lmaccel").value
        space = gsl.gsl_multifit_nlinear_alloc(trust, ctypes.byref(parameters), p.n, len(start))
        values = (REAL * len(start))(*start)
        first = Vector(len(start), 1, values, None, 0)
        gsl.gsl_multifit_nlinear_init(ctypes.byref(first), ctypes.byref(system), space)
        info = ctypes.c_int()
        gsl.gsl_multifit_nlinear_driver(PATIENCE, tolerance, tolerance, 0.0, None, None,
                                        ctypes.byref(info), space)
        c = gsl.gsl_multifit_nlinear_position(space).contents.array().copy()
        gsl.gsl_multifit_nlinear_free(space)
        return c

    return fit


def by_scipy(method, tolerance):

    def fit(p, start):
        try:
            return scipy.optimize.least_squares(
                p.residuals, start, jac="2-point" if method == "lm" else "3-point", method=method,
                x_scale="jac", xtol=tolerance,
                ftol=tolerance, gtol=tolerance,
                max_nfev=PATIENCE if method != "lm" else PATIENCE * (len(start) + 1)).x
        except ValueError:  # residuals that are not finite
            return None

    return fit


def by_curve_fit(p, start):
    # It differentiates forwards, and there is no other way.
    try:
        return scipy.optimize.curve_fit(lambda x, *c: p.residuals(c) + p.y, p.x, p.y, p0=start,
                                        maxfev=PATIENCE)[0]
    except (RuntimeError, ValueError):
        return None


def main():
    fits = {"Fathom": by_fathom(100), "patient": by_fathom(PATIENCE)}
    name = ctypes.util.find_library("gsl")
    if name:
        ctypes.CDLL(ctypes.util.find_library("gslcblas"), mode=ctypes.RTLD_GLOBAL)
        gsl = ctypes.CDLL(name)
        fits |= {f"GSL lm {t:g}": by_gsl(gsl, t, False) for t in TOLERANCES}
        fits |= {f"GSL lmaccel {t:g}": by_gsl(gsl, t, True) for t in TOLERANCES}
    fits |= {f"SciPy lm {t:g}": by_scipy("lm", t) for t in TOLERANCES}
    fits |= {"SciPy trf 1e-12": by_scipy("trf", 1e-12), "SciPy curve_fit": by_curve_fit}

    version = ctypes.c_char_p.in_dll(gsl, "gsl_version").value.decode() if name else "none"
    results = {}
    for problem in MODELS:
        p = Problem(problem)
        for s, start in enumerate(p.starts):
            for fit, solve in fits.items():
                p.evaluations = 0
                c = solve(p, start)
                results[problem, s, fit] = 0.0 if c is None else p.digits(c), round(p.evaluations)

    shown = [fit for fit in fits if fit != "patient"]
    solved = {fit: sum(results[problem, s, fit][0] >= ENOUGH for problem in MODELS
                       for s in (0, 1)) for fit in fits}
    print(f"""# Nonlinear fits: accuracy and calls of the model

Made by `scripts/nonlinear_accuracy.py` (GSL {version}, NumPy {numpy.__version__}, SciPy \
{scipy.__version__}).

The problems are the nonlinear ones of NIST's Statistical Reference Datasets, from both starts, the
easier ones first. Nelson's model has two predictors and fits the logarithm of the observations.

Digits are those of the worst coefficient that agree with the certified value, {DIGITS} at the
most. Behind them is how often the model was evaluated at all points. The number in a column's name
is the tolerance that the peer was given, where it takes one: by GSL for steps and gradients, by
SciPy for reductions too. Fathom, GSL and trf differentiate by central differences, GSL with the
step that it takes unless told otherwise; SciPy's lm and curve_fit know forward differences only,
which cost half as much. Peers were granted {PATIENCE} iterations, or calls where they count those;
Fathom's column is NonLinearFit and its 100. Solved are starts that lead to {ENOUGH} digits or more.

| | """ + " | ".join(shown) + " |")
    print("|---" * (len(shown) + 1) + "|")
    print("| solved, of 54 | " + " | ".join(f"**{solved[fit]}**" for fit in shown) + " |")
    for problem in MODELS:
        for s in (0, 1):
            cells = ["{:.1f} / {}".format(*results[problem, s, fit]) for fit in shown]
            print(f"| {problem} {s + 1} | " + " | ".join(cells) + " |")
    print(f"""
With {PATIENCE} iterations, NonLinearFitWithMaxIters solves {solved["patient"]}.""")
    for peer in shown[1:]:
        both = [(problem, s) for problem in MODELS for s in (0, 1)
                if results[problem, s, peer][0] >= ENOUGH]
        fewer = sum(results[problem, s, "Fathom"][1] <= results[problem, s, peer][1]
                    for problem, s in both)
        print(f"- Of the {len(both)} starts that {peer} solves, Fathom evaluates the model no more "
              f"often from {fewer}.")


main()
