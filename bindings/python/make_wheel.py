#!/usr/bin/env python3
"""Makes a wheel of the package with a built library inside: installing it needs no compiler.

    make_wheel.py [--licence NAME=FILE]... LIBRARY FOLDER

LIBRARY is kinora_veltrix.dll or libkinora_veltrix.so; the wheel is for its platform. The licences of what is compiled
into it are laid beside the project's own. Prints the wheel's path. The same files give the same bytes.

Also what pip calls for `pip install bindings/python` (pyproject.toml): a wheel with the library of the source tree, or
the one that KINORA_VELTRIX_LIBRARY names. The standard library suffices, so that neither needs the network.
"""

from __future__ import annotations

import argparse
import base64
import hashlib
import re
import sys
import zipfile
from collections.abc import Mapping
from pathlib import Path

from kinora_veltrix import _native

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]

# How files of the two platforms begin, the wheel's tag, and the library's name in it.
PLATFORMS = {b"MZ": ("win_amd64", "kinora_veltrix.dll"), b"\x7fELF": ("linux_x86_64", "libkinora_veltrix.so")}

METADATA = """\
Metadata-Version: 2.1
Name: kinora-veltrix
Version: {version}
Summary: Couples a multibody-dynamics host with a magnetostatic field solver
License: MIT
Classifier: Operating System :: Microsoft :: Windows
Classifier: Operating System :: POSIX :: Linux
Classifier: Programming Language :: Python :: 3
Classifier: Typing :: Typed
Requires-Python: >=3.9
Provides-Extra: numpy
Requires-Dist: numpy; extra == "numpy"
Description-Content-Type: text/markdown

{readme}"""

WHEEL = """\
Wheel-Version: 1.0
Generator: make_wheel.py ({version})
Root-Is-Purelib: false
Tag: py3-none-{platform}
"""


def project_version() -> str:
    """The version as Python's packages write it: a release candidate is 1.0.0rc1."""
    text = (ROOT / "CMakeLists.txt").read_text("utf-8")
    numbers = re.search(r"^project\(\w+ VERSION ([\d.]+)", text, re.MULTILINE)
    candidate = re.search(r'^set\(KINORA_VERSION_SUFFIX "-?(\w*)"\)', text, re.MULTILINE)
    if not numbers or not candidate:
        raise ValueError(f"{ROOT / 'CMakeLists.txt'} names no version")
    return numbers[1] + candidate[1]


def make_wheel(library: Path, folder: Path, licences: Mapping[str, Path]) -> Path:
    """Writes the wheel into a folder.

    :param licences: files by the names that they get
    :raises ValueError: for a library that is neither for Windows nor for Linux
    """
    content = library.read_bytes()
    platform, name = next((place for magic, place in PLATFORMS.items() if content.startswith(magic)), ("", ""))
    if not platform:
        raise ValueError(f'"{library}" is no library for Windows or Linux')
    version = project_version()
    info = f"kinora_veltrix-{version}.dist-info"
    package = HERE / "kinora_veltrix"
    files = {f"kinora_veltrix/{path.name}": path.read_bytes() for path in sorted(package.glob("*.py"))}
    files["kinora_veltrix/py.typed"] = b""
    files[f"kinora_veltrix/_library/{name}"] = content
    for licence, path in {"LICENSE": ROOT / "LICENSE", **licences}.items():
        files[f"{info}/licenses/{licence}"] = path.read_bytes()
    readme = (HERE / "README.md").read_text("utf-8")
    files[f"{info}/METADATA"] = METADATA.format(version=version, readme=readme).encode()
    files[f"{info}/WHEEL"] = WHEEL.format(version=version, platform=platform).encode()
    files[f"{info}/RECORD"] = record(files, f"{info}/RECORD")
    wheel = folder / f"kinora_veltrix-{version}-py3-none-{platform}.whl"
    folder.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for path_inside, data in files.items():
            entry = zipfile.ZipInfo(path_inside)  # its date is always 1980
            entry.external_attr = 0o644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)
    return wheel


def record(files: Mapping[str, bytes], own: str) -> bytes:
    """The list of files with hash and size, itself without."""
    lines = []
    for name, data in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        lines.append(f"{name},sha256={digest},{len(data)}\n")
    return "".join([*lines, f"{own},,\n"]).encode()


def build_wheel(wheel_directory: str, config_settings: object = None, metadata_directory: object = None) -> str:
    """What pip calls to install from the source tree."""
    return make_wheel(_native.find(), Path(wheel_directory), {}).name


def licence(argument: str) -> tuple[str, Path]:
    name, equals, path = argument.partition("=")
    if not equals:
        raise argparse.ArgumentTypeError(f'"{argument}" is not NAME=FILE')
    return name, Path(path)


def main() -> int:
    parser = argparse.ArgumentParser(description="Makes a wheel of the package with a built library inside.")
    parser.add_argument("--licence", metavar="NAME=FILE", type=licence, action="append", default=[])
    parser.add_argument("library", metavar="LIBRARY", type=Path)
    parser.add_argument("folder", metavar="FOLDER", type=Path)
    arguments = parser.parse_args()
    try:
        print(make_wheel(arguments.library, arguments.folder, dict(arguments.licence)))
    except (OSError, ValueError) as error:
        print(f"make_wheel.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
