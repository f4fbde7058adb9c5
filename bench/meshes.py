#!/usr/bin/env python3
"""Measures the field solver with meshes of CAD programs, writes the table into docs/performance.md and plots times over triangles.

Usage: meshes.py PROGRAM RESULT_FOLDER PAGE.md PLOT.svg [SECONDS]

PROGRAM is vantor-meshes. Every row is measured in a process of its own, so that memory is the row's; one that takes longer than
SECONDS (600 without) is given up and named so in the table.
"""
import json
import os
import pathlib
import subprocess
import sys

from page import fill, gnuplot, processor, table

HEAD = ["magnets", "triangles", "gap, mm", "mesh", "first solve, ms", "step, ms", "estimate, %", "error, %", "evaluations", "passes",
        "kB / triangle", "dipoles / step", "step / floor"]


def measured(program, limit):
    """The rows; of one that was given up only its title."""
    titles = subprocess.run([program, "list"], capture_output=True, text=True, check=True).stdout.splitlines()
    rows = []
    for title in titles:
        try:
            run = subprocess.run([program, "row", title], capture_output=True, text=True, timeout=limit)
            if run.returncode:
                sys.exit(f"{title}: {run.stderr.strip()}")
            rows.append({"title": title, **json.loads(run.stdout)})
        except subprocess.TimeoutExpired:
            rows.append({"title": title})
        print(title, "given up" if len(rows[-1]) == 1 else number(1e3 * rows[-1]["stepSeconds"]) + " ms a step", flush=True)
    return rows


def number(value):
    """Three digits, thousands apart."""
    return f"{float(f'{value:.3g}'):,.0f}" if value >= 100 else f"{value:.3g}"


def percent(value):
    return number(100 * value) if value >= 1e-8 else "< 1e-6"


def cells(row, limit):
    if "triangles" not in row:
        return [row["title"], *[""] * 3, f"over {limit:,.0f} s", *[""] * 8]
    peer = row["peer"]
    dipoles = number(peer["seconds"] / row["stepSeconds"])
    if not peer["reached"]:
        dipoles = f"> {dipoles} (at {percent(peer['deviation'])} %)"
    floor = number(row["stepSeconds"] / row["floorSeconds"]) if row["nearPairs"] else "none near"
    return [row["name"], f"{row['triangles']:,}", f"{row['gap']:g}", row["order"], number(1e3 * row["firstSeconds"]),
            number(1e3 * row["stepSeconds"]), number(row["percentError"]) + ("" if row["converged"] else " (not met)"),
            percent(row["deviation"]), f"{row['evaluations']:,}", row["passes"], number(row["bytesPerTriangle"] / 1e3),
            dipoles, floor]


def plot(rows, target):
    """Times of the rings over the triangles of both, and what a power of 1.3 would be from the first point on."""
    curves = {}
    for row in rows:
        magnetised = row["name"].split(",")[0]
        curves.setdefault(f"{magnetised}, {row['order']}", []).append((row["triangles"], row["stepSeconds"]))
    start, least = min(min(curve) for curve in curves.values())
    end = max(max(curve)[0] for curve in curves.values())
    lines = [f"'-' with linespoints linewidth 2 title '{name}'" for name in curves]
    lines.append(f"[{start}:{end}] {least} * (x / {start}.0) ** 1.3 with lines dashtype 2 linecolor 'grey40' title 'N^{{1.3}}'")
    data = ["\n".join(f"{triangles} {seconds}" for triangles, seconds in curve) for curve in curves.values()]
    gnuplot("set logscale xy\nset key left top\nset grid\nset xlabel 'triangles'\n"
            f"set ylabel 'time of a step, s'\nplot {', '.join(lines)}\n" + "\ne\n".join(data) + "\ne\n", target)


def main():
    program, folder, page, target = sys.argv[1:5]
    limit = float(sys.argv[5]) if len(sys.argv) > 5 else 600.0
    rows = measured(program, limit)
    (pathlib.Path(folder) / "meshes.json").write_text(json.dumps(rows, indent=2))
    in_plot = [row for row in rows if row.get("growth")]
    in_table = [row for row in rows if not row["title"].startswith("growth: ")]
    text = table(HEAD, [cells(row, limit) for row in in_table]) + f"\n\nMeasured on {processor()}."
    if in_plot:
        plot(in_plot, target)
        image = os.path.relpath(target, pathlib.Path(page).parent)
        text += f"\n\n![Time of a step against triangles, two rings 1 mm apart]({image})"
    fill(pathlib.Path(page), {"meshes": text})


main()
