"""A release: what it writes, what it refuses, and that a refused one changes nothing. Nothing is compiled: packages are made up."""

import os
import re
import shutil
import subprocess
import time
import zipfile
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
USED = ["CMakeLists.txt", "CHANGELOG.md", "packaging", "study/kinora_study/__init__.py", "scripts/release",
        "scripts/lib/common.sh", "scripts/lib/release.py", "scripts/lib/same_zip.py"]
PACKAGE = """#!/bin/sh
cd "$(dirname "$0")/.." && mkdir -p build/package
for kind in txt exe whl; do echo "$SOURCE_DATE_EPOCH $EXTRA" >build/package/made.$kind; done
cd build/package && python3 -m zipfile -c made.zip made.txt
"""


def git(root, *words):
    return subprocess.run(["git", "-c", "user.name=a", "-c", "user.email=a@b", *words], cwd=root, check=True, capture_output=True,
                          text=True).stdout


@pytest.fixture
def root(tmp_path):
    """A repository with all that a release reads, and a package that is made at once."""
    for name in USED:
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (shutil.copytree if (ROOT / name).is_dir() else shutil.copy)(ROOT / name, tmp_path / name)
    (tmp_path / "scripts/package").write_text(PACKAGE)
    (tmp_path / "scripts/package").chmod(0o755)
    (tmp_path / ".gitignore").write_text("build/\n__pycache__/\n")
    cmake = tmp_path / "CMakeLists.txt"
    cmake.write_text(re.sub(r"(?m)^(project\(\w+ VERSION )[\d.]+", r"\g<1>0.9.1", cmake.read_text()))
    cmake.write_text(re.sub(r'(KINORA_VERSION_SUFFIX ")[^"]*', r"\g<1>", cmake.read_text()))
    (tmp_path / "CHANGELOG.md").write_text("# Changelog\n\n## [Unreleased]\n\n### Added\n- A thing.\n\n## [0.9.1] - 2026-01-01\n- x\n")
    git(tmp_path, "init", "-q")
    git(tmp_path, "config", "user.name", "a")
    git(tmp_path, "config", "user.email", "a@b")
    git(tmp_path, "add", "-A")
    git(tmp_path, "commit", "-qm", "first")
    return tmp_path


