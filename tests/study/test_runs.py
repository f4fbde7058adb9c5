"""Studies that are run, interrupted, changed and repeated; the host is a stand-in."""

from __future__ import annotations

import fcntl
import json
import os
import signal
import subprocess
import time
from collections.abc import Callable
from pathlib import Path

import pytest
from conftest import LAUNCHER, StudyFolder

LEVELS = {"gap": [1, 2, 3], "angle": [10, 20]}


def test_every_run_gets_its_inputs_and_its_line(study: StudyFolder) -> None:
    study.study(LEVELS)
    assert "6 runs, 0 of them done" in study.good("expand")
    assert [(row["gap"], row["angle"]) for row in study.table("runs.csv")][:2] == [("1.0", "10.0"), ("1.0", "20.0")]
    study.good("run", "--cores", "2")
    study.good("collect")
    assert [float(row["sum"]) for row in study.table()] == [11, 21, 12, 22, 13, 23]
    assert {row["status"] for row in study.table()} == {"done"}
    assert [row["id"] for row in study.table()] == [row["id"] for row in study.table("runs.csv")]
    assert study.calls() == 6


def test_a_study_that_is_done_is_left_alone(study: StudyFolder) -> None:
    study.study(LEVELS)
    study.good("run", "--cores", "2")
    assert "6 of them done already" in study.good("run")
    assert study.calls() == 6


def test_a_changed_range_runs_only_what_is_new(study: StudyFolder) -> None:
    study.study(LEVELS)
    study.good("run", "--cores", "2")
    study.study({"gap": [2, 3, 4], "angle": [10, 20]})
    assert "6 runs, 4 of them done already" in study.good("run", "--cores", "2")
    assert study.calls() == 8
    study.scenario("ok again")
    assert "6 runs, 0 of them done" in study.good("expand"), "another scenario has other results"
    study.scenario("ok")
    (study.folder / "magnets.obj").write_text("o other\n", encoding="ascii")
    assert "6 runs, 0 of them done" in study.good("expand"), "and so has another geometry"


def test_a_range_that_grows_keeps_its_runs(study: StudyFolder) -> None:
    study.study({"gap": {"from": "2*mm", "to": "21*mm", "count": 20}})
    study.good("expand")
    few = {row["id"] for row in study.table("runs.csv")}
    study.study({"gap": {"from": "-9*mm", "to": "40*mm", "count": 50}})
    study.good("expand")
    assert few < {row["id"] for row in study.table("runs.csv")}, "whichever way 3 mm is reached"


def test_a_study_that_moves_keeps_its_runs(study: StudyFolder, tmp_path: Path) -> None:
    study.study({"gap": [1]}, environment={"STUDY_TEST": "{study}/magnets.json"})
    (tmp_path / "magnets.json").write_text("{}", encoding="ascii")
    study.good("expand")
    before = study.table("runs.csv")
    moved = tmp_path / "elsewhere"
    moved.mkdir()
    for name in ("gaps.study.json", "scenario.json", "magnets.obj", "magnets.json"):
        (tmp_path / name).rename(moved / name)
    study.runs.parent.rename(moved / "gaps.study")
    study.file, study.runs = moved / "gaps.study.json", moved / "gaps.study" / "runs"
    study.good("expand")
    assert study.table("runs.csv") == before
    (moved / "magnets.json").write_text("[]", encoding="ascii")
    study.good("expand")
    assert study.table("runs.csv") != before, "what a variable names is part of the run"


def test_more_samples_run_only_the_new_ones(study: StudyFolder) -> None:
    drawn = {"gap": {"normal": {"mean": 1, "deviation": "0.1"}}, "angle": {"uniform": {"from": 0, "to": 1}}}
    study.study(drawn, design="random", runs=3, seed=7)
    study.good("run", "--cores", "2")
    study.study(drawn, design="random", runs=5, seed=7)
    assert "5 runs, 3 of them done" in study.good("expand")


def test_failed_runs_are_repeated_as_told_and_do_not_stop_the_others(study: StudyFolder) -> None:
    study.scenario("fail:1")
    study.study(LEVELS, retries=1)
    study.good("run", "--cores", "2", "--batch", "3")
    assert study.calls() == 12
    study.scenario("bad:gap=2")
    ended = study.call("run", "--cores", "2", "--batch", "4")
    assert ended.returncode == 1
    assert ended.stderr.count("the discs overlap") == 2
    assert "gap = 2, angle = 10" in ended.stderr and "tried 2 times" in ended.stderr
    study.good("collect")
    assert [row["status"] for row in study.table()] == ["done", "done", "failed", "failed", "done", "done"]
    assert [row["sum"] for row in study.table()][2:4] == ["", ""]
    assert study.call("run", "--cores", "2", "--retries", "0").stderr.count("the discs overlap") == 2


def test_the_result_file_counts_and_no_exit_status(study: StudyFolder) -> None:
    study.scenario("silent")
    study.study({"gap": [1]})
    ended = study.call("run", "--cores", "1")
    assert ended.returncode == 1
    assert "the desktop has ended" in ended.stderr


