"""FMUs as files: what kinora-fmu packs, looked at by other libraries and by the rules of the standard.

KINORA_FMU is the program. The official schemas are looked for where KINORA_FMI_SCHEMAS says, in ../shared/fmi-schemas from the
project's folder without it.
"""
import functools
import json
import math
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import xml.etree.ElementTree as ET
import zipfile

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
SCHEMAS = pathlib.Path(os.environ.get("KINORA_FMI_SCHEMAS", ROOT.parent / "shared" / "fmi-schemas"))
WORK = pathlib.Path(tempfile.mkdtemp(prefix="kinora-fmu-"))

#: Every kind of joint and both interfaces, on scenarios that users have.
CASES = [
    ("axial-coupling/torque", "joints", ["--simulator"]),
    ("axial-coupling/torque", "poses", []),
    ("magnetic-spring/scenario", "joints", ["--simulator"]),
    ("levitating-top/hovering", "joints", ["--simulator", "--axes", "body"]),
    ("radial-bearing/settling", "joints", []),
    ("tilted-magnets/scenario", "poses", ["--simulator", "--axes", "body"]),
]
ALL = [(version, *case) for version in (2, 3) for case in CASES]


def teardown_module():
    shutil.rmtree(WORK, ignore_errors=True)


def run(*words):
    return subprocess.run([os.environ["KINORA_FMU"], *map(str, words)], capture_output=True, text=True, check=False)


@functools.lru_cache(maxsize=None)
def pack(version, scenario, ports, words):
    path = WORK / f"{scenario.replace('/', '_')}-{ports}-{version}.fmu"
    done = run(EXAMPLES / f"{scenario}.json", "-o", path, "--fmi", version, "--interface", ports, *words)
    assert done.returncode == 0, done.stderr
    return path


@pytest.fixture(name="fmu", params=ALL, ids=lambda row: f"{row[1]}-{row[2]}-{row[0]}")
def packed(request):
    version, scenario, ports, words = request.param
    path = pack(version, scenario, ports, tuple(words))
    return Fmu(version, scenario, ports, words, path)


class Fmu:
    """An archive, by the standard library."""

    def __init__(self, version, scenario, ports, words, path):
        self.version, self.ports, self.words, self.path = version, ports, words, path
        self.archive = zipfile.ZipFile(path)
        self.names = self.archive.namelist()
        self.root = ET.fromstring(self.archive.read("modelDescription.xml"))
        text = re.sub(r"^\s*//.*$", "", (EXAMPLES / f"{scenario}.json").read_text(encoding="utf-8"), flags=re.M)
        self.scenario = json.loads(text)
        self.variables = list(self.root.find("ModelVariables"))

    def kind(self, variable):
        return variable[0].tag if self.version == 2 else variable.tag

    def numbers(self, variable):
        """The element that has unit and start."""
        return variable[0] if self.version == 2 else variable

    def named(self, name):
        found = [variable for variable in self.variables if variable.get("name") == name]
        assert len(found) == 1, name
        return found[0]


def test_archive(fmu):
    assert fmu.archive.testzip() is None
    assert len(set(fmu.names)) == len(fmu.names)
    assert not [name for name in fmu.names if "\\" in name or name.startswith("/")]
    identifier = fmu.root.find("CoSimulation").get("modelIdentifier")
    folder = "linux64" if fmu.version == 2 else "x86_64-linux"
    binary = fmu.archive.read(f"binaries/{folder}/{identifier}.so")
    assert binary[:4] == b"\x7fELF" and struct.unpack_from("<H", binary, 18)[0] == 62  # for x86-64
    picture = "model.png" if fmu.version == 2 else "terminalsAndIcons/icon.png"
    assert fmu.archive.read(picture)[:8] == b"\x89PNG\r\n\x1a\n"
    assert ("documentation/externalDependencies.txt" in fmu.names) == ("--simulator" not in fmu.words)
    assert ("terminalsAndIcons/terminalsAndIcons.xml" in fmu.names) == (fmu.version == 3)
    for name in ("packing.json", "scenario.json", "geometry.obj"):
        assert f"resources/{name}" in fmu.names


def test_documentation(fmu):
    page = ET.fromstring(fmu.archive.read("documentation/index.html").decode().replace("<!DOCTYPE html>", ""))
    listed = {code.text.split("[")[0] for code in page.iter("code")}
    assert listed == {variable.get("name").split("[")[0] for variable in fmu.variables}
    image = page.find(".//img").get("src")
    assert image.removeprefix("../") in fmu.names


