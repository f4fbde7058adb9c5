"""A job: some runs, one after the other, wherever the engine has it done."""

from __future__ import annotations

import fcntl
import os
import subprocess
import sys
import time
from pathlib import Path
from typing import IO, Any

from .document import read_json
from .errors import InputError, StudyError
from .files import write_json
from .host import without_error
from .table import failure_file, result_file

# What kinora-run locks in a run's folder as long as it lives, and says when it finds it locked.
LOCK = "kinora-run.lock"
IS_LOCKED = "another run works in this folder"
SECONDS_BETWEEN_LOOKS = 0.5
BAD_INPUT = 2
LAST_LINES = 20


def is_locked(folder: Path) -> bool:
    """Whether a kinora-run works in a folder: of a job that was started again elsewhere."""
    try:
        with (folder / LOCK).open("rb") as stream:
            fcntl.flock(stream, fcntl.LOCK_SH | fcntl.LOCK_NB)
    except FileNotFoundError:
        return False
    except BlockingIOError:
        return True
    return False


class Worker:
    """Does the runs of a job."""

    def __init__(self, plan: dict[str, Any], study_folder: Path) -> None:
        self._plan = plan
        self._runs = study_folder / "runs"
        self._environment = os.environ | plan["environment"]

    def do(self, names: list[str]) -> bool:
        """Does what has no result yet; a run that fails does not stop the others. True when all have theirs."""
        return all([self._is_done_after_try(self._runs / name) for name in names])

    def _is_done_after_try(self, folder: Path) -> bool:
        try:
            return self._do_one(folder)
        except (InputError, StudyError) as error:
            # A full disk, for instance: there may be room for the next one.
            print(f"error: {error}", file=sys.stderr)
            return False

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
        status, text = 0, IS_LOCKED
        while IS_LOCKED in text and not result_file(folder).exists():
            while is_locked(folder):
                time.sleep(SECONDS_BETWEEN_LOOKS)
            if not result_file(folder).exists():
                status, text = self._try(folder)
        return status, text

    def _try(self, folder: Path) -> tuple[int, str]:
        if any(folder.glob("*.state.json")):
            status, text = self._call(folder, "--resume")
            if status != BAD_INPUT or IS_LOCKED in text or result_file(folder).exists():
                return status, text
        return self._call(folder, "--overwrite")

    def _call(self, folder: Path, how: str) -> tuple[int, str]:
        command = [self._plan["host"], self._plan["scenario"], "--parameters", str(folder / "inputs.json"),
                   "--out", str(folder), "--result", str(result_file(folder)), how]
        if self._plan["report"]:
            command.append("--report")
        log = folder / "run.log"
        try:
            with log.open("wb") as stream:
                status, errors = self._start(command, stream)
                stream.write(errors)
        except OSError as error:
            raise StudyError(f"{log}: {error.strerror}.") from None
        return status, errors.decode("utf-8", "replace")

    def _start(self, command: list[str], stream: IO[bytes]) -> tuple[int, bytes]:
        try:
            ended = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=stream, stderr=subprocess.PIPE,
                                   env=self._environment, check=False)
        except OSError as error:
            return BAD_INPUT, f"{command[0]}: cannot be started ({error.strerror}).".encode()
        return ended.returncode, ended.stderr


def do_job(study_folder: Path, batch: int) -> bool:
    """Does a batch of the plan. True when all of its runs have their results."""
    jobs = study_folder / "jobs"
    names = (jobs / f"{batch}.txt").read_text(encoding="ascii").split()
    return Worker(read_json(jobs / "plan.json"), study_folder).do(names)
