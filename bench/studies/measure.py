#!/usr/bin/env python3
"""Measures kinora-study: what the engine adds to the runs, what a job costs it by the number of jobs, and what a run leaves on the disk.

Usage: measure.py BIN RESULT_FOLDER PAGE.md

BIN has kinora-run and kinora-study. The figures go into PAGE.md between its markers "studies", "jobs" and "runs".
"""
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path.insert(0, str(HERE.parent))
from page import fill, processor, table  # noqa: E402

ROUNDS = 3
RUNS, BATCHES, CORES = 200, (1, 10, 100), (1, 2)
JOBS, JOBS_WATCHED = (100, 1000, 10000), 100
CLUSTER_JOBS = 100
SCENARIO = ROOT / "examples/study-coupling/coupling.json"
QUIET = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


class Program:
    """kinora-study, and where it works."""

    def __init__(self, bin_folder, folder):
        self.host = bin_folder / "kinora-run"
        self.launcher = bin_folder / "kinora-study"
        self.folder = folder

    def study(self, runs, scenario=SCENARIO):
        """A study file of so many gaps, its folder not there."""
        file = self.folder / "bench.study.json"
        shutil.rmtree(self.folder / "bench.study", ignore_errors=True)
        gap = {"from": "2*mm", "to": "20*mm", "count": runs}
        file.write_text(json.dumps({"scenario": str(scenario), "parameters": {"gap": gap}, "reports": "none"}))
        return file

    def command(self, file, *words):
        return [str(self.launcher), "run", str(file), "--quiet", "--yes", *words]


def timed(command, **options):
    start = time.monotonic()
    subprocess.run(command, check=True, **QUIET, **options)
    return time.monotonic() - start


def bare_seconds(program, cores):
    """The same runs, each a process of kinora-run as kinora-study starts it, and nothing else."""
    where = program.folder / "bare"
    shutil.rmtree(where, ignore_errors=True)
    where.mkdir()

    def run(index):
        folder = where / str(index)
        words = ["--set", f"gap={0.002 + 0.018 * index / (RUNS - 1)}", "--out", folder, "--result", folder / "result.json",
                 "--overwrite", "--quiet"]
        subprocess.run([program.host, SCENARIO, *words], check=True, **QUIET)

    start = time.monotonic()
    with ThreadPoolExecutor(cores) as pool:
        list(pool.map(run, range(RUNS)))
    return time.monotonic() - start


def study_seconds(program, cores, batch):
    return timed(program.command(program.study(RUNS), "--cores", str(cores), "--batch", str(batch)))


def engine_rows(program):
    """Rows of the table: runs a minute, and times against the bare runs, of medians of rounds that take turns."""
    contenders = {(cores, batch): [] for cores in CORES for batch in (None, *BATCHES)}
    for number in range(ROUNDS):
        for (cores, batch), seconds in contenders.items():
            seconds.append(study_seconds(program, cores, batch) if batch else bare_seconds(program, cores))
            print(f"round {number + 1}: {cores} cores, batch {batch}: {seconds[-1]:.1f} s", flush=True)
    median = {key: statistics.median(seconds) for key, seconds in contenders.items()}
    rows = []
    for (cores, batch), seconds in median.items():
        floor = median[cores, None]
        share = f"{100 * (1 - floor / seconds):.0f} %" if batch else ""
        rows.append([cores, batch or "none: processes alone", f"{60 * RUNS / seconds:,.0f}", f"{seconds / floor:.2f}", share])
    return rows


def idle_scenario(folder):
    """A scenario for the host that does nothing."""
    (folder / "nothing.obj").touch()
    scenario = folder / "nothing.json"
    scenario.write_text(json.dumps({"geometry": {"file": "nothing.obj"}, "parameters": {"gap": 1}, "results": {"none": {}}}))
    return scenario


def processes_of(folder):
    """Snakemake's processes that work in a folder."""
    told = subprocess.run(["pgrep", "-f", f"snakemake.*{folder}"], capture_output=True, text=True).stdout
    return [int(number) for number in told.split()]


