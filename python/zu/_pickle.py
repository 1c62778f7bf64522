"""Values that travel between processes: pickled by what they hold, to the last bit."""

from __future__ import annotations

import copyreg
import os
import tempfile
from typing import Any, Callable, Dict, List, Tuple

from . import _core

_CAMERA = ("c", "xh", "yh", "a1", "a2", "a3", "r0", "b1", "b2", "c1", "c2")
_COLUMNS = ("sd", "residuals", "control", "photos", "cameras")
_POINT = ("sd", "residual", "photo", "camera", "control")

Reduced = Tuple[Callable[..., Any], Tuple[Any, ...]]


def _make_point(id: int, xyz: Any, name: str, more: Dict[str, Any]) -> _core.Point:
    point = _core.Point(id, *xyz, name=name)
    for key, value in more.items():
        setattr(point, key, value)
    return point


def _point(p: _core.Point) -> Reduced:
    return _make_point, (p.id, p.xyz, p.name, {key: getattr(p, key) for key in _POINT})


def _make_points(xyz: Any, ids: Any, names: List[str], more: Dict[str, Any]) -> _core.PointList:
    points = _core.PointList(xyz, ids, names=names)
    for key, value in more.items():
        setattr(points, key, value)
    return points


def _points(points: _core.PointList) -> Reduced:
    more = {key: getattr(points, key) for key in _COLUMNS}
    return _make_points, (points.xyz, points.ids, points.names.tolist(), more)


def _make_camera(id: int, mode: Any, name: str, numbers: Tuple[float, ...]) -> _core.Camera:
    camera = _core.Camera(id, 0.0, mode=mode, name=name)
    for key, value in zip(_CAMERA, numbers):
        setattr(camera, key, value)
    return camera


def _camera(c: _core.Camera) -> Reduced:
    return _make_camera, (c.id, c.mode, c.name, tuple(getattr(c, key) for key in _CAMERA))


def _make_plane(id: int, name: str, numbers: Tuple[float, ...]) -> _core.Plane:
    return _core.Plane(*numbers, id=id, name=name)


def _plane(p: _core.Plane) -> Reduced:
    return _make_plane, (p.id, p.name, (*map(float, p.normal), p.d))


def _frame(f: _core.Frame) -> Reduced:
    return _core.Frame, (f.origin, f.x, f.y, f.z)


def _trafo3d(t: _core.Trafo3d) -> Reduced:
    return _core.Trafo3d, (t.scale, t.rotation, t.source_centre, t.target_centre)


def _trafo2d(t: _core.Trafo2d) -> Reduced:
    return _core.Trafo2d, (t.name, t.coefficients)


def _read(content: bytes, ending: str) -> Any:
    """Reads what a file of that ending would hold."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "pickled" + ending)
        with open(path, "wb") as file:
            file.write(content)
        if ending == ".json":
            return _core.read_transformation(path)
        return _core.read_clouds(path)[0]


def _write(value: Any, ending: str) -> bytes:
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "pickled" + ending)
        value.write(path)
        with open(path, "rb") as file:
            return file.read()


def _cloud(cloud: _core.PointCloud) -> Reduced:
    return _read, (_write(cloud, ".zpc"), ".zpc")


def _transformation(t: _core.Transformation) -> Reduced:
    return _read, (_write(t, ".json"), ".json")


def install() -> None:
    pairs: List[Tuple[Any, Callable[[Any], Reduced]]] = [
        (_core.Point, _point),
        (_core.PointList, _points),
        (_core.Camera, _camera),
        (_core.Plane, _plane),
        (_core.Frame, _frame),
        (_core.Trafo3d, _trafo3d),
        (_core.Trafo2d, _trafo2d),
        (_core.PointCloud, _cloud),
        (_core.Transformation, _transformation),
    ]
    for kind, reduce in pairs:
        copyreg.pickle(kind, reduce)
