"""Clouds: views without copies, their lifetimes, files, operations."""

import gc
import json
import os
import pathlib
import threading

import numpy as np
import pytest

import zu

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples" / "clouds"


def make(n=1000):
    rng = np.random.default_rng(3)
    return zu.PointCloud(rng.uniform(-9, 9, (n, 3)), rgb=rng.integers(0, 256, (n, 3)),
                         intensity=rng.integers(1, 256, n), normals=rng.normal(size=(n, 3)))


@pytest.mark.parametrize("name", ["autzen.pts", "site_56_8.pts"])
def test_figures_of_the_samples(name):
    expected = json.loads((SAMPLES / "expected.json").read_text())[name]
    (cloud,) = zu.read_clouds(SAMPLES / name)
    assert len(cloud) == expected["points"] and cloud.name == name[:-4]
    assert cloud.box.tolist() == [expected["min"], expected["max"]]
    assert cloud.xyz[0].tolist() == expected["first"]
    assert cloud.xyz[-1].tolist() == expected["last"]
    np.testing.assert_allclose(cloud.centre, expected["centre"], rtol=1e-12)
    sums = cloud.rgb.sum(axis=0, dtype=int).tolist()
    assert sums == [expected[f"sum_{c}"] for c in ("red", "green", "blue")]


def test_views_show_the_memory_of_the_cloud_and_keep_it():
    cloud = make()
    points, xyz = cloud.points, cloud.xyz
    assert np.shares_memory(points, xyz) and np.shares_memory(xyz, cloud.xyz)
    assert points.itemsize == 64 and np.array_equal(points["y"], xyz[:, 1])
    assert np.array_equal(points["blue"], cloud.rgb[:, 2])
    assert np.array_equal(points["intensity"], cloud.intensity)
    assert np.array_equal(points["nz"], cloud.normals[:, 2])
    with pytest.raises(ValueError):
        xyz[0, 0] = 1.0
    for change in (lambda: cloud.append([1, 2, 3]), lambda: cloud.insert(make(3)),
                   cloud.delete_selected, cloud.undo_delete):
        with pytest.raises(BufferError, match="arrays show the points"):
            change()
    before = xyz.copy()
    cloud.transform(np.diag([2.0, 2.0, 2.0, 1.0]))
    assert np.array_equal(xyz, 2.0 * before)
    part = xyz[::2, 1]
    del cloud, points, xyz
    gc.collect()
    assert np.array_equal(part, 2.0 * before[::2, 1])  # a view outlives the cloud's own name


def test_the_end_of_the_last_view_lets_the_cloud_change():
    cloud = make()
    for view in (cloud.points, cloud.xyz[3:5], np.asarray(cloud.rgb)):
        del view
    gc.collect()
    cloud.append([[1, 2, 3]], rgb=[[255, 0, 1]])
    assert len(cloud) == 1001 and cloud.points[-1]["red"] == 255
    with pytest.raises(ValueError, match="rgb"):
        cloud.append([[1, 2, 3]], rgb=[[256, 0, 1]])
    assert len(zu.PointCloud().xyz) == 0


def test_a_view_in_a_cycle_with_its_cloud_is_collected():
    class Holder:
        pass

    for _ in range(3):
        holder = Holder()
        holder.cloud, holder.me = make(10), holder
        holder.view = holder.cloud.xyz
    del holder
    gc.collect()
    assert not [o for o in gc.get_objects() if isinstance(o, Holder)]


def test_select_delete_undo():
    cloud = make()
    inside = (cloud.xyz[:, 0] >= 0) & (cloud.xyz[:, 1] >= 0)
    planes = [zu.Plane(1, 0, 0, 0), zu.Plane(0, 1, 0, 0), zu.Plane(0, 0, 1, 20), zu.Plane(0, 0, 1, 30)]
    assert cloud.select_pyramid([0, 0, 0], planes) == inside.sum()
    assert np.array_equal(cloud.selected, inside)
    kept = cloud.xyz[~inside].copy()
    assert cloud.delete_selected() == inside.sum() and np.array_equal(cloud.xyz, kept)
    assert cloud.undo_delete() and len(cloud) == 1000 and not cloud.has_undo
    cloud.sort_z()
    assert (np.diff(cloud.xyz[:, 2]) >= 0).all()


@pytest.mark.parametrize("ending, columns", [
    ("zpc", ["xyz", "rgb", "intensity", "normals"]), ("ply", ["xyz", "rgb", "intensity", "normals"]),
    ("pts", ["xyz", "rgb", "intensity"]), ("xyz", ["xyz"])])
def test_files_give_back_what_they_keep(tmp_path, ending, columns):
    clouds = [make(), make(7)]
    path = tmp_path / f"two.{ending}"
    told = []
    zu.write_clouds(path, clouds, progress=lambda title, done: told.append(done))
    assert told and told[-1] == 1.0
    back = zu.read_clouds(path)
    assert len(back) == (2 if ending == "zpc" else 1)
    for column in columns:
        wanted = np.concatenate([getattr(c, column) for c in clouds])
        assert np.array_equal(np.concatenate([getattr(c, column) for c in back]), wanted), column
    assert [len(c) for c in clouds] == [1000, 7]
    if ending == "ply":
        data = path.read_bytes()
        path.write_bytes(data[:-100])
        with pytest.raises(zu.ReadError):
            zu.read_clouds(path)
        with pytest.warns(zu.ReadWarning):
            assert 990 < len(zu.read_clouds(path, partial=True)[0]) < 1007


def test_a_stopped_writer_leaves_nothing(tmp_path):
    def stop(title, done):
        raise KeyboardInterrupt

    cloud = make()
    with pytest.raises(KeyboardInterrupt):
        cloud.write(tmp_path / "a.ply", progress=stop)
    assert os.listdir(tmp_path) == [] and len(cloud) == 1000
    with pytest.raises(ValueError, match="ending"):
        cloud.write(tmp_path / "a.laz")


def test_threads_read_files_side_by_side_and_a_child_goes_on():
    alone = zu.read_clouds(SAMPLES / "autzen.pts")[0].xyz
    found = []
    threads = [threading.Thread(target=lambda: found.append(
        zu.read_clouds(SAMPLES / "autzen.pts")[0].xyz)) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 8 and all(np.array_equal(xyz, alone) for xyz in found)
    child = os.fork()
    if child == 0:
        os._exit(0 if len(zu.read_clouds(SAMPLES / "autzen.pts")[0]) == len(alone) else 1)
    assert os.waitpid(child, 0)[1] == 0
