"""What becomes of results: tables and the page."""

from __future__ import annotations

from pathlib import Path

import pytest
from conftest import ROOT, StudyFolder

from kinora_study import VERSION, collect
from kinora_study.errors import InputError
from kinora_study.studyfile import read_study

# Stands in for the packages: writes the columns as text.
PYARROW = {
    "pyarrow/__init__.py": "def table(columns): return columns\n",
    "pyarrow/parquet.py": "def write_table(table, file): file.write_text(repr(table))\n",
}
FASTPARQUET = {
    "pandas.py": "def DataFrame(columns): return columns\n",
    "fastparquet.py": "def write(file, frame): open(file, 'w').write(repr(frame))\n",
}


def test_the_version_is_the_projects() -> None:
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    numbers, dash, candidate = VERSION.partition("-")
    assert f"VERSION {numbers} " in text
    assert f'set(KINORA_VERSION_SUFFIX "{dash}{candidate}")' in text


@pytest.mark.parametrize("package", [None, PYARROW, FASTPARQUET])
def test_parquet_where_there_is_something_to_write_it(
    study: StudyFolder, monkeypatch: pytest.MonkeyPatch, tmp_path: Path, package: dict[str, str] | None
) -> None:
    for name, text in (package or {}).items():
        file = tmp_path / "packages" / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="ascii")
    monkeypatch.setenv("PYTHONPATH", str(tmp_path / "packages"))
    study.study({"gap": [1, 2]})
    told = study.good("collect")
    parquet = study.runs.parent / "results.parquet"
    if package is None:
        assert "CSV alone" in told and not parquet.exists()
    else:
        columns = eval(parquet.read_text(encoding="ascii"))
        assert columns["gap"] == [1.0, 2.0] and columns["status"] == ["missing"] * 2 and columns["sum"] == [None] * 2


def test_a_broken_result_is_told_and_stops_nothing(study: StudyFolder) -> None:
    study.study({"gap": [1, 2]})
    study.good("expand")
    folder = study.runs / study.table("runs.csv")[0]["id"]
    folder.mkdir(parents=True)
    (folder / "result.json").touch()
    study.good("collect")
    assert [row["status"] for row in study.table()] == ["failed", "missing"]


def test_the_page_is_the_template_with_the_data(
    study: StudyFolder, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    study.study({"gap": [1]})
    read = read_study(study.file)
    read.folder.mkdir()
    template = tmp_path / "study.html"
    monkeypatch.setattr(collect, "TEMPLATE", template)
    with pytest.raises(InputError, match="the template of the study page is not there"):
        collect.write_page(read, "{}")
    for text in ("no place", "@KINORA_STUDY_DATA@" * 2):
        template.write_text(text, encoding="utf-8")
        with pytest.raises(InputError, match="it has no place for data"):
            collect.write_page(read, "{}")
    template.write_text("<script>@KINORA_STUDY_DATA@</script>\n", encoding="utf-8")
    assert collect.template() == ("<script>", "</script>\n")
    page = collect.write_page(read, '{"a": "\\\\u003c"}')
    assert page.read_text(encoding="utf-8") == '<script>{"a": "\\\\u003c"}</script>\n'
