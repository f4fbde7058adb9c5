#!/usr/bin/python3
"""Renders the documents as HTML that is read without a network.

usage: html_docs.py [--files FOLDER] SOURCE_ROOT OUTPUT_FOLDER

README.md becomes index.html, docs/x.md becomes docs/x.html, pictures are copied. Links between the documents and
their headings hold as they do where the repository is looked at. A link to another file of the repository is one
here, too, where the file is installed and --files says where the folder with examples/ is, seen from OUTPUT_FOLDER;
otherwise its text stays. The same documents give the same bytes. OUTPUT_FOLDER is replaced as a whole, and only if it
was made by this script. A link that leads nowhere is told, and nothing written: exit status 2.
"""

from __future__ import annotations

import argparse
import html
import os
import posixpath
import re
import shutil
import sys
from collections.abc import Callable, Mapping
from dataclasses import dataclass, field
from html.parser import HTMLParser
from pathlib import Path

PRODUCT = "KinoraVeltrixCoupling"
STYLE = "style.css"

# The order of the pages. A document that is not named here comes last.
GROUPS = {
    "Start": ["README.md", "docs/windows.md", "docs/examples.md", "docs/report.md", "docs/troubleshooting.md"],
    "Write a host": ["docs/host-guide.md", "docs/conventions.md", "docs/c-interface.md",
                     "docs/python.md", "docs/fmu.md", "docs/api-reference.md"],
    "Many runs": ["docs/studies.md", "docs/studies-cluster.md"],
    "The simulator": ["docs/simulator.md", "docs/simulator-accuracy.md", "docs/native.md"],
    "What reaches the desktop": ["docs/scripting-commands.md", "docs/trace.md"],
    "What was measured": ["docs/performance.md", "docs/reliability.md"],
    "How it is built": ["docs/architecture.md", "docs/architecture-host.md", "docs/architecture-report.md",
                        "docs/architecture-simulator.md", "docs/architecture-trace.md", "docs/dependencies.md",
                        "CONTRIBUTING.md"],
    "The project": ["docs/release-notes.md", "CHANGELOG.md", "SECURITY.md", "LICENSE"],
}
REST = "Further pages"
NAMES = {"README.md": "Overview", "LICENSE": "Licence"}  # where the first heading is no name for a page
INSTALLED = ("examples/", "host/scenario.schema.json")  # files beside which the pages may be laid

EXTENSIONS = ["fenced_code", "sane_lists", "tables"]
TAB = 2  # how far what belongs to an item of a list is indented
ITEM = re.compile(r"(?:[-*+]|1\.) ")

PAGE = """\
<!DOCTYPE html>
<html lang="en-GB">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title}</title>
<link rel="stylesheet" href="{up}style.css">
</head>
<body>
<header><a href="{up}index.html">{product}</a> <a class="to-pages" href="#all-pages">All pages</a></header>
<main>
{body}
</main>
<nav id="all-pages" aria-label="Pages">
{navigation}
</nav>
</body>
</html>
"""


class BadInput(Exception):
    """What is wrong with the documents or the arguments, where, and what to do."""


def anchor(heading: str, taken: set[str]) -> str:
    """The anchor that a heading gets where the repository is looked at.

    >>> anchor("The `C` interface, again", {"the-c-interface-again"})
    'the-c-interface-again-1'
    """
    plain = re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")
    name, count = plain, 0
    while name in taken:
        count += 1
        name = f"{plain}-{count}"
    taken.add(name)
    return name


