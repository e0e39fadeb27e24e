#!/usr/bin/env python3
"""Writes the tables of src/elementary from mpmath, or checks them.

    scripts/elementary_tables.py            # writes all
    scripts/elementary_tables.py --check    # says which differ from what it would write

Each table is one function here, which returns the text of its header; HEADERS names them all.
"""
import pathlib
import sys

from mpmath import (acos, atan, chebyfit, exp, floor, log, mp, mpf, nint, pi, polyval, sin, sqrt,
                    workprec)

DIRECTORY = pathlib.Path(__file__).resolve().parent.parent / "src" / "elementary"
mp.prec = 4000


def header(name, about, body, includes=""):
    guard = f"FATHOM_ELEMENTARY_{name.upper()}_HPP"
    comment = "\n".join(f"// {line}" for line in about)
    return f"""{comment}
// Written by scripts/elementary_tables.py; not to be edited.
#ifndef {guard}
#define {guard}
{includes}
namespace fathom {{

{body}
}}  // namespace fathom

#endif
"""


# Doubles


def nearest(x, bits):
    """x rounded to nearest, to so many bits."""
    with workprec(bits):
        return +mpf(x)


def parts(x, *bits):
    """x as a sum of parts of so many bits each, every one the nearest to what is left."""
    result = []
    for count in bits:
        result.append(nearest(x - sum(result), count))
    return result


def hexadecimal(x):
    """A double as C++ writes it, without trailing zeros."""
    if x == 0:
        return "0.0"
    mantissa, exponent = float(x).hex().split("p")
    whole, _, fraction = mantissa.partition(".")
    fraction = fraction.rstrip("0")
    return whole + ("." + fraction if fraction else "") + "p" + str(int(exponent))


def double_array(name, about, values):
    """An array of doubles, one a line, below lines of comment."""
    lines = "".join(f"    {hexadecimal(x)},\n" for x in values)
    comment = "".join(f"// {line}\n" for line in about)
    return f"{comment}inline constexpr double {name}[{len(values)}] = {{\n{lines}}};\n"


def row_array(name, about, rows):
    """An array of rows of doubles, below lines of comment."""
    lines = "".join("    {" + ", ".join(map(hexadecimal, row)) + "},\n" for row in rows)
    comment = "".join(f"// {line}\n" for line in about)
    shape = f"[{len(rows)}][{len(rows[0])}]"
    return f"{comment}alignas(64) inline constexpr double {name}{shape} = {{\n{lines}}};\n"


def polynomial(f, radius, degree, weight):
    """Coefficients in doubles of nearly the best polynomial for f on [-radius, radius], and the
    greatest weight(x) |error|, sampled and rounded up."""
    with workprec(200):
        coefficients = [nearest(c, 53) for c in chebyfit(f, [-radius, radius], degree + 1)]
        worst = mpf(0)
        for i in range(-500, 501):
            x = radius * (i + mpf(1) / 7) / 501
            worst = max(worst, abs(weight(x) * (polyval(coefficients, x) - f(x))))
        return coefficients[::-1], nearest(worst * 1.01, 12)


def coefficient_array(name, about, coefficients):
    """Coefficients in ascending order, each beside its power."""
    texts = [hexadecimal(c) + "," for c in coefficients]
    width = max(map(len, texts))
    lines = "".join(f"    {text:{width}}  // {power}\n" for power, text in enumerate(texts))
    return f"// {about}\ninline constexpr double {name}[{len(texts)}] = {{\n{lines}}};\n"


