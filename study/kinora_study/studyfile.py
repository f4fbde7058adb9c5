"""Reads and checks a study file."""

from __future__ import annotations

import math
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

from .design import CERTAIN, Levels, Normal, Range, Source, Uniform, Value, count_runs
from .document import Findings, read_json, suggestion
from .quantity import evaluate

DESIGNS = ("grid", "list", "random", "latin-hypercube")
TAKES = ("last", "least", "greatest", "mean", "at")
REPORTS = ("all", "best", "none")
SENSES = ("greatest", "least")


@dataclass(frozen=True)
class Parameter:
    """What varies from run to run."""

    name: str
    source: Source
    # Places of the scenario to the texts or values that they get; "{gap}" stands for the value.
    sets: dict[str, Any]
    unit: str = ""
    description: str = ""

    @property
    def kind(self) -> str:
        """list, range, random or text."""
        if isinstance(self.source, Range):
            return "range"
        if not isinstance(self.source, Levels):
            return "random"
        return "text" if any(isinstance(value, str) for value in self.source.values) else "list"


@dataclass(frozen=True)
class Study:
    """A study, complete and checked as far as it can be without its scenario."""

    file: Path
    title: str
    scenario: Path
    folder: Path
    parameters: dict[str, Parameter]
    sets: dict[str, Any]
    design: str
    runs: int
    seed: int
    # None: all of the scenario's. A definition, or None for one of the scenario's, by name.
    results: dict[str, dict[str, Any] | None] | None
    goals: dict[str, str]
    retries: int
    reports: str
    # As it is written; see variables.
    environment: dict[str, str] = field(default_factory=dict)

    @property
    def variables(self) -> dict[str, str]:
        """The environment's variables for kinora-run."""
        where = str(self.file.resolve().parent)
        return {name: value.replace("{study}", where) for name, value in self.environment.items()}

    @property
    def sources(self) -> dict[str, Source]:
        """Where each parameter's values come from."""
        return {name: parameter.source for name, parameter in self.parameters.items()}

    @property
    def count(self) -> int:
        """The number of runs."""
        return count_runs(self.design, self.sources, self.runs)