@dataclass
class Page:
    """A document on its way to HTML. Paths are seen from the source root, with slashes."""

    source: str
    title: str = ""
    body: str = ""
    sections: list[tuple[str, str]] = field(default_factory=list)  # anchor and text of second headings
    anchors: set[str] = field(default_factory=set)
    links: list[tuple[str, str]] = field(default_factory=list)  # page and anchor, to be checked
    images: set[str] = field(default_factory=set)

    @property
    def output(self) -> str:
        return "index.html" if self.source == "README.md" else f"{self.source.removesuffix('.md')}.html"

    @property
    def up(self) -> str:
        """The way to the output folder."""
        return "../" * self.output.count("/")

    @property
    def name(self) -> str:
        """The title without what explains it."""
        return NAMES.get(self.source) or re.split("[:,] ", self.title)[0]


def relative(target: str, page: Page) -> str:
    """A path as a link of a page."""
    return posixpath.relpath(target, posixpath.dirname(page.output) or ".")


# What a link becomes: the new address, none when its text alone stays, and the text that stands for the old one.
Resolver = Callable[[Page, str, str], "tuple[str | None, str | None]"]


class Rewriter(HTMLParser):
    """Gives headings their anchors, links their addresses, and tables a frame to scroll in."""

    def __init__(self, page: Page, resolve: Resolver, mentions: Mapping[str, Page]) -> None:
        super().__init__(convert_charrefs=False)
        self._page = page
        self._resolve = resolve
        self._mentions = mentions
        self._out: list[str] = []
        self._open: list[tuple[str, int, str]] = []  # headings, links and code: tag, place in the output, address
        self._text: list[str] = []

    def result(self) -> str:
        return "".join(self._out)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        if tag == "img":
            self._image(dict(attrs))
            return
        if tag in ("a", "code", "pre", "h1", "h2", "h3", "h4", "h5", "h6"):
            self._open.append((tag, len(self._out), dict(attrs).get("href") or ""))
            if tag not in ("code", "pre"):
                self._text = []
        if tag == "table":
            self._out.append('<div class="scroll">')
        self._out.append(self.get_starttag_text() or "")

    def handle_startendtag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        if tag == "img":
            self._image(dict(attrs))
        else:
            self._out.append(self.get_starttag_text() or "")

    def handle_endtag(self, tag: str) -> None:
        if self._open and self._open[-1][0] == tag:
            _, place, address = self._open.pop()
            if tag == "a":
                self._link(place, address)
                return
            if tag.startswith("h"):
                self._heading(tag, place)
        self._out.append(f"</{tag}>")
        if tag == "table":
            self._out.append("</div>")

    def handle_data(self, data: str) -> None:
        self._text.append(data)
        self._out.append(data if self._open else self._with_mentions(data))

    def handle_entityref(self, name: str) -> None:
        self._character(f"&{name};")

    def handle_charref(self, name: str) -> None:
        self._character(f"&#{name};")

    def _character(self, reference: str) -> None:
        self._text.append(html.unescape(reference))
        self._out.append(reference)

    def _heading(self, tag: str, place: int) -> None:
        text = "".join(self._text)
        name = anchor(text, self._page.anchors)
        self._out[place] = f'<{tag} id="{html.escape(name)}">'
        if tag == "h1":
            self._page.title = self._page.title or text
        if tag == "h2":
            self._page.sections.append((name, text))

    def _link(self, place: int, address: str) -> None:
        target, text = self._resolve(self._page, address, "".join(self._text))
        if text is not None:
            self._out[place + 1:] = [html.escape(text)]
        if target is None:
            self._out[place] = ""
        else:
            self._out[place] = f'<a href="{html.escape(target)}">'
            self._out.append("</a>")

    def _image(self, attributes: dict[str, str | None]) -> None:
        source = attributes.get("src") or ""
        path = posixpath.normpath(posixpath.join(posixpath.dirname(self._page.source), source))
        self._page.images.add(path)
        text = html.escape(attributes.get("alt") or "")
        self._out.append(f'<img src="{html.escape(relative(path, self._page))}" alt="{text}">')

    def _with_mentions(self, text: str) -> str:
        """Names of other documents, which are read as such in the prose, as links to them."""
        def link(found: re.Match[str]) -> str:
            page = self._mentions.get(found[0])
            return f'<a href="{relative(page.output, self._page)}">{found[0]}</a>' if page else found[0]
        return re.sub(r"(?<![\w/.-])docs/[\w-]+\.md\b", link, text)


