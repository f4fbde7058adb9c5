"""Studies of two cube magnets by kinora-run and the simulator, against the closed form. KINORA_RUN is the program."""

from __future__ import annotations

import json
from pathlib import Path
from typing import Any

import pytest
from conftest import ROOT, StudyFolder, kinora_run

import magnets  # isort: skip  # of scripts/lib, as conftest has it

HALF = [0.005] * 3


def pull(gap: float, aside: float = 0.0) -> float:
    """Force along z on the upper of two cubes of 10 mm and 1 T."""
    return float(magnets.cuboid_force(HALF, HALF, [aside, 0.0, gap + 0.010], 1.0, 1.0)[2])


@pytest.fixture
def cubes(tmp_path: Path) -> StudyFolder:
    """A scenario of one solve whose parameters are the gap between the cubes and the way aside."""
    study = StudyFolder(tmp_path, kinora_run())
    scenario: dict[str, Any] = {
        "desktop": {"version": "Simulator"},
        "project": {"file": "cubes.vantor"},
        "geometry": {"file": str(ROOT / "examples/cube-magnets/cube-magnets.obj"), "units": "mm"},
        "parameters": {"gap": "2*mm", "aside": 0},
        "results": {"force": {"column": "upper.Force_z", "take": "last"}},
        "materials": {name: {"name": "magnet_1T", "direction": [0, 0, 1]} for name in ("lower_magnet", "upper_magnet")},
        "bodies": [
            {"name": "lower", "objects": ["lower_magnet"]},
            {"name": "upper", "objects": ["upper_magnet"], "position": [0, 0, "12*mm"]},
        ],
        "joints": [
            {
                "name": "carriage",
                "type": "free",
                "bodies": ["upper"],
                "prescribed": {"x": {"expression": "aside"}, "z": {"expression": "gap - 2*mm"}},
            }
        ],
        "solver": {"step": 1, "end": 0},
    }
    (tmp_path / "scenario.json").write_text(json.dumps(scenario), encoding="utf-8")
    return study


def test_a_sweep_gives_the_closed_form(cubes: StudyFolder) -> None:
    cubes.study({"gap": {"from": "2*mm", "to": "10*mm", "count": 5}, "aside": [0, "3*mm"]})
    cubes.good("run", "--cores", "2", "--batch", "5")
    cubes.good("collect")
    for row in cubes.table():
        assert float(row["force"]) == pytest.approx(pull(float(row["gap"]), float(row["aside"])), rel=1e-6)


def test_what_kinora_run_refuses_is_refused_before_the_first_run(cubes: StudyFolder) -> None:
    cubes.study({"gap": [1]}, results={"force": {"column": "upper.Force_q", "take": "last"}})
    assert 'have a column "upper.Force_q"' in cubes.refusal("run")
    cubes.study({"wide": {"values": [1], "set": {"bodies.uper.mass": "{wide}"}}})
    assert 'the list has no "uper". Did you mean "upper"?' in cubes.refusal("run")
    assert not cubes.runs.exists()


def test_bodies_that_overlap_fail_alone_and_say_why(cubes: StudyFolder) -> None:
    cubes.study({"gap": ["-1*mm", "3*mm"]})
    ended = cubes.call("run", "--cores", "2")
    assert ended.returncode == 1
    assert "gap = -0.001" in ended.stderr and "overlap" in ended.stderr
    cubes.good("collect")
    failed, done = cubes.table()
    assert (failed["status"], done["status"]) == ("failed", "done")
    assert float(done["force"]) == pytest.approx(pull(0.003), rel=1e-6)
