"""kinora-run, as a program."""

from __future__ import annotations

import json
import os
import shutil
import subprocess
from pathlib import Path
from typing import Any

from .errors import InputError, StudyError
from .places import HOST


def find_host(given: str | None) -> Path:
    """kinora-run: as given, as KINORA_RUN names it, beside this program, in the build tree, on the PATH.

    Raises InputError.
    """
    named = given or os.environ.get("KINORA_RUN")
    if named:
        if not Path(named).is_file():
            raise InputError(f"{named}: there is no such program; --kinora-run or KINORA_RUN names kinora-run.")
        return Path(named).resolve()
    if HOST.is_file():
        return HOST
    on_path = shutil.which("kinora-run")
    if not on_path:
        raise InputError("kinora-run is not found; build it (README.md), or name it with --kinora-run or KINORA_RUN.")
    return Path(on_path).resolve()


def without_error(text: str) -> str:
    """A program's message without the word that it begins with."""
    return text.strip().removeprefix("error: ")


def ask_declarations(host: Path, scenario: Path, inputs: Path | None, environment: dict[str, str]) -> dict[str, Any]:
    """What a scenario declares, with the inputs of a run: parameters and results.

    Raises InputError in the words of kinora-run.
    """
    command = [str(host), str(scenario), "--print-parameters"]
    if inputs:
        command += ["--parameters", str(inputs)]
    try:
        asked = subprocess.run(command, capture_output=True, encoding="utf-8", errors="replace", check=False,
                               env=os.environ | environment)
    except OSError as error:
        raise StudyError(f"{host}: cannot be started ({error.strerror}).") from None
    if asked.returncode != 0:
        raise InputError(without_error(asked.stderr) or f"{host}: ended with {asked.returncode} and said nothing.")
    declared: dict[str, Any] = json.loads(asked.stdout)
    return declared