def release(root, *words, **environment):
    return subprocess.run([str(root / "scripts/release"), *words], cwd=root, capture_output=True, text=True,
                          env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1", **environment})


def test_a_release_is_written_committed_tagged_and_built(root):
    run = release(root, "1.0.0-rc1", "--twice")
    assert run.returncode == 0, run.stderr
    cmake = (root / "CMakeLists.txt").read_text()
    assert "VERSION 1.0.0 " in cmake and 'KINORA_VERSION_SUFFIX "-rc1"' in cmake
    changelog = (root / "CHANGELOG.md").read_text()
    assert re.search(r"## \[Unreleased\]\n\n## \[1\.0\.0-rc1\] - \d{4}-\d\d-\d\d\n\n### Added\n- A thing\.\n\n## \[0\.9\.1\]", changelog)
    assert 'VERSION = "1.0.0-rc1"' in (root / "study/kinora_study/__init__.py").read_text()
    for file in (root / "packaging").rglob("*.yaml"):
        assert "PackageVersion: 1.0.0-rc1\n" in file.read_text()
    assert "KinoraVeltrixCoupling-1.0.0-rc1-windows-x64.exe" in (
        root / "packaging/winget/KinoraVeltrixCoupling.KinoraVeltrixCoupling.installer.yaml").read_text()
    assert git(root, "log", "-1", "--format=%s", "v1.0.0-rc1") == "Release 1.0.0-rc1\n"
    assert git(root, "status", "--porcelain") == ""
    made = root / "build/release/v1.0.0-rc1"
    assert sorted(path.name for path in made.iterdir()) == ["SHA256SUMS", "made.exe", "made.whl", "made.zip"]
    assert subprocess.run(["sha256sum", "--check", "--quiet", "SHA256SUMS"], cwd=made).returncode == 0
    assert (made / "made.exe").read_text().split() == git(root, "log", "-1", "--format=%ct").split()


def test_a_candidate_comes_before_its_release(root):
    assert release(root, "1.0.0-rc1").returncode == 0
    (root / "CHANGELOG.md").write_text((root / "CHANGELOG.md").read_text().replace("[Unreleased]\n", "[Unreleased]\n\n- More.\n"))
    git(root, "commit", "-qam", "more")
    assert release(root, "1.0.0").returncode == 0
    assert 'KINORA_VERSION_SUFFIX ""' in (root / "CMakeLists.txt").read_text()


@pytest.mark.parametrize("version, complaint", [
    ("1.0", '"1.0" is no version'),
    ("1.0.0-beta", '"1.0.0-beta" is no version'),
    ("0.9.1", "has 0.9.1 already"),
    ("0.9.1-rc2", "has 0.9.1 already"),
    ("0.2.0", "has 0.9.1 already"),
])
def test_a_version_that_is_none_or_not_higher_is_refused(root, version, complaint):
    run = release(root, version)
    assert run.returncode != 0 and complaint in run.stderr
    assert git(root, "status", "--porcelain") == "" and git(root, "tag") == ""


def test_what_is_not_committed_is_not_released(root):
    (root / "CMakeLists.txt").write_text("# changed\n" + (root / "CMakeLists.txt").read_text())
    run = release(root, "1.0.0")
    assert run.returncode != 0 and "the checkout has changes" in run.stderr and git(root, "tag") == ""


def test_a_tag_that_is_there_stays(root):
    git(root, "tag", "v1.0.0")
    run = release(root, "1.0.0")
    assert run.returncode != 0 and "tag v1.0.0 is there already" in run.stderr


def test_a_release_without_news_is_refused(root):
    (root / "CHANGELOG.md").write_text("# Changelog\n\n## [Unreleased]\n\n## [0.9.1] - 2026-01-01\n- x\n")
    git(root, "commit", "-qam", "empty")
    run = release(root, "1.0.0")
    assert run.returncode != 0 and 'says nothing under "Unreleased"' in run.stderr
    assert git(root, "status", "--porcelain") == ""


def test_builds_that_differ_are_told(root):
    package = root / "scripts/package"
    package.write_text(PACKAGE.replace("$EXTRA", "$(date +%N)"))
    git(root, "commit", "-qam", "not the same twice")
    run = release(root, "--build", "HEAD", "--twice")
    assert run.returncode != 0 and "two builds of one commit differ" in run.stderr


def test_a_release_that_cannot_be_tagged_changes_nothing(root):
    before = git(root, "rev-parse", "HEAD")
    hook = root / ".git/hooks/reference-transaction"
    hook.parent.mkdir(exist_ok=True)
    hook.write_text('#!/bin/sh\n[ "$1" != prepared ] || ! grep -q refs/tags/\n')
    hook.chmod(0o755)
    run = release(root, "1.0.0")
    assert run.returncode == 1 and "nothing is changed" in run.stderr
    assert git(root, "rev-parse", "HEAD") == before and git(root, "tag") + git(root, "status", "--porcelain") == ""


def pack(file, names, seconds, mode):
    with zipfile.ZipFile(file, "w") as archive:
        for name in names:
            entry = zipfile.ZipInfo(name, time.gmtime(seconds)[:6])
            entry.external_attr = mode << 16
            archive.writestr(entry, "" if name.endswith("/") else name)


def test_a_zip_does_not_tell_where_it_was_packed(tmp_path):
    """Order, times, permissions beyond "runs" and compression go; names and contents stay."""
    files = [tmp_path / "first.zip", tmp_path / "second.zip"]
    pack(files[0], ["a/", "a/x", "b"], 1_000_000_000, 0o644)
    pack(files[1], ["b", "a/x", "a/"], 1_100_000_000, 0o600)
    for file in files:
        subprocess.run([ROOT / "scripts/lib/same_zip.py", file, "1200000000"], check=True, env={**os.environ, "TZ": "Asia/Tokyo"})
    assert files[0].read_bytes() == files[1].read_bytes()
    with zipfile.ZipFile(files[0]) as archive:
        assert {name: archive.read(name) for name in archive.namelist()} == {"a/": b"", "a/x": b"a/x", "b": b"b"}
        assert {entry.date_time for entry in archive.infolist()} == {(2008, 1, 10, 21, 20, 0)}


def test_what_is_no_zip_stays_as_it_is(tmp_path):
    (tmp_path / "text.zip").write_text("text")
    run = subprocess.run([ROOT / "scripts/lib/same_zip.py", tmp_path / "text.zip", "0"], capture_output=True, text=True)
    assert run.returncode == 2 and run.stderr == f"error: {tmp_path}/text.zip cannot be packed anew: File is not a zip file\n"
    assert [path.name for path in tmp_path.iterdir()] == ["text.zip"] and (tmp_path / "text.zip").read_text() == "text"


def test_an_unknown_commit_is_refused(root):
    run = release(root, "--build", "nothing")
    assert run.returncode != 0 and '"nothing" is no commit' in run.stderr