def megabytes(process):
    try:
        status = pathlib.Path(f"/proc/{process}/status").read_text()
    except OSError:
        return 0.0
    peak = re.search(r"^VmHWM:\s+(\d+) kB", status, re.M)
    return int(peak[1]) / 1000 if peak else 0.0


def job_row(program, jobs):
    """So many jobs of one run that does nothing: seconds to the first job and a job's after it, and the engine's memory."""
    file = program.study(jobs, idle_scenario(program.folder))
    done = lambda: len(list((program.folder / "bench.study/jobs").glob("*.done")))  # noqa: E731
    environment = os.environ | {"KINORA_RUN": str(HERE / "idle-run")}
    start = time.monotonic()
    process = subprocess.Popen(program.command(file, "--cores", "2", "--batch", "1"), env=environment, **QUIET)
    while done() < 2:
        time.sleep(0.05)
    first, before, memory = time.monotonic(), done(), 0.0
    while done() < min(before + JOBS_WATCHED, jobs):
        memory = max([memory, *map(megabytes, processes_of(program.folder / "bench.study"))])
        time.sleep(0.2)
    seconds = (time.monotonic() - first) / (done() - before)
    process.terminate()
    process.wait()
    print(f"{jobs} jobs: first after {first - start:.1f} s, then {seconds:.3f} s each, {memory:.0f} MB", flush=True)
    return [f"{jobs:,}", f"{first - start:.1f}", f"{seconds:.3f}", f"{memory:.0f}"]


def cluster_text(program):
    """The same on Slurm, its nodes on this machine."""
    file = program.study(CLUSTER_JOBS, idle_scenario(program.folder))
    environment = os.environ | {"KINORA_RUN": str(HERE / "idle-run")}
    toy = ROOT / "tests/study/cluster/toy-cluster"
    ended = subprocess.run([toy, "bash", "-c", f"time -p {' '.join(program.command(file, '--slurm', '--batch', '1'))}"],
                           env=environment, capture_output=True, text=True)
    took = re.search(r"^real (\S+)", ended.stderr, re.M)
    if ended.returncode or not took:
        return f"Slurm was not measured: {ended.stdout.strip()}"
    submissions = subprocess.run([toy, "bash", "-c", "time -p for i in {1..100}; do sbatch --hold --wrap true; done"],
                                 capture_output=True, text=True)
    rate = 100 / float(re.search(r"^real (\S+)", submissions.stderr, re.M)[1])
    return (f"{CLUSTER_JOBS} such jobs by Slurm, with controller, two nodes of two processors and Snakemake on one machine, took "
            f"{float(took[1]):.0f} s; `sbatch` alone took {rate:.0f} jobs a second.")


def run_text(program):
    """What a run of one solve takes on the disk."""
    program.study(20)
    subprocess.run(program.command(program.folder / "bench.study.json", "--cores", "2"), check=True, **QUIET)
    runs = list((program.folder / "bench.study/runs").iterdir())
    entries = [entry for run in runs for entry in [run, *run.rglob("*")]]
    size = sum(entry.stat().st_blocks * 512 for entry in entries)
    return (f"A run of one solve of 16 magnets leaves {len(entries) / len(runs):.0f} files and folders, which take "
            f"{size / len(runs) / 1000:.0f} kB.")


def main():
    bin_folder, results, page = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
    folder = results / "studies"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    program = Program(bin_folder, folder)
    engine = table(["cores", "runs a job", "runs a minute", "time / processes alone", "engine's share of the time"], engine_rows(program))
    jobs = table(["jobs", "first job after, s", "each, s", "Snakemake's memory, MB"], [job_row(program, jobs) for jobs in JOBS])
    fill(page, {"studies": f"{engine}\n\nMeasured on {processor()}.", "jobs": f"{jobs}\n\n{cluster_text(program)}",
                "runs": run_text(program)})
    shutil.rmtree(folder)


main()
