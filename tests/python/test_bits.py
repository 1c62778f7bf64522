"""Every number that the samples expect comes out of Python with the bits of the program."""

import numpy as np
import pytest
import zu
from test_networks import by, needs_program, program

DATUM = ["samples/datum/local.coo", "samples/datum/wgs84.coo"]
BOARD = "samples/chessboard/board.coo"
pytestmark = needs_program


@pytest.mark.parametrize("source, target", [DATUM, DATUM[::-1]])
def test_transformations(source, target):
    told = program("transform", source, "--control", target)
    trafo = zu.Trafo3d.of_points(zu.read_points(source), zu.read_points(target))
    found = zu.transform(zu.read_points(source), zu.read_points(target))
    for name in ("scale", "rotation", "source_centre", "target_centre"):
        assert np.array_equal(getattr(trafo, name), told[name])
    parameters = told["parameters"]
    values = [*found.target_centre, found.scale, *found.angles]
    assert values == [parameters[name]["value"] for name in told["parameter_names"]]
    assert [*found.sd[:4]] == [parameters[name]["sd"] for name in told["parameter_names"][:4]]
    assert (found.sigma0, found.redundancy) == (told["sigma0"], told["redundancy"])
    rows = {row["id"]: row for row in told["points"] if "dx" in row}
    moved = trafo.apply(zu.read_points(source).xyz)
    known = zu.read_points(target)
    residuals = [known.find(i).xyz - xyz for i, xyz in zip(zu.read_points(source).ids, moved)]
    common = [rows[i] for i in zu.read_points(source).ids]
    assert np.array_equal(np.transpose(residuals), by(common, "dx", "dy", "dz"))


@pytest.mark.parametrize("name", ["autzen.pts", "site_56_8.pts", "milk_carton.ply", "plane_scan.xyz"])
def test_clouds(name):
    (told,) = program("cloud", "info", f"samples/clouds/{name}")["clouds"]
    (cloud,) = zu.read_clouds(f"samples/clouds/{name}")
    assert len(cloud) == told["points"] and cloud.centre.tolist() == told["centre"]
    assert cloud.box.tolist() == [told["min"], told["max"]]


def test_planes():
    told = program("plane", "samples/clouds/plane_scan.xyz")
    fit = zu.fit_plane(zu.read_points("samples/clouds/plane_scan.xyz", "x,y,z"))
    assert [*fit.plane.normal, fit.plane.d] == [*told["normal"], told["d"]]
    assert (fit.fit.sigma0, fit.fit.redundancy) == (told["sigma0"], told["redundancy"])
    assert np.array_equal(fit.covariance, told["covariance"])


@pytest.mark.parametrize("name, words, options", [
    ("left.prj", [], {}), ("left_flip.prj", ["--flip"], {"flip": True}), ("left_poly.prj", [], {}),
    ("left_cap.prj", ["--library"], {"exact": False}), ("left.prj", ["--library"], {"exact": False})])
def test_measurements_on_a_plane(name, words, options):
    told = program("measure", f"samples/chessboard/{name}", "--plane", BOARD, "--axis", "--check", BOARD, *words)
    board = zu.read_points(BOARD)
    measured = zu.measure_on_plane(zu.read_project(f"samples/chessboard/{name}"), board, board, **options)
    assert np.array_equal(measured.xyz.T, by(told["points"], "x", "y", "z"))
    # The same squares, added in another order.
    assert measured.quality["rms"] == pytest.approx(told["rms"]["total"], rel=1e-14)
    totals = [p["rms"]["total"] for p in told["photos"]]
    assert [p["rms"] for p in measured.photos] == pytest.approx(totals, rel=1e-14)
    covariances = measured.covariances(flip=options.get("flip", False))
    sd = np.sqrt(np.einsum("nii->ni", covariances))
    assert sd.shape == measured.xyz.shape and (sd[:, :2] > 0.0).all() and (sd < 1.0).all()
    if "sx" in told["points"][0]:
        assert np.array_equal(sd.T, by(told["points"], "sx", "sy", "sz"))
