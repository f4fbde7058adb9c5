"""Every exception, provoked where a machine without a desktop of others can, and what it tells."""

import math
import os
import pickle
import subprocess
import sys

import kinora_veltrix
import magnet_pair
import pytest
from kinora_veltrix import (
    BadArgument,
    BadText,
    Body,
    Code,
    Coupling,
    CouplingError,
    DesktopNotInstalled,
    IncompleteLoads,
    Material,
    NoSuchFile,
    OperationFailed,
    Pose,
    SolverFailed,
    script_error_text,
)
from kinora_veltrix._errors import error_for


@pytest.fixture
def coupling():
    with Coupling() as coupling:
        yield coupling


def test_what_the_desktop_refuses(pair):
    with pytest.raises(OperationFailed) as caught:
        pair.init_magnetic_objects([Body("third", ["no_such_object"])], {})
    assert caught.value.code == Code.FAILED
    assert str(caught.value) == caught.value.text
    assert any("no_such_object" in message for message in caught.value.messages)


def test_calls_in_the_wrong_order(coupling):
    with pytest.raises(OperationFailed, match="(?i)project") as caught:
        coupling.save_project()
    assert caught.value.messages == ()


def test_a_desktop_that_is_not_installed(coupling):
    with pytest.raises(DesktopNotInstalled, match="Nowhere") as caught:
        coupling.launch("Nowhere")
    assert caught.value.code == Code.NOT_INSTALLED


def test_a_file_that_is_not_there(coupling, tmp_path):
    coupling.launch("Simulator")
    with pytest.raises(NoSuchFile, match="absent.vtdk") as caught:
        coupling.open_project(tmp_path / "absent.vtdk")
    assert caught.value.code == Code.NO_SUCH_FILE
    assert isinstance(caught.value, FileNotFoundError)


def test_touching_magnets_are_a_failure_of_the_solver(pair):
    with pytest.raises(SolverFailed) as caught:
        pair.analyze(0.0, magnet_pair.poses(0.006))
    assert caught.value.code == Code.SOLVER
    assert caught.value.solver_status == 0x021B
    assert script_error_text(0x021B).startswith("0x021B: ")
    assert ["touch or cut each other" in message for message in caught.value.messages] == [True]


def test_a_step_that_cannot_be_recorded_has_the_loads_that_there_are(coupling, tmp_path):
    folder = tmp_path / "folder"
    folder.mkdir()
    magnet_pair.start(coupling, folder)
    folder.rename(tmp_path / "moved")
    folder.write_text("no folder any more")
    with pytest.raises(IncompleteLoads, match="only 0 loads of 2") as caught:
        coupling.analyze(0.0, magnet_pair.poses(0.012))
    assert caught.value.code == Code.INCOMPLETE
    assert caught.value.loads == []
    assert any("log path is not valid" in message for message in caught.value.messages)
    coupling.close_project()


@pytest.mark.parametrize(
    "time, pose",
    [
        (math.nan, Pose("upper", (0, 0, 0.012))),
        (0.0, Pose("upper", (0, 0, math.inf))),
        (0.0, Pose("upper", (0, 0, 0.012), ((1, 0, 0), (0, 1, 0), (0, 0, 2)))),
    ],
)
def test_arguments_that_break_a_rule(pair, time, pose):
    with pytest.raises(BadArgument) as caught:
        pair.analyze(time, [Pose("lower"), pose])
    assert caught.value.code == Code.BAD_ARGUMENT
    assert isinstance(caught.value, ValueError)


def test_texts_that_are_none(coupling):
    for text in (os.fsdecode(b"\xff.vtdk"), "\ud800", "a\0b"):
        with pytest.raises(BadText) as caught:
            coupling.designs(text)
        assert caught.value.code == Code.BAD_TEXT
        assert isinstance(caught.value, ValueError)


def test_no_memory_for_another_thread():
    # In a process of its own, whose address space is full but for a thread's stack.
    program = """
import resource, sys
from kinora_veltrix import Code, Coupling, OutOfMemory, build
build()
used = int(open("/proc/self/statm").read().split()[0]) * resource.getpagesize()
resource.setrlimit(resource.RLIMIT_AS, (used + 2**21, -1))
try:
    Coupling()
except MemoryError as error:
    sys.exit(0 if isinstance(error, OutOfMemory) and error.code == Code.NO_MEMORY else 2)
"""
    environment = {**os.environ, "PYTHONPATH": str(magnet_pair.ROOT / "bindings" / "python")}
    assert subprocess.run([sys.executable, "-c", program], env=environment).returncode == 0


def test_every_code_has_its_class():
    kinds = {type(error_for(code, "")) for code in Code if code != Code.OK}
    assert kinds == set(CouplingError.__subclasses__()) and len(kinds) == 11
    for kind in kinds:
        assert error_for(kind.code, "").code == kind.code
        assert getattr(kinora_veltrix, kind.__name__) is kind
    assert type(error_for(Code.NOT_STARTED, "")) is kinora_veltrix.DesktopNotStarted
    assert type(error_for(Code.BUSY, "")) is kinora_veltrix.DesktopBusy
    assert type(error_for(Code.INTERNAL, "")) is kinora_veltrix.InternalError


def test_a_code_of_a_later_library_is_a_coupling_error():
    error = error_for(99, "later")
    assert type(error) is CouplingError and error.code == 99 and str(error) == "later"


@pytest.mark.parametrize("code", [code for code in Code if code != Code.OK])
def test_exceptions_travel_between_processes(code):
    error = pickle.loads(pickle.dumps(error_for(code, "text", ["message"])))
    assert (type(error), error.code, error.text) == (type(error_for(code, "")), code, "text")
    assert error.messages == ("message",)


def test_a_script_error_code_that_the_desktop_lacks():
    with pytest.raises(ValueError, match="^the desktop has no script error code -7$"):
        script_error_text(-7)


@pytest.mark.parametrize(
    "make, text",
    [
        (lambda: Pose("rotor", (1, 2)), 'position of pose "rotor" has 2 numbers, and takes 3'),
        (lambda: Pose("rotor", 1.0), 'position of pose "rotor" is 1.0; it takes several numbers'),
        (lambda: Pose("rotor", "xyz"), "position of pose \"rotor\" has 'x' where a number belongs"),
        (
            lambda: Pose("rotor", rotation=(1, 2, 3, 4)),
            'rotation of pose "rotor" has 4 items, and takes 3 rows of 3 numbers, or 9 numbers',
        ),
        (
            lambda: Pose("rotor", rotation=((1, 0, 0), (0, 1), (0, 0, 1))),
            'row 2 of rotation of pose "rotor" has 2 numbers, and takes 3',
        ),
        (lambda: Body("rotor", ["a"], (1, 2, 3, 4)), 'position of body "rotor" has 4 numbers, and takes 3'),
        (lambda: Body("rotor", "magnet"), 'objects of body "rotor" is the text "magnet"; give a list of names'),
        (lambda: Material("iron", ()), 'coercivity_direction of material "iron" has 0 numbers, and takes 3'),
    ],
)
def test_wrong_shapes_are_told_with_body_and_field(make, text):
    with pytest.raises(ValueError) as caught:
        make()
    assert str(caught.value) == text


@pytest.mark.parametrize("seconds", [-1, 1e7, math.nan])
def test_a_time_to_wait_that_is_none(seconds):
    with pytest.raises(ValueError, match=f"^busy_wait is {seconds} seconds; give 0 or more, or None to wait for ever$"):
        Coupling(busy_wait=seconds)
