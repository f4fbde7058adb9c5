#!/usr/bin/env python3
"""Compares a run of this example with the closed form for parallel cuboid magnets, step by step.

    examples/cube-magnets/compare.py COUPLING_LOG

Exit status 1 when a step is missing or deviates by more than half a percent.
"""
import csv
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts" / "lib"))
import magnets  # noqa: E402

EDGE = 0.010
STEPS = 20
TOLERANCE_PERCENT = 0.5


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: compare.py COUPLING_LOG")
    with open(sys.argv[1], newline="", encoding="utf-8") as log:
        rows = list(csv.DictReader(log))
    print(f"{'time s':>8} {'gap mm':>8} {'simulated N':>13} {'closed form N':>14} {'deviation %':>12}")
    worst = 0.0
    for row in rows:
        distance = float(row["upper_Z"]) - float(row["lower_Z"])
        simulated = float(row["Force_upper_Z"])
        half = [EDGE / 2] * 3
        exact = magnets.cuboid_force(half, half, [0.0, 0.0, distance], 1.0, 1.0)[2]
        deviation = 100 * (simulated / exact - 1)
        worst = max(worst, abs(deviation))
        print(
            f"{float(row['SimTime']):8.2f} {1000 * (distance - EDGE):8.1f} {simulated:13.5f} {exact:14.5f} {deviation:12.4f}"
        )
    if len(rows) != STEPS + 1:
        sys.exit(f"error: the log has {len(rows)} steps, not {STEPS + 1}")
    print(f"largest deviation {worst:.4f} %, allowed {TOLERANCE_PERCENT} %")
    if worst > TOLERANCE_PERCENT:
        sys.exit("error: a step deviates too much")


if __name__ == "__main__":
    main()
