"""How results show themselves: one line or a table as text, the same as HTML in a notebook."""

from __future__ import annotations

import html
import math
from typing import Any, Callable, Iterable, List, Sequence, Tuple

from . import _core, _draw

_MOST_ROWS = 20  # of a table; the rest is counted

Table = Tuple[str, Sequence[str], List[Sequence[str]]]  # headline, titles, rows


def _number(value: float) -> str:
    return f"{value:.6g}"


def _cut(rows: Iterable[Sequence[str]], count: int) -> List[Sequence[str]]:
    shown = [row for row, _ in zip(rows, range(_MOST_ROWS))]
    if count > len(shown) and shown:
        shown.append([f"{count - len(shown)} more"] + [""] * (len(shown[0]) - 1))
    return shown


def _text(table: Table) -> str:
    headline, titles, rows = table
    if not rows:
        return headline
    cells = [titles, *rows]
    widths = [max(len(row[k]) for row in cells) for k in range(len(titles))]
    lines = ["  ".join(text.rjust(w) for text, w in zip(row, widths)) for row in cells]
    return "\n".join([headline, *lines])


def _html(table: Table) -> str:
    headline, titles, rows = table

    def line(cells: Sequence[str], tag: str) -> str:
        inner = "".join(f"<{tag}>{html.escape(cell)}</{tag}>" for cell in cells)
        return f"<tr>{inner}</tr>"

    body = "".join(line(row, "td") for row in rows)
    head = line(titles, "th") if rows else ""
    return f"<p>{html.escape(headline)}</p><table>{head}{body}</table>"


def _points(points: Any) -> Table:
    rows = (
        [str(p.id), p.name, *(f"{v:.10g}" for v in (p.x, p.y, p.z))]
        for p in (points[i] for i in range(min(len(points), _MOST_ROWS)))
    )
    return f"PointList of {len(points)}", ["id", "name", "x", "y", "z"], _cut(rows, len(points))


def _tests(tests: Any) -> Table:
    m = tests.residuals.shape[1]
    axes = ["x", "y", "z"][:m] if m > 1 else [""]
    titles = ["id", *(f"v {a}".strip() for a in axes), *(f"w {a}".strip() for a in axes), "T", ""]
    marks = ["aside" if not u else "!" if r else "" for u, r in zip(tests.used, tests.rejected)]
    rows = (
        [str(i), *map(_number, v), *map(_number, w), _number(t), mark]
        for i, v, w, t, mark in zip(tests.ids, tests.residuals, tests.w, tests.test, marks)
    )
    return f"PointTests of {len(tests)}", titles, _cut(rows, len(tests))


def _similarity(result: Any) -> Table:
    names = ["tx", "ty", "tz", "scale", "w x", "w y", "w z"]
    values = [*result.target_centre, result.scale, *[0.0] * 3]
    rows: List[Sequence[str]] = [
        [name, repr(float(value)) if k < 4 else "", _number(sd)]
        for k, (name, value, sd) in enumerate(zip(names, values, result.sd))
        if sd > 0.0
    ]
    aside = f", set aside {', '.join(map(str, result.set_aside))}" if len(result.set_aside) else ""
    headline = (
        f"Similarity ({result.kind}) of {len(result.ids)} common points, redundancy "
        f"{result.redundancy}, sigma0 {result.sigma0_kind} {_number(result.sigma0)}{aside}"
    )
    return headline, ["parameter", "value", "sd"], rows


def _trafo2d_fit(fit: Any) -> Table:
    headline = (
        f"Trafo2dFit ({fit.kind}), redundancy {fit.redundancy}, sigma0 {fit.sigma0_kind} "
        f"{_number(fit.sigma0)}, {fit.set_aside} set aside"
    )
    rows: List[Sequence[str]] = [
        [f"a{k}", repr(float(value)), _number(sd)]
        for k, (value, sd) in enumerate(zip(fit.coefficients, fit.sd))
    ]
    return headline, ["coefficient", "value", "sd"], rows


