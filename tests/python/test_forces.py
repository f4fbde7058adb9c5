"""Loads against closed forms and Coulomb's law."""

import math

import pytest
from kinora_veltrix import Body, Coupling, Material, Pose
from magnet_pair import closed_form, loads_on, poses, rows_of, write_cubes

IDENTITY = rows_of((0, 0, 1), 0.0)


@pytest.mark.parametrize("distance", [0.012, 0.0155, 0.032])
def test_force_of_two_cubes_is_that_of_the_closed_form(pair, distance):
    lower, upper = pair.analyze(0.0, poses(distance))
    assert upper.force[2] == pytest.approx(closed_form(distance), rel=1e-3)
    assert upper.force[:2] == pytest.approx((0, 0), abs=1e-6)
    assert lower.force == pytest.approx([-value for value in upper.force], abs=1e-6)
    assert [*lower.torque, *upper.torque] == pytest.approx([0] * 6, abs=1e-8)


@pytest.mark.parametrize(
    "drawn, pose_lower, pose_upper",
    [
        (((0, 0, 1), 0.0), ((0, 0, 1), 0.0), ((1, 2, 3), 0.8)),
        (((1, 1, 0), 0.7), ((0, 0, 1), 0.0), ((1, 1, 0), 0.7)),
        (((3, -1, 2), 1.9), ((0, 1, 0), 0.6), ((-1, 2, 0.5), 2.4)),
        (((0, 1, 0), math.pi / 2), ((1, 0, 0), -math.pi / 2), ((0, 0, 1), math.pi)),
    ],
)
def test_loads_of_turned_bodies_are_those_in_the_global_frame(tmp_path, drawn, pose_lower, pose_upper):
    drawn_at, rows_drawn = (0.001, 0.002, 0.03), rows_of(*drawn)
    geometry = tmp_path / "turned.obj"
    write_cubes(geometry, [("a", (0, 0, 0), IDENTITY), ("b", drawn_at, rows_drawn)])
    at, lower, upper = (0.004, -0.006, 0.022), rows_of(*pose_lower), rows_of(*pose_upper)
    with Coupling() as coupling:
        coupling.launch("Simulator")
        coupling.create_project(tmp_path / "turned.vtdk", geometry, "mm")
        coupling.init_magnetic_objects(
            [Body("lower", ["a"]), Body("upper", ["b"], drawn_at, rows_drawn)],
            {"a": Material("magnet_1T", (0, 0, 1)), "b": Material("magnet_1T", (0, 1, 0))},
        )
        loads = coupling.analyze(0.0, [Pose("lower", (0, 0, 0), lower), Pose("upper", at, upper)])
        coupling.close_project()
    places = [((0, 0, 0), lower, 2), (at, upper, 1)]
    for load, (force, torque) in zip(loads, [loads_on(*places), loads_on(*reversed(places))]):
        assert load.force == pytest.approx(force, rel=1e-3, abs=1e-3 * math.hypot(*force))
        assert load.torque == pytest.approx(torque, rel=1e-3, abs=1e-3 * math.hypot(*torque))
