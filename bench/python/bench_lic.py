"""velk.lic against the C++ engine and against other LIC packages for Python.

The case is the one of velk-bench's BM_LicEngineBox/L:20: a 256x256 circular
field, 1024x1024 grey noise (seed 1), box kernel of half-length 20 pixels,
midpoint integrator. Every timing is the median of --repeats runs of wall time.

    bench/python/setup.sh                      # build/bench-venv: velk, rlic, lic
    build/bench-venv/bin/python bench/python/bench_lic.py \\
        --velk-bench build/release/bench/velk-bench

Prints three tables: Python against C++ (the overhead of the binding), velk
against rlic and lic on the same field, noise and kernel half-length (each with
the settings its documentation recommends), and two engines on two threads
against one thread doing both (the GIL is released during the computation).
"""

import argparse
import contextlib
import io
import json
import os
import platform
import statistics
import subprocess
import sys
import time
import warnings
from concurrent.futures import ThreadPoolExecutor
from importlib.metadata import version
from typing import Callable, Dict, List, Optional, Tuple

import numpy as np
import velk

SIZE = 1024
HALF = 20  # kernel half-length in pixels


def median_seconds(run: Callable[[], object], repeats: int) -> float:
    run()  # warm caches and lazy imports
    times = []
    for _ in range(repeats):
        t0 = time.perf_counter()
        run()
        times.append(time.perf_counter() - t0)
    return statistics.median(times)


def cpp_seconds(velk_bench: str, repeats: int) -> float:
    out = subprocess.run(
        [velk_bench, "--benchmark_filter=^BM_LicEngineBox/L:20/", "--benchmark_format=json",
         f"--benchmark_repetitions={repeats}"], check=True, capture_output=True, text=True).stdout
    runs = [b for b in json.loads(out)["benchmarks"] if b.get("run_type") == "iteration"]
    unit = {"ms": 1e3, "us": 1e6, "ns": 1e9, "s": 1.0}[runs[0]["time_unit"]]
    return statistics.median(b["real_time"] for b in runs) / unit


def scene() -> Tuple[np.ndarray, np.ndarray, np.ndarray]:
    u, v = velk.circle((256, 256))
    return u, v, velk.noise((SIZE, SIZE), seed=1)


def peer_field() -> Tuple[np.ndarray, np.ndarray]:
    # The circle field is linear, so this is exactly what velk samples at the
    # texture's pixels: position p / SIZE - 0.5, vector (-y, x).
    y, x = (np.mgrid[0:SIZE, 0:SIZE].astype(np.float32) / SIZE) - np.float32(0.5)
    return -y, x


def quiet(run: Callable[[], object]) -> object:
    with contextlib.redirect_stderr(io.StringIO()):  # progress bars
        return run()


def peers(texture: np.ndarray) -> Dict[str, Tuple[str, Callable[[], object]]]:
    found: Dict[str, Tuple[str, Callable[[], object]]] = {}
    u, v = peer_field()
    noise = texture.astype(np.float32) / np.float32(255)
    n = 2 * HALF + 1
    try:
        import rlic

        kernel = np.sin(np.arange(n, dtype=np.float32) * np.pi / n)  # its README's kernel
        found[f"rlic {version('rlic')}"] = (
            f"sine kernel of {n} taps, float32",
            lambda: rlic.convolve(noise, u, v, kernel=kernel))
    except ImportError:
        pass
    try:
        warnings.simplefilter("ignore")  # its divisions by zero
        import lic

        # It indexes its arrays [x, y].
        u64, v64 = u.T.astype(np.float64), v.T.astype(np.float64)
        noise64 = noise.T.astype(np.float64)
        found[f"lic {version('lic')}"] = (
            f"length={n} (its box kernel), float64",
            lambda: quiet(lambda: lic.lic(u64, v64, seed=noise64, length=n)))
    except ImportError:
        pass
    return found


def table(header: List[str], rows: List[List[str]]) -> str:
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    return "\n".join(lines + ["| " + " | ".join(r) + " |" for r in rows])


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--velk-bench", help="velk-bench of a Release build, for the C++ time")
    parser.add_argument("--repeats", type=int, default=7)
    parser.add_argument("--peer-repeats", type=int, default=3)
    args = parser.parse_args()

    u, v, texture = scene()
    box = velk.Engine(kernel="box", integrator="midpoint", length=HALF)
    # Rounds of C++ and Python in turn, so that a change of load hits both.
    pythons, cpps = [], []
    for _ in range(args.repeats):
        pythons.append(median_seconds(lambda: box.compute(u, v, texture), 3))
        if args.velk_bench:
            cpps.append(cpp_seconds(args.velk_bench, 1))
    python = statistics.median(pythons)

    print(f"Machine: {platform.processor() or platform.machine()}, {os.cpu_count()} cores, "
          f"Python {platform.python_version()}, NumPy {np.__version__}")
    print(f"Command: {' '.join([os.path.basename(sys.executable)] + sys.argv)}\n")

    cpp: Optional[float] = statistics.median(cpps) if cpps else None
    rows = [["velk.Engine.compute (Python)", f"{python * 1e3:.1f}", ""]]
    if cpp is not None:
        rows.append(["VelkCompute::compute (C++, velk-bench)", f"{cpp * 1e3:.1f}", ""])
        rows[0][2] = f"{100 * (python / cpp - 1):+.1f} %"
    # With length 0 the engine only copies the texture: what is left is the
    # fixed cost of a call (argument checks, conversions, the output array).
    empty = velk.Engine(length=0)
    fixed = median_seconds(lambda: empty.compute(u, v, texture), args.repeats)
    rows.append(["velk.Engine.compute, length 0 (the cost of a call)", f"{fixed * 1e3:.2f}",
                 f"{100 * fixed / python:.1f} % of the LIC"])
    print(table(["1024x1024, box L=20, midpoint", "median ms", "Python overhead"], rows) + "\n")

    default = velk.Engine(length=HALF)
    runs = [("velk", "triangle kernel, rk43 (defaults)", lambda: default.compute(u, v, texture)),
            ("velk", "box kernel, midpoint", lambda: box.compute(u, v, texture))]
    tiled = velk.Engine(length=HALF, threads=-1)
    runs.append(("velk", "defaults, threads=-1", lambda: tiled.compute(u, v, texture)))
    for name, (settings, run) in peers(texture).items():
        runs.append((name, settings, run))
    rows = []
    base = None
    for name, settings, run in runs:
        t = median_seconds(run, args.repeats if name == "velk" else args.peer_repeats)
        base = base or t
        rows.append([name, settings, f"{t * 1e3:.0f}", f"{t / base:.1f}x"])
    print(table(["package", "settings", "median ms", "time / velk defaults"], rows) + "\n")

    engines = [velk.Engine(length=HALF), velk.Engine(length=HALF)]
    one = median_seconds(lambda: [e.compute(u, v, texture) for e in engines], args.repeats)
    with ThreadPoolExecutor(2) as pool:
        two = median_seconds(
            lambda: list(pool.map(lambda e: e.compute(u, v, texture), engines)), args.repeats)
    print(table(["two LICs (defaults)", "median ms", "speed-up"],
                [["one thread, one after the other", f"{one * 1e3:.0f}", "1.00"],
                 ["two threads, one engine each", f"{two * 1e3:.0f}", f"{one / two:.2f}"]]))


if __name__ == "__main__":
    main()
