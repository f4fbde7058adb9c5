"""The hand-over to Snakemake, and what is seen of its work."""

from __future__ import annotations

import contextlib
import ctypes
import fcntl
import os
import shlex
import shutil
import signal
import subprocess
import sys
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

from .document import read_json
from .errors import InputError, StudyError
from .files import make_folder, write_json
from .places import LAUNCHER, ROOM
from .progress import Progress
from .studyfile import Study
from .table import Run, failure_file, pending, result_file

JOBS_PER_CORE = 20
LARGEST_BATCH = 200
# After an interruption, before the engine is told of it; then, before it is ended by force.
SECONDS_TO_STOP = 2.0
SECONDS_TO_END = 20.0


@dataclass(frozen=True)
class Engine:
    """How the runs are to be done."""

    host: Path
    cores: int = 1
    # Of a cluster: a folder with a profile of Snakemake, and how many jobs it may have at once.
    profile: Path | None = None
    jobs: int | None = None
    # Runs a job; None for as many as suit.
    batch: int | None = None
    retries: int | None = None


def batch_size(wanted: int | None, runs: int, workers: int) -> int:
    """Runs a job: as wanted, or so that every worker gets some twenty jobs."""
    return wanted or max(1, min(LARGEST_BATCH, runs // (JOBS_PER_CORE * workers)))


@contextlib.contextmanager
def locked(folder: Path) -> Iterator[int]:
    """Keeps a study's folder for this process and those that get the yielded handle, as long as one of them lives.

    Raises InputError.
    """
    with (folder / "study.lock").open("a+") as stream:
        try:
            fcntl.flock(stream, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            stream.seek(0)
            raise InputError(f"{folder}: another kinora-study (process {stream.read().strip()}) runs this study; "
                             "wait for its end.") from None
        stream.truncate(0)
        stream.write(str(os.getpid()))
        stream.flush()
        yield stream.fileno()


def _prepare(study: Study, engine: Engine, runs: list[Run]) -> int:
    """Writes inputs, jobs and the engine's settings; returns the number of jobs."""
    jobs = study.folder / "jobs"
    shutil.rmtree(jobs, ignore_errors=True)
    make_folder(jobs)
    for run in runs:
        folder = run.folder(study.folder)
        make_folder(folder)
        write_json(folder / "inputs.json", run.inputs, is_precious=False)  # made anew before every start
        failure_file(folder).unlink(missing_ok=True)
    size = batch_size(engine.batch, len(runs), engine.jobs or engine.cores)
    batches = [runs[i : i + size] for i in range(0, len(runs), size)]
    for number, batch in enumerate(batches):
        (jobs / f"{number}.txt").write_text("".join(f"{run.id}\n" for run in batch), encoding="ascii")
    write_json(jobs / "plan.json", {"host": str(engine.host), "scenario": str(study.scenario.resolve()),
                                    "report": study.reports == "all", "environment": study.variables})
    command = shlex.join([sys.executable, str(LAUNCHER)])
    write_json(jobs / "config.json", {"batches": len(batches), "command": command})
    return len(batches)


def _command(study: Study, engine: Engine) -> list[str]:
    snakemake = shutil.which("snakemake")
    if not snakemake:
        raise InputError('snakemake is not found; "apt install snakemake" installs it.')
    retries = study.retries if engine.retries is None else engine.retries
    command = [snakemake, "--snakefile", str(ROOM / "Snakefile"), "--directory", str(study.folder.resolve()),
               "--configfile", str((study.folder / "jobs" / "config.json").resolve()), "--keep-going", "--nolock",
               "--rerun-triggers", "mtime", "--scheduler", "greedy", "--retries", str(retries)]
    if engine.profile:
        command += ["--profile", str(engine.profile.resolve())]
        return command + (["--jobs", str(engine.jobs)] if engine.jobs else [])
    return [*command, "--cores", str(engine.cores), "--quiet", "rules"]


def run_study(study: Study, engine: Engine, runs: list[Run], progress: Progress, lock: int) -> bool:
    """Does the runs that have no result yet. True when all have theirs. Raises InputError, StudyError."""
    waiting = list(pending(study, runs))
    progress.begin(len({run.id for run in runs}), len(waiting))
    if not waiting:
        return True
    command = _command(study, engine)
    _prepare(study, engine, waiting)
    log = study.folder / "snakemake.log"
    _adopt_orphans()
    with log.open("w", encoding="utf-8") as stream:
        # With the lock in its hands too: it may live on when this process is killed.
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=stream, stderr=subprocess.STDOUT,
                                   pass_fds=[lock])
        try:
            _watch(process, study, waiting, progress)
        except KeyboardInterrupt:
            progress.end()
            _stop(process)
            raise
    progress.end()
    failed = [run for run in waiting if not result_file(run.folder(study.folder)).exists()]
    if failed:
        _tell_failed(study, failed, log)
    return not failed


def _adopt_orphans() -> None:
    """Has the system give this process what its children leave behind: an engine may end before its jobs."""
    set_child_subreaper = 36  # linux/prctl.h
    with contextlib.suppress(AttributeError):  # elsewhere there is no prctl
        ctypes.CDLL(None).prctl(set_child_subreaper, 1, 0, 0, 0)


def _stop(process: subprocess.Popen[bytes]) -> None:
    """Has the engine end its jobs, and these their runs, and waits for them. A terminal may have told them already."""
    if _have_ended(process, SECONDS_TO_STOP):
        return
    # In the background of a script interruptions are ignored, down to the last process.
    how = signal.SIGTERM if signal.getsignal(signal.SIGINT) == signal.SIG_IGN else signal.SIGINT
    for number in list(_descendants(os.getpid())):
        with contextlib.suppress(OSError):
            os.kill(number, how)
    if not _have_ended(process, SECONDS_TO_END) and process.poll() is None:
        # Snakemake may wait for a job of which it missed the end. Its runs have ended; there is nothing that it could lose.
        process.kill()
        process.wait()


def _have_ended(process: subprocess.Popen[bytes], seconds: float) -> bool:
    """Whether the engine and all that it leaves behind end within a time."""
    patience = time.monotonic() + seconds
    try:
        process.wait(seconds)
        while os.waitpid(-1, os.WNOHANG)[0] or time.monotonic() < patience:
            time.sleep(0.02)
    except subprocess.TimeoutExpired:
        return False
    except ChildProcessError:  # there is none any more
        return True
    return False


def _descendants(number: int) -> Iterator[int]:
    """The processes under a process."""
    for tasks in Path(f"/proc/{number}/task").glob("*/children"):
        with contextlib.suppress(OSError):
            for child in map(int, tasks.read_text(encoding="ascii").split()):
                yield child
                yield from _descendants(child)


def _watch(process: subprocess.Popen[bytes], study: Study, waiting: list[Run], progress: Progress) -> None:
    """Counts results and failures until the engine has ended."""
    folders = [run.folder(study.folder) for run in waiting]
    pause = 0.2
    while True:
        has_ended = process.poll() is not None
        start = time.monotonic()
        folders = [folder for folder in folders if not result_file(folder).exists()]
        failed = sum(failure_file(folder).exists() for folder in folders)
        progress.show(len(waiting) - len(folders), failed)
        if has_ended:
            return
        # A slow file system is not asked all the time.
        pause = max(0.2, 10 * (time.monotonic() - start))
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(pause)


def _tell_failed(study: Study, failed: list[Run], log: Path) -> None:
    """Raises StudyError when no run has come to anything; otherwise lists those that have not."""
    told = [run for run in failed if failure_file(run.folder(study.folder)).exists()]
    if not told:
        tail = "\n".join(log.read_text(encoding="utf-8", errors="replace").splitlines()[-10:])
        raise StudyError(f"{len(failed)} runs were not done: Snakemake ended early. The end of {log}:\n{tail}")
    most = 10
    for run in told[:most]:
        folder = run.folder(study.folder)
        failure = read_json(failure_file(folder))
        inputs = ", ".join(f"{name} = {value:g}" if isinstance(value, float) else f"{name} = {value}"
                           for name, value in run.values.items())
        tries = f", tried {failure['tries']} times" if failure["tries"] > 1 else ""
        print(f"failed: {run.id} ({inputs}){tries}: {failure['message']}", file=sys.stderr)
        print(f"        {folder / 'run.log'}", file=sys.stderr)
    if len(failed) > most:
        print(f"        and {len(failed) - most} more", file=sys.stderr)
