#!/usr/bin/env python3
"""Compares what two builds wrote with velmora-freeze: compare.py [--sums] EARLIER LATER

Without --sums every line has to be the same to the letter. With it sums may have been taken in another order: numbers of
the classic model of a camera may differ by 1e-9 of themselves, others by a millionth of their standard deviation or, where
they have none written beside them, by a millionth of themselves; words have to be the same. Ends with 1 when anything
differs by more, and tells the largest differences.
"""
import math
import re
import sys

NAME_AND_VALUE = re.compile(r'^(\S.*?) (".*"|\S+)$')
PARAMETERS = {"K": (0, 4, 2, 5)}  # the places in K of fx, fy, cx, cy: the first four standard deviations
TINY = 1e-12


def read(path):
    numbers = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            name, value = NAME_AND_VALUE.match(line.rstrip("\n")).groups()
            if name in numbers:
                raise SystemExit(f"{path}: {name} stands there twice")
            numbers[name] = value
    return numbers


def standard_deviation(name, numbers):
    """That of an element of K or D, where it is written down."""
    match = re.match(r"(.*)/(K|D)\.(\d+)$", name)
    if not match:
        return None
    case, matrix, place = match.group(1), match.group(2), int(match.group(3))
    if matrix == "K":
        if place not in PARAMETERS["K"]:
            return None
        index = PARAMETERS["K"].index(place)
    else:
        index = 4 + place
    value = numbers.get(f"{case}/stdDev.{index}")
    return float(value) if value else None


def allowed(name, value, numbers):
    if "/classic/" in name and not name.startswith("pair/"):
        return max(1e-9 * abs(value), TINY)
    deviation = standard_deviation(name, numbers)
    return max(1e-6 * deviation if deviation else 1e-6 * abs(value), TINY)


def main(arguments):
    sums = "--sums" in arguments
    earlier, later = (read(path) for path in arguments if path != "--sums")
    worst, wrong = [], []
    for name in sorted(set(earlier) | set(later)):
        a, b = earlier.get(name), later.get(name)
        if a == b:
            continue
        if a is None or b is None or not sums or a.startswith('"') or b.startswith('"'):
            wrong.append(f"{name}: {a} -> {b}")
            continue
        x, y = float(a), float(b)
        if math.isnan(x) and math.isnan(y):
            continue
        share = abs(x - y) / allowed(name, x, earlier)
        worst.append((share, f"{name}: {a} -> {b} ({share:.3g} of what is allowed)"))
        if not share <= 1.0:
            wrong.append(worst[-1][1])
    for line in wrong[:40]:
        print(line)
    for _, line in sorted(worst, reverse=True)[:5]:
        print("largest:", line)
    print(f"{len(earlier)} numbers, {len(wrong)} differ by more than is allowed")
    return 1 if wrong or not earlier else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
