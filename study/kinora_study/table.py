"""The table of runs: their inputs, their names, and what has become of them."""

from __future__ import annotations

import csv
import hashlib
import json
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from .design import CERTAIN, Row, rows
from .document import read_json, suggestion
from .errors import InputError
from .files import make_folder, replacing, write_json
from .host import ask_declarations
from .studyfile import Study

# What a study writes over and deletes in its folder.
OWN_NAMES = ("jobs", "runs", "runs.csv", "results.csv", "results.parquet", "study.html", "snakemake.log")

MANY = 10_000
MOST = 10_000_000


@dataclass(frozen=True)
class Run:
    """One run of a study."""

    id: str
    # Of the study's parameters.
    values: Row
    # Places of the scenario to what is put there, as kinora-run --parameters takes them.
    inputs: dict[str, Any]

    def folder(self, study_folder: Path) -> Path:
        """Where everything of the run is."""
        return study_folder / "runs" / self.id


def result_file(folder: Path) -> Path:
    """Of a run's folder: there when the run is complete, and only then."""
    return folder / "result.json"


def failure_file(folder: Path) -> Path:
    """Of a run's folder: why the last try failed."""
    return folder / "failure.json"


def require_count(study: Study, is_sure: bool) -> None:
    """Refuses a study that is larger than was meant. Raises InputError."""
    count = study.count
    factors = " x ".join([f"{name}: {len(parameter.source):,}" for name, parameter in study.parameters.items()
                          if isinstance(parameter.source, CERTAIN)] + [f"samples: {study.runs:,}"] * (study.runs > 1))
    told = f"{study.file}: that would be {count:,} runs ({factors})"
    if count > MANY and not is_sure:
        raise InputError(f"{told}; --yes makes more than {MANY:,}, up to {MOST:,}.")
    if count > MOST:
        raise InputError(f"{told}; a study has {MOST:,} at most.")


class _Filled:
    """Values put into the texts that stand for them."""

    def __init__(self, study: Study, values: Row) -> None:
        self._study = study
        self._values = values

    def inputs(self) -> dict[str, Any]:
        inputs = {path: self._fill("/set", value) for path, value in self._study.sets.items()}
        for name, parameter in self._study.parameters.items():
            for path, value in parameter.sets.items():
                inputs[path] = self._fill(f"/parameters/{name}/set", value)
        for name, definition in (self._study.results or {}).items():
            if definition is not None:
                inputs[f"results.{name}"] = definition
        return inputs

    def _fill(self, pointer: str, value: Any) -> Any:
        if not isinstance(value, str):
            return value
        name = value[1:-1]
        if value.startswith("{") and value.endswith("}") and name in self._values:
            return self._values[name]
        plain = {key: int(v) if isinstance(v, float) and v.is_integer() else v for key, v in self._values.items()}
        try:
            return value.format(**plain) if "{" in value else value
        except KeyError as error:
            key = str(error.args[0])
            raise InputError(f'{self._study.file}: {pointer}: the study has no parameter "{key}" for "{value}".'
                             f"{suggestion(key, self._values)}") from None
        except (ValueError, IndexError, AttributeError) as error:
            raise InputError(f'{self._study.file}: {pointer}: "{value}": {error}.') from None


class _Digests:
    """What stands in the files that a run is made of."""

    def __init__(self, scenario: Path) -> None:
        self._scenario = scenario
        self._known: dict[Path, str] = {}
        document = read_json(scenario)
        geometry = document.get("geometry", {}) if isinstance(document, dict) else {}
        self._geometry = str(geometry.get("file", "")) if isinstance(geometry, dict) else ""

    def of(self, inputs: dict[str, Any]) -> list[str]:
        geometry = str(inputs.get("geometry.file", inputs.get("/geometry/file", self._geometry)))
        # kinora-run tells of a scenario without one.
        files = [self._scenario, *([self._scenario.parent / geometry] if geometry else [])]
        return [self._digest(file) for file in files]

    def of_environment(self, study: Study) -> list[Any]:
        """The variables as they are written, since a study may move, and what is in the files that they name."""
        files = [Path(value) for _, value in sorted(study.variables.items())]
        return [study.environment, *(self._digest(file) for file in files if file.is_file())]

    def _digest(self, file: Path) -> str:
        if file not in self._known:
            try:
                self._known[file] = hashlib.sha256(file.read_bytes()).hexdigest()
            except OSError as error:
                raise InputError(f"{file}: cannot be read ({error.strerror}).") from None
        return self._known[file]


