#!/usr/bin/env bash
# Installs the Debian packages that building and testing velk need, if any are
# missing. Safe to run repeatedly; needs root (or sudo) only when installing.
set -euo pipefail

packages=(
    cmake ninja-build g++ make pkg-config
    libgtest-dev libbenchmark-dev
    libpng-dev
    clang-format
    netpbm
    clang libclang-rt-14-dev
    valgrind
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