def test_schema(fmu):
    if not SCHEMAS.is_dir():
        pytest.skip(f"left out: there are no official schemas in {SCHEMAS}")
    if not shutil.which("xmllint"):
        pytest.skip("left out: xmllint is not installed")
    documents = {"modelDescription.xml": f"{fmu.version}.0/fmi{fmu.version}ModelDescription.xsd"}
    if fmu.version == 3:
        documents["terminalsAndIcons/terminalsAndIcons.xml"] = "3.0/fmi3TerminalsAndIcons.xsd"
    for name, schema in documents.items():
        done = subprocess.run(["xmllint", "--noout", "--schema", SCHEMAS / schema, "-"], input=fmu.archive.read(name),
                              capture_output=True, check=False)
        assert done.returncode == 0, done.stderr.decode()


def test_references_and_names_are_unique(fmu):
    for key in ("name", "valueReference"):
        values = [variable.get(key) for variable in fmu.variables]
        assert len(set(values)) == len(values)
    structured = r"[A-Za-z_]\w*(\.[A-Za-z_]\w*)*(\[\d+\])?"
    assert fmu.root.get("variableNamingConvention") == "structured"
    for variable in fmu.variables:
        assert re.fullmatch(structured, variable.get("name"))
        assert variable.get("description")


def test_units_are_declared_and_used(fmu):
    units = {unit.get("name"): [shown.get("name") for shown in unit.findall("DisplayUnit")]
             for unit in fmu.root.find("UnitDefinitions")}
    assert len(units) == len(list(fmu.root.find("UnitDefinitions")))
    for variable in fmu.variables:
        numbers = fmu.numbers(variable)
        if fmu.kind(variable) in ("Real", "Float64") and ".orientation" not in variable.get("name"):
            assert numbers.get("unit") in units, variable.get("name")
        if numbers.get("displayUnit"):
            assert numbers.get("displayUnit") in units[numbers.get("unit")]


def test_one_independent_variable(fmu):
    independent = [variable for variable in fmu.variables if variable.get("causality") == "independent"]
    assert [variable.get("name") for variable in independent] == ["time"]
    assert independent[0].get("variability") == "continuous" and independent[0].get("initial") is None
    assert fmu.numbers(independent[0]).get("start") is None


def test_starts(fmu):
    """What is set from outside has a start value; what is calculated has none."""
    for variable in fmu.variables:
        numbers = fmu.numbers(variable)
        start = numbers.get("start")
        if fmu.version == 3 and fmu.kind(variable) == "String":
            start = numbers.find("Start").get("value")
        assert (start is not None) == (variable.get("causality") in ("input", "parameter")), variable.get("name")
        if variable.get("causality") == "output":
            assert variable.get("initial") == "calculated"
        if fmu.version == 3 and numbers.find("Dimension") is not None and start is not None:
            assert len(start.split()) == int(numbers.find("Dimension").get("start"))


def test_structure_is_complete(fmu):
    """All outputs are listed, in their order; all are unknown at the start, and none depends on an input of its step."""
    outputs = [i for i, variable in enumerate(fmu.variables) if variable.get("causality") == "output"]
    structure = fmu.root.find("ModelStructure")
    if fmu.version == 2:
        listed, initial = list(structure.find("Outputs")), list(structure.find("InitialUnknowns"))
        wanted = [str(i + 1) for i in outputs]
        key = "index"
    else:
        listed, initial = structure.findall("Output"), structure.findall("InitialUnknown")
        wanted = [fmu.variables[i].get("valueReference") for i in outputs]
        key = "valueReference"
    assert [unknown.get(key) for unknown in listed] == wanted
    assert [unknown.get(key) for unknown in initial] == wanted
    assert all(unknown.get("dependencies") == "" for unknown in listed)
    # Loads follow from the inputs at the start.
    assert [unknown.get("dependencies") for unknown in initial].count("") == 3


