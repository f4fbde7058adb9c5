"""The documents as HTML (scripts/lib/html_docs.py): every link leads somewhere, and nothing comes from a network."""

from __future__ import annotations

import os
import subprocess
import sys
from html.parser import HTMLParser
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
SCRIPT = ROOT / "scripts/lib/html_docs.py"
sys.path.insert(0, str(SCRIPT.parent))
from html_docs import anchor  # noqa: E402


class Parsed(HTMLParser):
    """What a browser finds in a page."""

    def __init__(self, text: str) -> None:
        super().__init__()
        self.ids: list[str] = []
        self.links: list[str] = []
        self.loaded: list[str] = []
        self.headings: list[str] = []
        self.current: list[str] = []
        self.tags: set[str] = set()
        self.text = ""
        self.feed(text)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        values = {name: value or "" for name, value in attrs}
        self.tags.add(tag)
        if "id" in values:
            self.ids.append(values["id"])
        if tag == "a":
            self.links.append(values["href"])
        self.loaded += [values[name] for name in ("src", "srcset") if name in values]
        if tag == "link":
            self.loaded.append(values["href"])
        if "aria-current" in values:
            self.current.append(values["href"])

    def handle_data(self, data: str) -> None:
        self.text += data


def render(root: Path, output: Path, *options: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run([SCRIPT, *options, root, output], capture_output=True, text=True, check=False)


@pytest.fixture(scope="module")
def pages(tmp_path_factory: pytest.TempPathFactory) -> tuple[Path, dict[Path, Parsed]]:
    """The repository's own pages, with links to its examples."""
    output = tmp_path_factory.mktemp("html") / "pages"
    done = render(ROOT, output, "--files", os.path.relpath(ROOT, output))
    assert (done.returncode, done.stderr) == (0, "")
    return output, {page: Parsed(page.read_text("utf-8")) for page in sorted(output.rglob("*.html"))}


def small_repository(folder: Path, readme: str, **documents: str) -> Path:
    (folder / "docs").mkdir(parents=True)
    (folder / "README.md").write_text(readme, "utf-8")
    for name, text in documents.items():
        (folder / f"docs/{name}.md").write_text(text, "utf-8")
    return folder


def test_every_link_and_picture_leads_to_a_file_and_anchor(pages: tuple[Path, dict[Path, Parsed]]) -> None:
    _, parsed = pages
    dead = []
    for page, content in parsed.items():
        assert len(set(content.ids)) == len(content.ids), page
        for link in content.links + content.loaded:
            if link.startswith("https://") and link in content.links:
                continue  # for the reader to follow, where there is a network
            path, _, name = link.partition("#")
            target = Path(os.path.normpath(page.parent / path)) if path else page
            if not target.is_file() or (name and name not in parsed[target].ids):
                dead.append(f"{page.name}: {link}")
    assert dead == []


def test_nothing_is_loaded_from_elsewhere(pages: tuple[Path, dict[Path, Parsed]]) -> None:
    output, parsed = pages
    for page, content in parsed.items():
        assert not {"script", "iframe", "object"} & content.tags, page
        assert [address for address in content.loaded if ":" in address or address.startswith("//")] == [], page
    assert "://" not in (output / "style.css").read_text("utf-8")
    assert "@import" not in (output / "style.css").read_text("utf-8")


def test_every_document_is_a_page_that_all_pages_list(pages: tuple[Path, dict[Path, Parsed]]) -> None:
    output, parsed = pages
    assert {f"docs/{path.stem}.html" for path in (ROOT / "docs").glob("*.md")} | {
        "index.html", "CHANGELOG.html", "CONTRIBUTING.html", "SECURITY.html", "LICENSE.html",
    } == {path.relative_to(output).as_posix() for path in parsed}
    for page, content in parsed.items():
        linked = {Path(os.path.normpath(page.parent / link)) for link in content.links if "#" not in link}
        assert set(parsed) <= linked, page
        assert content.current == [page.name], page


def test_code_and_tables_stand_as_they_are_written(pages: tuple[Path, dict[Path, Parsed]]) -> None:
    output, parsed = pages
    assert (ROOT / "examples/minimal-host/main.cpp").read_text("utf-8") in parsed[output / "index.html"].text
    assert "table" in parsed[output / "docs/dependencies.html"].tags
    assert "|---" not in "".join(content.text for content in parsed.values())
    assert "<!--" not in "".join(content.text for content in parsed.values())


def test_links_to_installed_files_need_to_know_where_they_are(tmp_path: Path) -> None:
    root = small_repository(tmp_path / "root", "# Top\n", a="# A\n\nIts [schema](../host/scenario.schema.json).\n")
    (root / "host").mkdir()
    (root / "host/scenario.schema.json").touch()
    assert render(root, tmp_path / "alone").returncode == 0
    assert "<p>Its schema.</p>" in (tmp_path / "alone/docs/a.html").read_text("utf-8")
    assert render(root, tmp_path / "html", "--files", "../share").returncode == 0
    page = (tmp_path / "html/docs/a.html").read_text("utf-8")
    assert '<a href="../../share/host/scenario.schema.json">schema</a>' in page


def test_same_documents_give_the_same_bytes_and_no_page_of_before_stays(
        pages: tuple[Path, dict[Path, Parsed]], tmp_path: Path) -> None:
    output, _ = pages
    again = output.with_name("again")
    again.mkdir()
    (again / "style.css").touch()
    (again / "gone.html").touch()
    assert render(ROOT, again, "--files", os.path.relpath(ROOT, output)).returncode == 0
    first, second = ({path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}
                     for folder in (output, again))
    assert first == second
    assert sorted(path.name for path in output.parent.iterdir()) == ["again", "pages"]


@pytest.mark.parametrize(("heading", "name"), [
    ("Any orientation", "any-orientation"),
    ("The `C` interface: what's in it?", "the-c-interface-whats-in-it"),
    ("magnetic-spring: a slider", "magnetic-spring-a-slider"),
    ("--set PATH=VALUE", "--set-pathvalue"),
    ("snake_case & Ångström", "snake_case--ångström"),
])
def test_anchors_are_those_of_the_repositorys_pages(heading: str, name: str) -> None:
    assert anchor(heading, set()) == name


def test_headings_of_one_text_are_counted() -> None:
    taken: set[str] = set()
    assert [anchor("Results", taken) for _ in range(3)] == ["results", "results-1", "results-2"]


def test_markup_of_a_document(tmp_path: Path) -> None:
    root = small_repository(
        tmp_path / "root",
        "# Top\n\nSee [docs/a.md](docs/a.md#one--two), docs/a.md, <b> and [the code](docs/code.cpp).\n\n"
        "Directly:\n- item\n\n  its second paragraph\n- other\n",
        a="# A: what it is\n\n## One & two\n\n```\n[no](link.md) <i> docs/a.md\n```\n")
    (root / "docs/code.cpp").touch()
    assert render(root, tmp_path / "out").returncode == 0
    index = (tmp_path / "out/index.html").read_text("utf-8")
    assert '<a href="docs/a.html#one--two">A</a>, <a href="docs/a.html">docs/a.md</a>, &lt;b&gt; and the code.' in index
    assert "<p>Directly:</p>\n<ul>" in index
    assert "<p>its second paragraph</p>\n</li>" in index
    other = (tmp_path / "out/docs/a.html").read_text("utf-8")
    assert "[no](link.md) &lt;i&gt; docs/a.md\n" in other
    assert '<h2 id="one--two">One &amp; two</h2>' in other


@pytest.mark.parametrize(("readme", "message"), [
    ("[x](docs/none.md)", "README.md: the link to docs/none.md leads nowhere: name a file of the repository"),
    ("[x](docs/a.md#none)", "README.md: docs/a.md has no heading #none: name one that it has"),
    ("![x](docs/none.png)", "README.md: the picture docs/none.png is missing: add it, or take it out of the page"),
])
def test_dead_links_are_told_and_nothing_is_written(tmp_path: Path, readme: str, message: str) -> None:
    root = small_repository(tmp_path / "root", readme, a="# A\n")
    done = render(root, tmp_path / "out")
    assert (done.returncode, done.stdout, done.stderr) == (2, "", f"html_docs.py: {message}\n")
    assert not (tmp_path / "out").exists()


def test_a_folder_of_something_else_is_left_alone(tmp_path: Path) -> None:
    (tmp_path / "mine").touch()
    done = render(ROOT, tmp_path)
    assert done.returncode == 2
    assert done.stderr == (f"html_docs.py: {tmp_path}: holds something else than pages of an earlier run: "
                           "name a new folder, or empty it\n")
    assert [path.name for path in tmp_path.iterdir()] == ["mine"]


def test_a_folder_without_documents_is_told(tmp_path: Path) -> None:
    done = render(tmp_path / "none", tmp_path / "out")
    assert (done.returncode, done.stderr) == (
        2, f"html_docs.py: {tmp_path}/none: has no README.md: name the root of the repository\n")
