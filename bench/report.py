#!/usr/bin/env python3
"""Writes the figures of scripts/bench into docs/performance.md, between its markers, and plots the growth of a step.

Usage: report.py RESULT_FOLDER PAGE.md PLOT.svg
"""
import json
import pathlib
import sys

from page import fill, gnuplot, table


def step_table(steps, without_files):
    rows = [
        [row["bodies"], f"{row['recordedSteps']:,}", row["reports"], f"{row['argumentBytes'] / 1e6:,.3f}",
         f"{same['ratio']:.2f}", f"{row['ratio']:.2f}"]
        for row, same in zip(steps, without_files)
    ]
    return table(["bodies", "recorded steps", "reports", "sent, MB", "step / floor, without files", "with files"], rows)


def peer_table(peers):
    rows = [[row["bodies"], f"{row['recordedSteps']:,}", f"{row['copyingRatio']:.1f}", f"{row['scriptRatio']:.1f}"]
            for row in peers]
    return table(["bodies", "recorded steps", "copying C++ / library", "script / library"], rows)


def c_interface_table(calls):
    rows = [[f"`{row['call']}`" + (f", {row['bodies']} bodies" if row["bodies"] else ""), f"{row['microseconds']:.2f}",
             f"{row['microsecondsMore']:.1f}", f"{row['ratio']:.2f}"] for row in calls]
    return table(["call", "C++ interface, microseconds", "C interface, microseconds more", "C / C++"], rows)


def fmu_table(rows):
    return table(["bodies", "C interface, microseconds", "FMU, microseconds more", "FMU / C interface"],
                 [[str(row["bodies"]), f"{row['microseconds']:.1f}", f"{row['microsecondsMore']:.1f}",
                   f"{row['ratio']:.2f}"] for row in rows])


def growth(steps, bodies):
    """Least squares through the times and bytes of one number of bodies, per recorded step."""
    rows = [row for row in steps if row["bodies"] == bodies and row["reports"] == "Never"]
    counts = [row["recordedSteps"] for row in rows]
    mean = sum(counts) / len(counts)

    def slope(key):
        values = [row[key] for row in rows]
        middle = sum(values) / len(values)
        return (sum((x - mean) * (y - middle) for x, y in zip(counts, values))
                / sum((x - mean) ** 2 for x in counts))

    return slope("stepSeconds"), slope("argumentBytes")


def growth_table(steps):
    rows = []
    for bodies in sorted({row["bodies"] for row in steps}):
        seconds, size = growth(steps, bodies)
        first = next(row for row in steps if row["bodies"] == bodies and row["recordedSteps"] == 1)["stepSeconds"]
        cells = [bodies, f"{size:,.0f}"]
        for length in (1_000, 10_000, 100_000):
            cells.append(f"{1 + seconds * length / (2 * first):,.1f}")
        rows.append(cells)
    return table(["bodies", "bytes added per recorded step", "run of 1,000 steps", "of 10,000", "of 100,000"], rows)


def plot(steps, target):
    data = []
    for bodies in sorted({row["bodies"] for row in steps}):
        rows = [row for row in steps if row["bodies"] == bodies and row["reports"] == "Never"]
        first = rows[0]["stepSeconds"]
        data.append("\n".join(f"{row['recordedSteps']} {row['stepSeconds'] / first}" for row in rows))
    names = sorted({row["bodies"] for row in steps})
    curves = ", ".join(f"'-' with linespoints linewidth 2 title '{name} {'body' if name == 1 else 'bodies'}'"
                       for name in names)
    gnuplot("set logscale xy\nset key left top\nset grid\nset xlabel 'recorded steps before this one'\n"
            f"set ylabel 'time of a step, against the first'\nplot {curves}\n" + "\ne\n".join(data) + "\ne\n", target)


def main():
    folder, page, target = map(pathlib.Path, sys.argv[1:])
    read = lambda name: json.loads((folder / f"{name}.json").read_text())
    names = ("step", "step_without_files", "memory", "peers", "share", "inprocess", "native", "capi", "fmu")
    step, without_files, memory, peers, share, in_process, native, c_interface, fmu = (
        read(f"bench_{name}") for name in names)
    history = step["history"]
    figures = {
        "step": step_table(step["step"], without_files["step"]),
        "history": f"History argument alone, {history['recordedSteps']:,} steps of {6 * history['bodies'] + 1} values: "
                   f"**{history['ratio']:.2f}** times its floor.",
        "memory": f"Memory peak of a step at {memory['recordedSteps']:,} steps of {6 * memory['bodies'] + 1} values: "
                  f"**{memory['ratio']:.2f}** times the size of its argument ({memory['argumentBytes'] / 1e6:.1f} MB).",
        "peers": peer_table(peers["peers"]),
        "peers-out-of-process": peer_table(peers["outOfProcess"]),
        "share": f"Share of the library in the time of a step with the simulator in its own process "
                 f"({share['bodies']} bodies, {share['steps']} steps): at most **{100 * share['share']:.1f} %**.",
        "in-process": f"A step with the simulator in its own process takes **{in_process['ratio']:.0f}** times as long as "
                      f"with the simulator in the host's ({in_process['bodies']} bodies, "
                      f"{in_process['recordedSteps']} recorded steps).",
        "native": f"A step with the simulator in its own process, under Wine, takes "
                  f"**{in_process['outOfProcessSeconds'] / native['stepSeconds']:.0f}** times as long as natively, where it "
                  f"takes **{native['stepSeconds'] / 1e-3:.2f}** of a millisecond; the library's share of that is "
                  f"**{100 * native['libraryShare']:.0f} %** ({native['bodies']} bodies, {native['recordedSteps']} recorded "
                  f"steps).",
        "c-interface": c_interface_table(c_interface),
        "fmu": fmu_table(fmu),
        "growth": growth_table(step["step"]),
    }
    fill(page, figures)
    plot(step["step"], target)


main()
