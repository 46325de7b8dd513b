#!/usr/bin/env bash
# The same sources give the same DLL, whatever the folder that it is built in.
set -euo pipefail
# What an earlier toolchain file left in the cache would differ.
cmake --fresh --preset windows -B build/again >build/log/configure-again.log
cmake --build build/again --target ZemUVCExtApi -j 1
cmp build/windows/ZemUVCExtApi.dll build/again/ZemUVCExtApi.dll
