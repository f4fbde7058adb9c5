"""An axial magnetic coupling: two equal rings face each other, cut into sectors magnetised along the axis in turns."""

from __future__ import annotations

import tempfile
from math import ceil, cos, pi, sin, sqrt
from pathlib import Path
from typing import Any, Optional

import common

with common.modules():
    import kinora_veltrix as kv
    import numpy as np
    import solids
    from scipy import optimize

INNER, OUTER, THICKNESS = 0.020, 0.040, 0.006  # of the rings, metres
DRAWN_GAP = 0.010
SIDES = 48  # of the polygon that stands for a circle, at least


def sector(name: str, index: int, poles: int, sides: int, middle: float) -> Any:
    """One of a ring's magnets as a solid, millimetres. The polygon has the circle's area, so the volume is right."""
    count = ceil(sides / poles)
    step = 2 * pi / (count * poles)
    stretch = 1000 * sqrt(step / sin(step))
    angles = [step * (index * count + side) for side in range(count + 1)]
    corners = [(OUTER, angle) for angle in angles] + [(INNER, angle) for angle in reversed(angles)]
    outline = [(stretch * radius * cos(angle), stretch * radius * sin(angle)) for radius, angle in corners]
    return solids.prism_object(name, outline, 1000 * (middle - THICKNESS / 2), 1000 * (middle + THICKNESS / 2))


class Model:
    """The coupling with so many poles, a project of its own, as a function of gap (metres) and twist (radians)."""

    def __init__(self, coupling: kv.Coupling, folder: Path, poles: int, sides: int = SIDES) -> None:
        self.coupling, self.pole = coupling, 2 * pi / poles
        objects, bodies, materials = [], [], {}
        for body, middle in (("driver", 0.0), ("driven", THICKNESS + DRAWN_GAP)):
            names = [f"{body}_{index + 1}" for index in range(poles)]
            bodies.append(kv.Body(body, names, (0, 0, middle)))
            for index, name in enumerate(names):
                objects.append(sector(name, index, poles, sides, middle))
                materials[name] = kv.Material("magnet_1T", (0, 0, (-1) ** index))
        project = Path(tempfile.mkdtemp(dir=folder)) / "coupling.vantor"
        geometry = project.with_suffix(".obj")
        geometry.write_text(solids.obj_text(f"Two rings of {poles} poles", objects, Path(__file__).name))
        coupling.create_project(project, geometry, "mm")
        coupling.init_magnetic_objects(bodies, materials)

    def torque(self, gap: float, twist: float) -> float:
        """What the driven ring is held back with, N m. Every solve is a run of its own, since its time is 0.0."""
        axes = [cos(twist), sin(twist), 0.0, -sin(twist), cos(twist), 0.0, 0.0, 0.0, 1.0]  # row by row
        poses = [kv.Pose("driver"), kv.Pose("driven", (0, 0, THICKNESS + gap), axes)]
        return 0.0 - self.coupling.analyze(0.0, poses)[1].torque[2]  # never a negative zero

    def pull_out(self, gap: float) -> tuple[float, float]:
        """The largest torque and its twist, between unlike poles opposite (0) and like ones (the angle of a pole)."""
        options = {"xatol": self.pole / 200}  # near the largest, the torque hardly changes with the twist
        search = {"bounds": (0, self.pole), "method": "bounded", "options": options}
        found = optimize.minimize_scalar(lambda twist: -self.torque(gap, twist), **search)
        return -float(found.fun), float(found.x)

    def gap_for(self, torque: float, gaps: Any, torques: Any) -> Optional[float]:
        """The gap with this pull-out torque; None where it is not between those of `gaps`, which are `torques`."""
        larger = int(np.count_nonzero(torques >= torque))
        if larger in (0, len(gaps)):
            return None
        low, high = gaps[larger - 1 : larger + 1]
        gap = optimize.brentq(lambda gap: self.pull_out(gap)[0] - torque, low, high, xtol=1e-6)
        return round(float(gap), 6)  # the desktop gets micrometres
