#!/usr/bin/env python3
"""Lets clang read the sources as MSVC would, as far as it can, over the headers of mingw-w64, and remembers what was clean.

In this mode templates are looked into where they are used only, names of the platform's language extensions are words of
the language, and what GCC alone has is an error, as are the warnings that MSVC gives at /W4. No binary is made.

usage: msvc_mode.py STAMPS DATABASE

DATABASE is a folder with compile_commands.json, of a build for Windows by clang. STAMPS and what is looked at together
are as in tidy.py. Prints the findings; exit status 1 when there are any.
"""
import json
import os
import pathlib
import re
import subprocess
import sys

import tidy

TOGETHER = 40
MODE = ["-fms-compatibility", "-fms-compatibility-version=19.29", "-fms-extensions", "-fdelayed-template-parsing"]
# Warnings of MSVC at /W4: C4244, C4267 and C4245 (-Wconversion, which the commands have), C4456 to C4459 (-Wshadow-all), C4702
# (-Wunreachable-code), C4100, C4189, C4389 and C4505 (-Wall, -Wextra). What only one of the two families takes: -Wmicrosoft, -Wgnu, -Wvla.
WARNINGS = ["-Wmicrosoft", "-Wgnu", "-Wno-gnu-zero-variadic-macro-arguments", "-Wvla", "-Wextra-semi", "-Wshadow-all",
            "-Wunreachable-code"]
# The headers of mingw-w64 and of GCC's library ask for what this mode leaves undefined; vectors are theirs alone.
FOR_HEADERS = ("__GCC_", "__GNU", "__GXX_", "__EXCEPTIONS", "__STRICT_ANSI__")
PLACE = re.compile(r"^([^:\s]+):\d+:\d+: (?:fatal )?error:", re.MULTILINE)
LENIENT = ["-flax-vector-conversions=all"]


def macros(*mode):
    """The lines that define what the compiler defines by itself."""
    run = subprocess.run(["clang++", "--target=x86_64-w64-mingw32", "-std=c++17", *mode, "-dM", "-E", "-x", "c++", os.devnull],
                         check=True, capture_output=True, text=True)
    return set(run.stdout.splitlines())


def write_missing_macros(file):
    missing = sorted(line for line in macros() - macros(*MODE) if line.split()[1].startswith(FOR_HEADERS))
    for_cxx = [line for line in missing if line.split()[1].startswith(("__GNUG__", "__GXX_", "__EXCEPTIONS"))]
    file.write_text("\n".join([*(line for line in missing if line not in for_cxx), "#ifdef __cplusplus", *for_cxx, "#endif", ""]))
    return ["-include", str(file)]


def tasks(database, stamps, options):
    """A source, its flags and its stamp, for every own source that the database has."""
    own = tidy.own_sources("*.cpp", "*.c", all_rooms=True)
    seen = set()
    version = subprocess.run(["clang++", "--version"], check=True, capture_output=True).stdout + repr(options).encode()
    for entry in json.loads((pathlib.Path(database) / "compile_commands.json").read_text()):
        source = entry["file"]
        if source in own and source not in seen:
            seen.add(source)
            yield source, tidy.flags(source, entry["command"]), stamps / tidy.key(source, entry["command"], version)


def read(sources, flags, options):
    """The findings of a reading, as text; empty for none."""
    in_c = sources[0].endswith(".c")
    text = "".join(f'#include "{source}"\n' for source in sources)
    run = subprocess.run(["clang" if in_c else "clang++", *flags, *options, "-fsyntax-only", "-ferror-limit=0",
                          "-x", "c" if in_c else "c++", "-"], cwd=tidy.ROOT, input=text, capture_output=True, text=True)
    return "" if run.returncode == 0 else run.stderr.replace(f"{tidy.ROOT}/", "")


def complained_of(group, findings):
    """The sources of a group in which findings stand; all of them when those stand elsewhere."""
    places = set(PLACE.findall(findings))
    return [task for task in group if os.path.relpath(task[0], tidy.ROOT) in places] or group


def check(group, flags, options):
    """The findings of sources that are looked at together. Those with findings there, which may come from standing together, are
    looked at each by itself, and only that counts."""
    findings = read([source for source, _, _ in group], flags, options)
    if findings and len(group) > 1:
        apart = complained_of(group, findings)
        rest = [task for task in group if task not in apart]
        return "".join([*(check([task], task[1], options) for task in apart), check(rest, flags, options) if rest else ""])
    if not findings:
        for _, _, stamp in group:
            stamp.touch()
    return findings


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    stamps = pathlib.Path(arguments[0])
    stamps.mkdir(parents=True, exist_ok=True)
    options = [*MODE, *WARNINGS, *LENIENT, *write_missing_macros(stamps / "missing.h")]
    found = list(tasks(arguments[1], stamps, options))
    pending = [task for task in found if not task[2].exists()]
    return tidy.report("msvc_mode", len(found), tidy.grouped(pending, TOGETHER),
                       lambda group: check(group.tasks, group.flags(), options))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
