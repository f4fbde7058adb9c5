"""A job: some runs, one after the other, wherever the engine has it done."""

from __future__ import annotations

import os
import subprocess
import time
from pathlib import Path
from typing import Any

from .document import read_json
from .errors import StudyError
from .files import write_json
from .host import without_error
from .table import failure_file, result_file

# How long a run is waited for that another process works on: a job that was started again elsewhere.
OTHERS_SECONDS = 600.0
BAD_INPUT = 2
LAST_LINES = 20


class Worker:
    """Does the runs of a job."""

    def __init__(self, plan: dict[str, Any], study_folder: Path) -> None:
        self._plan = plan
        self._runs = study_folder / "runs"
        self._environment = os.environ | plan["environment"]

    def do(self, names: list[str]) -> bool:
        """Does what has no result yet; a run that fails does not stop the others. True when all have theirs."""
        return all([self._do_one(self._runs / name) for name in names])

    def _do_one(self, folder: Path) -> bool:
        if result_file(folder).exists():
            return True
        earlier = read_json(failure_file(folder)) if failure_file(folder).exists() else {}
        status, text = self._run(folder)
        # The result alone counts: a process that was killed may end with any status.
        if result_file(folder).exists():
            failure_file(folder).unlink(missing_ok=True)
            return True
        lines = without_error(text).splitlines()[-LAST_LINES:]
        message = "\n".join(lines) or f"kinora-run ended with {status} and said nothing"
        write_json(failure_file(folder), {"status": status, "message": message, "tries": earlier.get("tries", 0) + 1})
        return False

    def _run(self, folder: Path) -> tuple[int, str]:
        goes_on = any(folder.glob("*.state.json"))
        status, text = self._call(folder, "--resume" if goes_on else "--overwrite")
        patience = time.monotonic() + OTHERS_SECONDS
        while "another run works in this folder" in text and time.monotonic() < patience:
            time.sleep(1)
            status, text = self._call(folder, "--resume")
        if goes_on and status == BAD_INPUT and not result_file(folder).exists():
            status, text = self._call(folder, "--overwrite")
        return status, text

    def _call(self, folder: Path, how: str) -> tuple[int, str]:
        command = [self._plan["host"], self._plan["scenario"], "--parameters", str(folder / "inputs.json"),
                   "--out", str(folder), "--result", str(result_file(folder)), how]
        if self._plan["report"]:
            command.append("--report")
        log = folder / "run.log"
        try:
            with log.open("wb") as stream:
                status = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=stream, stderr=subprocess.PIPE,
                                        env=self._environment, check=False)
                stream.write(status.stderr)
        except OSError as error:
            raise StudyError(f"{log}: {error.strerror}.") from None
        return status.returncode, status.stderr.decode("utf-8", "replace")


def do_job(study_folder: Path, batch: int) -> bool:
    """Does a batch of the plan. True when all of its runs have their results."""
    jobs = study_folder / "jobs"
    names = (jobs / f"{batch}.txt").read_text(encoding="ascii").split()
    return Worker(read_json(jobs / "plan.json"), study_folder).do(names)