def prepared(text: str) -> str:
    """A document without its comments, which are marks for the scripts that write tables. A list gets the empty line
    before it that the converter needs."""
    lines: list[str] = []
    fenced, first = False, ""  # the first line since an empty one
    for line in text.splitlines():
        fenced ^= line.lstrip().startswith("```")
        if not fenced and re.fullmatch(r"<!--.*-->", line):
            line = ""
        if not fenced and first and ITEM.match(line) and not ITEM.match(first):
            lines.append("")
            first = ""
        lines.append(line)
        first = line and (first or line)
    return "\n".join(lines)


def rendered(text: str) -> str:
    """A document as HTML, tags in it as text."""
    import markdown  # type: ignore[import]  # no types of it are packaged

    converter = markdown.Markdown(extensions=EXTENSIONS, tab_length=TAB)
    converter.preprocessors.deregister("html_block")
    converter.inlinePatterns.deregister("html")
    return str(converter.convert(prepared(text)))


class Documents:
    """The pages of a repository."""

    def __init__(self, root: Path, files: str | None) -> None:
        self._root = root
        self._files = files
        self._findings: list[str] = []
        self._pages = {source: Page(source) for source in self._sources()}
        for page in self._pages.values():
            self._read_title(page)
        for page in self._pages.values():
            self._render(page)
        self._check()

    def outputs(self) -> dict[str, bytes]:
        """The files by their paths in the output folder."""
        files = {page.output: self._whole(page).encode() for page in self._pages.values()}
        files[STYLE] = (Path(__file__).with_name("html_docs.css")).read_bytes()
        for page in self._pages.values():
            files.update((image, (self._root / image).read_bytes()) for image in page.images)
        return files

    def _sources(self) -> list[str]:
        found = sorted(f"docs/{path.name}" for path in (self._root / "docs").glob("*.md"))
        found += [name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md", "LICENSE")
                  if (self._root / name).is_file()]
        ordered = [source for group in GROUPS.values() for source in group if source in found]
        return ordered + [source for source in found if source not in ordered]

    def _text(self, page: Page) -> str:
        try:
            return (self._root / page.source).read_text("utf-8")
        except UnicodeDecodeError as error:
            raise BadInput(f"{page.source} is not UTF-8 at byte {error.start}: save it as UTF-8") from error

    def _read_title(self, page: Page) -> None:
        found = re.search(r"^# (.+)$", self._text(page), re.MULTILINE)
        page.title = found[1].replace("`", "").strip() if found else NAMES.get(page.source, page.source)

    def _render(self, page: Page) -> None:
        if not page.source.endswith(".md"):
            page.body = f"<h1>{page.name}</h1>\n<pre>{html.escape(self._text(page), quote=False)}</pre>"
            return
        rewriter = Rewriter(page, self._resolve, self._pages)
        rewriter.feed(rendered(self._text(page)))
        rewriter.close()
        page.body = rewriter.result()

    def _resolve(self, page: Page, address: str, text: str) -> tuple[str | None, str | None]:
        if re.match(r"[a-z][a-z0-9+.-]*:", address):
            return address, None
        path, hash_sign, name = address.partition("#")
        target = posixpath.normpath(posixpath.join(posixpath.dirname(page.source), path)) if path else page.source
        if target in self._pages:
            other = self._pages[target]
            if name:
                page.links.append((target, name))
            link = f"{relative(other.output, page) if path else ''}{hash_sign}{name}"
            return link, other.name if text in (path, target) else None
        if not (self._root / target).exists():
            self._findings.append(f"{page.source}: the link to {address} leads nowhere: name a file of the repository")
        if self._files is not None and target.startswith(INSTALLED):
            return posixpath.normpath(page.up + posixpath.join(self._files, target)), None
        return None, None

    def _check(self) -> None:
        for page in self._pages.values():
            self._findings += [f"{page.source}: the picture {image} is missing: add it, or take it out of the page"
                               for image in sorted(page.images) if not (self._root / image).is_file()]
            self._findings += [f"{page.source}: {target} has no heading #{name}: name one that it has"
                               for target, name in page.links if name not in self._pages[target].anchors]
        if self._findings:
            raise BadInput("\n".join(self._findings))

    def _whole(self, page: Page) -> str:
        title = page.title if page.source == "README.md" else f"{page.title} - {PRODUCT}"
        return PAGE.format(title=html.escape(title), product=PRODUCT, up=page.up, body=page.body,
                           navigation=self._navigation(page))

    def _navigation(self, current: Page) -> str:
        known = {source for sources in GROUPS.values() for source in sources}
        groups = {**GROUPS, REST: [source for source in self._pages if source not in known]}
        lines = []
        for group, sources in groups.items():
            entries = [self._entry(self._pages[source], current) for source in sources if source in self._pages]
            if entries:
                lines += [f"<h2>{group}</h2>", "<ul>", *entries, "</ul>"]
        return "\n".join(lines)

    def _entry(self, page: Page, current: Page) -> str:
        link = f'href="{relative(page.output, current)}"'
        if page is not current:
            return f"<li><a {link}>{html.escape(page.name)}</a></li>"
        sections = "".join(f'<li><a href="#{html.escape(name)}">{html.escape(text)}</a></li>'
                           for name, text in page.sections)
        return (f'<li><a {link} aria-current="page">{html.escape(page.name)}</a>'
                + (f"<ul>{sections}</ul>" if sections else "") + "</li>")


