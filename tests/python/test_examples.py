"""The examples run as documented, and type-check against the package's stubs."""
import doctest
import os
import subprocess
import sys

import numpy as np
import pytest

EXAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "python")


def test_docstring_examples():
    import velk
    assert doctest.testmod(velk).failed == 0


def test_dask_frames_on_a_local_cluster():
    distributed = pytest.importorskip("dask.distributed")
    sys.path.insert(0, EXAMPLES)
    import dask_frames
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=False,
                                  dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        frames = dask_frames.render(client, 3, shape=(48, 64))
    assert [np.array_equal(f, dask_frames.frame(k, (48, 64))) for k, f in enumerate(frames)] == [
        True] * 3


def test_examples_and_stubs_type_check():
    pytest.importorskip("mypy")
    pytest.importorskip("matplotlib")
    files = [os.path.join(EXAMPLES, f) for f in sorted(os.listdir(EXAMPLES)) if f.endswith(".py")]
    run = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--allow-untyped-calls",
                          "--ignore-missing-imports", *files],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stdout + run.stderr
    stubs = subprocess.run([sys.executable, "-m", "mypy.stubtest", "velk", "--ignore-missing-stub"],
                           capture_output=True, text=True)
    assert stubs.returncode == 0, stubs.stdout + stubs.stderr
