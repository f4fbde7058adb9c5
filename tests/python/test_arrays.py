"""numpy's arrays in and out, and doing without."""

import subprocess
import sys

import magnet_pair
import numpy
import pytest
from kinora_veltrix import Body, Load, Material, Pose, loads_as_arrays

TURN = ((0.0, 1.0, 0.0), (-1.0, 0.0, 0.0), (0.0, 0.0, 1.0))


@pytest.mark.parametrize("kind", [numpy.float64, numpy.float32, numpy.int64])
def test_arrays_are_taken_for_vectors_and_rotations(kind):
    expected = Pose("rotor", (1, 2, 3), TURN)
    assert Pose("rotor", numpy.array([1, 2, 3], kind), numpy.array(TURN, kind)) == expected
    assert Pose("rotor", rotation=numpy.array(TURN, kind).ravel()).rotation == TURN
    assert Body("rotor", ["a"], numpy.array([1, 2, 3], kind)).position == (1.0, 2.0, 3.0)
    assert Material("iron", numpy.array([0, 0, 1], kind)).coercivity_direction == (0.0, 0.0, 1.0)
    assert all(type(value) is float for value in Pose("rotor", numpy.array([1, 2, 3], kind)).position)


def test_a_pose_does_not_follow_the_array_that_it_was_made_of():
    position = numpy.zeros(3)
    pose = Pose("rotor", position)
    position[0] = 1
    assert pose.position == (0, 0, 0)


def test_an_array_of_another_shape_is_refused():
    with pytest.raises(ValueError, match='^position of pose "rotor" has array'):
        Pose("rotor", numpy.zeros((3, 1)))


def test_loads_become_arrays():
    loads = [Load((1, 2, 3), (4, 5, 6)), Load((7, 8, 9), (10, 11, 12))]
    assert numpy.asarray(loads[0]).tolist() == [[1, 2, 3], [4, 5, 6]]
    forces, torques = loads_as_arrays(loads)
    assert forces.tolist() == [[1, 2, 3], [7, 8, 9]]
    assert torques.tolist() == [[4, 5, 6], [10, 11, 12]]
    assert forces.dtype == numpy.float64
    forces, torques = loads_as_arrays([loads, loads, loads])
    assert forces.shape == torques.shape == (3, 2, 3)
    assert loads_as_arrays([])[1].shape == (0, 3)


def test_a_run_becomes_arrays(pair):
    times = numpy.linspace(0, 1, 3)
    forces, _ = loads_as_arrays(pair.run(times, lambda time: magnet_pair.poses(0.012 + 0.01 * time)))
    expected = [magnet_pair.closed_form(0.012 + 0.01 * time) for time in times]
    assert forces[:, 1, 2] == pytest.approx(expected, rel=1e-3)


def test_numpy_is_not_loaded_unless_arrays_are_asked_for():
    program = "import sys, kinora_veltrix as k; k.Pose('a'); sys.exit('numpy' in sys.modules)"
    folder = magnet_pair.ROOT / "bindings" / "python"
    assert subprocess.run([sys.executable, "-c", program], cwd=folder).returncode == 0


def test_without_numpy_only_the_arrays_are_missing(pair, monkeypatch):
    monkeypatch.setitem(sys.modules, "numpy", None)
    loads = pair.analyze(0.0, magnet_pair.poses(0.012))
    assert loads[1].force[2] == pytest.approx(magnet_pair.closed_form(0.012), rel=1e-3)
    with pytest.raises(ImportError):
        loads_as_arrays(loads)
