#!/usr/bin/env python3
"""many_tiles.py [POINTS [TILES]]: a cloud of 200 million points in 100 tiles on two workers of Dask,
and the largest memory of each. Not part of the tests: it takes minutes and 13 GB of disk."""

import resource
import sys
import tempfile
from pathlib import Path

import numpy as np

import zu
import zu.batch
import zu.tiles


def make(file, count):
    rng = np.random.default_rng(int(Path(file).stem))
    xyz = rng.uniform(0.0, 100.0, (count, 3)) * [1.0, 1.0, 1e-4] + [4.5e6, 5.4e6, 300.0]
    zu.PointCloud(xyz).write(file)


def peak():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024


def main(points, tiles):
    from distributed import Client, LocalCluster

    with tempfile.TemporaryDirectory() as folder, LocalCluster(
        n_workers=2, threads_per_worker=1, dashboard_address=None, memory_limit=0
    ) as cluster, Client(cluster) as client:
        files = [Path(folder) / f"{k}.zpc" for k in range(tiles)]
        zu.batch.map(make, files, executor=client, count=points // tiles).values
        cloud = zu.tiles.Tiles(files, executor=client)
        plane = cloud.fit_plane()
        turned = cloud.transform(np.diag([1.0, 1.0, 2.0, 1.0]), Path(folder) / "turned-{stem}.zpc")
        print(len(cloud.moments()), "points, centre", cloud.moments().centre, "plane", plane)
        print("moved: centre", turned.moments().centre)
        print("largest memory of the workers [MB]", client.run(peak))


if __name__ == "__main__":
    main(*(int(word) for word in (sys.argv[1:] + ["200000000", "100"][len(sys.argv) - 1 :])))
