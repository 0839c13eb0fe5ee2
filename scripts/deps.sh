#!/usr/bin/env bash
# Installs the Debian packages that building and testing velk need, if any are
# missing, and the Python development environment build/venv from
# python/requirements-dev.txt (the dev preset builds and tests the Python
# package with it). Safe to run repeatedly; needs root (or sudo) only when
# installing Debian packages.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"

packages=(
    cmake ninja-build g++ make pkg-config
    libgtest-dev libbenchmark-dev
    libpng-dev
    clang-format
    netpbm
    clang libclang-rt-14-dev
    valgrind
    python3 python3-venv python3-dev
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The virtual environment is remade when the requirements change.
venv="$root/build/venv"
requirements="$root/python/requirements-dev.txt"
if ! cmp -s "$requirements" "$venv/requirements-dev.txt"; then
    echo "Creating the Python environment $venv"
    rm -rf "$venv"
    python3 -m venv "$venv"
    "$venv/bin/python" -m pip install -q -r "$requirements"
    cp "$requirements" "$venv/requirements-dev.txt"
fi
