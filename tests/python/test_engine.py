"""velk.lic and velk.Engine give what the C++ engine gives, byte for byte."""
import os
import subprocess

import numpy as np
import pytest
import velk

DATA = os.path.join(os.path.dirname(__file__), "..", "data", "lic")
FIELDS = {
    "circle": lambda: velk.circle((33, 33)),
    "linear": lambda: velk.linear((50, 50), [[0.2, 1.0], [-1.0, 0.1]], (0.1, 0.0)),
    "brusselator": lambda: velk.brusselator((64, 64), 4, 4, 1, 3),
    "saddle": velk.saddle,
}
# The C++ test's table: file, field, noise shape, binary, seed, settings, lines, hits.
REFERENCES = [
    ("circle-default.pgm", "circle", (80, 96), 0, 7, {}, 251, 21920),
    ("circle-cubic-sobol-midpoint-sub2.pgm", "circle", (80, 96), 0, 7,
     dict(kernel="cubic", subpixels=2, seeding="sobol", integrator="midpoint"), 774, 74124),
    ("linear-rgb-box-scan-nearest-L5.ppm", "linear", (80, 96, 3), 0, 11,
     dict(kernel="box", length=5, seeding="scan", lookup="nearest"), 234, 21610),
    ("brusselator-binary-sub3.pgm", "brusselator", (80, 96), 1, 3, dict(subpixels=3), 3844, 304001),
    ("saddle-default.pgm", "saddle", (128, 128), 0, 5, {}, 669, 46076),
]


@pytest.mark.parametrize("file,field,shape,binary,seed,settings,lines,hits", REFERENCES)
def test_reference_images(file, field, shape, binary, seed, settings, lines, hits):
    u, v = FIELDS[field]()
    engine = velk.Engine(**settings)
    img = engine.compute(u, v, velk.noise(shape, seed=seed, binary=bool(binary)))
    np.testing.assert_array_equal(img, velk.read_pnm(os.path.join(DATA, file)))
    assert (engine.lines, engine.hits) == (lines, hits)
    if not binary and len(shape) == 2:
        rest = {k: v for k, v in settings.items()}
        assert np.array_equal(velk.lic(u, v, shape=shape, seed=seed, **rest), img)


@pytest.mark.skipif("VELK_LIC" not in os.environ, reason="velk-lic not built")
def test_same_as_the_tool(tmp_path):
    out = tmp_path / "lic.ppm"
    subprocess.run([os.environ["VELK_LIC"], "-f", "brusselator", "--grid", "40x30", "--noise",
                    "color", "--noise-size", "70x50", "--seed", "3", "--no-adjust", "-k",
                    "cubic", "--subpixels", "2", "--seeding", "sobol", "--threads", "0",
                    "-o", str(out)], check=True)
    u, v = velk.brusselator((30, 40))
    img = velk.lic(u, v, velk.noise((50, 70, 3), seed=3), kernel="cubic", subpixels=2,
                   seeding="sobol")
    np.testing.assert_array_equal(img, velk.read_pnm(out))


def test_layout_dtype_and_threads_do_not_change_the_result():
    u, v = velk.brusselator((30, 40))
    want = velk.lic(u, v, shape=(90, 120))
    u64, v64 = np.asfortranarray(u, np.float64), np.asfortranarray(v, np.float64)
    padded = np.zeros((30, 80), np.float32)[:, ::2]
    padded[...] = u
    assert np.array_equal(velk.lic(u64, v64, shape=(90, 120)), want)
    assert np.array_equal(velk.lic(padded, v, shape=(90, 120)), want)
    tiled = [velk.lic(u, v, shape=(90, 120), threads=n) for n in (1, 2, 3)]
    assert all(np.array_equal(t, tiled[0]) for t in tiled)
    texture = np.ascontiguousarray(velk.noise((90, 120), seed=1).T).T  # column-major
    assert np.array_equal(velk.lic(u, v, texture), want)


def test_non_finite_values_end_lines_without_harm():
    u, v = velk.circle((33, 33))
    u[10:20, 5:9], v[3, :] = np.nan, np.inf
    img = velk.lic(u, v, shape=(64, 64), subpixels=2)
    assert img.shape == (64, 64) and img.any()


def test_engine_settings_persist_and_log(caplog):
    engine = velk.Engine(kernel="box", length=8)
    engine.length = 12
    u, v = velk.circle()
    with caplog.at_level("INFO", logger="velk"):
        img = engine.compute(u, v, shape=(40, 50))
    assert np.array_equal(img, velk.lic(u, v, shape=(40, 50), kernel="box", length=12))
    assert f"total number of field lines = {engine.lines}" in caplog.messages


def streak_contrast(img):
    """Mean change across the flow over mean change along it, near the
    vertical axis of the circle field, where the flow runs along the rows."""
    f = img.astype(float)
    h, w = f.shape
    rows, columns = np.r_[8:h // 2 - 16, h // 2 + 16:h - 8], slice(w // 2 - 8, w // 2 + 8)
    across = np.abs(np.diff(f, axis=0))[rows, columns].mean()
    return across / np.abs(np.diff(f, axis=1))[rows, columns].mean()


def test_enhanced_lic_sharpens_the_streaks():
    u, v = velk.circle((33, 33))
    plain = velk.lic(u, v, shape=(160, 160))
    assert np.array_equal(velk.lic(u, v, shape=(160, 160), iterations=1, enhance=False), plain)
    enhanced = velk.Engine(enhance=True).compute(u, v, shape=(160, 160))
    assert streak_contrast(enhanced) > 1.1 * streak_contrast(plain)
    # Plain passes fade to grey; the high-pass keeps the range.
    assert enhanced.std() > 2 * velk.lic(u, v, shape=(160, 160), iterations=2).std()
