"""The command line of kinora-study."""

from __future__ import annotations

import argparse
import os
import signal
import sys
from pathlib import Path
from typing import Any

from . import VERSION
from .collect import (
    best_runs,
    outcome_of,
    page_data,
    template,
    wanted_results,
    write_page,
    write_reports,
    write_results,
)
from .engine import Engine, locked, run_study
from .errors import InputError, StudyError
from .host import find_host
from .job import do_job
from .places import ROOM
from .progress import Progress
from .studyfile import Study, read_study
from .table import Run, check_against_scenario, make_runs, pending, require_count, take_folder, write_table

COMMANDS = ("expand", "run", "collect", "all")
DONE, FAILED, BAD_INPUT = 0, 1, 2

TEXT = """\
Makes many runs of a scenario, on one machine or on many, and gathers their results.

  kinora-study STUDY.json           all that follows: run, then collect with its page
  kinora-study expand STUDY.json    writes the table of runs, runs.csv, and says how many there are
  kinora-study run STUDY.json       has Snakemake do the runs that have no result yet
  kinora-study collect STUDY.json   writes results.csv; with --page the study page too

Exit status: 0 done, 1 runs failed or were interrupted, 2 bad input.
"""


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="kinora-study", description=TEXT,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("command", choices=COMMANDS, help=argparse.SUPPRESS)
    parser.add_argument("--version", action="version", version=f"kinora-study {VERSION}")
    parser.add_argument("study", metavar="STUDY.json", type=Path)
    parser.add_argument("--cores", type=_positive, default=os.cpu_count() or 1, metavar="N",
                        help="runs at once on this machine (default: its cores)")
    cluster = parser.add_mutually_exclusive_group()
    cluster.add_argument("--profile", type=Path, metavar="DIR", help="hand jobs over as this profile of Snakemake says")
    cluster.add_argument("--slurm", action="store_true", help="hand them to Slurm, by the profile that comes along")
    parser.add_argument("--jobs", type=_positive, metavar="N", help="jobs at once on a cluster (default: as it says)")
    parser.add_argument("--batch", type=_positive, metavar="N", help="runs a job (default: some twenty jobs a core)")
    parser.add_argument("--retries", type=int, metavar="N", help="further tries of failed runs (default: the study's)")
    parser.add_argument("--page", action="store_true", help="with collect: write study.html too")
    parser.add_argument("--yes", action="store_true", help="do it although there are more than 10,000 runs")
    parser.add_argument("--quiet", "-q", action="store_true", help="say only where the files are, and what failed")
    parser.add_argument("--kinora-run", metavar="FILE", help="the program that does a run")
    return parser


def _positive(text: str) -> int:
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError(f"{text} is less than 1")
    return number


def _ordered(words: list[str]) -> list[str]:
    """The command first, wherever it stands; without one: all of it."""
    commands = [word for word in words if word in COMMANDS]
    if commands:
        words = words.copy()
        words.remove(commands[0])
    return [commands[0] if commands else "all", *words]


def _engine(arguments: argparse.Namespace, host: Path) -> Engine:
    profile = ROOM / "profiles" / "slurm" if arguments.slurm else arguments.profile
    if profile and not (profile / "config.yaml").is_file():
        raise InputError(f"{profile}: no profile of Snakemake: it has no config.yaml.")
    if arguments.retries is not None and arguments.retries < 0:
        raise InputError("--retries: 0 or more is wanted.")
    return Engine(host, arguments.cores, profile, arguments.jobs, arguments.batch, arguments.retries)


def _collect(study: Study, runs: list[Run], declared: dict[str, Any], host: Path, has_page: bool) -> None:
    names = wanted_results(study, declared)
    outcomes = [outcome_of(study, run) for run in runs]
    files = write_results(study, outcomes, names)
    for file in files:
        print(f"results   {file}")
    if not any(file.suffix == ".parquet" for file in files):
        print("          (CSV alone: Python has neither pyarrow nor fastparquet for Parquet)")
    if has_page:
        if study.reports == "best":
            reason = write_reports(study, best_runs(study, outcomes, names), host)
            if reason:
                print(f"warning: best runs without a report page: {reason}", file=sys.stderr)
        print(f"page      {write_page(study, page_data(study, outcomes, declared, names, f'kinora-study {VERSION}'))}")


def _execute(arguments: argparse.Namespace) -> int:
    study = read_study(arguments.study)
    has_page = arguments.page or arguments.command == "all"
    if has_page:
        template()  # told now rather than after hours of runs
    host = find_host(arguments.kinora_run)
    engine = _engine(arguments, host)
    require_count(study, arguments.yes)
    runs = make_runs(study)
    take_folder(study)
    declared = check_against_scenario(study, runs[0], host)
    table = write_table(study, runs)
    if arguments.command == "expand":
        waiting = sum(1 for _ in pending(study, runs))
        print(f"{len(runs):,} runs, {len(runs) - waiting:,} of them done: {table}")
        return DONE
    is_done = True
    if arguments.command in ("run", "all"):
        with locked(study.folder) as lock:
            is_done = run_study(study, engine, runs, Progress(arguments.quiet), lock)
    if arguments.command in ("collect", "all"):
        _collect(study, runs, declared, host, has_page)
    return DONE if is_done else FAILED


def _interrupt(number: int, frame: object) -> None:
    raise KeyboardInterrupt(signal.Signals(number).name)


def main(words: list[str]) -> int:
    """Does what the words ask for; returns the exit status."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        if signal.getsignal(number) != signal.SIG_IGN:  # as nohup has it
            signal.signal(number, _interrupt)
    try:
        if words[:1] == ["job"]:
            return DONE if do_job(Path(words[1]), int(words[2])) else FAILED
        return _execute(_parser().parse_args(_ordered(words)))
    except InputError as error:
        print(f"error: {error}", file=sys.stderr)
        return BAD_INPUT
    except StudyError as error:
        print(f"error: {error}", file=sys.stderr)
        return FAILED
    except KeyboardInterrupt:
        print("Interrupted; the same command goes on where it stopped.", file=sys.stderr)
        return FAILED
