"""The results of a study: a table, and the data of its page."""

from __future__ import annotations

import csv
import json
import os
import subprocess
from collections.abc import Callable
from dataclasses import dataclass
from datetime import datetime, timezone
from importlib import import_module
from importlib.util import find_spec
from pathlib import Path
from typing import Any

from .document import read_json
from .errors import InputError
from .files import replaced_by_path, replacing
from .host import without_error
from .places import TEMPLATE
from .studyfile import Study
from .table import Run, failure_file, result_file

BEST = 10
MARKER = "@KINORA_STUDY_DATA@"


@dataclass(frozen=True)
class Outcome:
    """What has become of a run."""

    run: Run
    # done, failed or missing
    status: str
    results: dict[str, float | None]
    seconds: float | None = None
    error: str = ""


def outcome_of(study: Study, run: Run) -> Outcome:
    """What a run's folder tells."""
    folder = run.folder(study.folder)
    file = result_file(folder)
    try:
        if file.exists():
            result = read_json(file)
            return Outcome(run, "done", result["results"], result["wallSeconds"])
        if failure_file(folder).exists():
            return Outcome(run, "failed", {}, error=read_json(failure_file(folder))["message"])
    except (InputError, KeyError, TypeError):
        # As a machine that lost its power may leave it.
        return Outcome(run, "failed", {}, error=f"{file.name} is broken; delete it to have it run again")
    return Outcome(run, "missing", {})


def wanted_results(study: Study, declared: dict[str, Any]) -> list[str]:
    """The names of the results, in the table's order."""
    return list(study.results) if study.results is not None else list(declared["results"])


def write_results(study: Study, outcomes: list[Outcome], names: list[str]) -> list[Path]:
    """Writes results.csv, and results.parquet where Python has something to write it with."""
    head = ["id", "status", *study.parameters, *names, "seconds"]
    table = [
        [o.run.id, o.status, *o.run.values.values(), *(o.results.get(name) for name in names), o.seconds]
        for o in outcomes
    ]
    file = study.folder / "results.csv"
    with replacing(file) as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow(head)
        writer.writerows(table)
    write = parquet_writer()
    if not write:
        return [file]
    parquet = study.folder / "results.parquet"
    with replaced_by_path(parquet) as path:
        write(path, dict(zip(head, map(list, zip(*table)))))
    return [file, parquet]


def parquet_writer() -> Callable[[Path, dict[str, list[Any]]], None] | None:
    """What writes columns to a file as Parquet; None where neither pyarrow nor fastparquet is installed."""

    def by_pyarrow(file: Path, columns: dict[str, list[Any]]) -> None:
        import_module("pyarrow.parquet").write_table(import_module("pyarrow").table(columns), file)

    def by_fastparquet(file: Path, columns: dict[str, list[Any]]) -> None:
        import_module("fastparquet").write(str(file), import_module("pandas").DataFrame(columns))

    if find_spec("pyarrow"):
        return by_pyarrow
    return by_fastparquet if find_spec("fastparquet") else None


def best_runs(study: Study, outcomes: list[Outcome], names: list[str]) -> list[Outcome]:
    """Those that a reader of the page looks at first, each once: the best by every goal, or by no goal both ends."""
    goals = list(study.goals.items()) or [(names[0], "greatest"), (names[0], "least")]
    best: dict[str, Outcome] = {}
    for name, sense in goals:
        known = [(value, o) for o in outcomes if (value := o.results.get(name)) is not None]
        known.sort(key=lambda pair: pair[0], reverse=sense == "greatest")
        best.update((o.run.id, o) for _, o in known[:BEST])
    return list(best.values())


def write_reports(study: Study, outcomes: list[Outcome], host: Path) -> str:
    """Makes the report pages of runs that are done and have none; returns why one could not be made."""
    reason = ""
    for outcome in outcomes:
        folder = outcome.run.folder(study.folder)
        if outcome.status == "done" and not report_of(folder):
            command = [str(host), str(study.scenario), "--parameters", str(folder / "inputs.json"),
                       "--out", str(folder), "--resume", "--report", "--quiet"]
            ended = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False,
                                   encoding="utf-8", errors="replace", env=os.environ | study.variables)
            if not report_of(folder):
                reason = without_error(ended.stderr) or f"kinora-run ended with {ended.returncode}"
    return reason


def report_of(folder: Path) -> Path | None:
    """The report page in a run's folder."""
    return next(iter(sorted(folder.glob("*.report.html"))), None)


def page_data(
    study: Study, outcomes: list[Outcome], declared: dict[str, Any], names: list[str], generator: str
) -> str:
    """The data of the page: JSON in ASCII that no HTML can be made of."""

    def described(name: str) -> dict[str, str]:
        known = declared["parameters"].get(name, {})
        own = study.parameters[name]
        return {
            "unit": own.unit or known.get("unit", ""),
            "description": own.description or known.get("description", ""),
        }

    def link(outcome: Outcome) -> str | None:
        report = report_of(outcome.run.folder(study.folder))
        return report.relative_to(study.folder).as_posix() if report else None

    data = {
        "version": 1,
        "title": study.title,
        "generator": generator,
        "made": datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
        "scenario": study.scenario.name,
        "parameters": [
            {"name": name, **described(name), "kind": parameter.kind, "values": [o.run.values[name] for o in outcomes]}
            for name, parameter in study.parameters.items()
        ],
        "results": [
            {"name": name, "unit": declared["results"][name].get("unit", ""),
             "description": declared["results"][name].get("description", ""),
             "values": [o.results.get(name) for o in outcomes]}
            for name in names
        ],
        "goals": [{"result": name, "sense": sense} for name, sense in study.goals.items()],
        "runs": [
            {"id": o.run.id, "status": o.status, "seconds": o.seconds, "report": link(o), "error": o.error}
            for o in outcomes
        ],
    }
    text = json.dumps(data, separators=(",", ":"))
    for character in "<>&":
        text = text.replace(character, f"\\u{ord(character):04x}")
    return text


def template() -> tuple[str, str]:
    """What stands before and after the data of the page. Raises InputError."""
    try:
        before, marker, after = TEMPLATE.read_text(encoding="utf-8").partition(MARKER)
    except OSError:
        raise InputError(f"{TEMPLATE}: the template of the study page is not there; build the project with Node.js "
                         'installed, or do without the page: "run" and then "collect".') from None
    if not marker or MARKER in after:
        raise InputError(f"{TEMPLATE}: it has no place for data; is it the template of the study page?")
    return before, after


def write_page(study: Study, data: str) -> Path:
    """Writes study.html. Raises InputError, StudyError."""
    before, after = template()
    page = study.folder / "study.html"
    with replacing(page) as stream:
        stream.write(before + data + after)
    return page
