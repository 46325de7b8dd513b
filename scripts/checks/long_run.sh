#!/usr/bin/env bash
# long_run.sh SYSTEM ROUNDS: zem_long_run on linux or, under Wine, on windows.
set -euo pipefail
build=$PWD/build/$1
mkdir -p "build/long-run/$1"
cd "build/long-run/$1"
case $1 in
  windows) wine "$build/zem_long_run.exe" "$2" ;;
  # What the C library keeps for the thread it counts as allocated; so it keeps nothing.
  linux) GLIBC_TUNABLES=glibc.malloc.tcache_count=0 "$build/zem_long_run" "$2" ;;
esac
