"""kinora-run-wine: programs at once, each in a prefix of its own; Wine is a stand-in."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path

import pytest
from conftest import ROOT

SCRIPT = ROOT / "study/profiles/wine/kinora-run-wine"


class Pool:
    """A prepared prefix, and a stand-in for Wine that tells its prefix and its arguments."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        prefix = folder / "prepared"
        prefix.mkdir()
        (prefix / "system.reg").write_text("registered\n", encoding="ascii")
        (folder / "kinora-run.exe").touch()
        wine = folder / "wine"
        wine.write_text('#!/bin/sh\nprintf "%s\\r\\n" "$(basename "$WINEPREFIX")" "$(cat "$WINEPREFIX/system.reg")" "$@"\n'
                        'echo told >&2\n[ -z "$WAIT" ] || { touch "$WAIT"; sleep 60 & wait; }\nexit 3\n', encoding="ascii")
        wine.chmod(0o755)
        self.environment = os.environ | {
            "PATH": f"{folder}:{os.environ['PATH']}", "KINORA_RUN_EXE": str(folder / "kinora-run.exe"),
            "KINORA_WINE_PREFIX": str(prefix), "KINORA_WINE_POOL": str(folder / "pool")}

    def start(self, *words: str, **more: str) -> subprocess.Popen[str]:
        return subprocess.Popen([SCRIPT, *words], env=self.environment | more, encoding="ascii", stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, start_new_session=True)


@pytest.fixture
def pool(tmp_path: Path) -> Pool:
    return Pool(tmp_path)


def test_paths_output_and_status_go_through(pool: Pool) -> None:
    ended = pool.start("/a/scenario.json", "--out", "/b c", "relative")
    output, errors = ended.communicate(timeout=30)
    exe = f"{pool.folder}/kinora-run.exe"
    assert output.splitlines() == ["0", "registered", exe, "Z:/a/scenario.json", "--out", "Z:/b c", "relative"]
    assert (errors, ended.returncode) == ("told\n", 3)


def test_a_prefix_in_use_is_left_alone_and_used_again_afterwards(pool: Pool) -> None:
    mark = pool.folder / "started"
    first = pool.start(WAIT=str(mark))
    while not mark.exists():
        assert first.poll() is None
    assert pool.start().communicate(timeout=30)[0].splitlines()[0] == "1"
    os.killpg(first.pid, 9)
    first.communicate(timeout=30)
    assert pool.start().communicate(timeout=30)[0].splitlines()[0] == "0"
    assert sorted(path.name for path in (pool.folder / "pool").iterdir()) == ["0", "0.lock", "1", "1.lock"]


def test_what_is_not_prepared_is_told(pool: Pool) -> None:
    ended = pool.start(KINORA_WINE_PREFIX="/nowhere")
    assert "KINORA_WINE_PREFIX must name a Wine prefix" in ended.communicate(timeout=30)[1]
    assert ended.returncode == 2
