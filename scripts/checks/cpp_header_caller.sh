#!/usr/bin/env bash
# A program that uses ZemUVC.hpp, on this system (linux), under Wine (windows), or there with the old C
# runtime in place of the library's (old-runtime). It writes a picture of two by two pixels, and says
# the header's version, which is the one that the build gave the files.
set -euo pipefail
cd "$(dirname "$0")/../.."
out=build/cpp_header_caller-$1
rm -rf "$out"
mkdir -p "$out"
flags=(-std=c++17 -Wall -Wextra -Wconversion -Wshadow -pedantic -Werror -I.)
source=tests/windows/callers/cpp_header_caller.cpp

case $1 in
  linux)
    g++ "${flags[@]}" $source -o "$out/caller" build/linux/libZemUVCExtApi.so \
      -Wl,-rpath,"$PWD/build/linux"
    version=$("$out/caller" "$out/pixels.bmp")
    file=$(basename "$(readlink -f build/linux/libZemUVCExtApi.so)")
    [ "${file#libZemUVCExtApi.so.}" = "$version" ]
    ;;
  windows | old-runtime)
    cp build/windows/ZemUVCExtApi.dll "$out/"
    runtime=()
    [ "$1" = old-runtime ] || runtime=("-specs=build/windows/ucrt.specs" -D_UCRT)
    x86_64-w64-mingw32-g++-win32 "${runtime[@]}" "${flags[@]}" $source -o "$out/caller.exe" \
      build/windows/libZemUVCExtApi.dll.a -static -lole32 -loleaut32
    x86_64-w64-mingw32-objdump -p "$out/caller.exe" >"$out/imports"
    # Each with the runtime that it is about.
    grep -qi 'DLL Name: msvcrt.dll' "$out/imports" && [ "$1" = old-runtime ] ||
      { grep -qi 'DLL Name: api-ms-win-crt' "$out/imports" && [ "$1" = windows ]; }
    version=$(wine "$out/caller.exe" "$out/pixels.bmp" | tr -d '\r')
    resource=$(strings -e l build/windows/ZemUVCExtApi.dll | grep -A1 '^ProductVersion$' | tail -n 1)
    [ "$resource" = "$version" ]
    ;;
esac
[ "$(stat -c %s "$out/pixels.bmp")" -eq $((54 + 12)) ]
