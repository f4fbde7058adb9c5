"""What is wrong is told: what, where and what to do; nothing is lost."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path
from typing import Any

import pytest
from conftest import StudyFolder

CASES: list[tuple[dict[str, Any], dict[str, Any], str]] = [
    ({"gapp": [1]}, {}, '/parameters/gapp: the scenario has no parameter "gapp", and no "set" says what it is. Did you '
                        'mean "gap"?'),
    ({"gap": {"from": 1, "to": 1, "count": 3}}, {}, "/parameters/gap: the range is empty: it goes from 1 to 1."),
    ({"gap": {"from": 1, "to": 2, "count": 0}}, {}, "/parameters/gap/count: a whole number of 1 or more is wanted."),
    ({"gap": {"from": 1, "to": 2}}, {}, "/parameters/gap/count: a whole number of 1 or more is wanted."),
    ({"gap": {"from": 0, "to": 2, "count": 3, "spacing": "log"}}, {}, "a logarithmic range lies above 0."),
    ({"gap": []}, {}, "/parameters/gap/values: a list with at least one value is wanted."),
    ({"gap": [1, 1]}, {}, "/parameters/gap/values: a value stands twice."),
    ({"gap": [1, {}]}, {}, "either numbers and formulas are wanted, or texts."),
    ({"gap": {"normal": {"mean": 1, "deviation": 0}}}, {}, "the standard deviation must be more than 0."),
    ({"gap": {"uniform": {"from": 2, "to": 1}}}, {}, '"from" must be less than "to".'),
    ({"gap": {"values": [1], "from": 2}}, {}, 'one of "values", "from", "normal" and "uniform" is wanted.'),
    ({"gap": {"from": "4*m", "to": 1, "count": 2}}, {}, '/parameters/gap/from: formula "4*m": "m" is not known here.'),
    ({"gap": [1]}, {"design": "gridd"}, "/design: one of grid, list, random, latin-hypercube is wanted. Did you mean"),
    ({"gap": [1]}, {"designs": "grid"}, '/designs: the key "designs" is unknown here. Did you mean "design"?'),
    ({"gap": [1, 2], "angle": [1]}, {"design": "list"}, "are equally long; these are not: gap 2, angle 1."),
    ({"gap": [1]}, {"results": ["summ"]}, '/results: the scenario has no result "summ". Did you mean "sum"?'),
    ({"gap": [1]}, {"goals": {"sum": "most"}}, "/goals/sum: one of greatest, least is wanted."),
    ({"gap": [1]}, {"results": []}, "/results: at least one result is wanted"),
    ({"gap": [1]}, {"results": {"end": {"column": "x", "take": "at"}}}, '/results/end: "time" goes with "take": "at"'),
    ({"gap": [1]}, {"results": {"end": {"take": "last"}}}, "/results/end/column: a text is wanted."),
    ({"gap": [1]}, {"results": {"end": {"column": "x", "take": "last"}}, "goals": {"sum": "least"}},
     "/goals/sum: it is none of the results."),
    ({"gap": [1]}, {"goals": {"other": "least"}}, 'has no result "other"'),
    ({"gap": [1]}, {"scenario": "missing.json"}, "missing.json: cannot be read"),
    ({"gap": [1]}, {"set": {"other": 1}}, 'the scenario has no parameter "other"'),
    ({}, {}, "/parameters: at least one parameter is wanted."),
]


@pytest.mark.parametrize(("parameters", "more", "message"), CASES)
def test_a_wrong_study_is_refused(
    study: StudyFolder, parameters: dict[str, Any], more: dict[str, Any], message: str
) -> None:
    study.study(parameters, **more)
    assert message in study.refusal()
    assert not study.runs.exists()


def test_everything_wrong_is_told_at_once(study: StudyFolder) -> None:
    study.study({"gap": [], "angle": {"from": 1}}, runs=0)
    lines = study.refusal().splitlines()
    assert len(lines) == 4 and all(str(study.file) in line for line in lines)


def test_a_thousand_million_runs_are_a_slip(study: StudyFolder) -> None:
    many = {"from": 0, "to": 1, "count": 1000}
    study.study({"gap": many, "angle": many, "name": many})
    told = study.refusal("expand", "--yes")
    assert "that would be 1,000,000,000 runs (gap: 1,000 x angle: 1,000 x name: 1,000)" in told
    assert "10,000,000 at most" in told and "--yes makes more than 10,000" in study.refusal()
    study.study({"gap": many, "angle": {"from": 0, "to": 1, "count": 11}})
    assert "11,000 runs" in study.refusal() and "--yes" in study.refusal()
    study.study({"gap": many | {"count": 10**9}})
    assert "1,000,000,000 runs (gap: 1,000,000,000)" in study.refusal()
    study.study({"gap": {"uniform": {"from": 0, "to": 1}}}, design="random", runs=10**9)
    assert "1,000,000,000 runs (samples: 1,000,000,000)" in study.refusal()


@pytest.mark.parametrize("folder", [".", "..", "sub/.."])
def test_a_study_does_not_live_among_other_files(study: StudyFolder, folder: str) -> None:
    study.study({"gap": [1]}, folder=folder)
    assert "/folder: a folder of the study's own is wanted" in study.refusal()


def test_a_folder_of_somebody_else_is_left_alone(study: StudyFolder) -> None:
    study.study({"gap": [1]}, folder="other")
    (study.folder / "other" / "jobs").mkdir(parents=True)
    (study.folder / "other" / "jobs" / "mine").touch()
    assert "it has files that a study would replace" in study.refusal("run")
    assert (study.folder / "other" / "jobs" / "mine").exists()
    (study.folder / "other" / "study.json").write_text('{"mine": 1}', encoding="ascii")
    assert "not what a study leaves in its folder" in study.refusal("run")
    assert (study.folder / "other" / "study.json").read_text(encoding="ascii") == '{"mine": 1}'


def test_no_json_is_told_with_its_line(study: StudyFolder) -> None:
    text = '{ // a comment with "quotes\n "scenario": "http://x", /* {\n */ "parameters": }'
    study.file.write_text(text, encoding="utf-8")
    assert "gaps.study.json:3: not valid JSON" in study.refusal()
    study.file.write_text('{"title": "a", "title": "b"}', encoding="utf-8")
    assert 'the key "title" stands twice' in study.refusal()


def test_missing_programs_are_named(study: StudyFolder) -> None:
    study.study({"gap": [1]})
    assert "apt install snakemake" in subprocess.run(
        ["/usr/bin/python3", "study/kinora-study", "run", str(study.file)], cwd=Path(__file__).parents[2],
        env=study.environment() | {"PATH": "/nowhere"} | {"KINORA_RUN": str(only_python(study))},
        capture_output=True, encoding="utf-8", check=False).stderr
    study.host = Path("/nowhere/kinora-run")
    assert "/nowhere/kinora-run: there is no such program" in study.refusal()


def only_python(study: StudyFolder) -> Path:
    """The stand-in, started without looking for Python on the path."""
    script = study.folder / "host"
    script.write_text(f'#!/bin/sh\nexec /usr/bin/python3 "{study.host}" "$@"\n', encoding="ascii")
    script.chmod(0o755)
    return script


@pytest.mark.skipif(os.geteuid() != 0, reason="only root mounts a small disk")
def test_a_full_disk_loses_nothing(study: StudyFolder) -> None:
    small = study.folder / "small"
    small.mkdir()
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=300k", "tmpfs", str(small)], check=False).returncode != 0:
        pytest.skip("no small disk can be mounted here")
    try:
        study.study({"gap": [1, 2]}, folder="small")
        study.good("run", "--cores", "1")
        study.good("collect")
        table = (small / "results.csv").read_text(encoding="utf-8")
        filled = small / "filler"
        with filled.open("wb", buffering=0) as stream:
            try:
                while stream.write(b"x" * 512):
                    pass
            except OSError:
                pass
        study.study({"gap": [1, 2, 3]}, folder="small")
        for words in (["collect"], ["run", "--cores", "1"]):
            ended = study.call(*words)
            assert ended.returncode == 1 and "No space left" in ended.stderr and "Traceback" not in ended.stderr
        assert (small / "results.csv").read_text(encoding="utf-8") == table
        assert not list(small.rglob("*.new"))
        filled.unlink()
        study.good("run", "--cores", "1")
    finally:
        subprocess.run(["umount", str(small)], check=True)
