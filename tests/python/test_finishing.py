"""Finishing steps: arrays in, arrays out, the library's arithmetic."""
import numpy as np
import velk

LIC = velk.lic(*velk.circle((33, 33)), shape=(48, 64))


def test_point_operations():
    assert velk.brighten(np.array([[30, 50, 75, 100]], np.uint8), 50, 100).tolist() == [
        [0, 0, 127, 255]]
    flat = velk.adjust(np.array([[0, 77], [77, 77]], np.uint8), mean=128, sigma=40)
    assert flat.tolist() == [[0, 128], [128, 128]]
    mean = velk.adjust(LIC, 100, 20)[LIC > 0].mean()
    assert abs(mean - 100) < 1


def test_equalisation_flattens_the_histogram():
    rgb = np.dstack([LIC, LIC // 2, LIC // 4 + 100])
    for img in (LIC, rgb):
        flat = velk.equalize(img)
        assert flat.shape == img.shape and flat.dtype == np.uint8
        for c in range(flat.size // LIC.size):
            before, after = (np.histogram(a.reshape(LIC.size, -1)[:, c], 8, (0, 256))[0]
                             for a in (img, flat))
            assert after.std() < 0.5 * before.std()
    adaptive = velk.equalize(LIC, adaptive=True)
    assert adaptive.shape == LIC.shape and not np.array_equal(adaptive, velk.equalize(LIC))
    # One tile that clips nothing is the global mapping.
    assert np.array_equal(velk.equalize(rgb, True, (1, 1), 256), velk.equalize(rgb))
    # Tiles are (rows, columns): two side by side equalise the halves apart.
    halves = np.hstack([LIC // 2, LIC // 2 + 128])
    assert velk.equalize(halves, True, (1, 2), 256)[:, :16].max() > 200


def test_filters_keep_shape_and_constant_images():
    grey = np.full((20, 30), 90, np.uint8)
    rgb = np.dstack([grey, grey + 10, grey + 20])
    assert np.array_equal(velk.blur(grey, 3), grey)
    assert np.array_equal(velk.blur(rgb, 2), rgb)
    assert np.array_equal(velk.zoom(rgb, (20, 30)), rgb)
    assert velk.zoom(LIC, (96, 128)).shape == (96, 128)
    assert velk.emboss(grey, azimuth=0, elevation=45)[5, 5] == 180
    u, v = velk.circle((9, 9))
    assert velk.emboss(LIC, u, v).shape == LIC.shape


def test_colouring_takes_hue_from_the_values_and_lightness_from_the_image():
    u, v = velk.circle((33, 33))
    mag = np.hypot(u, v)
    assert velk.color(LIC, mag, "hot").shape == (48, 64, 3)
    ramp = np.repeat(np.arange(256, dtype=np.uint8)[:, None], 3, axis=1)
    assert np.array_equal(velk.color(LIC, mag, ramp[::51]), velk.color(LIC, mag, "grey"))
    white = np.full_like(LIC, 255)
    assert (velk.color(white, mag, "grey", range=(0, 1)) == 255).all()
    assert velk.color_direction(LIC, u, v).shape == (48, 64, 3)
    ramp = velk.color(np.full((8, 8), 64, np.uint8), np.tile(np.linspace(0, 1, 8), (8, 1)))
    assert (ramp == ramp[0]).all() and len(np.unique(ramp[0], axis=0)) == 8
    assert ramp[0, 0, 0] < 140  # pure red of the map, darkened like every other hue
