"""Close-range photogrammetry: points, transformations with their uncertainty, planes, clouds, photos and projects.

Arrays go in and come out everywhere: points are (n, 3) arrays of float64 or a `PointList`, which
knows their ids, names and standard deviations as well. Every number is one of the library's; the
package computes nothing of its own.

    >>> import numpy as np
    >>> import zu
    >>> wall = np.array([[0, 10.002, 0], [4, 10.398, 0.1], [8, 10.801, 0], [0.1, 10.008, 6]])
    >>> fit = zu.fit_plane(wall)
    >>> round(float(fit.plane.distance([3.0, 8.5, 9.0])), 3)
    -1.787

What is wrong with a file raises `ReadError`, which has file, line, column and all findings; what
should be known is a warning, `ReadWarning`. What points do not decide raises `AdjustmentError`.
Long work releases the interpreter's lock and ends soon after Ctrl-C.
"""

from ._core import (
    CalcPlane,
    Camera,
    CloudDistances,
    CloudMoments,
    CloudPlane,
    CylinderFit,
    FitResult,
    Frame,
    Intersection,
    LineFit,
    Network,
    Observations,
    Orientation,
    Photo,
    Plane,
    PlaneFit,
    PlaneMeasurement,
    Point,
    PointCloud,
    PointList,
    PointTests,
    Project,
    Similarity,
    SphereFit,
    Trafo2d,
    Trafo2dFit,
    Trafo3d,
    __version__,
    adjust,
    calibrate,
    check_file,
    fit_cylinder,
    fit_line,
    fit_plane,
    fit_sphere,
    intersect,
    measure_on_plane,
    orient,
    read_cameras,
    read_clouds,
    read_points,
    read_project,
    trafo2d,
    transform,
    write_clouds,
)
from ._errors import (
    AdjustmentError,
    AdjustmentWarning,
    Error,
    Finding,
    ReadError,
    ReadWarning,
    WriteError,
)
from . import _show

__all__ = [name for name in dir() if not name.startswith("_")] + ["__version__"]
_show.install()
for _name in __all__:
    _object = globals()[_name]
    if getattr(_object, "__module__", "") in ("zu._core", "zu._errors"):
        _object.__module__ = "zu"
del _name, _object
