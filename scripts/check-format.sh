#!/usr/bin/env bash
# Fails when clang-format would change any C++ file of the project.
set -euo pipefail
cd "$(dirname "$0")/.."
files=$(git ls-files '*.cpp' '*.h')
[ -z "$files" ] && exit 0
# shellcheck disable=SC2086
clang-format --dry-run -Werror $files
echo "clang-format: $(echo "$files" | wc -w) files clean"
