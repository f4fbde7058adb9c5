"""A study in a folder of its own, and kinora-study to be called on it."""

from __future__ import annotations

import csv
import json
import os
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest

ROOT = Path(__file__).resolve().parents[2]
LAUNCHER = ROOT / "study" / "kinora-study"
STAND_IN = Path(__file__).resolve().parent / "stand_in.py"
sys.path[:0] = [str(ROOT / "study"), str(ROOT / "scripts" / "lib")]


def kinora_run() -> Path:
    """The program itself, where a stand-in does not do."""
    return Path(os.environ.get("KINORA_RUN", ROOT / "build/native-release/bin/kinora-run"))


class StudyFolder:
    """A study, its scenario, and what becomes of them."""

    def __init__(self, folder: Path, host: Path = STAND_IN) -> None:
        self.folder = folder
        self.host = host
        self.file = folder / "gaps.study.json"
        self.runs = folder / "gaps.study" / "runs"
        (folder / "magnets.obj").write_text("o magnet\n", encoding="ascii")
        self.scenario()

    def scenario(self, title: str = "ok", **more: Any) -> None:
        """Writes the scenario; its title tells the stand-in what to do."""
        document = {
            "title": title,
            "geometry": {"file": "magnets.obj"},
            "parameters": {"gap": 1, "angle": 0, "name": ""},
            "results": {"sum": {"column": "x", "take": "last"}},
        }
        (self.folder / "scenario.json").write_text(json.dumps(document | more), encoding="utf-8")

    def study(self, parameters: dict[str, Any], **more: Any) -> None:
        """Writes the study file."""
        document = {"scenario": "scenario.json", "parameters": parameters}
        self.file.write_text(json.dumps(document | more), encoding="utf-8")

    def environment(self) -> dict[str, str]:
        # Debian's Python first: another's wrapper may take longer to start than a test.
        path = f"/usr/bin:{os.environ['PATH']}"
        return os.environ | {"KINORA_RUN": str(self.host), "PYTHONDONTWRITEBYTECODE": "1", "PATH": path}

    def call(self, *words: str) -> subprocess.CompletedProcess[str]:
        """kinora-study with these words before the study file."""
        return subprocess.run([str(LAUNCHER), *words, str(self.file)], capture_output=True, encoding="utf-8",
                              env=self.environment(), check=False, timeout=120)

    def good(self, *words: str) -> str:
        """The output of a call that ends with 0."""
        ended = self.call(*words)
        assert ended.returncode == 0, ended.stdout + ended.stderr
        return ended.stdout

    def refusal(self, *words: str) -> str:
        """What a call that is bad input says."""
        ended = self.call(*(words or ("expand",)))
        assert ended.returncode == 2, ended.stdout + ended.stderr
        assert "Traceback" not in ended.stderr
        return ended.stderr

    def table(self, name: str = "results.csv") -> list[dict[str, str]]:
        """A table of the study's folder."""
        with (self.runs.parent / name).open(newline="", encoding="utf-8") as stream:
            return list(csv.DictReader(stream))

    def calls(self) -> int:
        """How often the host was called to do a run."""
        return sum(len(file.read_text(encoding="ascii").splitlines()) for file in self.runs.glob("*/calls"))


@pytest.fixture
def study(tmp_path: Path) -> StudyFolder:
    return StudyFolder(tmp_path)
