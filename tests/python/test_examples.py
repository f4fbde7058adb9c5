"""The examples of examples/python, each run small, against formulas that have nothing to do with the simulator."""

import math
import re
import sys
from pathlib import Path

import magnets
import pytest

np = pytest.importorskip("numpy")
pytest.importorskip("matplotlib")
pytest.importorskip("scipy")

ROOT = Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "examples" / "python"))
import axial_rings  # noqa: E402
import common  # noqa: E402
import force_map  # noqa: E402
import optimise_coupling  # noqa: E402

HALF = (0.005, 0.005, 0.005)


def columns(path):
    return np.loadtxt(path, delimiter=",", skiprows=1)


def ring_charges(poles, middle, twist, sectors):
    """Places and charges of the faces of so many of a round ring's sectors, magnetised to 1 T along z in turns."""
    width, pole = axial_rings.OUTER - axial_rings.INNER, 2 * math.pi / poles
    places, charges = [], []
    for index in range(sectors):
        for s, weight_s in magnets.gauss_legendre(14):
            radius = axial_rings.INNER + width * (1 + s) / 2
            for t, weight_t in magnets.gauss_legendre(112 // poles):
                angle = pole * (index + (1 + t) / 2) + twist
                area = weight_s * weight_t * width / 2 * pole / 2 * radius
                for end in (-1, 1):
                    height = middle + end * axial_rings.THICKNESS / 2
                    places.append((radius * math.cos(angle), radius * math.sin(angle), height))
                    charges.append(end * (-1) ** index * area)
    return np.array(places), np.array(charges)


def round_torque(poles, gap, twist):
    """Coulomb's law: what the driven ring is held back with; its sectors all feel the same."""
    sources, strengths = ring_charges(poles, 0.0, 0.0, poles)
    places, charges = ring_charges(poles, axial_rings.THICKNESS + gap, twist, 1)
    away = places[:, np.newaxis] - sources
    field = np.einsum("ijk,ij->ik", away, strengths * np.einsum("ijk,ijk->ij", away, away) ** -1.5)
    force = charges[:, np.newaxis] * field / (4 * math.pi * magnets.MU0)
    return -poles * float(np.sum(places[:, 0] * force[:, 1] - places[:, 1] * force[:, 0]))


@pytest.mark.parametrize("turn", [0, 180, 30])
def test_the_force_map_has_the_forces_of_charged_faces(turn, tmp_path, capsys):
    picture = tmp_path / "made" / "map.png"
    assert force_map.main(["--points", "5", "--turn", str(turn), "--out", str(picture)]) == 0
    rows = columns(picture.with_suffix(".csv"))
    side = (-0.030, -0.015, 0.0, 0.015, 0.030)
    # Along z the magnets keep their gap at 15 mm, whatever the turn; in the middle they would be in one place.
    assert rows[:, :3].tolist() == [[x, 0.0, z] for z in side for x in side if (x, z) != (0.0, 0.0)]
    fixed = magnets.block_charges((0.0, 0.0, 0.0), HALF, 2, 1.0, 8)
    turned = magnets.rotation((0, 1, 0), math.radians(turn))
    for row in rows:
        place = lambda point: row[:3] + magnets.turned(turned, point)  # noqa: E731
        moved = magnets.block_charges((0.0, 0.0, 0.0), HALF, 2, 1.0, 8, place)
        expected = magnets.charge_load(fixed, moved, (0.0, 0.0, 0.0))[0]
        assert row[3:] == pytest.approx(expected, abs=1e-4 * np.linalg.norm(expected))
    assert picture.read_bytes().startswith(b"\x89PNG")
    told = re.search(r"largest deviation from the closed form: (\S+) % of the force", capsys.readouterr().out)
    assert (told is not None) == (turn in (0, 180))
    assert told is None or float(told[1]) < 1e-4


def test_the_found_coupling_is_the_one_with_the_largest_gap(tmp_path, capsys):
    picture = tmp_path / "coupling.png"
    wanted = 1.0
    options = ["--points", "3", "--poles", "4", "6", "--torque", str(wanted), "--out", str(picture)]
    assert optimise_coupling.main(options) == 0
    told = capsys.readouterr().out
    gaps = {int(poles): float(gap) / 1000 for poles, gap in re.findall(r"(\d+) poles: .* over a gap of (\S+) mm", told)}
    # Between like and unlike poles opposite: half a pole's angle, pi / poles, has the largest torque.
    for poles, gap in gaps.items():
        assert round_torque(poles, gap, math.pi / poles) == pytest.approx(wanted, rel=2e-3)
    best = max(gaps, key=gaps.__getitem__)
    assert sorted(gaps) == [4, 6] and best == 6
    found = rf"best: 6 poles over a gap of {1000 * gaps[6]:.3f} mm, 1\.000\d N m at a twist of (29\.9|30\.0)\d degrees"
    assert re.search(found, told)
    assert abs(float(re.search(r"with 192 sides instead of 48: .*\(([-+]\S+) %\)", told)[1])) < 0.05

    curves = columns(picture.with_suffix(".csv"))
    assert curves[:, 0].tolist() == [0.001, 0.005477, 0.030]
    for gap, *torques in curves[1:]:  # over 1 mm the quadrature of the reference is too coarse
        for poles, torque in zip((4, 6), torques):
            assert torque == pytest.approx(round_torque(poles, gap, math.pi / poles), rel=2e-3)
    for twist, torque in columns(picture.with_suffix(".twist.csv"))[::7]:
        assert torque == pytest.approx(round_torque(6, gaps[6], twist), abs=2e-3)
    assert picture.read_bytes().startswith(b"\x89PNG")


def test_a_torque_beyond_all_couplings_fails(tmp_path):
    words = "99 N m is in none of these ranges: choose another --torque, or other --poles"
    with pytest.raises(SystemExit, match=words):
        optimise_coupling.main(["--points", "2", "--poles", "2", "--torque", "99", "--out", str(tmp_path / "none.png")])
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize(
    "program, options, words",
    [
        (force_map, ["--points", "2"], "--points is 2, and must be 3 or more"),
        (force_map, ["--out", "map.csv"], '"map.csv" is no picture; let it end in .png, .pdf, .svg'),
        (force_map, ["--gap", "0"], "--gap is 0 mm, and must be from 0.01 to 1000"),
        (force_map, ["--size", "20"], "--size is 20 mm, and must be from 24 to 1000"),
        (optimise_coupling, ["--poles", "4", "7"], "--poles has 7; each must be even"),
        (optimise_coupling, ["--torque", "nan"], "--torque is nan, and must be more than 0"),
        (optimise_coupling, ["--points", "1"], "--points is 1, and must be 2 or more"),
    ],
)
def test_wrong_options_are_refused(program, options, words, capsys):
    with pytest.raises(SystemExit) as ended:
        program.main(options)
    assert ended.value.code == 2
    assert words in capsys.readouterr().err


def test_another_desktop_fails_with_the_reason(tmp_path, capsys):
    assert force_map.main(["--points", "3", "--desktop", "None", "--out", str(tmp_path / "map.png")]) == 1
    assert 'no desktop is installed as "Pellux.VantorDesktop.None"' in capsys.readouterr().err


@pytest.mark.parametrize(
    "module, hint",
    [
        ("matplotlib", "apt install python3-matplotlib or pip install matplotlib"),
        ("scipy", "apt install python3-scipy or pip install scipy"),
        ("kinora_veltrix", "install its wheel, docs/python.md says how"),
        ("solids", f"it belongs to {common.LIBRARY}; run the example where it lies, with the rest of the project"),
    ],
)
def test_a_missing_module_is_explained(module, hint, monkeypatch, capsys):
    monkeypatch.setitem(sys.modules, module, None)
    with pytest.raises(SystemExit) as ended, common.modules():
        __import__(module)
    assert ended.value.code == 2
    assert capsys.readouterr().err == f"error: this example needs the Python module {module}: {hint}\n"
