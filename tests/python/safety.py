"""What must not crash, and what must not leak; also under the address sanitizer.

    LD_PRELOAD="$(g++ -print-file-name=libasan.so) $(g++ -print-file-name=libstdc++.so.6)" ASAN_OPTIONS=detect_leaks=0 PYTHONMALLOC=debug \\
        PYTHONPATH=build/release/python python3 tests/python/safety.py [--rounds N]
"""

import gc
import os
import sys
import tempfile
import threading
import warnings
import weakref

import numpy as np
import zu

SAMPLES = "samples"
WALL = np.array([[0, 10.002, 0], [4, 10.398, 0.1], [8, 10.801, 0], [0.1, 10.008, 6], [7, 10.7, 5]])
FOLDER = tempfile.mkdtemp()


# --- What must not crash ---------------------------------------------------------------------------


def reference_cycle():
    class Holder:
        pass

    project, holder = zu.read_project(f"{SAMPLES}/chessboard/left.prj"), Holder()
    holder.photo, holder.self = project.photos[0], holder
    gone = weakref.ref(holder)
    del project, holder
    gc.collect()
    assert gone() is None


def views_outlive_their_owners():
    cloud = zu.PointCloud(np.random.default_rng(1).random((10000, 3)))
    xyz, rgb = cloud.xyz[5:], cloud.rgb
    photo = zu.read_project(f"{SAMPLES}/chessboard/left.prj").photos[2]
    control = zu.adjust(zu.read_project(f"{SAMPLES}/network/camcal.prj"), datum="inner", store=False).images
    del cloud
    gc.collect()
    assert np.isfinite(xyz.sum()) and len(rgb) == 10000 and photo.oriented and len(control) > 2000


def exceptions_out_of_callbacks():
    def stop(title, done):
        raise LookupError(title)

    project = zu.read_project(f"{SAMPLES}/chessboard/left.prj")
    for work in (
        lambda: zu.read_clouds(f"{SAMPLES}/clouds/autzen.pts", progress=stop),
        lambda: zu.measure_on_plane(project, zu.Plane(0, 0, 1, 0), progress=stop),
        lambda: zu.rectify(project.photos[0], np.zeros((480, 640), np.uint8), zu.Plane(0, 0, 1, 0), pixel=1.0,
                           progress=stop),
    ):
        try:
            work()
        except LookupError:
            continue
        raise AssertionError("the callback was not heard")
    assert len(zu.measure_on_plane(project, zu.Plane(0, 0, 1, 0))) == 702  # whole still


def lists_change_while_they_are_walked():
    points = zu.PointList(WALL)
    for point in points:
        points.append(point)
        del points[0]
    assert len(points) == len(WALL)
    cloud = zu.PointCloud(WALL)
    view = cloud.xyz
    for _ in view:
        try:
            cloud.append(WALL)
        except BufferError:
            continue
        raise AssertionError("the memory of a view moved")


def fork_after_import():
    board = zu.read_points(f"{SAMPLES}/chessboard/board.coo")
    pid = os.fork()
    if pid == 0:
        measured = zu.measure_on_plane(zu.read_project(f"{SAMPLES}/chessboard/left.prj"), board, board)
        os._exit(0 if len(measured) == 702 else 1)
    assert os.waitpid(pid, 0)[1] == 0


def threads_at_one_object():
    points, refused = zu.PointList(np.random.default_rng(2).random((20000, 3))), []

    def work():
        for _ in range(20):
            try:
                points.xyz = points.xyz
                zu.fit_plane(points)
            except RuntimeError as error:
                refused.append(error)

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(points) == 20000


# --- What must not leak ----------------------------------------------------------------------------


def points_as_columns():
    points = zu.PointList(WALL, names=["a"] * len(WALL))
    points.xyz = points.xyz + 1.0
    repr(points), points._repr_html_(), points.names, points.find(3), points[0].sd


def a_transformation():
    result = zu.transform(WALL, WALL * 1.001)
    result.apply(WALL), result.carry(zu.PointList(WALL)), result.tests.w, zu.Transformation(result).inverse()


def fits():
    fit = zu.fit_plane(WALL)
    fit.covariance, fit.fit.tests.test, zu.Frame.of_plane(fit.plane).from_world(WALL), repr(fit)


def views():
    cloud = zu.PointCloud(WALL, rgb=np.zeros((5, 3)))
    cloud.xyz, cloud.points, cloud.rgb, cloud.copy().box


def files():
    path = os.path.join(FOLDER, "points.coo")
    zu.PointList(WALL).write(path)
    zu.read_points(path)


def a_failure():
    for work in (lambda: zu.fit_plane(WALL[:2]), lambda: zu.read_points(f"{SAMPLES}/chessboard/left.prj"),
                 lambda: zu.PointList([[1, 2]])):
        try:
            work()
        except ValueError:
            continue
        except ArithmeticError:
            continue


def a_project():
    project = zu.read_project(f"{SAMPLES}/older/facade.prj")
    project.photos, project.cameras, repr(project), project.findings


def joined():
    zu.merge(WALL, WALL * 1.001, tolerance=0.1)
    zu.local_system(zu.PointList(WALL), ("x", 1, 2), ("xy", 4)).points


def pictures():
    path = os.path.join(FOLDER, "picture.png")
    zu.write_image(path, np.zeros((20, 30, 3), np.uint8))
    zu.read_image(path)
    zu.detect_targets(np.zeros((40, 40), np.uint8)).xy


CRASHES = [reference_cycle, views_outlive_their_owners, exceptions_out_of_callbacks,
           lists_change_while_they_are_walked, fork_after_import, threads_at_one_object]
LEAKS = [points_as_columns, a_transformation, fits, views, files, a_failure, a_project, joined, pictures]


def memory():
    gc.collect()
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def growth(work, rounds):
    """Bytes a round, after as many rounds to warm up as count, at least 100."""
    for _ in range(max(100, rounds // 10)):
        work()
    before = memory()
    for _ in range(rounds):
        work()
    return (memory() - before) / rounds


def main():
    warnings.simplefilter("ignore")
    rounds = int(sys.argv[sys.argv.index("--rounds") + 1]) if "--rounds" in sys.argv else 300
    for work in CRASHES:
        work()
        print(f"{work.__name__}: good")
    for work in LEAKS:
        grown = growth(work, rounds)
        print(f"{work.__name__}: {grown:.1f} bytes a round")
        assert "libasan" in os.environ.get("LD_PRELOAD", "") or grown < 2e6 / rounds, work.__name__


if __name__ == "__main__":
    main()
