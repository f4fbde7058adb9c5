#!/usr/bin/env python3
"""Maps the force between two cube magnets: one is fixed, the other is moved over a plane through its middle.

Both are magnetised along z; --turn turns the moved one about y. Writes a picture and, beside it, the numbers as CSV.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path
from typing import TYPE_CHECKING, Optional, Sequence

import common

with common.modules():
    import kinora_veltrix as kv
    import magnets
    import matplotlib
    import numpy as np

if TYPE_CHECKING:
    from numpy.typing import NDArray

    Array = NDArray[np.float64]

GEOMETRY = common.EXAMPLES / "cube-magnets" / "cube-magnets.obj"
EDGE = 0.010  # metres, as all lengths but those of the options and the picture
MATERIAL = kv.Material("magnet_1T", (0, 0, 1))
BODIES = [kv.Body("fixed", ["lower_magnet"]), kv.Body("moved", ["upper_magnet"], (0, 0, 0.012))]


def parsed(arguments: Optional[Sequence[str]]) -> argparse.Namespace:
    parser = common.parser(__doc__, "force-map.png")
    parser.add_argument("--points", type=int, default=41, metavar="N", help="points along each side (41)")
    parser.add_argument("--size", type=float, default=60.0, metavar="MM", help="side of the plane (60)")
    parser.add_argument("--gap", type=float, default=2.0, metavar="MM", help="least gap between the magnets (2)")
    parser.add_argument("--turn", type=float, default=0.0, metavar="DEG", help="turn of the moved magnet about y (0)")
    options = parser.parse_args(arguments)
    if options.points < 3:
        parser.error(f"--points is {options.points}, and must be 3 or more")
    if not 0.01 <= options.gap <= 1000:
        parser.error(f"--gap is {options.gap:g} mm, and must be from 0.01 to 1000")
    if not 2 * excluded(options) < options.size / 1000 <= 1:
        parser.error(f"--size is {options.size:g} mm, and must be from {2000 * excluded(options):g} to 1000: "
                     "the moved magnet passes the fixed one on both sides")
    return options


def excluded(options: argparse.Namespace) -> float:
    """How far the middles must be apart along x or z, so that the magnets keep the gap."""
    turn = np.radians(options.turn)
    reach = EDGE / 2 * (abs(np.cos(turn)) + abs(np.sin(turn)))
    return float(EDGE / 2 + reach + options.gap / 1000)


def grid(options: argparse.Namespace) -> tuple[Array, Array]:
    """The coordinate along each side, and the places (x, y, z) on the plane where the magnets keep the gap."""
    side = np.round(options.size / 2000 * np.linspace(-1, 1, options.points), 6)  # the desktop gets micrometres
    x, z = np.meshgrid(side, side)
    places = np.column_stack((x.ravel(), np.zeros(x.size), z.ravel()))
    return side, places[np.maximum(abs(places[:, 0]), abs(places[:, 2])) > excluded(options) - 1e-9]


def forces(places: Array, options: argparse.Namespace) -> Array:
    """The force on the moved magnet at every place, one coupling step each; newtons, global frame."""
    c, s = np.cos(np.radians(options.turn)), np.sin(np.radians(options.turn))
    axes = np.array([[c, 0, -s], [0, 1, 0], [s, 0, c]])  # the rows are the body's axes seen from the global frame

    def poses_at(time: float) -> list[kv.Pose]:
        return [kv.Pose("fixed"), kv.Pose("moved", places[round(time)], axes)]

    with common.session(options.desktop) as (coupling, folder):
        coupling.create_project(folder / "force_map.vantor", GEOMETRY, "mm")
        coupling.init_magnetic_objects(BODIES, {"lower_magnet": MATERIAL, "upper_magnet": MATERIAL})
        steps = coupling.run(range(len(places)), poses_at, common.progress)
        coupling.quit()
    # Loads come in the body's axes: the rows of `axes`, each times its component, add up to the global vector.
    found: Array = np.array([moved.force for _, moved in steps]) @ axes
    return found


def deviation(places: Array, found: Array, polarisation: float) -> float:
    """The largest deviation from the closed form, in percent of the force there; polarisation along z, tesla."""
    half = [EDGE / 2] * 3
    exact = np.array([magnets.cuboid_force(half, half, place, 1.0, polarisation) for place in places])
    return float(100 * np.max(np.linalg.norm(found - exact, axis=1) / np.linalg.norm(exact, axis=1)))


def draw(side: Array, places: Array, found: Array, options: argparse.Namespace) -> None:
    matplotlib.use("Agg")  # a file, no window
    from matplotlib import patches, pyplot, ticker

    mm = 1000 * side
    columns, rows = (np.searchsorted(side, places[:, axis]) for axis in (0, 2))
    force = np.full((len(side), len(side), 3), np.nan)
    force[rows, columns] = found
    size = np.linalg.norm(force, axis=2)
    unit = force / size[:, :, np.newaxis]
    figure, axes = pyplot.subplots(figsize=(6.4, 5.4), layout="constrained")
    levels = np.geomspace(np.nanmin(size), np.nanmax(size), 25)
    shades = axes.contourf(mm, mm, size, levels, norm="log", cmap="viridis")
    decades = [step * 10.0**power for power in range(-6, 7) for step in (1, 2, 5)]
    lines = [value for value in decades if levels[0] < value < levels[-1]]
    if np.isfinite(size[:-1, :-1] + size[1:, 1:]).any():  # else the grid is too coarse for lines between its points
        axes.clabel(axes.contour(mm, mm, size, lines, colors="white", linewidths=0.6), fmt="%g N", fontsize=7)
    stride = max(1, len(side) // 13)
    some = slice(len(side) // 2 % stride, None, stride)
    x, z = unit[some, some, 0], unit[some, some, 2]
    axes.quiver(mm[some], mm[some], x, z, pivot="middle", scale=30, width=0.003)
    near, edge = 1000 * excluded(options), 1000 * EDGE
    axes.add_patch(patches.Rectangle((-near, -near), 2 * near, 2 * near, fc="0.93", ec="0.5", ls="--"))
    axes.add_patch(patches.Rectangle((-edge / 2, -edge / 2), edge, edge / 2, fc="tab:blue", ec="black"))
    axes.add_patch(patches.Rectangle((-edge / 2, 0), edge, edge / 2, fc="tab:red", ec="black"))
    for z, pole in ((edge / 4, "N"), (-edge / 4, "S")):
        axes.text(0, z, pole, color="white", ha="center", va="center", weight="bold")
    axes.set(aspect="equal", facecolor="0.93")
    axes.set(xlabel="x of the moved magnet's middle (mm)", ylabel="z of the moved magnet's middle (mm)")
    turned = f", turned by {options.turn:g}° about y" if options.turn else ", magnetised along z as the fixed one"
    axes.set_title(f"Force on a cube magnet of 10 mm and 1 T{turned}\n(dashed: within it the gap may be less than "
                   f"{options.gap:g} mm)", fontsize=10)
    bar = figure.colorbar(shades, label="magnitude of the force (N)", ticks=lines)
    bar.ax.yaxis.set_major_formatter(ticker.FormatStrFormatter("%g"))
    figure.savefig(options.out, dpi=100)


def main(arguments: Optional[Sequence[str]] = None) -> int:
    options = parsed(arguments)

    def work() -> None:
        side, places = grid(options)
        options.out.parent.mkdir(parents=True, exist_ok=True)
        found = forces(places, options)
        numbers = options.out.with_suffix(".csv")
        head = "X [m],Y [m],Z [m],Force_x [N],Force_y [N],Force_z [N]"
        np.savetxt(numbers, np.hstack((places, found)), "%.9g", ",", header=head, comments="")
        draw(side, places, found, options)
        if options.turn % 180 == 0:
            worst = deviation(places, found, 1.0 if options.turn % 360 == 0 else -1.0)
            print(f"largest deviation from the closed form: {worst:.2g} % of the force")
        print(f"largest force {np.linalg.norm(found, axis=1).max():.4g} N; wrote {options.out} and {numbers}")

    return common.exit_status(work)


if __name__ == "__main__":
    sys.exit(main())
