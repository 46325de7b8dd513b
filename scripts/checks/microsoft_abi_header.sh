#!/usr/bin/env bash
# ZemUVC.hpp compiles for the Microsoft ABI, and asks for the names that the DLL exports. There is no
# C++ library of Microsoft's here: MinGW's takes its place, so what comes out is compiled and not linked.
set -euo pipefail
cd "$(dirname "$0")/../.."
out=build/microsoft_abi
mkdir -p $out

library=$(echo | x86_64-w64-mingw32-g++-win32 -v -E -x c++ - 2>&1 >/dev/null |
  sed -n 's/^ \(.*\/include\/c++\)$/\1/p' | head -n 1)
clang++ --target=x86_64-pc-windows-msvc -std=c++17 -fgnuc-version=12.2.0 -fno-ms-compatibility \
  -U_MSC_VER -D__MINGW32__ -D__MINGW64__ -D_UCRT -nostdinc++ -isystem "$library" \
  -isystem "$library/x86_64-w64-mingw32" -isystem "$library/backward" \
  -isystem /usr/x86_64-w64-mingw32/include -Wall -Wextra -Wconversion -Wshadow -pedantic -Werror -I. \
  -c tests/header/microsoft_abi_caller.cpp -o $out/header.obj
asked=$(llvm-nm $out/header.obj)
for name in __imp_ZEMAPI_OpenDevice __imp_ZEMAPI_CloseDevice __imp_ZEMAPI_GetRegister \
  '?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z' '?WREN_EuGet@@YAJPEAXI0G@Z' \
  '?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z' __imp_CoCreateInstance __imp_GetProcAddress; do
  grep -qF " U $name" <<<"$asked" || { echo "does not ask for $name"; exit 1; }
done
