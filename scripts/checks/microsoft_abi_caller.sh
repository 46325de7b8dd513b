#!/usr/bin/env bash
# microsoft_abi_caller.sh PACKAGE FOLDER: builds tests/windows/callers/microsoft_abi_caller.cpp for the
# Microsoft ABI in FOLDER, with nothing but Clang and the package's import library and header, and runs it.
set -euo pipefail
cd "$(dirname "$0")/../.."
package=$1
out=$2
mkdir -p "$out"

printf 'LIBRARY KERNEL32.dll\nEXPORTS\n  ExitProcess\n' >"$out/kernel32.def"
llvm-dlltool -m i386:x86-64 -d "$out/kernel32.def" -l "$out/kernel32.lib"
clang++ --target=x86_64-pc-windows-msvc -ffreestanding -std=c++14 -Wall -Wextra -Werror -I"$package" -c \
  tests/windows/callers/microsoft_abi_caller.cpp -o "$out/caller.obj"
# The names that a Microsoft compiler asks for.
llvm-nm "$out/caller.obj" >"$out/names"
grep -qF ' U __imp_ZEMAPI_GetFWVersion' "$out/names"
grep -qF ' U ?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z' "$out/names"
grep -qF ' U ?WREN_EuGet@@YAJPEAXI0G@Z' "$out/names"
grep -qF ' U ?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z' "$out/names"
lld-link /nodefaultlib /entry:Entry /subsystem:console /out:"$out/caller.exe" "$out/caller.obj" \
  "$package/lib/ZemUVCExtApi.lib" "$out/kernel32.lib"
cp "$package/bin/ZemUVCExtApi.dll" "$out/"
wine "$out/caller.exe"
