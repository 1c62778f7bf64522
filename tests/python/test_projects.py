"""Projects, photos and cameras, against an independent calculation and against the program."""

import gc
import json
import os
import pathlib
import subprocess
import threading

import numpy as np
import pytest

import zu

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / "samples" / "chessboard"
PROGRAM = os.environ.get("ZU_PROGRAM", "")


@pytest.mark.parametrize("name, truth, flip", [
    ("left.prj", "expected.json", False), ("left_flip.prj", "expected.json", True),
    ("left_poly.prj", "expected.json", False), ("left_cap.prj", "expected_cap.json", False)])
def test_every_figure_of_an_independent_calculation(name, truth, flip):
    expected = json.loads((SAMPLES / truth).read_text())
    project, board = zu.read_project(SAMPLES / name), zu.read_points(SAMPLES / "board.coo")
    measured = zu.measure_on_plane(project, board, board, flip=flip, exact=False)
    total = expected["total"]
    assert (len(project.photos), len(measured)) == (total["photos"], total["points"])
    assert measured.quality["rms"] == pytest.approx(total["rms_mm"], abs=1e-9)
    np.testing.assert_allclose(measured.plane.normal, total["plane"]["normal"], atol=1e-12)
    first = project.photos[0]
    for photo, figures, wanted in zip(project.photos, measured.photos, expected["photos"]):
        assert (photo.id, photo.name, figures["worst_point"]) == (
            wanted["photo"], wanted["name"], wanted["worst_point"])
        assert figures["rms"] == pytest.approx(wanted["rms_mm"], abs=1e-9)
        assert figures["worst"] == pytest.approx(wanted["worst_mm"], abs=1e-9)
        rms = [wanted[f"rms_{axis}_mm"] for axis in "xyz"]
        np.testing.assert_allclose(figures["rms_xyz"], rms, atol=1e-9)
        assert photo.position.tolist() == wanted["position"]
        np.testing.assert_allclose(photo.angles, [wanted["angles_rad"][k] for k in "abc"], atol=1e-9)
        np.testing.assert_allclose(photo.rotation[:, 2], wanted["axis"], atol=1e-9)
        apart = np.linalg.norm(photo.position - first.position)
        assert apart == pytest.approx(wanted["distance_to_first_photo_mm"], abs=1e-9)
        pixel = project.measurements(photo.id).xyz[:1, :2]
        adjusted = photo.convert(pixel, "digi", "adjusted", flip=flip, exact=False)
        np.testing.assert_allclose(adjusted[0], wanted["first_point_adjusted_mm"], atol=1e-9)
        np.testing.assert_allclose(photo.rays(adjusted)[0], wanted["first_point_ray"], atol=1e-9)
        if name == "left.prj":
            np.testing.assert_allclose(photo.biko_region, wanted["biko_corners"], atol=1e-9)


@pytest.mark.skipif(not PROGRAM, reason="no program beside the module")
def test_the_same_bits_as_from_the_program():
    run = subprocess.run(
        [PROGRAM, "measure", SAMPLES / "left.prj", "--plane", SAMPLES / "board.coo", "--check",
         SAMPLES / "board.coo", "--axis", "--json"], capture_output=True, check=True)
    told = json.loads(run.stdout)
    board = zu.read_points(SAMPLES / "board.coo")
    measured = zu.measure_on_plane(zu.read_project(SAMPLES / "left.prj"), board, board)
    assert measured.xyz.tolist() == [[p[k] for k in "xyz"] for p in told["points"]]
    assert measured.quality["rms"] == told["rms"]["total"]
    assert measured.quality["rms_pixels"] == told["rms_px"]


