"""What the package does with other packages: tables of pandas, logging, mypy of a user's file."""

import logging
import os
import signal
import sys
import threading
import types
from pathlib import Path

import numpy as np
import pytest
import zu


def test_results_are_tables_where_pandas_is_there(monkeypatch):
    monkeypatch.setitem(sys.modules, "pandas", types.SimpleNamespace(DataFrame=dict))
    result = zu.transform(zu.read_points("samples/datum/local.coo"), zu.read_points("samples/datum/wgs84.coo"))
    table = result.tests.to_frame()
    assert np.array_equal(table["residuals_x"], result.tests.residuals[:, 0]) and len(table["id"]) == 7
    assert list(zu.PointList([[1, 2, 3]]).to_frame()) == ["id", "name", "x", "y", "z", "sd_x", "sd_y", "sd_z", "control"]


def test_long_work_is_logged(caplog):
    with caplog.at_level(logging.DEBUG, "zu"):
        zu.read_clouds("samples/clouds/autzen.pts")
    assert [record.name for record in caplog.records] == ["zu"] * len(caplog.records) and caplog.records


def test_every_name_is_documented_and_has_a_type():
    stub = Path(zu.__file__).with_name("_core.pyi").read_text()
    for name in zu.__all__:
        value = getattr(zu, name)
        assert name == "__version__" or value.__doc__, name
        if isinstance(value, type) and issubclass(value, BaseException) or name in ("__version__", "Finding"):
            continue
        assert f"class {name}" in stub or f"def {name}(" in stub, name
        if isinstance(value, type):
            body = stub.split(f"class {name}:", 1)[1].split("\nclass ", 1)[0]
            missing = [m for m in vars(value) if not m.startswith("_") and f"def {m}(" not in body and f" {m}:" not in body]
            assert not missing, (name, missing)


def test_arrays_of_constructions():
    corners = zu.fit_rectangle([[0, 0], [4, 0.01], [4, 3], [0, 3]]).corners
    side, other = corners[1] - corners[0], corners[2] - corners[1]
    assert abs(side @ other) < 1e-12
    position = zu.intersect_sights([[0, 0], [10, 0]], [np.pi / 4, 3 * np.pi / 4])
    assert np.allclose(position.xy, [5, 5]) and position.redundancy == 0
    known = np.array([[0, 0], [10, 0], [3, 9]])
    directions = np.arctan2(known[:, 1] - 4, known[:, 0] - 5) - 0.3
    assert np.allclose(zu.resect_directions(known, directions).xy, [5, 4])
    line = zu.balanced_line([[0, 0], [1, 0], [2, 0], [3, 1], [4, 2], [5, 3]], tolerance=0.01)
    assert len(line.directions) == 2 and np.allclose(line.directions[1], np.pi / 4)
    with pytest.raises(zu.AdjustmentError, match="line"):
        zu.fit_arc([[0, 0], [1, 1], [2, 2]])


def test_ctrl_c_ends_long_work_and_leaves_objects_whole():
    project = zu.read_project("samples/chessboard/left.prj")
    picture = zu.read_image("samples/chessboard/left01.jpg")
    timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        zu.rectify(project.photos[0], picture, zu.Plane(0, 0, 1, 0), pixel=0.1, interpolation="lanczos")
    timer.join()
    assert zu.rectify(project.photos[0], picture, zu.Plane(0, 0, 1, 0), pixel=10.0).shares[0] > 0.5
