#!/usr/bin/env bash
# Installs the Python package into a fresh virtual environment exactly as the
# README says (pip install .), runs the Python tests against that installed
# copy from outside the source tree, and uninstalls it again.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

python3 -m venv "$work/venv"
python="$work/venv/bin/python"
(cd "$root" && "$python" -m pip install -q .)
"$python" -m pip install -q pytest

cd "$work"
installed="$("$python" -c 'import velk; print(velk.__file__)')"
case "$installed" in
    "$work/venv/"*) ;;
    *) echo "velk imported from $installed, not from the environment" >&2; exit 1 ;;
esac
"$python" -m pytest -q -p no:cacheprovider "$root/tests/python"

"$python" -m pip uninstall -y -q velk
if "$python" -c 'import velk' 2>/dev/null; then
    echo "velk still importable after pip uninstall" >&2
    exit 1
fi
leftovers="$(find "$work/venv" -ipath '*velk*')"
[ -z "$leftovers" ] || { echo "left after uninstall: $leftovers" >&2; exit 1; }
echo "installed, tested and removed velk from a fresh environment"
