"""Many files: one broken, one worker lost, an interrupted run; on this machine and through Dask."""

import os
import pathlib
import shutil
import signal
import time
import warnings

import numpy as np
import pytest

import zu
import zu.batch
import zu.tiles

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples"


def measure(project, board):
    """A job: the board measured in a project, as text to the last digit."""
    measured = zu.measure_on_plane(zu.read_project(project), zu.read_points(board), zu.read_points(board))
    return [[int(i), *map(float, xyz)] for i, xyz in zip(measured.ids, measured.xyz)]


def measure_or_die(project, board, die):
    """The same; the job of one file ends its worker the first time."""
    marker = pathlib.Path(die)
    if pathlib.Path(project).stem == "p7" and not marker.exists():
        marker.touch()
        os.kill(os.getpid(), signal.SIGKILL)
    return measure(project, board)


def always_die(file):
    os.kill(os.getpid(), signal.SIGKILL)


def projects(folder, count):
    """Copies of a project, the fourth of them broken."""
    folder.mkdir()
    files = [folder / f"p{k}.prj" for k in range(count)]
    for file in files:
        shutil.copy(SAMPLES / "chessboard" / "left.prj", file)
    text = files[3].read_text()
    files[3].write_text(text[: len(text) // 2])
    return files


def bytes_of(folder):
    return {p.name: p.read_bytes() for p in sorted(folder.iterdir())}


def check(tmp_path, count, **how):
    """All but the broken one, byte for byte those of one process."""
    files = projects(tmp_path / "in", count)
    board = SAMPLES / "chessboard" / "board.coo"
    serial = zu.batch.map(measure, files, results=tmp_path / "serial/{stem}.json", jobs=1, board=board)
    told = []
    found = zu.batch.map(measure_or_die, files, results=tmp_path / "many/{stem}.json", board=board,
                         die=tmp_path / "died", progress=lambda done, all: told.append((done, all)), **how)
    assert (tmp_path / "died").exists()
    assert [job.file for job in found.failed] == [str(files[3])] and "ReadError" in found.failed[0].error
    assert told == [(k + 1, count) for k in range(count)]
    assert bytes_of(tmp_path / "many") == bytes_of(tmp_path / "serial") and len(serial.failed) == 1
    assert len(bytes_of(tmp_path / "many")) == count - 1
    assert found[0].value[0] == serial[0].value[0]
    with pytest.raises(zu.batch.BatchError, match="p3.prj: ReadError"):
        found.values


def test_processes_with_a_broken_file_and_a_killed_worker(tmp_path):
    check(tmp_path, 12, jobs=2)


def test_a_local_cluster_of_dask(tmp_path):
    distributed = pytest.importorskip("distributed")
    import dask

    count = int(os.environ.get("ZU_BATCH_PROJECTS", "200"))
    with warnings.catch_warnings(), dask.config.set({"temporary-directory": str(tmp_path)}):
        warnings.simplefilter("ignore")  # what Dask warns of when workers end
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster:
            with distributed.Client(cluster) as client:
                check(tmp_path, count, executor=client)
                points = np.random.default_rng(2).normal(size=(9000, 3)) * [90.0, 60.0, 0.01] + [4.5e6, 5.4e6, 300.0]
                same_as_one_cloud(tmp_path, points, executor=client)


def same_as_one_cloud(tmp_path, points, **how):
    files = []
    for k, rows in enumerate(np.split(points, [10, 4000, 4000 + len(points) // 5])):
        files.append(tmp_path / f"tile{k}.zpc")
        zu.PointCloud(rows).write(files[-1])
    tiles = zu.tiles.Tiles(files, **how)
    all_points = zu.CloudMoments().add(points[::-1])
    moments, plane = tiles.moments(), tiles.fit_plane()
    assert len(moments) == len(points) and moments.centre.tolist() == all_points.centre.tolist()
    assert moments.box.tolist() == [points.min(axis=0).tolist(), points.max(axis=0).tolist()]
    assert plane.covariance.tolist() == all_points.plane().covariance.tolist()
    assert plane.rms == all_points.plane().rms
    distances = plane.plane.distance(points)
    place, farthest = plane.farthest
    assert place == np.argmax(np.abs(distances)) and abs(farthest - distances[place]) < 1e-8
    box = [points.min(axis=0) + 20.0, points.max(axis=0) + 20.0]
    box[0][2], box[1][2] = -np.inf, np.inf
    turn = np.array([[0, -1, 0, 5], [1, 0, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1.0]])
    chosen = tiles.select(tmp_path / "chosen/{stem}.ply", box=box)
    moved = chosen.transform(turn, tmp_path / "moved/{stem}.zpc").estimate_normals([0, 0, 9], tmp_path / "n/{stem}.pts")
    inside = np.all((points >= box[0]) & (points <= box[1]), axis=1)
    assert len(moved.moments()) == inside.sum() > 0
    assert moved.convert(tmp_path / "back/{stem}.ply").moments().box.shape == (2, 3)


def test_tiles(tmp_path):
    rng = np.random.default_rng(1)
    same_as_one_cloud(tmp_path, rng.uniform(-50, 50, (6000, 3)) * [1, 1, 1e-3], jobs=1)
    tiles = zu.tiles.Tiles([tmp_path / "tile1.zpc", tmp_path / "none.zpc"], jobs=1)
    with pytest.raises(zu.batch.BatchError, match="none.zpc: FileNotFoundError"):
        tiles.moments()


def test_take_keeps_all_fields():
    rng = np.random.default_rng(5)
    cloud = zu.PointCloud(rng.normal(size=(50, 3)), rgb=rng.integers(0, 256, (50, 3)), name="n",
                          intensity=rng.integers(1, 256, 50), normals=rng.normal(size=(50, 3)))
    mask = rng.random(50) < 0.5
    taken = cloud.take(mask)
    assert taken.name == "n" and all((taken.points == cloud.points[mask]).tolist())
    assert cloud.take([7, 3]).points.tolist() == cloud.points[[7, 3]].tolist() and len(cloud.take([])) == 0
    for bad, error in (([50], IndexError), ([-1], IndexError), (mask[:49], ValueError)):
        with pytest.raises(error):
            cloud.take(bad)


def test_an_interrupted_run_goes_on(tmp_path):
    files = projects(tmp_path / "in", 6)
    files[3] = files[2]
    del files[3]
    results = tmp_path / "out/{stem}.json"

    def stop(done, all):
        if done == 2:
            raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        zu.batch.map(zu.check_file, files, results=results, jobs=1, progress=stop)
    assert sorted(bytes_of(tmp_path / "out")) == ["p0.json", "p1.json"]
    os.utime(files[1], ns=(time.time_ns() + 10**9,) * 2)  # newer than its result
    found = zu.batch.map(zu.check_file, files, results=results, jobs=1)
    assert [job.state for job in found] == ["kept", "done", "done", "done", "done"]
    assert found[0].value == [] and "1 kept" in repr(found)
    assert not found.failed and "<p>" in found._repr_html_()


def test_what_is_told(tmp_path):
    files = ["samples/a.coo", "samples/b/a.coo"]
    for arguments, error in (
        ({"jobs": 0}, "1 or more"), ({"results": "x/{stem}.json"}, "would both write"), ({"writes": True}, "results names"),
        ({"results": "x/{file}.json"}, "{stem}, {name} and {folder}"),
    ):
        with pytest.raises(ValueError, match=error):
            zu.batch.map(len, files, **arguments)
    with pytest.raises(TypeError, match="dask.distributed"):
        zu.batch.map(len, files, executor=7)
    dead = zu.batch.map(always_die, files, jobs=2)
    assert all("its process died, twice" in job.error for job in dead.failed) and len(dead.failed) == 2
    (job,) = zu.batch.map(lambda file: object(), files[:1], results=tmp_path / "{stem}.txt", jobs=1)
    assert "method write(path)" in job.error and not list(tmp_path.iterdir())
