"""Results as tables of pandas, where it is installed."""

from __future__ import annotations

import importlib
from typing import Any, Callable, Dict, List, Tuple

from . import _core

# The attribute, and the titles of its columns; none: by axis.
Columns = List[Tuple[str, List[str]]]
_XYZ: Tuple[str, List[str]] = ("xyz", ["x", "y", "z"])
_SD: Tuple[str, List[str]] = ("sd", ["sd_x", "sd_y", "sd_z"])
_POSE: Columns = [
    ("angles", ["a", "b", "c"]),
    ("position_sd", ["sd_x", "sd_y", "sd_z"]),
    ("angles_sd", ["sd_a", "sd_b", "sd_c"]),
]
_COLUMNS: List[Tuple[Any, Columns]] = [
    (
        _core.PointList,
        [("ids", ["id"]), ("names", ["name"]), _XYZ, _SD, ("control", ["control"])],
    ),
    (
        _core.PointTests,
        [("ids", ["id"]), ("used", ["used"]), ("residuals", []), ("w", []), ("redundancy", []),
         ("smallest_error", []), ("test", ["test"]), ("limit", ["limit"])],
    ),
    (
        _core.Observations,
        [("photo_ids", ["photo"]), ("ids", ["id"]), ("to_ids", ["to"]), ("used", ["used"]),
         ("residuals", []), ("w", []), ("redundancy", []), ("smallest_error", []),
         ("test", ["test"]), ("limit", ["limit"])],
    ),
    (
        _core.Epochs,
        [("ids", ["id"]), ("moved", ["moved"]), ("moves", ["dx", "dy", "dz"]),
         ("moves_sd", ["sd_x", "sd_y", "sd_z"]), ("test", ["test"]), ("limit", ["limit"])],
    ),
    (
        _core.Intersection,
        [("ids", ["id"]), ("good", ["good"]), _XYZ, ("rays", ["rays"]), ("angles", ["angle"])],
    ),
    (
        _core.PlaneMeasurement,
        [("photo_ids", ["photo"]), ("ids", ["id"]), ("pixels", ["px", "py"]), _XYZ,
         ("differences", ["dx", "dy", "dz"])],
    ),
    (
        _core.Orientation,
        [("photo_ids", ["photo"]), ("names", ["name"]), ("ways", ["by"]), ("points", ["points"]),
         ("rms_pixels", ["rms_pixels"]), ("positions", ["x", "y", "z"]), *_POSE],
    ),
    (
        _core.Network,
        [("photo_ids", ["photo"]), ("photo_names", ["name"]), ("photo_rms_pixels", ["rms_pixels"]),
         ("positions", ["x", "y", "z"]), *_POSE],
    ),
    (
        _core.Targets,
        [("ids", ["id"]), ("xy", ["x", "y"]), ("sd", ["sd_x", "sd_y"]),
         ("axes", ["axis", "shorter_axis"]), ("angles", ["angle"])],
    ),
]


def _columns(value: Any, wanted: Columns) -> Dict[str, Any]:
    columns: Dict[str, Any] = {}
    for attribute, titles in wanted:
        array = getattr(value, attribute)
        if not titles:  # by axis
            titles = [f"{attribute}_{axis}" for axis in "xyz"[: array.shape[1]]]
        if len(titles) == 1:
            columns[titles[0]] = array
        else:
            columns.update((title, array[:, k]) for k, title in enumerate(titles))
    return columns


def _to_frame(wanted: Columns) -> Callable[[Any], Any]:
    def to_frame(self: Any) -> Any:
        """The columns as a DataFrame of pandas, which must be installed."""
        pandas = importlib.import_module("pandas")
        return pandas.DataFrame(_columns(self, wanted))

    return to_frame


def install() -> None:
    """Gives the classes their to_frame."""
    for kind, wanted in _COLUMNS:
        kind.to_frame = _to_frame(wanted)
