"""Points, transformations and planes from Python, against figures that were published or made by others."""

import ast
import doctest
import gc
import json
import pathlib
import threading

import numpy as np
import pytest

import zu

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples"


def datum():
    return [zu.read_points(SAMPLES / "datum" / f"{name}.coo") for name in ("local", "wgs84")]


def test_the_examples_of_the_package_are_what_they_say():
    assert doctest.testmod(zu).failed == 0


def test_the_stubs_have_everything():
    tree = ast.parse(pathlib.Path(zu.__file__).with_name("_core.pyi").read_text())
    told = {n.name: {m.name if isinstance(m, ast.FunctionDef) else m.target.id for m in n.body
                     if isinstance(m, (ast.FunctionDef, ast.AnnAssign))}
            for n in tree.body if isinstance(n, ast.ClassDef)}
    functions = {n.name for n in tree.body if isinstance(n, ast.FunctionDef)}
    for name, item in vars(zu._core).items():
        if isinstance(item, type):
            assert {n for n in vars(item) if not n.startswith("_")} <= told[name], name
        elif callable(item):
            assert name in functions


def test_transform_gives_the_published_figures_however_the_points_come():
    source, target = datum()
    expected = json.loads((SAMPLES / "datum/expected.json").read_text())["local_to_wgs84"]
    result = zu.transform(source, target)
    assert result.scale == pytest.approx(expected["scale"], abs=1e-13)
    np.testing.assert_allclose(result.rotation, expected["rotation"], atol=1e-12)
    for i, residual in zip(result.ids, result.residuals):
        wanted = expected["residuals_target_minus_transformed"][str(i)]
        np.testing.assert_allclose(residual, wanted, atol=1e-7)
    # By rows in place of ids, in another order, and with the other side exact: the same bits.
    rows = zu.transform(source.xyz, target.xyz)
    assert np.array_equal(rows.matrix, result.matrix)
    assert np.array_equal(rows.covariance, result.covariance)
    carried = result.carry(source)
    assert np.array_equal(carried.xyz, result.apply(source.xyz))
    assert np.array_equal(result.apply(source.xyz[3]), carried.xyz[3])
    np.testing.assert_allclose(target.xyz - carried.xyz, result.residuals, atol=2e-9)
    np.testing.assert_allclose(source.xyz @ result.matrix[:3, :3].T + result.matrix[:3, 3],
                               carried.xyz, rtol=1e-14)


def test_a_wrong_point_is_set_aside_and_named():
    source, target = datum()
    xyz = target.xyz
    xyz[3] += [0.0, 40.0, 0.0]
    target.xyz = xyz
    result = zu.transform(source, target, sigma_target=0.1, snoop=True)
    assert result.set_aside.tolist() == [4]
    assert not result.tests.used[3] and result.tests.rejected[3]
    assert result.set_aside_errors[0, 1] == pytest.approx(40.0, abs=1.0)
    assert "set aside 4" in repr(result) and "<td>aside</td>" in result.tests._repr_html_()


def test_points_that_decide_nothing_raise_and_say_what_is_free():
    line = np.outer(np.arange(4.0), [1, 2, 3])
    with pytest.raises(zu.AdjustmentError) as caught:
        zu.transform(line, line)
    assert caught.value.status == "rank defect" and "rotation about the line" in caught.value.free
    for fit in (zu.fit_plane, zu.fit_cylinder, zu.CalcPlane):
        with pytest.raises(zu.AdjustmentError):
            fit(line)


def test_plane_of_a_scan_and_its_frame():
    expected = json.loads((SAMPLES / "clouds/expected.json").read_text())["plane_scan.xyz"]
    scan = np.loadtxt(SAMPLES / "clouds/plane_scan.xyz")
    calc, wanted = zu.CalcPlane(scan), expected["plane_as_fitted"]
    np.testing.assert_allclose(calc.plane.normal, wanted["normal"], atol=1e-12)
    assert calc.plane.d == pytest.approx(wanted["d"], abs=1e-12)
    assert calc.sigma0 == pytest.approx(wanted["sigma0"], abs=1e-12)
    off = calc.plane.distance(scan)
    assert np.sqrt(np.mean(off**2)) == pytest.approx(wanted["rms"], abs=1e-12)
    np.testing.assert_allclose(calc.plane.project(scan), calc.foot_points.xyz, atol=1e-12)
    frame = zu.Frame.of_plane(calc.plane)
    np.testing.assert_allclose(frame.from_world(scan)[:, 2], off, atol=1e-12)
    np.testing.assert_allclose(frame.to_world(frame.from_world(scan)), scan, atol=1e-12)
    # Orthogonal, all points with one weight: the smallest singular direction.
    fit = zu.fit_plane(scan, snoop=False)
    normal = np.linalg.svd(scan - scan.mean(axis=0))[2][2]
    np.testing.assert_allclose(np.abs(fit.plane.normal), np.abs(normal), atol=1e-9)


