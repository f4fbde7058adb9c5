#!/usr/bin/env python3
"""One evaluation for Dakota's fork interface: parameters in, one run of kinora-run, results out.

    driver.py PARAMETERS RESULTS

PARAMETERS is a file in Dakota's standard format. Its variables are parameters of the scenario; its responses are the
scenario's results, by their descriptors. The scenario is the first of the analysis components. Values are given, gradients and
Hessians are not. RESULTS gets a line for each response, or "fail" where there are no values; why is told on standard error and,
of the run, in kinora-run.log. It is written beside its name and then renamed: Dakota never reads half of it.

The run's files go to the folder "run" beside PARAMETERS.
KINORA_RUN names the program; without it, kinora-run is looked for on the path.
"""

from __future__ import annotations

import json
import os
import subprocess
import sys
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path


class EvaluationError(Exception):
    """No values: its text says why."""


@dataclass(frozen=True)
class Request:
    """What Dakota asks for."""

    variables: dict[str, str]
    # Descriptors of the responses to what is wanted of them: 1 value + 2 gradient + 4 Hessian.
    responses: dict[str, int]
    components: list[str]


def block(lines: Iterator[list[str]], kind: str) -> list[list[str]]:
    """The lines of a block, each a value and a tag, that begins with their number and its name."""
    head: list[str] = next(lines, [])
    if len(head) != 2 or head[1] != kind or not head[0].isdigit():
        raise EvaluationError(f'it is not in the standard format: the number of {kind} is expected, not "{" ".join(head)}".')
    rows: list[list[str]] = [next(lines, []) for _ in range(int(head[0]))]
    if any(len(row) != 2 for row in rows):
        raise EvaluationError(f"{head[0]} {kind} are expected, each a value and its name.")
    return rows


def read_request(file: Path) -> Request:
    text = file.read_text(encoding="utf-8")
    lines = ([word.strip() for word in line.split(maxsplit=1)] for line in text.splitlines() if line.strip())
    variables = {name: value for value, name in block(lines, "variables")}
    responses = {tag.partition(":")[2]: int(asked) for asked, tag in block(lines, "functions")}
    block(lines, "derivative_variables")
    components = [value for value, _ in block(lines, "analysis_components")]
    return Request(variables, responses, components)


def evaluate(request: Request, folder: Path) -> dict[str, float]:
    """The wanted values, by a run in a folder."""
    for name, asked in request.responses.items():
        if asked & ~1:
            raise EvaluationError(f"{name}: only values can be had; ask for numerical_gradients and no_hessians.")
    if not request.components:
        raise EvaluationError("the scenario is missing: analysis_components = 'coupling.json'.")
    folder.mkdir(exist_ok=True)
    inputs, result = folder / "inputs.json", folder / "result.json"
    inputs.write_text(json.dumps({name: float(value) for name, value in request.variables.items()}), encoding="utf-8")
    # Of another evaluation in the same folder.
    result.unlink(missing_ok=True)
    words = [os.environ.get("KINORA_RUN", "kinora-run"), request.components[0], "--parameters", str(inputs),
             "--out", str(folder), "--result", str(result), "--quiet", "--overwrite"]
    with (folder / "kinora-run.log").open("w", encoding="utf-8") as log:
        subprocess.run(words, stdout=log, stderr=subprocess.STDOUT, check=False)
    # The presence of the result file means a complete run; no exit status does.
    if not result.exists():
        raise EvaluationError((folder / "kinora-run.log").read_text(encoding="utf-8").strip() or "the run gave no result.")
    values = json.loads(result.read_text(encoding="utf-8"))["results"]
    missing = [name for name in request.responses if values.get(name) is None]
    if missing:
        raise EvaluationError(f"{request.components[0]} gives no result {', '.join(missing)}; it has {', '.join(values)}.")
    return {name: values[name] for name in request.responses}


def main(words: list[str]) -> int:
    if len(words) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    parameters, results = (Path(word).absolute() for word in words)
    try:
        values = evaluate(read_request(parameters), parameters.parent / "run")
        text = "".join(f"{value:.17e} {name}\n" for name, value in values.items())
    except (EvaluationError, OSError, ValueError) as error:
        print(f"error: {parameters}: {error}", file=sys.stderr)
        text = "fail\n"
    unfinished = results.with_name(results.name + ".new")
    unfinished.write_text(text, encoding="ascii")
    unfinished.replace(results)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
