#!/usr/bin/env python3
"""Compares the files of two runs. Usage: same_numbers.py FOLDER OTHER_FOLDER NAME. Prints a line of NAME and how much they differ;
exit status 1 when that is too much.

States may differ by 1e-12 of their column's largest value. What is zero but for roundoff has no such value: a column that by symmetry
lies six orders and more below what has its unit, and the imbalance of energies, their difference. There it is the largest value with
the unit, for a torque at least that of the largest force at a lever of a millimetre. Coupling log and reports must be the same, byte
by byte but for the ends of lines. Each run must have written the same files with the same lines.
"""
import csv
import pathlib
import re
import sys

ALLOWED = 1e-12
NOTICED = 1e-6


class Table:
    """A CSV file: its columns by their headers, cells as texts."""

    def __init__(self, file):
        with open(file, newline="") as stream:
            header, *self.rows = csv.reader(stream)
        self.columns = dict(zip(header, zip(*self.rows)))

    def shape(self):
        return list(self.columns), len(self.rows)

    def largest(self, name):
        return max((abs(float(cell)) for cell in self.columns[name] if cell), default=0.0)


def unit_of(name):
    return re.search(r"\[(.*)\]|$", name)[1]


def scales_by_unit(states):
    scales = {}
    for name in states.columns:
        scales[unit_of(name)] = max(scales.get(unit_of(name), 0.0), states.largest(name))
    # One newton at a millimetre is one millinewton-metre.
    scales["mN m"] = max(scales["mN m"], scales["N"])
    return scales


def states_differences(states, others, scales):
    """The largest one of values and that of zeros, as shares of what they are measured by, each with its column and row."""
    worst = {"values": (0.0, "", 0), "zeros": (0.0, "", 0)}
    for name, cells in states.columns.items():
        own, shared = states.largest(name), scales[unit_of(name)]
        kind = "values" if own > NOTICED * shared and "Imbalance" not in name else "zeros"
        scale = own if kind == "values" else shared
        for row, (one, other) in enumerate(zip(cells, others.columns[name])):
            if one != other:
                difference = abs(float(one or "inf") - float(other or "inf")) / scale
                worst[kind] = max(worst[kind], (difference, name, row))
    return worst["values"], worst["zeros"]


def lines_of(file):
    return file.read_bytes().splitlines()


def compare(folders, name):
    findings = []
    states, others = [Table(next(folder.glob("*states.csv"))) for folder in folders]
    if states.shape() != others.shape():
        return [f"{name}: the states have other columns or rows"]
    scales = scales_by_unit(states)
    differences = states_differences(states, others, scales)
    for difference, column, row in differences:
        if difference > ALLOWED:
            findings.append(f"{column}, row {row}: {states.columns[column][row]} and {others.columns[column][row]}")

    reports, other_reports = [{file.name: lines_of(file) for file in folder.glob("*.reports/*.csv")} for folder in folders]
    if sorted(reports) != sorted(other_reports):
        return [f"{name}: other reports: {sorted(reports)} and {sorted(other_reports)}"]
    for file, lines in sorted(reports.items()):
        other_lines = other_reports[file]
        findings += [f"{file}, line {number}: {here} and {there}"
                     for number, (here, there) in enumerate(zip(lines, other_lines), 1) if here != there]
        if len(lines) != len(other_lines):
            findings.append(f"{file} has {len(lines)} lines and {len(other_lines)}")
    print(f"{name:48} {len(states.rows):4} steps: states differ by {differences[0][0]:.1e}, zeros by {differences[1][0]:.1e}; "
          f"{len(reports)} files of log and reports are the same")
    return findings


found = compare([pathlib.Path(folder) for folder in sys.argv[1:3]], sys.argv[3])
for finding in found[:10]:
    print(f"  {finding}")
sys.exit(bool(found))
