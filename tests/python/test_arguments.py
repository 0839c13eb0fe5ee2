"""Bad arguments raise TypeError or ValueError naming what is wrong, and nothing is printed."""
import numpy as np
import pytest
import velk

F = np.zeros((20, 30), np.float32)
IMG = np.zeros((8, 8), np.uint8)
BAD = [
    (lambda: velk.lic(F, F[:19]), ValueError,
     r"u and v must have the same shape, got \(20, 30\) and \(19, 30\)"),
    (lambda: velk.lic(F.astype(np.int32), F), TypeError, "u must be a float32 or float64"),
    (lambda: velk.lic(F, F[0]), ValueError, "v must be 2-D"),
    (lambda: velk.lic(F[:1], F[:1]), ValueError, "u needs 2 to 10000 nodes"),
    (lambda: velk.lic(F, F, IMG.astype(np.float32)), TypeError, "texture must be a uint8"),
    (lambda: velk.lic(F, F, np.zeros((4, 4, 4), np.uint8)), ValueError, r"\(H, W, 3\)"),
    (lambda: velk.lic(F, F, np.zeros((0, 4), np.uint8)), ValueError, "at least 1x1"),
    (lambda: velk.lic(F, F, kernel="gauss"), ValueError, "kernel must be one of box"),
    (lambda: velk.lic(F, F, subpixels=0), ValueError, "subpixels must be in 1"),
    (lambda: velk.lic(F, F, length=float("nan")), ValueError, "length must be >= 0"),
    (lambda: velk.lic(F, F, shape=(70000, 70000)), ValueError, "more pixels than"),
    (lambda: velk.lic(F, F, shape=(40000, 40000), subpixels=2), ValueError, "more counters"),
    (lambda: velk.Engine(step=0), ValueError, "step must be > 0"),
    (lambda: velk.Engine(threads=1.5), TypeError, "threads must be an int"),
    (lambda: velk.Engine(rk43=(1, 2, 3)), ValueError, "rk43 must be"),
    (lambda: velk.Engine(length=1e9, step=1).compute(F, F), ValueError, "2\\*\\*24 steps"),
    (lambda: velk.noise((4, 4, 2)), ValueError, "shape must be"),
    (lambda: velk.brighten(IMG, 3, 3), ValueError, "lo and hi must differ"),
    (lambda: velk.blur(IMG, 10), ValueError, "radius must be in 1 .. 9"),
    (lambda: velk.zoom(IMG, (0, 5)), ValueError, r"shape\[0\] must be in 1"),
    (lambda: velk.emboss(IMG[:1]), ValueError, "at least 2x2"),
    (lambda: velk.color(IMG, F, "jet"), ValueError, "name must be one of hue"),
    (lambda: velk.color(IMG, F, np.zeros((5, 4), np.uint8)), ValueError, r"\(N, 3\)"),
    (lambda: velk.color(IMG, F, np.zeros((5, 3))), TypeError, "uint8 table"),
    (lambda: velk.read_ucd("x.inp", grid=(1, 5)), ValueError, r"grid\[0\] must be in 2"),
    (lambda: velk.circle((3,)), TypeError, "shape must be a pair"),
    (lambda: velk.lic(F, F, enhance=True, iterations=1), ValueError, "enhance needs iterations"),
    (lambda: velk.Engine(iterations=0), ValueError, "iterations must be in 1 .. 100"),
    (lambda: velk.Engine(enhance=1), TypeError, "enhance must be a bool"),
    (lambda: velk.equalize(IMG, True, (0, 4)), ValueError, r"tiles\[0\] must be in 1"),
    (lambda: velk.equalize(IMG, clip=0.5), ValueError, "clip must be >= 1"),
    (lambda: velk.lic(F, F, mask=np.zeros((30, 20), bool)), ValueError, "mask must have u's"),
    (lambda: velk.lic(F, F, mask=np.zeros((20, 30))), TypeError, "mask must be a bool array"),
    (lambda: velk.lic(F, F, fill=256), ValueError, "fill must be in 0 .. 255"),
    (lambda: velk.Engine(fill=-1), ValueError, "fill must be in 0 .. 255"),
    (lambda: velk.lic(F, F, boundary="wrap"), ValueError, "boundary must be one of closed"),
    (lambda: velk.lic(F, F, boundary=("closed",)), ValueError, "boundary must be one of"),
    (lambda: velk.Engine(boundary=("closed", "open")), ValueError, r"boundary\[1\] must be"),
    (lambda: velk.Engine(orientation=1), TypeError, "orientation must be a bool"),
]


@pytest.mark.parametrize("call,error,message", BAD)
def test_bad_argument(call, error, message, capfd):
    with pytest.raises(error, match=message):
        call()
    assert capfd.readouterr() == ("", "")
