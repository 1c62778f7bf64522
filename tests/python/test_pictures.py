"""Pictures as arrays: the same pixels and points as the program's."""

import numpy as np
import pytest
import zu
from test_networks import by, needs_program, program

BOARD = "samples/chessboard"


@needs_program
def test_rectified_and_undistorted_pictures_are_those_of_the_program(tmp_path):
    project = zu.read_project(f"{BOARD}/left.prj")
    photo, picture = project.photo(1), zu.read_image(f"{BOARD}/left01.jpg")
    found = zu.rectify(photo, picture, zu.Plane(0, 0, 1, 0), pixel=1.0, region=(0, -100, 200, 50))
    told = program("rectify", f"{BOARD}/left.prj", "--photo", 1, "--image", "--plane", "0,0,1,0", "--pixel", 1,
                   "--region", "0,-100,200,50", "-o", tmp_path / "plane.png", "--pictures", f"{BOARD}/left01.jpg")
    assert np.array_equal(found.pixels, zu.read_image(tmp_path / "plane.png"))
    assert found.region.tolist() == told["region"] and np.array_equal(found.to_object, told["to_object"])
    plain = zu.undistort(photo, picture, whole=True)
    told = program("photo", "undistort", f"{BOARD}/left.prj", "--photo", 1, "--image", f"{BOARD}/left01.jpg",
                   "--whole", "-o", tmp_path / "plain.tif")
    assert np.array_equal(plain.pixels, zu.read_image(tmp_path / "plain.tif"))
    assert plain.digi_region.tolist() == told["digital_region"] and plain.camera.c == told["camera"]["c"]
    with pytest.raises(ValueError, match="uint8 or uint16"):
        zu.undistort(photo, picture.astype(float))

    calls = []

    def stop(title, done):
        calls.append(done)
        raise InterruptedError("enough")

    with pytest.raises(InterruptedError):
        zu.rectify([photo], [picture], zu.Plane(0, 0, 1, 0), pixel=0.1, progress=stop)
    assert len(calls) == 1 and 0.0 < calls[0] < 1.0


def test_pictures_are_written_whole(tmp_path):
    pixels = (np.arange(60 * 80 * 3) % 65521).astype(np.uint16).reshape(60, 80, 3)
    for name in ("a.png", "a.tif"):
        zu.write_image(tmp_path / name, pixels, grid=[10.0, 20.0, 0.5])
        assert np.array_equal(zu.read_image(tmp_path / name), pixels)
    with pytest.raises(zu.WriteError, match="16|8 bits"):
        zu.write_image(tmp_path / "a.jpg", pixels)
    assert not (tmp_path / "a.jpg").exists() and zu.image_info(tmp_path / "a.png")["bits"] == 16
    (tmp_path / "cut.png").write_bytes((tmp_path / "a.png").read_bytes()[:500])
    with pytest.raises(zu.ReadError):
        zu.read_image(tmp_path / "cut.png")


@needs_program
def test_a_board_is_detected_and_its_camera_calibrated(tmp_path):
    names = [f"{BOARD}/left{i:02}.jpg" for i in (1, 2, 3, 4, 5, 6)]
    project, board = zu.Project(), zu.chessboard_points(9, 6, 25.0)
    with pytest.warns(zu.AdjustmentWarning):  # the pictures tell no size of a pixel
        for name in names:
            zu.add_photo(project, name, zu.detect_chessboard(zu.read_image(name), 9, 6))
        network = zu.calibrate(project, board, estimate="c,xh,yh,a1,a2")
    program("detect", "board", *names, "--size", "9x6", "-o", tmp_path / "board.prj")
    told = zu.read_project(tmp_path / "board.prj")
    for mine, theirs in zip(project.photos, told.photos):
        points, others = project.measurements(mine.id), told.measurements(theirs.id)
        assert np.array_equal(points.xyz, others.xyz) and np.array_equal(points.sd, others.sd)
        assert mine.camera.c == pytest.approx(network.cameras[0].c) and mine.camera.id == 1
    assert network.rms_pixels < 0.3 and len(network.photo_ids) == len(names)


@needs_program
def test_targets_and_markers_are_found(tmp_path):
    picture = zu.read_image("samples/network/P8250021.JPG")
    photo = zu.read_project("samples/network/camcal.prj").photo(1)
    targets = zu.detect_targets(picture)
    numbered = targets.number(photo, zu.read_points("samples/network/approx.coo", "id,x,y,z"))
    assert numbered == len(targets.points) > 80 and targets.xy.shape == targets.sd.shape == (len(targets), 2)
    measured = zu.read_project("samples/network/camcal.prj").measurements(1)
    off = [np.hypot(*(p.xyz - measured.find(p.id).xyz)[:2]) for p in targets.points if measured.find(p.id)]
    assert np.median(off) < 0.3
    markers = zu.detect_markers(zu.read_image("samples/markers/hall.png"), "apriltag_36h11")
    assert sorted({i // 10 for i in markers.ids}) == [3, 17, 29, 101] and len(markers) == 16
    with pytest.raises(ValueError, match="marker_families"):
        zu.detect_markers(picture, "nine")
