"""Animation frames of a LIC rendered in parallel with dask.distributed.

The field stays; the noise moves one pixel to the right per frame, so the
streaks seem to flow. Each frame is one task: the workers need velk and NumPy,
and every frame is the same whichever worker renders it.

    python dask_frames.py                    # a LocalCluster on this machine
    python dask_frames.py tcp://host:8786    # the scheduler of a real cluster

Frames are written as frame-0000.pgm, frame-0001.pgm, ... (row 0 at the top of
the file is y = 0, the bottom of the picture).
"""

import sys
from typing import List, Tuple

import numpy as np
import numpy.typing as npt
import velk
from dask.distributed import Client, LocalCluster


def frame(k: int, shape: Tuple[int, int] = (256, 256), seed: int = 1) -> npt.NDArray[np.uint8]:
    """Frame k: the Brusselator's LIC over the noise shifted by k pixels."""
    u, v = velk.brusselator((64, 64))
    texture = np.roll(velk.noise(shape, seed=seed), k, axis=1)
    return velk.adjust(velk.lic(u, v, texture, length=15))


def render(client: Client, frames: int, shape: Tuple[int, int] = (256, 256)
           ) -> List[npt.NDArray[np.uint8]]:
    """Renders frames 0 .. frames - 1 on the client's cluster, in order."""
    futures = client.map(frame, range(frames), shape=shape)
    result: List[npt.NDArray[np.uint8]] = client.gather(futures)
    return result


def main() -> None:
    if len(sys.argv) > 1:
        client = Client(sys.argv[1])
    else:
        client = Client(LocalCluster(n_workers=2, threads_per_worker=1))
    with client:
        for k, img in enumerate(render(client, 16)):
            velk.write_pnm(f"frame-{k:04d}.pgm", img)


if __name__ == "__main__":
    main()