def refuse_foreign(folder: Path) -> None:
    """Pages replace a folder as a whole: only one that this script made, or an empty one."""
    if folder.exists() and not (folder.is_dir() and ((folder / STYLE).exists() or not any(folder.iterdir()))):
        raise BadInput(f"{folder}: holds something else than pages of an earlier run: name a new folder, or empty it")


def replace_folder(folder: Path, files: Mapping[str, bytes]) -> None:
    """Writes the files beside the folder and puts them in its place, so that no page of before stays."""
    fresh, old = (folder.with_name(f"{folder.name}.{end}") for end in ("new", "old"))
    for left in (fresh, old):
        shutil.rmtree(left, ignore_errors=True)
    for name, content in sorted(files.items()):
        path = fresh / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    if folder.exists():
        folder.rename(old)
    fresh.rename(folder)
    shutil.rmtree(old, ignore_errors=True)


def main() -> int:
    parser = argparse.ArgumentParser(description="Renders the documents as HTML that is read without a network.")
    parser.add_argument("--files", metavar="FOLDER",
                        help="where the folder with examples/ is, seen from OUTPUT_FOLDER; its files are linked then")
    parser.add_argument("root", metavar="SOURCE_ROOT", type=Path)
    parser.add_argument("output", metavar="OUTPUT_FOLDER", type=Path)
    arguments = parser.parse_args()
    try:
        if not (arguments.root / "README.md").is_file():
            raise BadInput(f"{arguments.root}: has no README.md: name the root of the repository")
        output = Path(os.path.abspath(arguments.output))
        refuse_foreign(output)
        files = arguments.files and arguments.files.replace(os.sep, "/")
        replace_folder(output, Documents(arguments.root, files).outputs())
    except BadInput as error:
        print("\n".join(f"html_docs.py: {line}" for line in str(error).splitlines()), file=sys.stderr)
        return 2
    except ImportError:
        print("html_docs.py: Python has no package markdown: install Debian's python3-markdown", file=sys.stderr)
        return 2
    except OSError as error:
        print(f"html_docs.py: {error.filename}: {error.strerror}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
