#!/usr/bin/env bash
# The public header and windows.h in the order of the arguments.
set -euo pipefail
printf '#include "%s"\n#include "%s"\nGUID zemGuid;\n' "$1" "$2" |
  x86_64-w64-mingw32-g++-win32 -std=c++17 -I. -fsyntax-only -Wall -Wextra -Wconversion -Wshadow -Werror \
    -x c++ -