def _fit(fit: Any) -> Table:
    return (
        f"FitResult of {len(fit.used)} points, {fit.set_aside} set aside, redundancy "
        f"{fit.redundancy}, sigma0 {fit.sigma0_kind} {_number(fit.sigma0)}, rms {_number(fit.rms)}",
        [],
        [],
    )


def _vector(values: Any) -> str:
    return "(" + ", ".join(repr(float(v)) for v in values) + ")"


def _shape(name: str, *parts: Tuple[str, Callable[[Any], Any]]) -> Callable[[Any], Table]:
    def show(shape: Any) -> Table:
        texts = []
        for title, get in parts:
            value = get(shape)
            vector = hasattr(value, "__len__") and not isinstance(value, str)
            texts.append(f"{title} " + (_vector(value) if vector else repr(value)))
        tail = "; " + _fit(shape.fit)[0] if hasattr(shape, "fit") else ""
        return f"{name}: " + ", ".join(texts) + tail, [], []

    return show


def _point(point: Any) -> Table:
    name = f", name={point.name!r}" if point.name else ""
    return f"Point({point.id}, {point.x!r}, {point.y!r}, {point.z!r}{name})", [], []


def _cloud(cloud: Any) -> Table:
    rows: List[Sequence[str]] = []
    if len(cloud):
        rows = [[t, *(f"{v:.10g}" for v in r)] for t, r in zip(("from", "to"), cloud.box)]
    return f"PointCloud {cloud.name!r} of {len(cloud)} points", ["", "x", "y", "z"], rows


def _cloud_plane(plane: Any) -> Table:
    a, b, c = map(float, plane.plane.normal)
    text = f"({a!r}, {b!r}, {c!r}, {plane.plane.d!r}), rms {_number(plane.rms)}"
    return f"CloudPlane of {len(plane)} points {text}", [], []


def _moments(moments: Any) -> Table:
    return f"CloudMoments of {len(moments)} points", [], []


def _measurement(measured: Any) -> Table:
    rows = (
        [str(p["photo"]), str(p["points"]), str(p["worst_point"]), _number(p["rms"])]
        for p in measured.photos
        if p["checked"]
    )
    quality = measured.quality
    tail = f", RMS {_number(quality['rms'])} of {quality['checked']}" if quality["checked"] else ""
    headline = f"PlaneMeasurement of {len(measured)} points{tail}"
    return headline, ["photo", "points", "worst", "RMS"], _cut(rows, len(measured.photos))


def _intersection(found: Any) -> Table:
    rows = (
        [str(i), str(n), *(f"{v:.10g}" for v in xyz)]
        for i, n, xyz in zip(found.ids, found.rays, found.xyz)
    )
    headline = (
        f"Intersection of {len(found)} points, redundancy {found.redundancy}, sigma0 "
        f"{found.sigma0_kind} {_number(found.sigma0)}, RMS {_number(found.rms_pixels)} px"
    )
    return headline, ["id", "rays", "x", "y", "z"], _cut(rows, len(found))


def _orientation(found: Any) -> Table:
    columns = (found.photo_ids, found.names, found.ways, found.points, found.rms_pixels, found.positions)
    rows = (
        [str(i), name, way, str(n), _number(rms), *(f"{v:.10g}" for v in xyz)]
        for i, name, way, n, rms, xyz in zip(*columns)
    )
    headline = f"Orientation of {len(found)} photos, {int(found.good.sum())} found"
    titles = ["photo", "name", "by", "points", "RMS px", "x", "y", "z"]
    return headline + (", in a frame of their own" if found.free else ""), titles, _cut(rows, len(found))


def _observations(tests: Any) -> Table:
    m = tests.residuals.shape[1]
    axes = ["x", "y", "z"][:m] if m > 1 else [""]
    first = {2: ["photo", "id"], 3: ["id"], 1: ["id", "to"]}[m]
    titles = [*first, *(f"v {a}".strip() for a in axes), *(f"w {a}".strip() for a in axes), "T", ""]
    keys = {2: (tests.photo_ids, tests.ids), 3: (tests.ids,), 1: (tests.ids, tests.to_ids)}[m]
    rows = (
        [*map(str, key), *map(_number, v), *map(_number, w), _number(t), "" if used else "aside"]
        for key, v, w, t, used in zip(zip(*keys), tests.residuals, tests.w, tests.test, tests.used)
    )
    return f"Observations of {len(tests)}", titles, _cut(rows, len(tests))


