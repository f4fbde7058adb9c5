"""Life of a coupling: projects, progress, threads, its end."""

import gc
import os
import time
from concurrent.futures import ThreadPoolExecutor

import magnet_pair
import pytest
from kinora_veltrix import BadArgument, Code, Coupling, Load, Pose, Severity, build, version


def test_version_and_build():
    text = (magnet_pair.ROOT / "CMakeLists.txt").read_text()
    numbers, dash, candidate = version().partition("-")
    assert f"project(KinoraVeltrixCoupling VERSION {numbers} " in text
    assert f'set(KINORA_VERSION_SUFFIX "{dash}{candidate}")' in text
    assert version() in build()


def test_a_project_is_saved_closed_and_opened_again(pair, tmp_path):
    pair.analyze(0.0, magnet_pair.poses(0.012))
    pair.save_project()
    pair.close_project()
    assert pair.designs(tmp_path / "pair.vtdk") == ["Veltrix3DDesign1"]
    pair.close_project()
    pair.open_project(tmp_path / "pair.vtdk", "Veltrix3DDesign1")
    assert pair.analyze(0.0, magnet_pair.poses(0.012))[1].force[2] == pytest.approx(-14.67, abs=0.05)


def test_quit_and_release_may_be_followed_by_another_launch(tmp_path):
    with Coupling(busy_wait=None) as coupling:
        magnet_pair.start(coupling, tmp_path)
        coupling.release()
        coupling.launch("Simulator")
        coupling.quit()
        (tmp_path / "second").mkdir()
        magnet_pair.start(coupling, tmp_path / "second")
        coupling.quit()


def test_names_of_files_may_have_any_characters(tmp_path):
    folder = tmp_path / "Größe λ 磁石"
    folder.mkdir()
    geometry = folder / "Würfel ✓.obj"
    geometry.write_bytes(magnet_pair.GEOMETRY.read_bytes())
    with Coupling() as coupling:
        coupling.launch("Simulator")
        coupling.create_project(folder / "Zug №1.vtdk", geometry, "mm")
        coupling.save_project()
        coupling.close_project()
        assert coupling.designs(str(folder / "Zug №1.vtdk")) == ["Veltrix3DDesign1"]
        coupling.close_project()


def test_geometry_may_come_after_the_project(pair, tmp_path):
    pair.init_geometry(magnet_pair.GEOMETRY, "mm")  # the same once more, which the desktop takes
    assert pair.analyze(0.0, magnet_pair.poses(0.012))[1].force[2] < -14


def test_messages_are_those_of_a_severity_and_graver(pair):
    pair.analyze(0.0, magnet_pair.poses(0.012))
    everything = pair.messages()
    assert everything and set(pair.messages(Severity.WARNING)) < set(everything)
    assert pair.messages(Severity.FATAL) == []


def test_a_run_is_one_step_per_time(pair):
    seen = []
    times = (0.0, 0.25, 0.5)
    history = pair.run(
        times, lambda now: magnet_pair.poses(0.012 + 0.01 * now), lambda *progress: seen.append(progress)
    )
    assert seen == [(1, 3, 0.0), (2, 3, 0.25), (3, 3, 0.5)]
    for now, (lower, upper) in zip(times, history):
        assert isinstance(lower, Load)
        assert upper.force[2] == pytest.approx(magnet_pair.closed_form(0.012 + 0.01 * now), rel=1e-3)


def test_what_progress_raises_ends_the_run_between_two_steps(pair):
    def stop(done, total, now):
        if done == 2:
            raise KeyboardInterrupt

    asked = []
    with pytest.raises(KeyboardInterrupt):
        pair.run([0.0, 0.1, 0.2, 0.3], lambda now: asked.append(now) or magnet_pair.poses(0.012), stop)
    assert asked == [0.0, 0.1]
    assert len(pair.analyze(0.2, magnet_pair.poses(0.012))) == 2


def test_couplings_in_threads_of_their_own(tmp_path):
    def pull(number):
        (tmp_path / str(number)).mkdir()
        distances = [0.012 + 0.001 * (number + step) for step in range(4)]
        with Coupling() as coupling:
            magnet_pair.start(coupling, tmp_path / str(number))
            loads = coupling.run(range(4), lambda step: magnet_pair.poses(distances[step]))
            coupling.close_project()
        return [(distance, upper.force[2]) for distance, (_, upper) in zip(distances, loads)]

    with ThreadPoolExecutor(4) as pool:
        for results in pool.map(pull, range(4)):
            for distance, force in results:
                assert force == pytest.approx(magnet_pair.closed_form(distance), rel=1e-3)


def test_other_threads_of_python_run_during_a_call(pair, tmp_path):
    pair.analyze(0.0, magnet_pair.poses(0.012))
    # The next step ends when somebody reads the line that it logs; without another thread it never would.
    log = tmp_path / "pair.reports" / "pair.coupling.csv"
    log.unlink()
    os.mkfifo(log)
    with ThreadPoolExecutor(1) as pool:
        step = pool.submit(pair.analyze, 0.1, magnet_pair.poses(0.012))
        assert log.read_bytes().startswith(b"1,0.1,0,0,0,0,0,0,0,0,14.67")
        assert len(step.result()) == 2


def test_a_closed_coupling_says_so(tmp_path):
    with Coupling() as coupling:
        assert not coupling.closed
    assert coupling.closed
    coupling.close()
    with pytest.raises(BadArgument, match="^kv_analyze: this coupling is closed; make another one$") as caught:
        coupling.analyze(0.0, [Pose("lower")])
    assert caught.value.code == Code.BAD_ARGUMENT


def test_a_forked_process_is_told_to_make_its_own(pair):
    child = os.fork()
    if child == 0:
        try:
            pair.save_project()
        except BadArgument as error:
            pair.close()
            os._exit(0 if "save_project: this coupling is of process" in str(error) else 1)
        os._exit(2)
    assert os.waitpid(child, 0)[1] == 0
    pair.save_project()


def threads():
    return len(os.listdir("/proc/self/task"))


def test_a_forgotten_coupling_is_ended():
    before = threads()
    coupling = Coupling()
    assert threads() == before + 1
    del coupling
    gc.collect()
    deadline = time.monotonic() + 5
    while threads() != before and time.monotonic() < deadline:
        time.sleep(0.001)  # the system takes the ended thread off its list a moment later
    assert threads() == before
