"""Engines on several threads at once give what they give alone."""
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import velk


def test_concurrent_engines_and_noise():
    u, v = velk.brusselator((40, 40))
    jobs = [dict(seed=s, kernel=k) for s in (1, 2, 3) for k in ("box", "cubic")]
    alone = [velk.lic(u, v, shape=(96, 96), **j) for j in jobs]
    with ThreadPoolExecutor(4) as pool:
        together = list(pool.map(lambda j: velk.lic(u, v, shape=(96, 96), **j), jobs * 2))
    assert all(np.array_equal(a, b) for a, b in zip(alone * 2, together))


def test_one_engine_shared_by_threads():
    engine = velk.Engine(length=10)
    u, v = velk.circle((20, 20))
    want = engine.compute(u, v, shape=(64, 64))
    with ThreadPoolExecutor(4) as pool:
        got = list(pool.map(lambda _: engine.compute(u, v, shape=(64, 64)), range(8)))
    assert all(np.array_equal(g, want) for g in got) and engine.lines > 0
