#!/usr/bin/env python3
"""Stands in for kinora-run: takes its options, and does what the scenario's "title" tells it to.

    ok           result "sum": the sum of all parameters
    fail:N       fails the first N times with exit status 1
    silent       ends with 0 and writes no result
    slow:S       takes S seconds
    unresumable  refuses to go on
    bad:NAME=V   bad input when the parameter has that value
"""

import json
import os
import sys
import time
from pathlib import Path


def main() -> int:
    words = sys.argv[1:]
    scenario = json.loads(Path(words[0]).read_text(encoding="utf-8"))
    options = dict(zip(words[1::2], words[2::2])) if "--out" in words else {}
    inputs = Path(words[words.index("--parameters") + 1]) if "--parameters" in words else None
    values = dict(scenario["parameters"])
    results = dict(scenario.get("results", {}))
    for path, value in (json.loads(inputs.read_text(encoding="utf-8")) if inputs else {}).items():
        if path.startswith("results."):
            results[path.removeprefix("results.")] = value
        elif path in values:
            values[path] = value
        elif "." not in path:
            print(f'error: {words[0]}, {inputs}: /parameters: the scenario has no parameter "{path}".', file=sys.stderr)
            return 2
    if "--print-parameters" in words:
        print(json.dumps({"parameters": {name: {"value": value, "unit": "m"} for name, value in values.items()},
                          "results": {name: result | {"unit": "N"} for name, result in results.items()}}))
        return 0
    folder = Path(options["--out"])
    with (folder / "calls").open("a", encoding="ascii") as calls:
        calls.write(f"{'resume' if '--resume' in words else 'overwrite'} {os.environ.get('STUDY_TEST', '')}\n")
    (folder / "x.state.json").write_text("{}", encoding="ascii")
    for order in scenario["title"].split():
        name, _, value = order.partition(":")
        tries = len((folder / "calls").read_text(encoding="ascii").splitlines())
        if name == "slow":
            time.sleep(float(value))
        if name == "unresumable" and "--resume" in words:
            print("error: the scenario has changed", file=sys.stderr)
            return 2
        if name == "silent" or name == "fail" and tries <= int(value):
            print("error: the desktop has ended", file=sys.stderr)
            return 0 if name == "silent" else 1
        if name == "bad" and values[value.partition("=")[0]] == float(value.partition("=")[2]):
            print("error: the discs overlap\nerror: <b>by 1 mm</b>", file=sys.stderr)
            return 2
    numbers = [value for value in values.values() if isinstance(value, (int, float))]
    result = {"status": "complete", "results": {name: sum(numbers) for name in results}, "wallSeconds": 0.01}
    file = Path(options["--result"])
    file.with_suffix(".new").write_text(json.dumps(result), encoding="ascii")
    file.with_suffix(".new").replace(file)
    return 0


if __name__ == "__main__":
    sys.exit(main())
