"""Orientation fields, a periodic box and a field with holes: three pictures.

    python examples/python/domain_gallery.py [output folder, default docs/gallery]
"""
import os
import sys
from typing import Any

import matplotlib.pyplot as plt
import numpy as np
import velk

GAP = 4


def side_by_side(*panels: Any) -> Any:
    gap = np.full((panels[0].shape[0], GAP), 255, np.uint8)
    return np.hstack([p for panel in panels for p in (panel, gap)][:-1])


def save(folder: str, name: str, img: Any) -> None:
    plt.imsave(os.path.join(folder, name), img, cmap="gray", vmin=0, vmax=255, origin="lower",
               metadata={"Software": None})


def orientation() -> Any:
    """A director field around two +1/2 defects, each node's sign as a
    per-node eigen-solver returns it (at random): traced as vectors the
    streaks break up; as an orientation field they run through."""
    y, x = np.mgrid[-1:1:64j, -1:1:64j]
    angle = 0.5 * (np.arctan2(y - 0.3, x + 0.4) + np.arctan2(y + 0.3, x - 0.4)) + 0.5 * x
    sign = np.where(np.random.default_rng(2).random(x.shape) < 0.5, -1.0, 1.0)
    u, v = sign * np.cos(angle), sign * np.sin(angle)
    return side_by_side(*(velk.lic(u, v, shape=(224, 224), orientation=o)
                          for o in (False, True)))


def periodic() -> Any:
    """Taylor-Green cells with a drift on one period (node n is node 0 again),
    tiled 2 x 2: the lines run on across the tiles' edges without a seam."""
    n = 48
    x, y = np.meshgrid(2 * np.pi * np.arange(n) / n, 2 * np.pi * np.arange(n) / n)
    u, v = np.sin(x) * np.cos(y) + 0.4, -np.cos(x) * np.sin(y) + 0.2
    return np.tile(velk.lic(u, v, shape=(128, 128), seed=3, length=12, boundary="periodic"),
                   (2, 2))


def nodata() -> Any:
    """A flow past an island with a hole of missing values and a coastline
    mask, filled white; beside it the share of the kernel each pixel got."""
    y, x = np.mgrid[-1:1:96j, -1:1:96j]
    r2 = (x + 0.2)**2 + y**2
    u, v = 1 - 0.15 * (x**2 - y**2) / r2**2, -0.3 * x * y / r2**2
    u[np.hypot(x - 0.45, y - 0.5) < 0.18] = np.nan
    coast = y < -0.55 + 0.12 * np.sin(5 * x) + 0.06 * np.sin(13 * x + 1)
    img, weight = velk.lic(u, v, shape=(224, 224), length=12, mask=coast | (r2 < 0.15),
                           fill=255, return_weight=True)
    return side_by_side(img, (weight * 255).astype(np.uint8))


def main() -> None:
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join("docs", "gallery")
    save(folder, "orientation.png", orientation())
    save(folder, "periodic.png", periodic())
    save(folder, "nodata.png", nodata())


if __name__ == "__main__":
    main()