def _network(found: Any) -> Table:
    rows = (
        [str(i), name, *(f"{v:.10g}" for v in xyz), _number(max(sd)), _number(rms)]
        for i, name, xyz, sd, rms in zip(
            found.photo_ids, found.photo_names, found.positions, found.position_sd, found.photo_rms_pixels
        )
    )
    headline = (
        f"Network of {len(found.photo_ids)} photos and {len(found.points)} points, redundancy "
        f"{found.redundancy}, sigma0 {found.sigma0_kind} {_number(found.sigma0)}, RMS "
        f"{_number(found.rms_pixels)} px, {len(found.set_aside)} set aside"
    )
    titles = ["photo", "name", "x", "y", "z", "largest sd", "RMS px"]
    return headline, titles, _cut(rows, len(found.photo_ids))


def _merge(merged: Any) -> Table:
    rows = (
        [str(p.id), p.name, *(_number(v) for v in p.residual), _number(math.hypot(*p.residual))]
        for p in merged.rejected
    )
    headline = (
        f"Merge of {merged.common} common points, {len(merged.rejected)} rejected, "
        f"{len(merged.points)} points joined"
    )
    return headline, ["rejected", "name", "dx", "dy", "dz", "length"], _cut(rows, len(merged.rejected))


def _epochs(found: Any) -> Table:
    rows = (
        [str(i), *map(_number, move), *map(_number, sd), _number(t), "moved" if moved else "stable"]
        for i, move, sd, t, moved in zip(found.ids, found.moves, found.moves_sd, found.test, found.moved)
    )
    titles = ["id", "dx", "dy", "dz", "sd x", "sd y", "sd z", "T", ""]
    headline = f"Epochs: {int(found.moved.sum())} of {len(found)} common points moved"
    return headline, titles, _cut(rows, len(found))


def _local(local: Any) -> Table:
    headline, titles, rows = _points(local.points)
    return f"LocalSystem of {len(local.points)} points, scale {local.trafo.scale!r}", titles, rows


def _targets(found: Any) -> Table:
    rows = (
        [str(i), *(f"{v:.3f}" for v in xy), *(f"{v:.3f}" for v in sd)]
        for i, xy, sd in zip(found.ids, found.xy, found.sd)
    )
    headline = f"Targets: {len(found)}, {int((found.ids > 0).sum())} with a number"
    return headline, ["id", "x", "y", "sd x", "sd y"], _cut(rows, len(found))


def _rectified(found: Any) -> Table:
    rows: List[Sequence[str]] = [
        [str(i), f"{100.0 * share:.1f} %"] for i, share in zip(found.photo_ids, found.shares)
    ]
    height, width = found.pixels.shape[:2]
    region = ", ".join(f"{v:.10g}" for v in found.region)
    headline = f"Rectified: {width} x {height} pixels of {found.pixel!r}, region {region}"
    return headline, ["photo", "share"], rows


def _undistorted(found: Any) -> Table:
    height, width = found.pixels.shape[:2]
    return f"Undistorted: {width} x {height} pixels, c {found.camera.c!r}", [], []


def _camera(camera: Any) -> Table:
    names = ["c", "xh", "yh", "a1", "a2", "a3", "r0", "b1", "b2", "c1", "c2"]
    values = ", ".join(f"{n}={getattr(camera, n)!r}" for n in names if getattr(camera, n) != 0.0)
    return f"Camera({camera.id}, {values}, mode={camera.mode!r})", [], []


def _photo(photo: Any) -> Table:
    state = "oriented" if photo.oriented else "not oriented"
    return f"Photo {photo.id} {photo.name!r}, {state}", [], []