class _Reader:
    """Reads key by key; notes what is wrong, and goes on."""

    def __init__(self, file: Path, findings: Findings) -> None:
        self._file = file
        self._findings = findings

    def quantity(self, pointer: str, members: dict[str, Any], key: str) -> float:
        """NaN when it is missing or wrong, which has been noted."""
        if key not in members:
            self._findings.add(pointer, f'the key "{key}" is missing.')
            return math.nan
        try:
            return evaluate(members[key])
        except ValueError as error:
            self._findings.add(f"{pointer}/{key}", f"{error}.")
            return math.nan

    def whole(self, pointer: str, value: Any, least: int) -> int:
        if isinstance(value, int) and not isinstance(value, bool) and value >= least:
            return value
        self._findings.add(pointer, f"a whole number of {least} or more is wanted.")
        return least

    def text(self, pointer: str, value: Any) -> str:
        if isinstance(value, str):
            return value
        self._findings.add(pointer, "a text is wanted.")
        return ""

    def choice(self, pointer: str, value: Any, allowed: tuple[str, ...]) -> str:
        if value in allowed:
            return str(value)
        near = suggestion(value, allowed) if isinstance(value, str) else ""
        self._findings.add(pointer, f"one of {', '.join(allowed)} is wanted.{near}")
        return allowed[0]

    def members(self, pointer: str, value: Any) -> dict[str, Any]:
        if isinstance(value, dict):
            return value
        self._findings.add(pointer, "an object is wanted.")
        return {}

    def parameter(self, pointer: str, name: str, value: Any) -> Parameter:
        common = ("set", "unit", "description")
        members = {"values": value} if isinstance(value, list) else self.members(pointer, value)
        kinds: dict[str, tuple[Callable[[str, dict[str, Any]], Source], tuple[str, ...]]] = {
            "values": (self._values, ()),
            "from": (self._range, ("to", "count", "spacing", "end")),
            "normal": (self._normal, ()),
            "uniform": (self._uniform, ()),
        }
        given = [kind for kind in kinds if kind in members]
        source: Source = Levels((math.nan,))
        if len(given) != 1:
            self._findings.add(pointer, 'one of "values", "from", "normal" and "uniform" is wanted.')
        else:
            read, further = kinds[given[0]]
            self._findings.require_keys(pointer, members, (given[0], *further, *common))
            source = read(pointer, members)
        sets = self.members(f"{pointer}/set", members["set"]) if "set" in members else {name: f"{{{name}}}"}
        return Parameter(
            name,
            source,
            sets,
            self.text(f"{pointer}/unit", members.get("unit", "")),
            self.text(f"{pointer}/description", members.get("description", "")),
        )

    def _values(self, pointer: str, members: dict[str, Any]) -> Levels:
        values = members["values"]
        if not isinstance(values, list) or not values:
            self._findings.add(f"{pointer}/values", "a list with at least one value is wanted.")
            return Levels((math.nan,))
        try:
            numbers: tuple[Value, ...] = tuple(evaluate(value) for value in values)
        except ValueError:
            # Names: of materials, of files.
            if not all(isinstance(value, str) for value in values):
                self._findings.add(f"{pointer}/values", "either numbers and formulas are wanted, or texts.")
            numbers = tuple(str(value) for value in values)
        if len(set(numbers)) < len(numbers):
            self._findings.add(f"{pointer}/values", "a value stands twice.")
        return Levels(numbers)

    def _range(self, pointer: str, members: dict[str, Any]) -> Range:
        low, high = (self.quantity(pointer, members, key) for key in ("from", "to"))
        count = self.whole(f"{pointer}/count", members.get("count", 0), 1)
        spacing = self.choice(f"{pointer}/spacing", members.get("spacing", "linear"), ("linear", "log"))
        is_open = self.choice(f"{pointer}/end", members.get("end", "closed"), ("closed", "open")) == "open"
        if low == high and count > 1:
            self._findings.add(pointer, f"the range is empty: it goes from {low:g} to {high:g}.")
        if spacing == "log" and (low <= 0 or high <= 0):
            self._findings.add(pointer, "a logarithmic range lies above 0.")
        return Range(low, high, count, spacing == "log", is_open)

    def _normal(self, pointer: str, members: dict[str, Any]) -> Normal:
        inner = self.members(f"{pointer}/normal", members["normal"])
        self._findings.require_keys(f"{pointer}/normal", inner, ("mean", "deviation"))
        normal = Normal(*(self.quantity(f"{pointer}/normal", inner, key) for key in ("mean", "deviation")))
        if normal.deviation <= 0:
            self._findings.add(f"{pointer}/normal/deviation", "the standard deviation must be more than 0.")
        return normal

    def _uniform(self, pointer: str, members: dict[str, Any]) -> Uniform:
        inner = self.members(f"{pointer}/uniform", members["uniform"])
        self._findings.require_keys(f"{pointer}/uniform", inner, ("from", "to"))
        uniform = Uniform(*(self.quantity(f"{pointer}/uniform", inner, key) for key in ("from", "to")))
        if uniform.low >= uniform.high:
            self._findings.add(f"{pointer}/uniform", '"from" must be less than "to".')
        return uniform

    def results(self, value: Any) -> dict[str, dict[str, Any] | None]:
        if not value:
            self._findings.add("/results", "at least one result is wanted; without the key all of the scenario's are.")
        if isinstance(value, list):
            return {self.text(f"/results/{i}", name): None for i, name in enumerate(value)}
        results: dict[str, dict[str, Any] | None] = {}
        for name, definition in self.members("/results", value).items():
            members = self.members(f"/results/{name}", definition)
            self._findings.require_keys(f"/results/{name}", members, ("column", "take", "time", "description"))
            self.text(f"/results/{name}/column", members.get("column"))
            take = self.choice(f"/results/{name}/take", members.get("take"), TAKES)
            if (take == "at") != ("time" in members):
                self._findings.add(f"/results/{name}", '"time" goes with "take": "at", and only with it.')
            results[name] = members
        return results

    def study(self, document: Any) -> Study:
        root = self.members("", document)
        keys = ("$schema", "title", "scenario", "folder", "set", "parameters", "design", "runs", "seed", "results",
                "goals", "retries", "reports", "environment")
        self._findings.require_keys("", root, keys)
        for key in ("scenario", "parameters"):
            if key not in root:
                self._findings.add("", f'the key "{key}" is missing.')
        parameters = {
            name: self.parameter(f"/parameters/{name}", name, value)
            for name, value in self.members("/parameters", root.get("parameters", {})).items()
        }
        if not parameters:
            self._findings.add("/parameters", "at least one parameter is wanted.")
        results = self.results(root["results"]) if "results" in root else None
        goals = {
            name: self.choice(f"/goals/{name}", sense, SENSES)
            for name, sense in self.members("/goals", root.get("goals", {})).items()
        }
        for name in goals:
            if results is not None and name not in results:
                self._findings.add(f"/goals/{name}", f"it is none of the results.{suggestion(name, results)}")
        where = self._file.parent
        whole = where.resolve()
        stem = self._file.name.removesuffix(".json").removesuffix(".study")
        folder = where / self.text("/folder", root.get("folder", f"{stem}.study"))
        if folder.resolve() in (whole, *whole.parents):
            self._findings.add("/folder", "a folder of the study's own is wanted: nothing else may lie in it.")
        return Study(
            file=self._file,
            title=self.text("/title", root.get("title", stem)),
            scenario=where / self.text("/scenario", root.get("scenario", "")),
            folder=folder,
            parameters=parameters,
            sets=self.members("/set", root.get("set", {})),
            design=self.choice("/design", root.get("design", "grid"), DESIGNS),
            runs=self.whole("/runs", root.get("runs", 1), 1),
            seed=self.whole("/seed", root.get("seed", 0), 0),
            results=results,
            goals=goals,
            retries=self.whole("/retries", root.get("retries", 0), 0),
            reports=self.choice("/reports", root.get("reports", "best"), REPORTS),
            environment={
                name: self.text(f"/environment/{name}", value)
                for name, value in self.members("/environment", root.get("environment", {})).items()
            },
        )

    def require_design(self, study: Study) -> None:
        levels = {
            name: len(parameter.source)
            for name, parameter in study.parameters.items()
            if isinstance(parameter.source, CERTAIN)
        }
        if study.design == "list" and len(set(levels.values())) > 1:
            lengths = ", ".join(f"{name} {count}" for name, count in levels.items())
            self._findings.add("/design", f"lists that go together are equally long; these are not: {lengths}.")


def read_study(file: Path) -> Study:
    """Reads a study file. Raises InputError with everything that is wrong."""
    document = read_json(file)
    findings = Findings(file)
    reader = _Reader(file, findings)
    study = reader.study(document)
    findings.throw()
    reader.require_design(study)
    findings.throw()
    return study
