"""What the examples have in common: where things are, what is said when something is missing, progress."""

from __future__ import annotations

import argparse
import shutil
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path
from typing import TYPE_CHECKING, Callable, Iterator

if TYPE_CHECKING:
    from kinora_veltrix import Coupling

ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
OUTPUT = EXAMPLES / "python" / "output"
PICTURES = (".png", ".pdf", ".svg")
LIBRARY = ROOT / "scripts" / "lib"
# The project's closed forms and solids, and its package for who has not installed it.
sys.path += [str(LIBRARY), str(ROOT / "bindings" / "python")]


@contextmanager
def modules() -> Iterator[None]:
    """Around the imports: says how to get a module that is missing, and exits with 2."""
    try:
        yield
    except ImportError as error:
        module = (error.name or "").partition(".")[0]
        hint = f"apt install python3-{module} or pip install {module}"
        if module == "kinora_veltrix":
            hint = "install its wheel, docs/python.md says how"
        elif module in ("magnets", "solids"):
            hint = f"it belongs to {LIBRARY}; run the example where it lies, with the rest of the project"
        print(f"error: this example needs the Python module {module or error}: {hint}", file=sys.stderr)
        sys.exit(2)


def _picture(name: str) -> Path:
    path = Path(name)
    if path.suffix not in PICTURES:
        raise argparse.ArgumentTypeError(f'"{name}" is no picture; let it end in {", ".join(PICTURES)}')
    return path


def parser(about: str, picture: str) -> argparse.ArgumentParser:
    """A parser with the options of all examples; `about` is the program's docstring."""
    made = argparse.ArgumentParser(description=about.splitlines()[0])
    made.add_argument("--out", type=_picture, default=OUTPUT / picture, metavar="PICTURE", help=f"(output/{picture})")
    made.add_argument("--desktop", default="Simulator", metavar="VERSION", help="version to launch (Simulator)")
    return made


@contextmanager
def session(desktop: str) -> Iterator[tuple[Coupling, Path]]:
    """A coupling with a desktop that has started, and a folder for its projects that is gone afterwards."""
    from kinora_veltrix import Coupling

    folder = tempfile.mkdtemp()
    try:
        with Coupling() as coupling:
            coupling.launch(desktop)
            yield coupling, Path(folder)
    finally:
        # After a failure the desktop stays open and may hold its files.
        shutil.rmtree(folder, ignore_errors=True)


def exit_status(work: Callable[[], None]) -> int:
    """Does the work. 0: done; 1: it failed; 2: there is no library, or a file could not be written. Tells why."""
    from kinora_veltrix import CouplingError

    try:
        work()
    except CouplingError as error:
        print(f"error: {error.text}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"error: {error}", file=sys.stderr)
        return 2
    return 0


def progress(done: int, total: int, _time: float) -> None:
    """For `Coupling.run`: a line that counts on a terminal, else a line for every tenth."""
    if sys.stdout.isatty():
        print(f"\rsolved {done} of {total}", end="\n" if done == total else "", flush=True)
    elif 10 * done // total > 10 * (done - 1) // total:
        print(f"solved {done} of {total}", flush=True)
