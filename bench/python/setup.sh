#!/usr/bin/env bash
# Makes the benchmark's own virtual environment (default build/bench-venv):
# velk installed from this checkout with pip, as a user installs it, and the
# other LIC packages from PyPI that bench_lic.py compares it with.
set -euo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
venv="${1:-$root/build/bench-venv}"
python3 -m venv "$venv"
"$venv/bin/python" -m pip install -q -r "$root/bench/python/requirements.txt"
"$venv/bin/python" -m pip install -q "$root"
echo "$venv"
