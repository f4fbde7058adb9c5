"""The driver for Dakota, called with files as Dakota writes them."""

from __future__ import annotations

import json
import subprocess
from pathlib import Path

import numpy
import pytest
from conftest import ROOT, StudyFolder, kinora_run

FOLDER = ROOT / "examples/study-dakota"
SCENARIO = str(ROOT / "examples/study-coupling/coupling.json")


class Dakota:
    """As much of it as calls a driver."""

    def __init__(self, folder: Path, host: Path, scenario: str) -> None:
        self.study = StudyFolder(folder, host)
        self.scenario = scenario
        self.evaluations = 0
        self.told = ""

    def evaluate(self, variables: dict[str, float], responses: dict[str, int]) -> str:
        """What the driver leaves in the file of results."""
        self.evaluations += 1
        work = self.study.folder / f"run.{self.evaluations}"
        work.mkdir(exist_ok=True)
        lines = [(f"{len(variables)}", "variables"), *((f"{value:.15e}", name) for name, value in variables.items()),
                 (f"{len(responses)}", "functions"),
                 *((f"{asked}", f"ASV_{i}:{name}") for i, (name, asked) in enumerate(responses.items(), 1)),
                 (f"{len(variables)}", "derivative_variables"),
                 *((f"{i}", f"DVV_{i}:{name}") for i, name in enumerate(variables, 1)),
                 ("1", "analysis_components"), (self.scenario, "AC_1:driver.py"), (f"{self.evaluations}", "eval_id")]
        (work / "params.in").write_text("".join(f"{value:>40} {tag}\n" for value, tag in lines), encoding="ascii")
        ended = subprocess.run([str(FOLDER / "driver.py"), "params.in", "results.out"], cwd=work, check=False,
                               env=self.study.environment(), capture_output=True, encoding="utf-8", timeout=60)
        assert ended.returncode == 0, ended.stderr
        self.told = ended.stderr
        assert not list(work.glob("*.new"))
        return (work / "results.out").read_text(encoding="ascii")

    def values(self, variables: dict[str, float], *names: str) -> list[float]:
        """The values of responses, in their order."""
        rows = [line.split() for line in self.evaluate(variables, {name: 1 for name in names}).splitlines()]
        assert [name for _, name in rows] == list(names)
        return [float(value) for value, _ in rows]


def test_least_squares_find_where_the_disc_stands(tmp_path: Path) -> None:
    measured = [float(word) for word in (FOLDER / "measured.dat").read_text(encoding="ascii").split()]
    dakota = Dakota(tmp_path, kinora_run(), SCENARIO)

    def misfit(at: numpy.ndarray) -> numpy.ndarray:
        values = dakota.values({"gap": at[0], "angle": at[1]}, "torque", "pull")
        return numpy.array(values) - measured

    at = numpy.array([4e-3, 0.1])
    for _ in range(5):
        residual = misfit(at)
        slopes = [(misfit(at + step) - residual) / step.max() for step in numpy.diag(1e-3 * at)]
        at = at - numpy.linalg.solve(numpy.array(slopes).T, residual)
    assert at == pytest.approx([5e-3, numpy.deg2rad(10)], rel=1e-4)


def test_what_fails_is_told_as_fail(tmp_path: Path) -> None:
    dakota = Dakota(tmp_path, kinora_run(), SCENARIO)
    assert dakota.evaluate({"gap": -8e-3, "angle": 0}, {"torque": 1}) == "fail\n"
    assert "overlap" in dakota.told
    assert dakota.evaluate({"gapp": 4e-3}, {"torque": 1}) == "fail\n"
    assert 'Did you mean "gap"?' in dakota.told


@pytest.mark.parametrize("scenario, responses, message", [
    ("scenario.json", {"sum": 3}, "sum: only values can be had"),
    ("scenario.json", {"torque": 1}, "gives no result torque; it has sum"),
    ("nowhere.json", {"sum": 1}, "nowhere.json"),
])
def test_what_cannot_be_had_is_told(tmp_path: Path, scenario: str, responses: dict[str, int], message: str) -> None:
    dakota = Dakota(tmp_path, Path(__file__).with_name("stand_in.py"), str(tmp_path / scenario))
    assert dakota.evaluate({"gap": 1}, responses) == "fail\n"
    assert message in dakota.told


def test_a_result_of_another_evaluation_does_not_count(tmp_path: Path) -> None:
    dakota = Dakota(tmp_path, Path(__file__).with_name("stand_in.py"), str(tmp_path / "scenario.json"))
    dakota.study.scenario("silent")
    old = tmp_path / "run.1" / "run"
    old.mkdir(parents=True)
    (old / "result.json").write_text(json.dumps({"status": "complete", "results": {"sum": 5}}), encoding="ascii")
    assert dakota.evaluate({"gap": 1}, {"sum": 1}) == "fail\n"
