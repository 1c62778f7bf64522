"""Drawings of results in notebooks, as SVG; pictures as PNG."""

from __future__ import annotations

import base64
import os
import tempfile
from typing import Any, Callable, Dict, Optional

import numpy as np

from . import _core

_WIDTH, _MARGIN = 420.0, 24.0
_MOST = 2000  # points of a drawing
_ARROW = 0.12  # of the width: the longest one


def _scale_text(length: float) -> str:
    return f"{length:.3g}"


def _view(xy: Any, arrows: Optional[Any], title: str, marks: Optional[Any] = None) -> str:
    """Points of a plane, y upwards, with an arrow each; marked ones in red."""
    xy = np.asarray(xy, float)
    keep = np.isfinite(xy).all(axis=1)
    if arrows is not None:
        arrows = np.asarray(arrows, float)
        keep &= np.isfinite(arrows).all(axis=1)
    chosen = np.flatnonzero(keep)[:: max(1, int(keep.sum()) // _MOST)]
    if not len(chosen):
        return ""
    low, high = xy[chosen].min(axis=0), xy[chosen].max(axis=0)
    size = float(max(high - low)) or 1.0
    factor = (_WIDTH - 2 * _MARGIN) / size
    height = float(high[1] - low[1]) * factor + 2 * _MARGIN + 18
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{_WIDTH:.0f}" height="{height:.0f}" '
        f'font-family="sans-serif" font-size="11"><rect width="100%" height="100%" fill="#fff"/>'
    ]
    longest = 0.0 if arrows is None else float(np.hypot(*arrows[chosen].T).max())
    stretch = _ARROW * _WIDTH / longest if longest > 0.0 else 0.0
    for i in chosen:
        x = _MARGIN + (xy[i, 0] - low[0]) * factor
        y = _MARGIN + (high[1] - xy[i, 1]) * factor
        color = "#c1272d" if marks is not None and marks[i] else "#1f5fa8"
        parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="1.8" fill="{color}"/>')
        if arrows is not None and stretch > 0.0:
            end = x + arrows[i, 0] * stretch, y - arrows[i, 1] * stretch
            parts.append(
                f'<line x1="{x:.1f}" y1="{y:.1f}" x2="{end[0]:.1f}" y2="{end[1]:.1f}" '
                f'stroke="{color}"/>'
            )
    tail = f"; longest arrow {_scale_text(longest)}" if longest > 0.0 else ""
    parts.append(f'<text x="{_MARGIN:.0f}" y="{height - 8:.0f}" fill="#333">{title}{tail}</text>')
    return "".join(parts) + "</svg>"


def picture(pixels: Any) -> str:
    """An image tag with the pixels in it, every second one and fewer of a large picture."""
    step = max(1, max(pixels.shape[:2]) // 1000)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "picture.png")
        _core.write_image(path, pixels[::step, ::step])
        with open(path, "rb") as file:
            data = base64.b64encode(file.read()).decode("ascii")
    return f'<img style="max-width:{_WIDTH:.0f}px" src="data:image/png;base64,{data}"/>'


def merge(merged: Any) -> str:
    points = [*merged.points, *merged.rejected]
    if not points:
        return ""
    xyz = np.array([p.xyz for p in points])
    residuals = np.array([p.residual for p in points])
    marks = np.arange(len(points)) >= len(merged.points)
    residuals[marks] = 0.0  # they would hide the others
    return _view(xyz[:, :2], residuals[:, :2], "from above, rejected points red", marks)


def measurement(measured: Any) -> str:
    xyz = measured.xyz
    frame = _core.Frame.of_plane(measured.plane)
    flat = frame.from_world(xyz)
    moved = frame.from_world(xyz + measured.differences) - flat
    if not np.isfinite(moved).any():
        return _view(flat[:, :2], None, "on the plane")
    return _view(flat[:, :2], moved[:, :2], "on the plane, met less known")


def network(found: Any) -> str:
    xyz = np.vstack([found.points.xyz, found.positions])
    marks = np.arange(len(xyz)) >= len(found.points)
    return _view(xyz[:, :2], None, "from above, photos red", marks)


def targets(found: Any) -> str:
    return _view(found.xy * [1, -1], None, "in the picture, with a number red", found.ids > 0)


def rectified(found: Any) -> str:
    return picture(found.pixels)


# By the class of a result.
DRAWINGS: Dict[Any, Callable[[Any], str]] = {
    _core.Merge: merge,
    _core.PlaneMeasurement: measurement,
    _core.Network: network,
    _core.Targets: targets,
    _core.Rectified: rectified,
    _core.Undistorted: rectified,
}
