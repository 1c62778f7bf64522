"""Clouds larger than the memory of one machine: tiles in files, one job each.

    >>> import zu.tiles
    >>> tiles = zu.tiles.Tiles(["samples/clouds/autzen.pts"], jobs=1)
    >>> len(tiles.moments()), tiles.moments().centre.round(3).tolist()
    (1065, [637296.735, 851249.538, 434.098])

A worker holds one tile at a time. What is joined over tiles - number, box, centre, plane - is the
same to the bit as for one cloud of all points, on one worker or on many.
"""

from __future__ import annotations

import os
from typing import Any, Callable, Dict, Iterable, List, Optional, Union

import numpy as np
import numpy.typing as npt

from . import batch
from ._core import CloudDistances, CloudMoments, CloudPlane, PointCloud, read_clouds, write_clouds

__all__ = ["Tiles"]

PathLike = Union[str, "os.PathLike[str]"]

_BLOCK = 1 << 18  # points of a block: 6 MB


class Tiles:
    """The files of a cloud, of any kind that zu.read_clouds reads.

    files: the tiles. executor, jobs, progress: as zu.batch.map has them, for every call.
    Calls that write return the Tiles of the files written, and keep those that are there already
    and not older than their tile (resume). A tile that fails raises zu.batch.BatchError when the
    others are done.
    """

    def __init__(
        self,
        files: Iterable[PathLike],
        *,
        executor: Any = None,
        jobs: Optional[int] = None,
        progress: Optional[Callable[[int, int], Any]] = None,
    ) -> None:
        self.files: List[str] = [os.fspath(file) for file in files]
        self._how: Dict[str, Any] = {"executor": executor, "jobs": jobs, "progress": progress}

    def __len__(self) -> int:
        return len(self.files)

    def __repr__(self) -> str:
        return f"Tiles of {len(self)} files"

    def _with(self, files: Iterable[PathLike]) -> Tiles:
        return Tiles(files, **self._how)

    # --- Joined over all tiles -----------------------------------------------------------------

    def moments(self) -> CloudMoments:
        """Number, box and centre of all points."""
        total = CloudMoments()
        for part in batch.map(_moments, self.files, **self._how).values:
            total.join(part)
        return total

    def fit_plane(self) -> CloudPlane:
        """The plane of closest fit to all points: two passes over the files.

        farthest counts the points over the tiles in their order. Raises zu.AdjustmentError.
        """
        plane = self.moments().plane()
        distances = CloudDistances(plane)
        for part in batch.map(_distances, self.files, plane=plane, **self._how).values:
            distances.join(part)
        return distances.complete(plane)

    # --- Tile by tile --------------------------------------------------------------------------

    def convert(self, results: PathLike, *, resume: bool = True) -> Tiles:
        """Writes each tile in the kind of the ending of results, as "out/{stem}.ply"."""
        return self._written(_convert, results, resume)

    def transform(
        self, matrix: npt.ArrayLike, results: PathLike, *, normals: bool = True, resume: bool = True
    ) -> Tiles:
        """Writes each tile moved by a (4, 4) matrix for column vectors, its normals turned."""
        return self._written(_transform, results, resume, matrix=np.asarray(matrix, float), normals=normals)

    def estimate_normals(self, eye: npt.ArrayLike, results: PathLike, *, resume: bool = True) -> Tiles:
        """Writes each tile with normals to the eye (3,)."""
        return self._written(_normals, results, resume, eye=np.asarray(eye, float))

    def select(
        self,
        results: PathLike,
        *,
        box: Optional[npt.ArrayLike] = None,
        where: Optional[Callable[[PointCloud], npt.ArrayLike]] = None,
        resume: bool = True,
    ) -> Tiles:
        """Writes the points of each tile inside the box (2, 3), its limits belonging to it, and for
        which where(cloud) gives True in a mask (n,). Tiles of which nothing is left are files
        without points."""
        if box is not None and np.shape(box) != (2, 3):
            raise ValueError("box: shape (2, 3), lowest and highest, would be right")
        limits = None if box is None else np.asarray(box, float)
        return self._written(_select, results, resume, box=limits, where=where)

    def _written(self, function: Callable[..., None], results: PathLike, resume: bool, **arguments: Any) -> Tiles:
        made = batch.map(
            function, self.files, results=results, writes=True, resume=resume, **self._how, **arguments
        )
        if made.failed:
            raise batch.BatchError(made.failed)
        return self._with(job.result for job in made if job.result is not None)


# --- In a worker -----------------------------------------------------------------------------------


def _moments(file: str) -> CloudMoments:
    moments = CloudMoments()
    for cloud in read_clouds(file):
        for first in range(0, len(cloud), _BLOCK):
            moments.add(cloud.xyz[first : first + _BLOCK])
    return moments


def _distances(file: str, plane: CloudPlane) -> CloudDistances:
    distances = CloudDistances(plane)
    for cloud in read_clouds(file):
        for first in range(0, len(cloud), _BLOCK):
            distances.add(cloud.xyz[first : first + _BLOCK])
    return distances


def _each(file: str, result: str, change: Callable[[PointCloud], PointCloud]) -> None:
    write_clouds(result, [change(cloud) for cloud in read_clouds(file)])


def _convert(file: str, result: str) -> None:
    _each(file, result, lambda cloud: cloud)


def _transform(file: str, result: str, matrix: npt.NDArray[np.float64], normals: bool) -> None:
    def change(cloud: PointCloud) -> PointCloud:
        cloud.transform(matrix, normals=normals)
        return cloud

    _each(file, result, change)


def _normals(file: str, result: str, eye: npt.NDArray[np.float64]) -> None:
    def change(cloud: PointCloud) -> PointCloud:
        cloud.estimate_normals(eye)
        return cloud

    _each(file, result, change)


def _select(
    file: str,
    result: str,
    box: Optional[npt.NDArray[np.float64]],
    where: Optional[Callable[[PointCloud], npt.ArrayLike]],
) -> None:
    def change(cloud: PointCloud) -> PointCloud:
        mask = np.ones(len(cloud), bool)
        if box is not None:
            mask &= np.all((cloud.xyz >= box[0]) & (cloud.xyz <= box[1]), axis=1)
        if where is not None:
            mask &= np.asarray(where(cloud), bool)
        return cloud.take(mask)

    _each(file, result, change)
