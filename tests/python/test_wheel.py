"""The wheel: whole, and of use with nothing else."""

import base64
import csv
import hashlib
import io
import os
import subprocess
import sys
import zipfile

import make_wheel
import pytest
from kinora_veltrix import _native, version
from magnet_pair import GEOMETRY, closed_form

PROGRAM = """
import sys
sys.path.insert(0, sys.argv[1])
sys.modules["numpy"] = None
import kinora_veltrix as k
assert k.__file__.startswith(sys.argv[1])
coupling = k.Coupling()
coupling.launch("Simulator")
coupling.create_project("pull.vtdk", sys.argv[2], "mm")
names = ["lower", "upper"]
bodies = [k.Body(name, [name + "_magnet"], (0, 0, z)) for name, z in zip(names, (0, 0.012))]
coupling.init_magnetic_objects(bodies, {name + "_magnet": k.Material("magnet_1T", (0, 0, 1)) for name in names})
print(coupling.analyze(0.0, [k.Pose(body.name, body.position) for body in bodies])[1].force[2])
# The coupling is not closed: the interpreter's end does it.
"""


PYTHONS_VERSION = version().replace("-", "")  # 1.0.0-rc1 is 1.0.0rc1 there


@pytest.fixture(scope="module")
def wheel(tmp_path_factory):
    return make_wheel.make_wheel(_native.find(), tmp_path_factory.mktemp("wheel"), {"other.txt": GEOMETRY})


def test_it_is_named_after_version_and_platform(wheel):
    assert wheel.name == f"kinora_veltrix-{PYTHONS_VERSION}-py3-none-linux_x86_64.whl"


def test_every_file_is_recorded_with_its_hash(wheel):
    info = f"kinora_veltrix-{PYTHONS_VERSION}.dist-info"
    with zipfile.ZipFile(wheel) as archive:
        rows = list(csv.reader(io.StringIO(archive.read(f"{info}/RECORD").decode())))
        assert [row[0] for row in rows] == archive.namelist()
        assert rows[-1] == [f"{info}/RECORD", "", ""]
        for name, digest, size in rows[:-1]:
            data = archive.read(name)
            text = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).decode().rstrip("=")
            assert (digest, size) == (f"sha256={text}", str(len(data))), name
        sources = {f"kinora_veltrix/{path.name}" for path in (make_wheel.HERE / "kinora_veltrix").glob("*.py")}
        assert set(archive.namelist()) == sources | {
            "kinora_veltrix/py.typed",
            "kinora_veltrix/_library/libkinora_veltrix.so",
            *(f"{info}/{name}" for name in ("METADATA", "WHEEL", "RECORD", "licenses/LICENSE", "licenses/other.txt")),
        }
        assert f"Name: kinora-veltrix\nVersion: {PYTHONS_VERSION}\n" in archive.read(f"{info}/METADATA").decode()
        assert "Root-Is-Purelib: false\nTag: py3-none-linux_x86_64\n" in archive.read(f"{info}/WHEEL").decode()


def test_it_is_all_that_is_needed(wheel, tmp_path):
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path / "site")
    environment = {name: value for name, value in os.environ.items() if name != "KINORA_VELTRIX_LIBRARY"}
    command = [sys.executable, "-I", "-c", PROGRAM, str(tmp_path / "site"), str(GEOMETRY)]
    output = subprocess.run(command, cwd=tmp_path, env=environment, capture_output=True, text=True)
    assert output.stderr == "" and output.returncode == 0
    assert float(output.stdout) == pytest.approx(closed_form(0.012), rel=1e-3)


def test_without_its_library_it_says_where_that_should_be(wheel, tmp_path):
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path, [name for name in archive.namelist() if not name.endswith(".so")])
    program = "import sys; sys.path.insert(0, sys.argv[1]); import kinora_veltrix; kinora_veltrix.version()"
    environment = {name: value for name, value in os.environ.items() if name != "KINORA_VELTRIX_LIBRARY"}
    command = [sys.executable, "-I", "-c", program, str(tmp_path)]
    output = subprocess.run(command, env=environment, capture_output=True, text=True)
    place = tmp_path / "kinora_veltrix" / "_library" / "libkinora_veltrix.so"
    assert output.stderr.splitlines()[-1].endswith(
        f'LibraryNotFound: the library of the coupling is not there; looked for "{place}". Install a wheel, '
        "which has it inside, build the target kinora_veltrix, or let KINORA_VELTRIX_LIBRARY name the file"
    )


def test_that_for_windows_has_the_library_of_windows(tmp_path):
    library = tmp_path / "kinora_veltrix.dll"
    library.write_bytes(b"MZ and more")
    wheel = make_wheel.make_wheel(library, tmp_path, {})
    assert wheel.name == f"kinora_veltrix-{PYTHONS_VERSION}-py3-none-win_amd64.whl"
    with zipfile.ZipFile(wheel) as archive:
        assert archive.read("kinora_veltrix/_library/kinora_veltrix.dll") == b"MZ and more"


def test_the_same_files_give_the_same_bytes(wheel, tmp_path):
    again = make_wheel.make_wheel(_native.find(), tmp_path / "again", {"other.txt": GEOMETRY})
    assert again.read_bytes() == wheel.read_bytes()


def test_another_file_is_refused(tmp_path):
    (tmp_path / "text").write_text("text")
    tool = [sys.executable, make_wheel.__file__, tmp_path / "text", tmp_path]
    output = subprocess.run(tool, capture_output=True, text=True)
    assert (output.returncode, output.stderr) == (
        1,
        f'make_wheel.py: "{tmp_path}/text" is no library for Windows or Linux\n',
    )


def test_what_pip_calls_makes_a_wheel_of_the_library_in_use(wheel, tmp_path):
    assert make_wheel.build_wheel(str(tmp_path)) == wheel.name
    assert (tmp_path / wheel.name).is_file()