def test_capabilities(fmu):
    node = fmu.root.find("CoSimulation")
    assert fmu.root.find("ModelExchange") is None
    assert node.get("needsExecutionTool") == ("false" if "--simulator" in fmu.words else "true")
    assert node.get("canHandleVariableCommunicationStepSize") == "true"
    states = [name for name in node.keys() if "FMUstate" in name or "FMUState" in name]
    assert len(states) == 2 and all(node.get(name) == "false" for name in states)
    assert node.get("canBeInstantiatedOnlyOncePerProcess") == "false"
    if fmu.version == 2:
        assert node.get("canInterpolateInputs") == "true" and node.get("canRunAsynchronuously") == "false"
    else:
        assert node.get("mightReturnEarlyFromDoStep") == "false" and node.get("hasEventMode") == "false"


def test_experiment(tmp_path):
    scenario, path = EXAMPLES / "axial-coupling/torque.json", tmp_path / "steps.fmu"
    for words, step in (([], "0.01"), (["--step", "0.0125"], "0.0125")):
        assert run(scenario, "-o", path, *words).returncode == 0
        root = ET.fromstring(zipfile.ZipFile(path).read("modelDescription.xml"))
        assert root.find("DefaultExperiment").attrib == {"startTime": "0", "stopTime": "0.24", "stepSize": step}


#: Members of the ports, by the kind of joint.
MEMBERS = {
    "hinge": {"angle", "angularVelocity", "torque"},
    "slider": {"displacement", "velocity", "force"},
    "cylinder": {"angle", "displacement", "angularVelocity", "velocity", "torque", "force"},
    "ball": {"orientation", "angularVelocity", "torque"},
    "free": {"displacement", "orientation", "velocity", "angularVelocity", "force", "torque"},
    "body": {"position", "orientation", "velocity", "angularVelocity", "force", "torque"},
}
VECTORS = {"orientation": 4}


def wanted_ports(fmu):
    if fmu.ports == "poses":
        return {body["name"]: "body" for body in fmu.scenario["bodies"]}
    return {joint["name"]: joint["type"] for joint in fmu.scenario["joints"]}


def test_ports(fmu):
    found = {}
    for variable in fmu.variables:
        if "." in variable.get("name"):
            port, member = variable.get("name").split(".")
            found.setdefault(port, {}).setdefault(member.split("[")[0], []).append(variable)
    assert {port: set(members) for port, members in found.items()} == {
        port: MEMBERS[kind] for port, kind in wanted_ports(fmu).items()}
    for port, kind in wanted_ports(fmu).items():
        for member, variables in found[port].items():
            size = VECTORS.get(member, 3) if kind in ("ball", "free", "body") else 1
            if fmu.version == 2:
                assert len(variables) == size
            else:
                dimension = variables[0].find("Dimension")
                assert (1 if dimension is None else int(dimension.get("start"))) == size
            causality = "output" if member in ("force", "torque") else "input"
            assert {variable.get("causality") for variable in variables} == {causality}


def test_terminals(fmu):
    if fmu.version == 2:
        return
    terminals = ET.fromstring(fmu.archive.read("terminalsAndIcons/terminalsAndIcons.xml")).find("Terminals")
    assert {terminal.get("name") for terminal in terminals} == set(wanted_ports(fmu))
    for terminal in terminals:
        for member in terminal:
            name = f"{terminal.get('name')}.{member.get('memberName')}"
            assert member.get("variableName") == name and fmu.named(name) is not None


@pytest.mark.parametrize("version", [2, 3])
def test_equal_inputs_give_equal_files(version, tmp_path):
    scenario, ports, words = CASES[0]
    first = pack(version, scenario, ports, tuple(words))
    again = tmp_path / first.name
    done = run(EXAMPLES / f"{scenario}.json", "-o", again, "--fmi", version, "--interface", ports, *words)
    assert done.returncode == 0, done.stderr
    assert again.read_bytes() == first.read_bytes()


def test_tokens_tell_fmus_apart():
    tokens = set()
    for version, scenario, ports, words in ALL:
        root = ET.fromstring(zipfile.ZipFile(pack(version, scenario, ports, tuple(words))).read("modelDescription.xml"))
        tokens.add(root.get("guid" if version == 2 else "instantiationToken"))
    assert len(tokens) == len(ALL)