def test_ctrl_c_ends_everything_and_says_how_to_go_on(study: StudyFolder) -> None:
    study.scenario("slow:0.3")
    study.study({"gap": [1, 2, 3, 4, 5, 6, 7, 8]})
    process = subprocess.Popen([str(LAUNCHER), "run", str(study.file), "--cores", "2", "--batch", "2"],
                               env=study.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               encoding="utf-8", start_new_session=True)
    wait_until(lambda: any(study.runs.glob("*/result.json")))
    # A terminal tells everybody in the group.
    os.killpg(process.pid, signal.SIGINT)
    told = process.communicate(timeout=60)[1]
    assert process.returncode == 1
    assert told == "Interrupted; the same command goes on where it stopped.\n"
    with pytest.raises(ProcessLookupError):
        os.killpg(process.pid, 0)
    assert "8 runs, " in study.good("run", "--cores", "2")
    assert len(list(study.runs.glob("*/result.json"))) == 8


def test_a_killed_study_goes_on_where_it_stopped(study: StudyFolder) -> None:
    study.scenario("slow:0.5")
    study.study({"gap": [1, 2, 3, 4, 5, 6]})
    process = subprocess.Popen([str(LAUNCHER), "run", str(study.file), "--cores", "2", "--batch", "1"],
                               env=study.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               start_new_session=True)
    wait_until(lambda: len(list(study.runs.glob("*/result.json"))) >= 2)
    os.killpg(process.pid, signal.SIGKILL)
    process.wait()
    done = len(list(study.runs.glob("*/result.json")))
    assert 2 <= done < 6
    before = study.calls()
    study.scenario("slow:0.5")
    assert f"{done} of them done already" in study.good("run", "--cores", "2")
    assert len(list(study.runs.glob("*/result.json"))) == 6
    assert study.calls() == before + 6 - done
    resumed = [file for file in study.runs.glob("*/calls") if "resume" in file.read_text(encoding="ascii")]
    assert len(resumed) == before - done, "what had begun goes on"


def test_a_study_that_is_told_to_end_ends_its_runs(study: StudyFolder) -> None:
    study.scenario("slow:60")
    study.study({"gap": [1, 2, 3]}, retries=2)
    process = subprocess.Popen([str(LAUNCHER), "run", str(study.file), "--cores", "1", "--batch", "2"],
                               env=study.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               encoding="utf-8", start_new_session=True)
    wait_until(lambda: study.calls() > 0)
    process.terminate()
    _, errors = process.communicate(timeout=30)
    assert process.returncode == 1
    assert errors == "Interrupted; the same command goes on where it stopped.\n"
    assert study.calls() == 1
    wait_until(lambda: not processes_of(study))
    study.scenario("ok")
    study.good("run", "--cores", "1")


def test_an_engine_that_does_not_end_is_ended(monkeypatch: pytest.MonkeyPatch) -> None:
    from kinora_study import engine

    for name in ("SECONDS_TO_STOP", "SECONDS_TO_END"):
        monkeypatch.setattr(engine, name, 0.2)
    stubborn = "import signal, time; [signal.signal(n, signal.SIG_IGN) for n in (2, 15)]; print(flush=True); time.sleep(60)"
    process = subprocess.Popen(["/usr/bin/python3", "-c", stubborn], stdout=subprocess.PIPE)
    assert process.stdout and process.stdout.readline()
    engine._stop(process)
    assert process.returncode == -signal.SIGKILL


def test_what_an_engine_leaves_behind_is_ended(monkeypatch: pytest.MonkeyPatch) -> None:
    from kinora_study import engine

    monkeypatch.setattr(engine, "SECONDS_TO_STOP", 0.2)
    engine._adopt_orphans()
    job = "import signal, time; signal.signal(2, signal.SIG_DFL); time.sleep(60)"
    hasty = f"import subprocess; print(subprocess.Popen(['/usr/bin/python3', '-c', {job!r}]).pid)"
    process = subprocess.Popen(["/usr/bin/python3", "-c", hasty], stdout=subprocess.PIPE)
    assert process.stdout
    number = int(process.stdout.readline())
    engine._stop(process)
    with pytest.raises(ProcessLookupError):
        os.kill(number, 0)


def processes_of(study: StudyFolder) -> list[str]:
    """The stand-ins that do a run of the study."""
    words = ["pgrep", "-f", f"stand_in.py {study.folder}"]
    told = subprocess.run(words, capture_output=True, encoding="ascii", check=False)
    return told.stdout.split()