def _steady(value: Any) -> Any:
    """A value without its last digits: 3 mm is the same run, whichever range's rounding has made it."""
    if isinstance(value, dict):
        return {key: _steady(member) for key, member in value.items()}
    if isinstance(value, list):
        return [_steady(item) for item in value]
    return float(f"{value:.13g}") if isinstance(value, float) else value


def make_runs(study: Study) -> list[Run]:
    """The runs in the table's order. Raises InputError.

    A run's name is a digest of all that it depends on: inputs that have not changed keep it, and with it their results.
    """
    digests = _Digests(study.scenario)
    environment = digests.of_environment(study)
    runs = []
    for values in rows(study.design, study.sources, study.runs, study.seed):
        inputs = _Filled(study, values).inputs()
        content = [_steady(inputs), digests.of(inputs), environment]
        name = hashlib.sha256(json.dumps(content, sort_keys=True).encode()).hexdigest()[:12]
        runs.append(Run(name, values, inputs))
    return runs


def check_against_scenario(study: Study, run: Run, host: Path) -> dict[str, Any]:
    """Has kinora-run look at the inputs of a run; returns what the scenario declares. Raises InputError."""
    own = ask_declarations(host, study.scenario, None, study.variables)
    for name, parameter in study.parameters.items():
        if parameter.sets == {name: f"{{{name}}}"} and name not in own["parameters"]:
            raise InputError(f'{study.file}: /parameters/{name}: the scenario has no parameter "{name}", and no "set" '
                             f"says what it is.{suggestion(name, own['parameters'])}")
    make_folder(study.folder)
    inputs = study.folder / "first-run.json"
    write_json(inputs, run.inputs)
    declared = ask_declarations(host, study.scenario, inputs, study.variables)
    inputs.unlink()
    for name in [*(study.results or {}), *study.goals]:
        if name not in declared["results"]:
            raise InputError(f'{study.file}: /results: the scenario has no result "{name}".'
                             f"{suggestion(name, declared['results'])}")
    if not declared["results"]:
        raise InputError(f'{study.file}: neither the study nor the scenario has "results": nothing would be gathered.')
    return declared


def take_folder(study: Study) -> None:
    """Makes the study's folder, or sees to it that it is this study's. Raises InputError."""
    make_folder(study.folder)
    mark = study.folder / "study.json"
    own = str(study.file.resolve())
    if mark.exists():
        other = read_json(mark)
        owner = other.get("study") if isinstance(other, dict) else None
        if not isinstance(owner, str):
            raise InputError(f'{mark}: not what a study leaves in its folder; give the study another "folder".')
        if owner != own and Path(owner).exists():
            raise InputError(f'{study.folder}: the folder of another study, {owner}; '
                             'give one of them another "folder".')
    elif any((study.folder / name).exists() for name in OWN_NAMES):
        raise InputError(f'{study.folder}: no study\'s folder, but it has files that a study would replace; '
                         'give the study another "folder".')
    write_json(mark, {"study": own, "title": study.title})


def write_table(study: Study, runs: list[Run]) -> Path:
    """Writes runs.csv: name and inputs of every run."""
    file = study.folder / "runs.csv"
    with replacing(file) as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow(["id", *study.parameters])
        writer.writerows([run.id, *run.values.values()] for run in runs)
    return file


def pending(study: Study, runs: list[Run]) -> Iterator[Run]:
    """The runs that have no result yet, each once."""
    seen = set()
    for run in runs:
        if run.id not in seen and not result_file(run.folder(study.folder)).exists():
            seen.add(run.id)
            yield run
