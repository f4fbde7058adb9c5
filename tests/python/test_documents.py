"""The sessions that the documents show, run as they stand there."""

import re
import shutil

import magnet_pair
import pytest


@pytest.mark.parametrize("page", ["docs/python.md", "bindings/python/README.md"])
def test_the_first_session_runs(page, tmp_path, monkeypatch, capsys):
    text = (magnet_pair.ROOT / page).read_text("utf-8")
    session, shown = re.search(r"```python\n(.*?)```\n(?:\n```\n(.*?)```)?", text, re.DOTALL).groups()
    shutil.copy(magnet_pair.GEOMETRY, tmp_path)
    monkeypatch.chdir(tmp_path)
    exec(compile(session, page, "exec"), {})
    output = capsys.readouterr().out
    assert output and shown in (None, output)
