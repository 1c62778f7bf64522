"""Lists joined, compared, put into local systems; transformations in files; values that travel."""

import copy
import pickle

import numpy as np
import pytest
import zu
from test_networks import by, needs_program, program

MERGE = "samples/merge/first.coo", "samples/merge/second.coo"
LOCAL, WGS84 = "samples/datum/local.coo", "samples/datum/wgs84.coo"


def same(columns, rows, *keys):
    """Columns (n, k) equal k numbers, or one list of k numbers, of each row."""
    values = [row[keys[0]] for row in rows] if len(keys) == 1 else [[row[key] for key in keys] for row in rows]
    return np.array_equal(columns, values)


@needs_program
@pytest.mark.parametrize("options, words", [
    ({}, []), ({"snoop": True, "sigma": 0.05}, ["--test", "--sigma", "0.05"]),
    ({"blend": 0.5, "adjust": False, "search": "random", "seed": 3}, ["--blend", "0.5", "--search", "random", "--seed", "3"])])
def test_merge_is_that_of_the_program(options, words):
    first, second = map(zu.read_points, MERGE)
    merged = zu.merge(first, second, tolerance=0.5, **options)
    told = program("merge", *MERGE, "--tolerance", "0.5", *words)
    rows = {row["id"]: row for row in told["points"]}
    order = [rows[i] for i in [*merged.points.ids, *merged.rejected.ids]]
    assert same(np.vstack([merged.points.sd, merged.rejected.sd]), order, "sd")
    assert same(np.vstack([merged.points.xyz, merged.rejected.xyz]), order, "x", "y", "z")
    assert set(merged.rejected_ids) == set(told["rejected"]) and merged.trafo.scale == told["scale"]
    with pytest.raises(zu.AdjustmentError):
        zu.merge(first, second, tolerance=1e-9)
    with pytest.raises(ValueError, match="tolerance"):
        zu.merge(first, second, tolerance=0.0)


@needs_program
def test_epochs_and_local_systems_are_those_of_the_program(tmp_path):
    first = zu.read_points(LOCAL)
    moved = first.copy()
    xyz = moved.xyz
    xyz[2] += [0.0, 30.0, 0.0]
    moved.xyz = xyz
    moved.write(tmp_path / "second.coo")
    found = zu.compare_epochs(first, zu.read_points(tmp_path / "second.coo"), sigma_first=1.0, sigma_second=1.0)
    told = program("compare", LOCAL, tmp_path / "second.coo", "--sigma", "1")
    for column, key in [(found.moves_sd, "sd"), (found.test, "test"), (found.limit, "limit"), (found.moved, "moved")]:
        assert np.array_equal(column, *by(told["points"], key))
    assert same(found.moves, told["points"], "dx", "dy", "dz") and found.ids[found.moved] == [first.ids[2]]

    a, b, c = map(int, first.ids[:3])
    local = zu.local_system(first, ("x", a, b), ("xy", c), (a, (10.0, 20.0, 30.0)), [(a, b, 100.0)], sigma=0.01)
    told = program("local", LOCAL, "--axis", f"X:{a},{b}", "--plane", f"XY:{c}", "--origin", f"{a}:10,20,30",
                   "--scale", f"{a},{b}:100", "--sigma", "0.01")
    assert same(local.points.xyz, told["points"], "x", "y", "z") and same(local.points.sd, told["points"], "sd")
    assert local.trafo.scale == told["scale"] and local.scales_sd[0] == told["scales"][0]["sd"]
    with pytest.raises(ValueError, match="one that holds the axis"):
        zu.local_system(first, ("x", a, b), ("yz", c))
    with pytest.raises(ValueError, match="point 999 is not in the list"):
        zu.local_system(first, ("x", a, 999), ("xy", c))


@needs_program
def test_transformations_travel_between_python_and_the_program(tmp_path):
    source, target = zu.read_points(LOCAL), zu.read_points(WGS84)
    program("transform", LOCAL, "--control", WGS84, "--test", "--save", tmp_path / "program.json")
    zu.Transformation(zu.transform(source, target, snoop=True)).write(tmp_path / "python.json")
    theirs, mine = (zu.read_transformation(tmp_path / f"{name}.json") for name in ("program", "python"))
    assert np.array_equal(theirs.matrix, mine.matrix) and np.array_equal(theirs.covariance, mine.covariance)
    told = program("apply", tmp_path / "python.json", LOCAL, tmp_path / "out.coo")
    carried = theirs.apply(source)
    assert same(carried.xyz, told["points"], "x", "y", "z") and same(carried.sd, told["points"], "sd")
    assert abs(mine.inverse().apply(mine.apply(source.xyz)) - source.xyz).max() < 1e-6
    (tmp_path / "bad.json").write_text("{")
    with pytest.raises(zu.ReadError):
        zu.read_transformation(tmp_path / "bad.json")
    matrix = np.diag([1.0, 2.0, 3.0, 1.0])
    project = zu.read_project("samples/chessboard/left.prj")
    with pytest.raises(ValueError, match="similarity"):
        zu.Transformation(matrix).apply_to_project(project)
    before = project.photo(1).position
    zu.Transformation(np.diag([2.0, 2.0, 2.0, 1.0])).apply_to_project(project)
    assert np.array_equal(project.photo(1).position, 2.0 * before)


def test_projects_go_to_other_programs_and_back(tmp_path):
    project, told = zu.import_photos("samples/colmap")
    assert told["photos"] == len(project.photos) > 0 and told["cameras"]
    zu.export_photos(project, tmp_path / "model")
    again, _ = zu.import_photos(tmp_path / "model")
    assert np.array_equal(again.photos[0].position, project.photos[0].position)
    with pytest.raises(zu.ReadError):
        zu.import_photos(tmp_path)


def test_values_travel_to_the_last_bit():
    points = zu.PointList([[0.1, 0.2, 0.3], [1 / 3, np.nan, 1e300]], ids=[7, 4294967295], names=["a", "ü"])
    points.sd, points.control, points.cameras = points.xyz + 1.0, [7, 1], [3, 4]
    back = pickle.loads(pickle.dumps(points))
    for name in ("xyz", "sd", "residuals", "ids", "names", "control", "photos", "cameras"):
        assert np.array_equal(getattr(back, name), getattr(points, name), equal_nan=name in ("xyz", "sd"))
    assert copy.deepcopy(points[0]).sd.tolist() == points[0].sd.tolist()
    (cloud,) = zu.read_clouds("samples/clouds/autzen.pts")
    again = pickle.loads(pickle.dumps(cloud))
    assert (again.points == cloud.points).all() and again.name == cloud.name
    trafo = zu.transform(zu.read_points(LOCAL), zu.read_points(WGS84)).trafo
    camera = zu.read_cameras("samples/chessboard/cameras.cam")[0]
    for value, attributes in [
        (trafo, ["matrix"]), (zu.Transformation(trafo), ["matrix"]), (zu.Frame([1, 2, 3]), ["origin", "x"]),
        (zu.Trafo2d("Affin", np.arange(20) / 3), ["name", "coefficients"]),
        (zu.Plane(1 / 3, 0, 1, 2, id=5, name="wall"), ["normal", "d", "id", "name"]),
        (camera, ["c", "xh", "yh", "a1", "a2", "a3", "r0", "b1", "c2", "id", "name", "mode"]),
    ]:
        travelled = pickle.loads(pickle.dumps(value))
        for name in attributes:
            assert np.array_equal(getattr(travelled, name), getattr(value, name)), name
