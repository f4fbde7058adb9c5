#!/usr/bin/env python3
"""Finds the number of poles and the gap of an axial magnetic coupling for a wanted pull-out torque.

Two equal rings face each other, cut into sectors that are magnetised along the axis in turns. However many sectors, the
magnets' volume is the same; so the best number is the one that carries the torque over the largest gap. The field of
many poles does not reach far, and few poles carry little. Writes a picture and, beside it, its curves as CSV.
"""

from __future__ import annotations

import argparse
import sys
from dataclasses import dataclass
from math import degrees
from pathlib import Path
from typing import Any, Optional, Sequence

import common

with common.modules():
    import kinora_veltrix as kv
    import matplotlib
    import numpy as np
    from axial_rings import SIDES, Model

GAPS = (0.001, 0.030)  # metres
FINE_SIDES = 192


@dataclass(frozen=True)
class Design:
    """A coupling that carries the wanted torque."""

    poles: int
    gap: float
    pull_out: float
    twist: float


def draw(curves: dict[int, Any], gaps: Any, twists: Any, designs: list[Design], options: argparse.Namespace) -> None:
    """Left the pull-out torques over the gap with the designs, right the first and best one's torque over the twist."""
    matplotlib.use("Agg")  # a file, no window
    from matplotlib import pyplot

    best = designs[0]
    figure, (left, right) = pyplot.subplots(1, 2, figsize=(9.6, 4.2), layout="constrained")
    for poles, torques in curves.items():
        left.loglog(1000 * gaps, torques, label=f"{poles} poles", lw=2.5 if poles == best.poles else 1.2)
    left.plot([1000 * design.gap for design in designs], [design.pull_out for design in designs], "ko", ms=4)
    left.plot(1000 * best.gap, best.pull_out, "k*", ms=14, label=f"found: {best.poles} poles, {1000 * best.gap:.2f} mm")
    left.set(xlabel="gap (mm)", ylabel="pull-out torque (N m)", title="Rings of the same volume")
    right.plot(np.degrees(twists[:, 0]), twists[:, 1], color=f"C{options.poles.index(best.poles)}", lw=2.5)
    right.plot(degrees(best.twist), best.pull_out, "k*", ms=14)
    right.set(xlabel="twist (degrees)", ylabel="torque (N m)", title=f"The found coupling of {best.poles} poles")
    for axes in (left, right):
        axes.axhline(options.torque, color="black", ls="--", lw=1, label=f"wanted: {options.torque:g} N m")
        axes.grid(True, which="both", lw=0.3)
    left.set_xticks([1, 2, 5, 10, 20, 30], minor=False)
    left.set_ylim(bottom=options.torque / 30)
    for axis in (left.xaxis, left.yaxis):
        axis.set_major_formatter("{x:g}")
    left.legend(fontsize=8)
    figure.savefig(options.out, dpi=100)


def study(coupling: kv.Coupling, folder: Path, options: argparse.Namespace) -> None:
    gaps = np.round(np.geomspace(*GAPS, options.points), 6)
    curves, designs = {}, []
    for poles in options.poles:
        model = Model(coupling, folder, poles)
        torques = curves[poles] = np.array([model.pull_out(gap)[0] for gap in gaps])
        gap = model.gap_for(options.torque, gaps, torques)
        if gap is not None:
            designs.append(Design(poles, gap, *model.pull_out(gap)))
        found = "over no gap" if gap is None else f"over a gap of {1000 * gap:.3f} mm"
        print(f"{poles:2} poles: {torques[-1]:.3f} to {torques[0]:6.3f} N m; {options.torque:g} {found}", flush=True)
        coupling.close_project()
    if not designs:
        coupling.quit()
        sys.exit(f"error: {options.torque:g} N m is in none of these ranges: choose another --torque, or other --poles")
    designs.sort(key=lambda design: -design.gap)
    best = designs[0]

    model = Model(coupling, folder, best.poles)
    twists = np.array([(twist, model.torque(best.gap, twist)) for twist in np.linspace(0, 2 * model.pole, 37)])
    coupling.close_project()
    check = Model(coupling, folder, best.poles, FINE_SIDES).torque(best.gap, best.twist)
    coupling.quit()
    most = f"{best.pull_out:.4f} N m at a twist of {degrees(best.twist):.2f} degrees"
    print(f"best: {best.poles} poles over a gap of {1000 * best.gap:.3f} mm, {most}")
    print(f"with {FINE_SIDES} sides instead of {SIDES}: {check:.4f} N m ({100 * (check / best.pull_out - 1):+.3f} %)")

    options.out.parent.mkdir(parents=True, exist_ok=True)
    numbers = options.out.with_suffix(".csv"), options.out.with_suffix(".twist.csv")
    head = ",".join(["Gap [m]"] + [f"{poles} poles [N m]" for poles in curves])
    np.savetxt(numbers[0], np.column_stack((gaps, *curves.values())), "%.9g", ",", header=head, comments="")
    np.savetxt(numbers[1], twists, "%.9g", ",", header="Twist [rad],Torque [N m]", comments="")
    draw(curves, gaps, twists, designs, options)
    print(f"wrote {options.out}, {numbers[0].name} and {numbers[1].name}")


def main(arguments: Optional[Sequence[str]] = None) -> int:
    parser = common.parser(__doc__, "coupling.png")
    parser.add_argument("--torque", type=float, default=3.0, metavar="NM", help="wanted pull-out torque (3)")
    parser.add_argument("--poles", type=int, nargs="+", default=[4, 6, 8, 12, 16], metavar="N", help="numbers to try")
    parser.add_argument("--points", type=int, default=12, metavar="N", help="gaps from 1 to 30 mm on the curves (12)")
    options = parser.parse_args(arguments)
    if not options.torque > 0:
        parser.error(f"--torque is {options.torque:g}, and must be more than 0")
    wrong = [poles for poles in options.poles if poles % 2 or not 2 <= poles <= 48]
    if wrong:
        parser.error(f"--poles has {wrong[0]}; each must be even, north and south in turn, and from 2 to 48")
    if options.points < 2:
        parser.error(f"--points is {options.points}, and must be 2 or more")

    def work() -> None:
        with common.session(options.desktop) as (coupling, folder):
            study(coupling, folder, options)

    return common.exit_status(work)


if __name__ == "__main__":
    sys.exit(main())