def exponential_table():
    rows = 256
    step = log(2) / rows
    leading = floor(step * mpf(2) ** 43) / mpf(2) ** 43
    table = []
    for j in range(rows):
        power = mpf(2) ** (mpf(j) / rows)
        short = nint(power * 2**24) / mpf(2) ** 24
        table.append((short, log(power / short)))
    # Arguments of the polynomial: half a step, and less than 2^-24 besides.
    radius = step / 2 + mpf(2) ** -24
    coefficients, error = polynomial(lambda r: (exp(r) - 1 - r) / r**2, radius, 3, lambda r: r**2)
    body = "".join((
        f"inline constexpr std::size_t kExponentialRows = {rows};\n",
        "// ln 2 / 256 as a part of 35 bits and the rest, and its reciprocal.\n",
        f"inline constexpr double kStep = {hexadecimal(leading)};\n",
        f"inline constexpr double kStepRest = {hexadecimal(step - leading)};\n",
        f"inline constexpr double kStepsPerUnit = {hexadecimal(1 / step)};\n",
        coefficient_array("kPolynomial", "(exp(r) - 1 - r) / r^2 for |r| < ln 2 / 512 + 2^-24,",
                          coefficients),
        "// and what it is off by at most, times r^2.\n",
        f"inline constexpr double kPolynomialError = {hexadecimal(error)};\n",
        row_array("kExponentialTable",
                  ("T, the nearest multiple of 2^-24 to 2^(j/256), and ln(2^(j/256) / T).",), table)))
    return header("exponential_table", ("Table and polynomial of exp and pow.",), body,
                  '\n#include <cstddef>\n')


def logarithm_cells():
    """For cell j, of width 2^-9 in the mantissas c + f in [1, 2) that belong to m in [11/16, 11/8):
    scale, r and c, such that r m - 1 = scale r f + (scale r c - 1) is small."""
    for j in range(512):
        c = 1 + mpf((j + 192) % 512) / 512
        scale = mpf(1) / 2 if c >= 1.375 else mpf(1)
        unit = 2**9 if scale < 1 else 2**10
        r = nint(unit / (scale * (c + mpf(1) / 1024))) / unit
        if scale * c == 1 or scale * (c + mpf(1) / 512) == 1:
            r = mpf(1)
        yield scale, r, c


def logarithm_table():
    def leading(x):  # with integers up to 2^11, products and sums are exact
        return nint(x * mpf(2) ** 42) / mpf(2) ** 42

    rows, radius = [], mpf(0)
    for scale, r, c in logarithm_cells():
        logarithm = -log(r)
        rows.append((scale * r, scale * r * c - 1,
                     leading(logarithm), logarithm - leading(logarithm)))
        radius = max(radius, abs(scale * r * c - 1), abs(scale * r * (c + mpf(1) / 512) - 1))
    assert radius <= mpf(2) ** -9

    def beyond(terms):
        def f(z):  # the series: the closed form would cancel
            return sum((-1) ** (k + 1) * z ** (k - terms) / k for k in range(terms, terms + 40))
        return f

    square, square_error = polynomial(beyond(2), radius, 4, lambda z: 1)
    cube, cube_error = polynomial(beyond(3), radius, 4, lambda z: 1)
    about = "(ln(1 + z) - z{}) / z^{} for |z| <= 2^-9,"
    ln2 = log(2)
    body = "".join((
        "inline constexpr std::size_t kLogarithmCells = 512;\n",
        "// ln 2 as a multiple of 2^-42 and the rest.\n",
        f"inline constexpr double kLn2 = {hexadecimal(leading(ln2))};\n",
        f"inline constexpr double kLn2Rest = {hexadecimal(ln2 - leading(ln2))};\n",
        double_array("kInverseLn10", ("1 / ln 10 as a part of 26 bits and the rest,",),
                     parts(1 / log(10), 26, 53)),
        double_array("kInverseLn10Pair", ("and as two doubles.",), parts(1 / log(10), 53, 53)),
        coefficient_array("kFromSquare", about.format("", 2), square),
        "// and what it is off by at most.\n",
        f"inline constexpr double kFromSquareError = {hexadecimal(square_error)};\n",
        coefficient_array("kFromCube", about.format(" + z^2 / 2", 3), cube),
        "// and what it is off by at most.\n",
        f"inline constexpr double kFromCubeError = {hexadecimal(cube_error)};\n",
        row_array("kLogarithmTable",
                  ("r and t of at most 10 bits, such that z = r f + t as in logarithm_reduction.hpp, and -ln r as",
                   "a multiple of 2^-42 and the rest."), rows)))
    return header("logarithm_table", ("Tables and polynomials of log, log10 and pow.",), body,
                  '\n#include <cstddef>\n')


