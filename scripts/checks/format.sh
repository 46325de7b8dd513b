#!/usr/bin/env bash
# Every source file is formatted as .clang-format says.
set -euo pipefail
mapfile -t files < <(find . -path ./build -prune -o \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.c' \) -print)
[ ${#files[@]} -gt 100 ]
clang-format --dry-run -Werror "${files[@]}"
