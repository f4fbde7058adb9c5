"""The studies of examples/, or parts of them, by kinora-run and the simulator, against Coulomb's law for magnetic charges."""

from __future__ import annotations

import csv
import math
from pathlib import Path
from statistics import mean, stdev
from typing import Any

import numpy
import pytest
from conftest import ROOT, StudyFolder, kinora_run
from kinora_study.document import read_json
from numpy.typing import NDArray

import magnets  # isort: skip  # of scripts/lib, as conftest has it

EXAMPLES = ROOT / "examples"
Charges = tuple[NDArray[numpy.float64], NDArray[numpy.float64]]
# Middles of the blocks' faces, metres.
RADIUS, HALF_THICKNESS, HALF_HEIGHT = 0.026, 0.003, 0.006


def disc(x: float, turn: float, poles: int, blocks: int, points: int = 8) -> Charges:
    """The first blocks of a disc of 1 T about the x axis, north poles towards +x first: places and charges."""
    half = (HALF_THICKNESS, 0.048 / poles, HALF_HEIGHT)
    charges = [
        charge
        for i in range(blocks)
        for charge in magnets.block_charges(
            (x, 0.0, RADIUS), half, 0, (-1) ** i, points,
            lambda place, i=i: magnets.turn_about_x(turn + 2 * math.pi * i / poles, place))
    ]
    return numpy.array([place for place, _ in charges]), numpy.array([charge for _, charge in charges])


def torque(driver: Charges, driven: Charges, aside: tuple[float, float, float] = (0, 0, 0)) -> float:
    """Torque in mN m about its own axis on a disc that is moved aside."""
    ways = (driven[0] + numpy.array(aside))[:, None, :] - driver[0][None, :, :]
    distances = numpy.sqrt((ways**2).sum(axis=2))
    forces = driven[1][:, None] * numpy.einsum("ijk,ij->ik", ways, driver[1] / distances**3) / (4 * math.pi * magnets.MU0)
    return float(1000 * numpy.cross(driven[0], forces)[:, 0].sum())


def peak(poles: int, gap: float) -> float:
    """The largest torque when the driven disc lags by up to a pole pitch, in 16 steps."""
    x = 0.003 + gap / 2
    # Wide blocks a short way apart want more points than narrow ones.
    points = 8 if poles >= 8 else 14
    driver = disc(-x, 0, poles, poles, points)
    # The torque is the same on both sides of half a pole pitch, and on every block.
    return max(poles * torque(driver, disc(x, -2 * math.pi / poles * step / 16, poles, 1, points)) for step in range(1, 9))


@pytest.fixture
def example(tmp_path: Path) -> StudyFolder:
    return StudyFolder(tmp_path, kinora_run())


def rows_of(study: StudyFolder, name: str, **changes: Any) -> list[dict[str, str]]:
    """The results of an example's study with some of its keys changed."""
    file = EXAMPLES / name
    document = read_json(file) | changes
    document["scenario"] = str(file.parent / document["scenario"])
    study.study(**document)
    study.good("run", "--cores", "2")
    study.good("collect")
    return study.table()


def test_the_torque_over_the_angle_is_that_of_the_example(example: StudyFolder) -> None:
    angles = read_json(EXAMPLES / "study-coupling/torque.study.json")["parameters"]["angle"]
    rows = rows_of(example, "study-coupling/torque.study.json", parameters={"gap": ["4*mm", "21*mm"], "angle": angles})
    with (EXAMPLES / "axial-coupling/torque.expected.csv").open(newline="", encoding="ascii") as stream:
        expected = [float(row[1]) for row in list(csv.reader(stream))[1:]]
    near, far = rows[:24], rows[24:]
    assert [float(row["torque"]) for row in near] == pytest.approx(expected[:24], rel=2e-4, abs=0.05)
    x = 0.0135
    driver = disc(-x, 0, 8, 8)
    for row in far[::5]:
        exact = 8 * torque(driver, disc(x, float(row["angle"]), 8, 1))
        assert float(row["torque"]) == pytest.approx(exact, rel=1e-4, abs=1e-3)


def test_the_largest_torque_over_the_poles(example: StudyFolder) -> None:
    poles = read_json(EXAMPLES / "study-coupling/poles.study.json")["parameters"]["poles"]
    rows = rows_of(example, "study-coupling/poles.study.json", parameters={"poles": poles, "gap": ["4*mm"]})
    found = {int(float(row["poles"])): float(row["peak"]) for row in rows}
    assert found == pytest.approx({poles: peak(poles, 0.004) for poles in range(4, 17, 2)}, rel=2e-4)
    assert max(found, key=found.__getitem__) == 12


def test_tolerances_spread_the_torque_as_its_slopes_say(example: StudyFolder) -> None:
    file = EXAMPLES / "study-tolerances/tolerances.study.json"
    rows = rows_of(example, str(file.relative_to(EXAMPLES)), runs=40,
                   environment={"VANTOR_SIM_MATERIALS": str(file.parent / "magnets.json")})
    peaks = [float(row["peak"]) for row in rows]
    for row, found in list(zip(rows, peaks))[:4]:
        x = 0.003 + float(row["gap"]) / 2
        strength = round(float(row["driver_magnets"]), 3) * round(float(row["driven_magnets"]), 3)
        driver, aside = disc(-x, 0, 8, 8), (0.0, float(row["aside"]), float(row["up"]))
        exact = max(torque(driver, disc(x, -math.pi / 4 * step / 16, 8, 8), aside) for step in (7, 8, 9))
        assert found == pytest.approx(strength * exact, rel=2e-4)
    # Of a product of two strengths and a falling function of the gap; what is aside changes little.
    nominal = peak(8, 0.004)
    slope = (peak(8, 0.0041) - peak(8, 0.0039)) / 0.0002 / nominal
    deviation = math.sqrt(2 * 0.015**2 + (slope * 0.05e-3) ** 2)
    assert mean(peaks) == pytest.approx(nominal, rel=3 * deviation / math.sqrt(40))
    assert stdev(peaks) / nominal == pytest.approx(deviation, rel=3 / math.sqrt(80))
