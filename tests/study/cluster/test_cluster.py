"""A study on a cluster of Slurm whose node dies in the middle."""

from __future__ import annotations

import re
import subprocess
from pathlib import Path

import pytest
from conftest import LAUNCHER, StudyFolder

HERE = Path(__file__).resolve().parent
LEFT_OUT = 77


def test_every_run_has_its_result_although_a_node_dies(study: StudyFolder) -> None:
    study.scenario("slow:0.3")
    study.study({"gap": {"from": 1, "to": 10, "count": 10}, "angle": [1, 2, 3, 4]})
    ended = subprocess.run([HERE / "toy-cluster", HERE / "lose-a-node", LAUNCHER, study.file, "8"], encoding="utf-8",
                           capture_output=True, env=study.environment(), check=False, timeout=180)
    if ended.returncode == LEFT_OUT:
        pytest.skip(ended.stdout.strip().splitlines()[-1])
    assert ended.returncode == 0, ended.stdout + ended.stderr
    running = re.search(r"running on n1: (\d+)", ended.stdout)
    assert running and int(running[1]) > 0, "the node died while it worked"
    assert re.search(r"^n1 (down|unk)", ended.stdout, re.MULTILINE)
    study.good("collect")
    assert [float(row["sum"]) for row in study.table()] == [gap + angle for gap in range(1, 11) for angle in range(1, 5)]
    assert study.calls() >= 40