@pytest.mark.parametrize("kind, coefficients", [("helmert", 4), ("affine", 6), ("projective", 8)])
def test_trafo2d_finds_what_the_points_were_made_with(kind, coefficients):
    rng = np.random.default_rng(7)
    xy = rng.uniform(0, 100, (12, 2))
    target = xy @ [[2.0, 0.5], [-0.5, 2.0]] + [30.0, -7.0]
    fit = zu.trafo2d(xy, target, kind=kind)
    assert fit.coefficients.shape == (coefficients,) == fit.sd.shape
    np.testing.assert_allclose(fit.apply(xy), target, atol=1e-9)
    np.testing.assert_allclose(fit.uncentred().apply(xy), target, atol=1e-9)
    moved, covariances = fit.apply_with_covariance(xy, np.tile(np.eye(2) * 1e-4, (12, 1, 1)))
    assert np.array_equal(moved, fit.apply(xy)) and covariances.shape == (12, 2, 2)
    if kind == "helmert":
        np.testing.assert_allclose(covariances[:, 0, 0], 4.25e-4, rtol=1e-6)


def test_columns_go_in_and_come_out(tmp_path):
    points = zu.PointList([[1, 2, 3], [4, 5, 6]], [7, 4294967295], names=["Ecke Süd", "b"],
                          sd=[[0.1] * 3] * 2, control=[7, 3])
    assert points.ids.tolist() == [7, 4294967295] and points.names.tolist() == ["Ecke Süd", "b"]
    points.write(tmp_path / "a.coo", "id,name,x,y,z,dx,dy,dz")
    again = zu.read_points(tmp_path / "a.coo", "id,name,x,y,z,dx,dy,dz")
    for column in ("ids", "names", "xyz", "sd"):
        assert np.array_equal(getattr(again, column), getattr(points, column)), column
    for p in points:  # copies: the list may change while it is walked
        p.x = 99.0
        points.append(p)
        del points[0]
    assert points.xyz[:, 0].tolist() == [99.0, 99.0]
    assert points.find(7).x == 99.0 and points.find(8) is None
    for bad in ([[1, 2]], [[1, 2, "x"]], 5):
        with pytest.raises(ValueError, match="xyz"):
            zu.PointList(bad)
    with pytest.raises(ValueError, match="whole number"):
        points.ids = [1, -1]
    with pytest.raises(ValueError, match="3 rows for 2 points"):
        points.xyz = np.zeros((3, 3))


def test_bad_files_name_the_place(tmp_path):
    path = tmp_path / "bad.coo"
    path.write_text("1 1 2 3\n2 4 x 6\n3 7 8 9\n")
    with pytest.raises(zu.ReadError) as caught:
        zu.read_points(path)
    assert (caught.value.file, caught.value.line, caught.value.column) == (str(path), 2, 5)
    assert caught.value.findings[0].right
    with pytest.warns(zu.ReadWarning) as told:
        assert len(zu.read_points(path, tolerant=True)) == 2
    assert told[0].message.finding.line == 2 and told[0].filename == __file__
    with pytest.raises(FileNotFoundError):
        zu.read_points(tmp_path / "none")
    with pytest.raises(zu.WriteError):
        zu.PointList([[1, 2, 3]]).write(tmp_path / "no" / "folder")


def test_progress_is_told_and_what_it_raises_comes_out(tmp_path):
    path = tmp_path / "many.coo"
    path.write_text("".join(f"{i} {i} 0 0\n" for i in range(1, 50001)))
    told = []
    zu.read_points(path, progress=lambda title, done: told.append(done))
    assert told == sorted(told) and told[-1] == 1.0 and len(told) > 50

    def stop(title, done):
        raise KeyError("enough")

    with pytest.raises(KeyError, match="enough"):
        zu.read_points(path, progress=stop)


def test_a_list_at_work_in_another_thread_is_refused():
    points = zu.PointList(np.random.default_rng(1).uniform(size=(200000, 3)))
    result = zu.transform(points.xyz[:9], points.xyz[:9])
    refused, done = [], threading.Event()

    def work():
        result.carry(points)
        done.set()

    thread = threading.Thread(target=work)
    thread.start()
    while not done.is_set():
        try:
            points.append(zu.Point(1, 0, 0, 0))
        except RuntimeError as error:
            refused.append(error)
    thread.join()
    assert refused and "another thread" in str(refused[0])
    points.append(zu.Point(1, 0, 0, 0))


def test_columns_outlive_their_list():
    points = zu.PointList(np.arange(30.0).reshape(10, 3))
    xyz = points.xyz
    del points
    gc.collect()
    assert xyz.sum() == 435.0
