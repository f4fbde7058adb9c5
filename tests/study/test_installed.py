"""What is installed for the machines of a cluster: it works from a folder of its own, and makes the page."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path

import pytest
from conftest import ROOT, StudyFolder

BUILD = Path(os.environ.get("KINORA_BUILD", ROOT / "build/native-release"))


def test_an_installation_does_a_study_and_its_page(tmp_path: Path) -> None:
    first, home = tmp_path / "first", tmp_path / "installed"
    subprocess.run(["cmake", "--install", str(BUILD), "--component", "study", "--prefix", str(first)], check=True,
                   stdout=subprocess.DEVNULL)
    first.rename(home)
    study = StudyFolder(tmp_path)
    study.study({"gap": ["4*mm", "8*mm"]}, scenario=str(ROOT / "examples/study-coupling/coupling.json"),
                set={"angle": "-22.5*deg"}, goals={"torque": "greatest"})
    environment = study.environment()
    del environment["KINORA_RUN"]
    subprocess.run([str(home / "bin/kinora-study"), "--quiet", str(study.file)], env=environment, check=True, timeout=120)
    torques = [float(row["torque"]) for row in study.table()]
    assert torques == pytest.approx([1440.1, 645.8], rel=1e-3), "as the poles have it at half a pitch"
    page = (study.runs.parent / "study.html").read_text(encoding="utf-8")
    reports = [report.relative_to(study.runs.parent) for report in study.runs.glob("*/*.report.html")]
    assert len(reports) == 2 and all(str(report) in page for report in reports)
    profile = home / "share/kinora/study/profiles"
    assert os.access(profile / "slurm/status.py", os.X_OK) and os.access(profile / "wine/kinora-run-wine", os.X_OK)