def test_a_run_that_another_job_does_is_waited_for(study: StudyFolder) -> None:
    study.study({"gap": [1, 2]})
    study.good("expand")
    folder = study.runs / study.table("runs.csv")[0]["id"]
    folder.mkdir(parents=True)
    with (folder / "kinora-run.lock").open("w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        process = subprocess.Popen([str(LAUNCHER), "run", str(study.file), "--cores", "2", "--batch", "1"],
                                   env=study.environment(), stdout=subprocess.DEVNULL)
        wait_until(lambda: study.calls() == 1)
        (folder / "run.log").write_text("of the other\n", encoding="ascii")
        time.sleep(1)
        assert process.poll() is None and study.calls() == 1
        result = {"status": "complete", "results": {"sum": 5.0}, "wallSeconds": 1.0}
        (folder / "result.json").write_text(json.dumps(result), encoding="ascii")
    assert process.wait(30) == 0
    assert study.calls() == 1
    assert (folder / "run.log").read_text(encoding="ascii") == "of the other\n"


def test_what_cannot_be_resumed_begins_anew(study: StudyFolder) -> None:
    study.scenario("unresumable")
    study.study({"gap": [1]})
    study.good("expand")
    folder = study.runs / study.table("runs.csv")[0]["id"]
    folder.mkdir(parents=True)
    (folder / "x.state.json").touch()
    study.good("run", "--cores", "1")
    assert [line.split()[0] for line in (folder / "calls").read_text(encoding="ascii").splitlines()] == [
        "resume", "overwrite"]


def wait_until(is_so: Callable[[], bool]) -> None:
    """Looks again and again until it is so."""
    patience = time.monotonic() + 30
    while not is_so():
        assert time.monotonic() < patience, "waited in vain"
        time.sleep(0.05)


def test_a_folder_has_one_study_and_one_process(study: StudyFolder, tmp_path: Path) -> None:
    study.scenario("slow:1")
    study.study({"gap": [1, 2]})
    process = subprocess.Popen([str(LAUNCHER), "run", str(study.file), "--cores", "1"], env=study.environment(),
                               stdout=subprocess.DEVNULL)
    wait_until(lambda: study.calls() > 0)
    assert f"another kinora-study (process {process.pid}) runs this study" in study.refusal("run")
    assert process.wait() == 0
    other = tmp_path / "other.study.json"
    text = study.file.read_text(encoding="utf-8").replace("{", '{"folder": "gaps.study", ', 1)
    other.write_text(text, encoding="utf-8")
    mine, study.file = study.file, other
    assert f"the folder of another study, {mine}" in study.refusal()


def test_texts_stand_for_values(study: StudyFolder) -> None:
    study.study({"poles": {"values": [4, 6], "set": {"name": "rings-{poles}.obj", "gap": "{poles}"}},
                 "br": {"values": [1.25], "set": {"angle": "{br}"}}},
                set={"name": "unused"})
    study.good("run", "--cores", "2")
    inputs = [json.loads((study.runs / row["id"] / "inputs.json").read_text(encoding="utf-8"))
              for row in study.table("runs.csv")]
    assert [i["name"] for i in inputs] == ["rings-4.obj", "rings-6.obj"]
    assert [i["gap"] for i in inputs] == [4.0, 6.0]
    assert [i["angle"] for i in inputs] == [1.25, 1.25]
    study.study({"gap": {"values": [1], "set": {"name": "{gapp}"}}})
    assert 'the study has no parameter "gapp" for "{gapp}". Did you mean "gap"?' in study.refusal()


def test_runs_see_the_environment_of_the_study(study: StudyFolder) -> None:
    study.study({"gap": [1]}, environment={"STUDY_TEST": "{study}/magnets.json"})
    study.good("run", "--cores", "1")
    assert f"{study.folder}/magnets.json" in next(study.runs.glob("*/calls")).read_text(encoding="ascii")


def test_the_page_has_the_data(study: StudyFolder, tmp_path: Path) -> None:
    from kinora_study import collect, table
    from kinora_study.studyfile import read_study

    study.scenario("bad:gap=2")
    study.study(LEVELS, goals={"sum": "greatest"}, title="Gaps & <angles>")
    study.call("run", "--cores", "2")
    read = read_study(study.file)
    outcomes = [collect.outcome_of(read, run) for run in table.make_runs(read)]
    declared = table.check_against_scenario(read, outcomes[0].run, study.host)
    text = collect.page_data(read, outcomes, declared, ["sum"], "kinora-study 1")
    assert not set("<>&") & set(text) and text.isascii()
    data = json.loads(text)
    assert data["title"] == "Gaps & <angles>"
    assert [p["name"] for p in data["parameters"]] == ["gap", "angle"]
    assert data["parameters"][0]["values"] == [1, 1, 2, 2, 3, 3]
    assert data["parameters"][0]["unit"] == "m" and data["results"][0]["unit"] == "N"
    assert data["results"][0]["values"] == [11, 21, None, None, 13, 23]
    assert [run["status"] for run in data["runs"]] == ["done", "done", "failed", "failed", "done", "done"]
    assert data["runs"][2]["error"] == "the discs overlap\nerror: <b>by 1 mm</b>"
    assert data["goals"] == [{"result": "sum", "sense": "greatest"}]
    assert [o.results["sum"] for o in collect.best_runs(read, outcomes, ["sum"])] == [23, 21, 13, 11]
