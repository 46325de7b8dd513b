#!/usr/bin/env bash
# Builds tests/windows/callers/microsoft_abi_caller.cpp for the Microsoft ABI, with nothing but Clang,
# an import library made from the module definition file, and the public header, and runs it.
set -euo pipefail
cd "$(dirname "$0")/../.."
out=build/microsoft_abi
mkdir -p $out

llvm-dlltool -m i386:x86-64 -d exports/ZemUVCExtApi.def -l $out/ZemUVCExtApi.lib
printf 'LIBRARY KERNEL32.dll\nEXPORTS\n  ExitProcess\n' >$out/kernel32.def
llvm-dlltool -m i386:x86-64 -d $out/kernel32.def -l $out/kernel32.lib
clang++ --target=x86_64-pc-windows-msvc -ffreestanding -std=c++14 -Wall -Wextra -Werror -I. -c \
  tests/windows/callers/microsoft_abi_caller.cpp -o $out/caller.obj
# The names that a Microsoft compiler asks for.
llvm-nm $out/caller.obj | grep -qF ' U __imp_ZEMAPI_GetFWVersion'
llvm-nm $out/caller.obj | grep -qF ' U ?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z'
llvm-nm $out/caller.obj | grep -qF ' U ?WREN_EuGet@@YAJPEAXI0G@Z'
llvm-nm $out/caller.obj | grep -qF ' U ?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z'
lld-link /nodefaultlib /entry:Entry /subsystem:console /out:$out/caller.exe $out/caller.obj \
  $out/ZemUVCExtApi.lib $out/kernel32.lib
cp build/windows/ZemUVCExtApi.dll $out/
wine $out/caller.exe
