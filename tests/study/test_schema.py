"""The schema that editors check study files by says what the program says."""

from __future__ import annotations

import json
from pathlib import Path
from typing import Any

import pytest
from conftest import ROOT

from kinora_study.document import read_json
from kinora_study.errors import InputError
from kinora_study.studyfile import read_study

jsonschema = pytest.importorskip("jsonschema", reason="left out: python3-jsonschema is not installed")

SCHEMA = json.loads((ROOT / "study" / "study.schema.json").read_text(encoding="utf-8"))
RANGE = {"from": 0, "to": "90*deg", "count": 3}
RESULT = {"column": "x", "take": "at", "time": 0.1}

GOOD: list[dict[str, Any]] = [
    {"parameters": {"a": [1, "2*mm"], "b": {"values": ["x"], "set": {"geometry.file": "{b}.obj"}, "unit": "m"}}},
    {"parameters": {"a": RANGE | {"end": "open"}, "b": {"from": 1, "to": 10, "count": 2, "spacing": "log"}}},
    {"parameters": {"a": {"normal": {"mean": 1, "deviation": "0.1"}}, "b": {"uniform": {"from": 0, "to": 1}}},
     "design": "latin-hypercube", "runs": 5, "seed": 3},
    {"parameters": {"a": [1]}, "results": {"end": RESULT}, "goals": {"end": "least"}, "retries": 1,
     "reports": "none", "environment": {"A": "{study}/b"}, "folder": "out", "set": {"solver.end": 0}, "title": "t"},
]
BAD: list[dict[str, Any]] = [
    {"parameters": {}},
    {"parameters": {"a": []}},
    {"parameters": {"a": RANGE | {"count": 0}}},
    {"parameters": {"a": RANGE | {"values": [1]}}},
    {"parameters": {"a": {"values": [1], "count": 3}}},
    {"parameters": {"a": {"normal": {"mean": 1}}}},
    {"parameters": {"a": [1]}, "design": "gridd"},
    {"parameters": {"a": [1]}, "results": []},
    {"parameters": {"a": [1]}, "results": {"end": {"column": "x", "take": "last", "time": 1}}},
    {"parameters": {"a": [1]}, "results": {"end": {"column": "x", "take": "at"}}},
    {"parameters": {"a": [1]}, "retries": -1},
    {"parameters": {"a": [1]}, "other": 1},
]


def is_taken(folder: Path, document: dict[str, Any]) -> bool:
    """What the program says of a study file."""
    file = folder / "a.study.json"
    file.write_text(json.dumps(document), encoding="utf-8")
    try:
        read_study(file)
    except InputError:
        return False
    return True


@pytest.mark.parametrize("document", GOOD + BAD)
def test_schema_and_program_agree(tmp_path: Path, document: dict[str, Any]) -> None:
    whole = {"scenario": "s.json"} | document
    assert jsonschema.Draft7Validator(SCHEMA).is_valid(whole) == is_taken(tmp_path, whole) == (document in GOOD)


def test_the_schema_knows_every_example() -> None:
    jsonschema.Draft7Validator.check_schema(SCHEMA)
    for file in (ROOT / "examples").glob("*/*.study.json"):
        jsonschema.validate(read_json(file), SCHEMA)