def test_image_coordinates_go_forth_and_back():
    project = zu.read_project(SAMPLES / "left_cap.prj")
    photo = project.photo(3)
    pixels = project.measurements(3).xyz[:, :2]
    adjusted = photo.convert(pixels, "digi", "adjusted")
    np.testing.assert_allclose(photo.convert(adjusted, "adjusted", "digi"), pixels, atol=1e-9)
    biko = photo.convert(pixels, "digi", "biko")
    assert np.array_equal(photo.camera.adjust(biko), adjusted)
    np.testing.assert_allclose(photo.camera.inv_adjust(adjusted), biko, atol=1e-12)
    plane = zu.Plane(0, 0, 1, 0)
    met = photo.meet(plane, adjusted)
    np.testing.assert_allclose(photo.convert(met, "object", "digi"), pixels, atol=1e-8)
    assert np.isnan(photo.camera.adjust([1e6, 1e6])).all()
    with pytest.raises(ValueError, match="no way"):
        photo.convert(met, "object", "pre")
    with pytest.raises(ValueError, match="would be right"):
        photo.convert(pixels, "pixels", "biko")


def test_points_of_many_photos_stand_on_the_board():
    project, board = zu.read_project(SAMPLES / "left.prj"), zu.read_points(SAMPLES / "board.coo")
    found = zu.intersect(project)
    assert found.good.all() and found.ids.tolist() == sorted(board.ids) and (found.rays == 13).all()
    off = np.linalg.norm(found.xyz - board.xyz[np.argsort(board.ids)], axis=1)
    assert off.max() < 0.3 and found.rms_pixels < 0.3
    assert (np.linalg.eigvalsh(found.covariance) > 0).all()


def test_a_project_is_written_as_it_was_read(tmp_path):
    project = zu.read_project(SAMPLES / "left.prj")
    project.write(tmp_path / "a.prj")
    again = zu.read_project(tmp_path / "a.prj")
    again.write(tmp_path / "b.prj")
    assert (tmp_path / "a.prj").read_bytes() == (tmp_path / "b.prj").read_bytes()
    photo = again.photo(2)
    photo.position, photo.rotation = [1.0, 2.0, 3.0], np.eye(3)
    camera = photo.camera
    camera.c = 7.5
    assert photo.camera.c != 7.5  # a copy
    photo.camera = camera
    points = again.measurements(2)
    points.append(zu.Point(999, 3.5, 4.5, 0.0))
    again.set_measurements(2, points)
    again.write(tmp_path / "c.prj")
    changed = zu.read_project(tmp_path / "c.prj")
    assert changed.photo(2).position.tolist() == [1.0, 2.0, 3.0] and changed.photo(2).camera.c == 7.5
    assert changed.measurements(2).find(999).y == 4.5
    with pytest.raises(ValueError, match="no photo 77"):
        again.set_measurements(77, points)


def test_faults_are_found_and_named(tmp_path):
    text = (SAMPLES / "left.prj").read_text()
    cut = tmp_path / "cut.prj"
    cut.write_text(text[: len(text) // 2])
    with pytest.raises(zu.ReadError) as caught:
        zu.read_project(cut)
    assert caught.value.file == str(cut) and caught.value.line > 1
    with pytest.warns(zu.ReadWarning):
        assert 0 < len(zu.read_project(cut, partial=True).photos) <= 13
    assert zu.read_project(cut, tolerant=True).findings
    assert [f.severity for f in zu.check_file(cut)].count("error") >= 1
    assert zu.check_file(SAMPLES / "left.prj") == []
    assert zu.read_cameras(SAMPLES / "cameras.cam")[0].mode == "zuvo"


def test_photos_outlive_the_name_of_their_project_and_threads_measure_side_by_side():
    photo = zu.read_project(SAMPLES / "left.prj").photos[4]
    gc.collect()
    assert photo.oriented and photo.rays([0.0, 0.0]).shape == (3,)
    board = zu.read_points(SAMPLES / "board.coo")
    found = []

    def work():
        project = zu.read_project(SAMPLES / "left.prj")
        found.append(zu.measure_on_plane(project, board, board).xyz)

    threads = [threading.Thread(target=work) for _ in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 6 and all(np.array_equal(xyz, found[0]) for xyz in found)