def test_windows_binary_with_simulator_has_its_manifest(tmp_path):
    dll = tmp_path / "kinora_fmu.dll"
    dll.write_bytes(b"MZ and the rest")
    for version, folder in ((2, "win64"), (3, "x86_64-windows")):
        for words in ([], ["--simulator"]):
            path = tmp_path / "both.fmu"
            done = run(EXAMPLES / "axial-coupling/torque.json", "-o", path, "--fmi", version, "--binary", dll, *words)
            assert done.returncode == 0, done.stderr
            archive = zipfile.ZipFile(path)
            assert archive.read(f"binaries/{folder}/both.dll") == dll.read_bytes()
            manifest = f"binaries/{folder}/simulator.manifest"
            assert (manifest in archive.namelist()) == bool(words)
            if words:
                assembly = ET.fromstring(archive.read(manifest))
                space = "{urn:schemas-microsoft-com:asm.v1}"
                assert assembly.find(f"{space}file").get("name") == "both.dll"


def changed(tmp_path, change):
    """An example's scenario, changed."""
    shutil.copy(EXAMPLES / "cube-magnets/cube-magnets.obj", tmp_path)
    text = re.sub(r"^\s*//.*$", "", (EXAMPLES / "cube-magnets/scenario.json").read_text(encoding="utf-8"), flags=re.M)
    document = json.loads(text)
    change(document)
    path = tmp_path / "changed.json"
    path.write_text(json.dumps(document), encoding="utf-8")
    return path


@pytest.mark.parametrize("words, change, told", [
    (["--fmi", "1"], None, "--fmi"),
    (["--interface", "wires"], None, "--interface"),
    (["--step", "0"], None, "--step"),
    (["--binary", "nowhere.dll"], None, "nowhere.dll"),
    (["--binary", __file__], None, "neither a DLL"),
    ([], lambda scenario: scenario["geometry"].update(file="lost.obj"), "lost.obj"),
    ([], lambda scenario: scenario["bodies"][0].update(objects=["lost"]), "lost"),
    ([], lambda scenario: scenario["solver"].update(step="two"), "two"),
    (["--interface", "joints"], lambda scenario: scenario.pop("joints"), "no joints"),
])
def test_bad_input(tmp_path, words, change, told):
    scenario = changed(tmp_path, change or (lambda scenario: None))
    path = tmp_path / "kept.fmu"
    path.write_text("what was there before", encoding="utf-8")
    done = run(scenario, "-o", path, *words)
    assert done.returncode == 2
    assert told in done.stderr and done.stderr.startswith("error: ")
    assert path.read_text(encoding="utf-8") == "what was there before"
    assert sorted(entry.name for entry in tmp_path.iterdir()) == ["changed.json", "cube-magnets.obj", "kept.fmu"]


def test_an_archive_that_cannot_be_written(tmp_path):
    done = run(changed(tmp_path, lambda scenario: None), "-o", tmp_path / "no folder" / "x.fmu")
    assert done.returncode == 1 and "no folder" in done.stderr


def test_without_joints_its_bodies_are_connected(tmp_path):
    path = tmp_path / "2 cubes.fmu"
    assert run(changed(tmp_path, lambda scenario: scenario.pop("joints")), "-o", path).returncode == 0
    root = ET.fromstring(zipfile.ZipFile(path).read("modelDescription.xml"))
    assert root.get("modelName") == "_2_cubes"
    assert [v.get("name") for v in root.iter("ScalarVariable") if v.get("name").startswith("upper.position")] == [
        f"upper.position[{i}]" for i in (1, 2, 3)]


def drive(*words):
    """Rows of the example that drives a load through the coupling."""
    fmu = pack(2, "axial-coupling/following", "joints", ("--simulator",))
    done = subprocess.run(["/usr/bin/python3", EXAMPLES / "fmu/drive.py", fmu, *words], capture_output=True, text=True,
                          check=True)
    assert done.stderr == ""
    head, *rows = done.stdout.splitlines()
    return [dict(zip(head.split(","), map(float, row.split(",")))) for row in rows]


def test_driving_a_load():
    rows = drive()
    last = rows[-1]
    # Both inertias as one: 0.6 N m / (0.02 N m s) (1 - exp(-t / 0.05 s))
    assert (last["driver.speed"] + last["driven.speed"]) / 2 == pytest.approx(30 * (1 - math.exp(-0.24 / 0.05)), rel=0.01)
    assert last["driven.torque"] == pytest.approx(0.6, abs=0.03)
    lagging = drive("--without-speeds")

    def swing(of):
        ahead = [row["driver.angle"] - row["driven.angle"] for row in of if row["time"] > 0.15]
        return max(ahead) - min(ahead)
    # It dies down, and grows when the torque lags.
    assert swing(rows) < 0.4 * swing(lagging)
