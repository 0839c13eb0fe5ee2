"""One LIC as computed, equalised, and equalised tile by tile, side by side."""
import sys

import matplotlib.pyplot as plt
import numpy as np
import velk

u, v = velk.brusselator((64, 64))
raw = velk.lic(u, v, shape=(192, 192))
gap = np.full((192, 4), 255, np.uint8)
row = np.hstack([raw, gap, velk.equalize(raw), gap, velk.equalize(raw, adaptive=True)])
out = sys.argv[1] if len(sys.argv) > 1 else "equalize.png"
plt.imsave(out, row, cmap="gray", vmin=0, vmax=255, origin="lower", metadata={"Software": None})
