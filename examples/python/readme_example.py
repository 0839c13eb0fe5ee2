import matplotlib.pyplot as plt
import numpy as np
import velk

y, x = np.mgrid[-3:3:61j, -4:4:81j]  # a coarse grid; row 0 is y = -3, the bottom
u, v = y, (1 - x**2) * y - x  # the van der Pol oscillator
img = velk.adjust(velk.lic(u, v, shape=(300, 400), length=15))  # noise smeared along the flow
rgb = velk.color(img, np.log1p(np.hypot(u, v)), "hue")  # hue: speed; lightness: the LIC
plt.imshow(rgb, origin="lower")
plt.imsave("velk-python.png", rgb, origin="lower", metadata={"Software": None})
