"""Orientation fields, periodic boxes and nodes without data."""
import numpy as np
import pytest
import velk


@pytest.mark.parametrize("integrator", ["rk43", "midpoint"])
@pytest.mark.parametrize("threads", [0, 2])
def test_orientation_ignores_sign_flips(integrator, threads):
    u, v = velk.brusselator((40, 40))
    flip = np.where(np.random.default_rng(1).random(u.shape) < 0.5, -1, 1).astype(np.float32)
    run = dict(shape=(96, 96), orientation=True, integrator=integrator, threads=threads)
    assert np.array_equal(velk.lic(u * flip, v * flip, **run), velk.lic(u, v, **run))


@pytest.mark.parametrize("boundary,axis", [("periodic", 0), ("periodic", 1),
                                           (("closed", "periodic"), 1),
                                           (("periodic", "closed"), 0)])
def test_periodic_box_rolls_with_its_field(boundary, axis):
    n, size, k = 32, 128, 8  # k nodes are k * size / n pixels of one period
    x, y = np.meshgrid(2 * np.pi * np.arange(n) / n, 2 * np.pi * np.arange(n) / n)
    u, v = np.sin(x) * np.cos(y), -np.cos(x) * np.sin(y)
    texture = velk.noise((size, size), seed=4)
    img = velk.lic(u, v, texture, boundary=boundary).astype(int)
    rolled = velk.lic(np.roll(u, k, axis), np.roll(v, k, axis),
                      np.roll(texture, k * size // n, axis), boundary=boundary)
    shifted = np.abs(rolled - np.roll(img, k * size // n, axis)).mean()
    assert shifted < 0.2 * np.abs(rolled - img).mean()


def test_nodata_keeps_a_constant_texture_constant():
    y, x = np.mgrid[-1:1:48j, -1:1:64j]
    u, v = -y, x + 0.3
    u[30:36, 5:20] = np.nan
    coast = (x > 0.6) & (y < 0.2 * np.sin(6 * x))
    img, weight = velk.lic(u, v, np.full((96, 128), 90, np.uint8), mask=coast, fill=7,
                           return_weight=True)
    assert weight.dtype == np.float32 and weight.shape == img.shape
    assert weight.min() == 0 < weight.max() <= 1
    assert np.array_equal(img, np.where(weight > 0, 90, 7))


def test_masks_mark_the_same_nodes_as_nan():
    u, v = velk.circle((33, 33))
    hole = np.zeros(u.shape, bool)
    hole[3:9, 20:31] = True  # off-centre: a flipped or transposed mask differs
    nan = velk.lic(np.where(hole, np.nan, u), v, shape=(70, 60), return_weight=True)
    masked = velk.lic(np.ma.masked_array(u, hole), v, shape=(70, 60), return_weight=True)
    given = velk.lic(u, v, shape=(70, 60), mask=hole, return_weight=True)
    for got in (masked, given):
        assert all(np.array_equal(a, b) for a, b in zip(got, nan))


def test_a_field_without_data_gives_only_fill():
    nan = np.full((8, 9), np.nan)
    img, weight = velk.lic(nan, nan, shape=(20, 30), fill=200, return_weight=True)
    assert (img == 200).all() and not weight.any()
