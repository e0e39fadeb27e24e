#!/usr/bin/env python3
"""Writes the tables of src/elementary from mpmath, or checks them.

    scripts/elementary_tables.py            # writes all
    scripts/elementary_tables.py --check    # says which differ from what it would write

Each table is one function here, which returns the text of its header; HEADERS names them all.
"""
import pathlib
import sys

from mpmath import floor, log, mp, mpf, pi, sin, workprec

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
    return f"{comment}inline constexpr double {name}{shape} = {{\n{lines}}};\n"


def trigonometric_table():
    step = pi / 256
    body = "".join((
        double_array("kStepParts",
                     ("pi / 256 as a sum. Three parts of 20 bits, whose products with integers up to 2^33 are",
                      "exact, and one of 53 bits;"), parts(step, 20, 20, 20, 53)),
        double_array("kLongStepParts", ("and three of 53 bits.",), parts(step, 53, 53, 53)),
        "\n",
        row_array("kQuarterSine",
                  ("sin(j pi / 256) for j = 0 ... 128 as a part of 26 bits and one of 53.",),
                  [parts(sin(j * step) if j < 128 else mpf(1), 26, 53) for j in range(129)])))
    return header("trigonometric_table", ("Tables of sin, cos and tan.",), body)


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
