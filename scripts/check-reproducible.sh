#!/usr/bin/env bash
# Builds the library twice from this checkout, as two different users at two
# different times in two different directories, with SOURCE_DATE_EPOCH set to
# the commit's time, and fails unless both libraries are the same bytes.
set -euo pipefail
cd "$(dirname "$0")/.."

export SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

build() {  # <dir> <user>
    USER=$2 cmake -S . -B "$1" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELK_BUILD_TESTS=OFF \
        -DVELK_BUILD_TOOLS=OFF -DVELK_INSTALL=OFF >/dev/null
    USER=$2 cmake --build "$1" --target velk -j 2 >/dev/null
}
build "$work/first" alice
sleep 1
build "$work/second-elsewhere" bob

lib=$(basename "$(ls "$work"/first/libvelk.so.*.*.*)")
a="$work/first/$lib"
b="$work/second-elsewhere/$lib"
if cmp -s "$a" "$b"; then
    echo "reproducible: $(sha256sum "$a" | cut -c1-16) ($(stat -c %s "$a") bytes) from both builds"
else
    echo "not reproducible: the two builds of $(git rev-parse --short HEAD) differ" >&2
    cmp "$a" "$b" | head -n 3 >&2 || true
    exit 1
fi
