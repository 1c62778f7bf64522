"""Orienting, calibrating and adjusting photos: every figure of the program, to the last bit."""

import json
import os
import subprocess
from pathlib import Path

import numpy as np
import pytest
import zu

SAMPLES = Path("samples/network")
EXPECTED = json.loads((SAMPLES / "expected.json").read_text())["cases"]
PROGRAM = os.environ.get("ZU_PROGRAM", "")
needs_program = pytest.mark.skipif(not PROGRAM, reason="the program is not built")


def program(*arguments):
    run = subprocess.run([PROGRAM, *map(str, arguments), "--json"], capture_output=True, text=True)
    assert run.returncode in (0, 1), run.stderr
    return json.loads(run.stdout)


def by(rows, *keys):
    """Columns of rows of JSON; null is NaN."""
    return [np.array([row[k] for row in rows], dtype=float) for k in keys]


def adjusted(name, **options):
    case = EXPECTED[name]["input"]
    control = zu.read_points(SAMPLES / case["control"], _columns(case)) if case["control"] else None
    return zu.adjust(zu.read_project(SAMPLES / case["project"]), control,
                     zu.read_points(SAMPLES / case["approx"], "id,x,y,z"), sigma=0.1,
                     estimate=case["estimated"], datum=case["datum"], **options)


def _columns(case):
    return "id,x,y,z" + (",dx,dy,dz" if case["control"] == "control_weighted.coo" else "")


@pytest.mark.filterwarnings("ignore::zu.AdjustmentWarning")
@pytest.mark.parametrize("name", EXPECTED)
def test_networks_meet_the_samples(name):
    case, found = EXPECTED[name], adjusted(name)
    assert abs(found.sigma0 - case["sigma0"]) < 1e-6 and found.redundancy == case["redundancy"]
    assert abs(found.rms_pixels - case["rms_px"]) < 1e-7
    camera = case["cameras"][0]
    for parameter, sd in found.camera_sd[0].items():
        assert abs(sd - camera["sd"][parameter]) < 1e-4 * sd
        assert abs(getattr(found.cameras[0], parameter) - camera["values"][parameter]) < 1e-3 * sd
    points = sorted(case["points"], key=lambda point: point["id"])
    sds = np.transpose(by(points, "sx", "sy", "sz"))
    assert (abs(found.points.xyz.T - by(points, "x", "y", "z")).T <= 1e-3 * sds).all()
    for d in case["distances"]:
        assert abs(found.distance_sd(d["a"], d["b"]) - d["sd"]) <= 1e-4 * d["sd"]
    ids = found.points.ids[:2]
    assert np.allclose(found.covariance(ids)[3:, 3:], found.point_covariances[1], rtol=1e-9)


@needs_program
@pytest.mark.filterwarnings("ignore::zu.AdjustmentWarning")
@pytest.mark.parametrize("name, options", [("weighted", {"snoop": True}), ("free", {})])
def test_networks_are_those_of_the_program_to_the_last_bit(name, options, tmp_path):
    case = EXPECTED[name]["input"]
    control = ["--control", SAMPLES / case["control"]] if case["control"] else []
    test = ["--test"] if options else []
    told = program("adjust", SAMPLES / case["project"], *control, "--approx", SAMPLES / case["approx"],
                   "--estimate", ",".join(case["estimated"]), "--datum", case["datum"], *test)
    found = adjusted(name, **options)
    assert (found.sigma0, found.rms_pixels, found.steps) == (
        told["sigma0"], told["rms_px"], told["iterations"])
    for mine, rows, keys in [
        (found.positions, told["photos"], ["position"]), (found.rotations, told["photos"], ["rotation"]),
        (found.rotation_sd, told["photos"], ["sd_rotation"]), (found.photo_rms_pixels, told["photos"], ["rms_px"]),
        (found.points.xyz.T, told["points"], ["x", "y", "z"]), (found.points.sd.T, told["points"], ["sx", "sy", "sz"]),
        (found.ellipsoid_axes, [p["ellipsoid"] for p in told["points"]], ["axes"]),
        (found.images.residuals[found.images.used].T, told["residuals"], ["vx", "vy"]),
        (found.images.w[found.images.used].T, told["residuals"], ["wx", "wy"]),
        (found.images.redundancy[found.images.used].T, told["residuals"], ["rx", "ry"]),
    ]:
        assert np.array_equal(mine, np.squeeze(by(rows, *keys)))
    assert [a["id"] for a in found.set_aside] == [a["id"] for a in told["set_aside"]]
    assert len(found.set_aside) > 0 or not options
    assert np.array_equal(found.control.residuals[found.control.used].ravel(), *by(told["control"], "v"))
    result = zu.transform(np.eye(3), np.eye(3) * 1.5)
    for value in (found, found.images, found.orientation, result, result.tests, result.trafo):
        for attribute in (a for a in dir(type(value)) if not a.startswith("_")):
            getattr(value, attribute)
    assert "Network of 21 photos" in repr(found) and "<table>" in found.images._repr_html_()


@needs_program
def test_photos_are_oriented_and_cameras_calibrated_as_the_program_does():
    project = zu.read_project(SAMPLES / "camcal_unoriented.prj")
    found = zu.orient(project, zu.read_points(SAMPLES / "control_fixed.coo", "id,x,y,z"))
    told = program("orient", SAMPLES / "camcal_unoriented.prj", "--control", SAMPLES / "control_fixed.coo")
    assert found.good.all() and found.ways == [p["way"] for p in told["photos"]]
    for mine, key in [(found.positions, "position"), (found.rotations, "rotation"),
                      (found.position_sd, "sd_position"), (found.rms_pixels, "rms_px")]:
        assert np.array_equal(mine, *by(told["photos"], key))
    assert np.array_equal(project.photo(3).position, found.positions[2])

    board = "samples/chessboard/board.coo"
    project = zu.read_project("samples/chessboard/left.prj")
    with pytest.warns(zu.AdjustmentWarning):
        found = zu.calibrate(project, zu.read_points(board), mode="cap")
    told = program("calibrate", "samples/chessboard/left.prj", "--board", board, "--mode", "2")
    assert found.sigma0 == told["sigma0"] and found.camera_sd[0] == told["cameras"][0]["sd"]
    assert project.photo(1).camera.c == told["cameras"][0]["values"]["c"]
    q = found.camera_covariances[0]
    assert np.allclose(q / np.sqrt(np.outer(q.diagonal(), q.diagonal())), told["cameras"][0]["correlation"])


def test_what_is_wrong_is_told_and_ends_the_work():
    project = zu.read_project(SAMPLES / "camcal.prj")
    with pytest.raises(ValueError, match='"focal"; "c", "xh"'):
        zu.adjust(project, estimate=["focal"])
    with pytest.raises(ValueError, match="scale_bars: row 0"):
        zu.adjust(project, scale_bars=[[1, 2, 3.0, 0.1]])
    with pytest.raises(zu.AdjustmentError, match="datum"):
        zu.adjust(project)
    with pytest.raises(zu.AdjustmentError, match="no photo could be oriented"):
        zu.orient(project, np.zeros((3, 3)) + 5.0)
    seen = []

    def stop(title, done):
        seen.append(title)
        raise KeyError("enough")

    before = project.photo(1).position
    with pytest.raises(KeyError, match="enough"):
        zu.adjust(project, datum="inner", progress=stop)
    assert seen == ["adjusting"] and np.array_equal(project.photo(1).position, before)