def trigonometric_table():
    step = pi / 256
    body = "".join((
        double_array("kStepParts",
                     ("pi / 256 as a sum. Three parts of 20 bits, whose products with integers up to 2^33 are",
                      "exact, and one of 53 bits;"), parts(step, 20, 20, 20, 53)),
        double_array("kNearStepParts", ("three for integers below 2^11;",), parts(step, 42, 42, 53)),
        double_array("kLongStepParts", ("and three of 53 bits.",), parts(step, 53, 53, 53)),
        "\n",
        row_array("kQuarterSine",
                  ("sin(j pi / 256) for j = 0 ... 128 as a part of 26 bits and one of 53.",),
                  [parts(sin(j * step) if j < 128 else mpf(1), 26, 53) for j in range(129)])))
    return header("trigonometric_table", ("Tables of sin, cos and tan.",), body)


def inverse_trigonometric_table():
    cells = 32

    def octaves(first, end):  # the centres of cells from 2^first to 2^end
        return [mpf(2) ** exponent * (1 + mpf(i) / cells)
                for exponent in range(first, end) for i in range(cells)] + [mpf(2) ** end]

    cosines = [1 - z for z in octaves(-8, 0)]
    body = "".join((
        row_array("kArctangent", ("atan(j / 256) for j = 0 ... 256 as a sum.",),
                  [parts(atan(mpf(j) / 256), 53, 53) for j in range(257)]),
        f"\ninline constexpr std::size_t kCellsPerOctave = {cells};\n",
        row_array("kArctangentCells",
                  ("c from 2^-8 to 2^7, as many in each octave, and atan(c) as a sum.",),
                  [(c, *parts(atan(c), 53, 53)) for c in octaves(-8, 7)]),
        row_array("kArccosineCells",
                  ("c, sqrt(1 - c^2), and acos(c) / 2 as a sum, for 1 - c from 2^-8 to 1, as many in each",
                   "octave, and then for -c."),
                  [(c, sqrt(1 - c**2), *parts(acos(c) / 2, 53, 53))
                   for c in cosines + [-c for c in cosines]])))
    return header("inverse_trigonometric_table", ("Tables of atan, atan2 and acos.",), body,
                  '\n#include <cstddef>\n')


# Numbers of several limbs


def limb_array(name, about, x, count, columns):
    """x in [0, 1) as limbs of 64 bits, the most significant first, truncated."""
    bits = int(floor(x * mpf(2) ** (64 * count)))
    rows = [(bits >> (64 * (count - 1 - i))) & (2**64 - 1) for i in range(count)]
    lines = "".join(
        "    " + " ".join(f"0x{limb:016X}," for limb in rows[i:i + columns]) + "\n"
        for i in range(0, count, columns))
    return f"// {about}\ninline constexpr std::uint64_t {name}[{count}] = {{\n{lines}}};\n"


def wide_constants():
    body = "".join((
        limb_array("kTwoOverPiLimbs", "2/pi", 2 / pi, 24, 4),
        limb_array("kHalfPiLimbs", "pi/2 2^-1", pi / 4, 6, 3),
        limb_array("kLn2Limbs", "ln 2", log(2), 6, 3),
        limb_array("kInverseLn10Limbs", "1/ln 10 2^1", 2 / log(10), 6, 3)))
    return header("wide_constants",
                  ("Constants of several limbs, the most significant first, truncated.",), body,
                  "\n#include <cstdint>\n")


HEADERS = {
    "exponential_table.hpp": exponential_table,
    "logarithm_table.hpp": logarithm_table,
    "inverse_trigonometric_table.hpp": inverse_trigonometric_table,
    "trigonometric_table.hpp": trigonometric_table,
    "wide_constants.hpp": wide_constants,
}

if __name__ == "__main__":
    differing = 0
    for file_name, table in HEADERS.items():
        path = DIRECTORY / file_name
        if "--check" not in sys.argv[1:]:
            path.write_text(table())
        elif not path.exists() or path.read_text() != table():
            print(f"{path.name} is not what {pathlib.Path(__file__).name} writes")
            differing += 1
    sys.exit(1 if differing else 0)