def _project(project: Any) -> Table:
    rows = [
        [str(p.id), p.name, str(len(project.measurements(p.id))), "yes" if p.oriented else "no"]
        for p in project.photos[:_MOST_ROWS]
    ]
    headline = f"Project of {len(project.photos)} photos"
    return headline, ["photo", "name", "measured", "oriented"], _cut(rows, len(project.photos))


def _plane(plane: Any) -> Table:
    a, b, c = map(float, plane.normal)
    return f"Plane({a!r}, {b!r}, {c!r}, {plane.d!r})", [], []


def _nothing(_: Any) -> str:
    return ""


def install() -> None:
    """Gives the classes their __repr__ and _repr_html_."""
    shown: List[Tuple[Any, Callable[[Any], Table]]] = [
        (_core.PointList, _points),
        (_core.PointCloud, _cloud),
        (_core.CloudPlane, _cloud_plane),
        (_core.CloudMoments, _moments),
        (_core.Project, _project),
        (_core.Photo, _photo),
        (_core.Camera, _camera),
        (_core.PlaneMeasurement, _measurement),
        (_core.Intersection, _intersection),
        (_core.PointTests, _tests),
        (_core.Orientation, _orientation),
        (_core.Observations, _observations),
        (_core.Network, _network),
        (_core.Merge, _merge),
        (_core.Epochs, _epochs),
        (_core.LocalSystem, _local),
        (_core.Targets, _targets),
        (_core.Rectified, _rectified),
        (_core.Undistorted, _undistorted),
        (_core.Arc, _shape("Arc", ("centre", lambda a: a.centre), ("radius", lambda a: a.radius),
                           ("sweep", lambda a: a.sweep))),
        (_core.Rectangle, _shape("Rectangle", ("centre", lambda r: r.centre),
                                 ("width", lambda r: r.width), ("height", lambda r: r.height))),
        (_core.BalancedLine, _shape("BalancedLine", ("parts", lambda b: len(b.directions)),
                                    ("rms", lambda b: b.rms))),
        (_core.Position, _shape("Position", ("xy", lambda p: p.xy), ("rms", lambda p: p.rms))),
        (_core.Transformation, _shape("Transformation", ("kind", lambda t: t.kind))),
        (_core.Similarity, _similarity),
        (_core.Trafo2dFit, _trafo2d_fit),
        (_core.FitResult, _fit),
        (_core.Point, _point),
        (_core.Plane, _plane),
        (_core.Frame, _shape("Frame", ("origin", lambda f: f.origin), ("x", lambda f: f.x),
                             ("y", lambda f: f.y), ("z", lambda f: f.z))),
        (_core.PlaneFit, _shape("PlaneFit", ("normal", lambda f: f.plane.normal),
                                ("d", lambda f: f.plane.d))),
        (_core.LineFit, _shape("LineFit", ("start", lambda f: f.start), ("end", lambda f: f.end))),
        (_core.SphereFit, _shape("SphereFit", ("centre", lambda f: f.centre),
                                 ("radius", lambda f: f.radius))),
        (_core.CylinderFit, _shape("CylinderFit", ("start", lambda f: f.start),
                                   ("end", lambda f: f.end), ("radius", lambda f: f.radius))),
        (_core.CalcPlane, _shape("CalcPlane", ("normal", lambda c: c.plane.normal),
                                 ("d", lambda c: c.plane.d), ("sigma0", lambda c: c.sigma0))),
        (_core.Trafo3d, _shape("Trafo3d", ("scale", lambda t: t.scale),
                               ("source_centre", lambda t: t.source_centre),
                               ("target_centre", lambda t: t.target_centre))),
        (_core.Trafo2d, _shape("Trafo2d", ("name", lambda t: t.name))),
    ]
    for kind, show in shown:
        kind.__repr__ = lambda self, show=show: _text(show(self))
        draw = _draw.DRAWINGS.get(kind, _nothing)
        kind._repr_html_ = lambda self, show=show, draw=draw: _html(show(self)) + draw(self)
