#!/usr/bin/env bash
# Fails each transfer of each command of zemctl in turn; $1 is the half of the commands that is taken,
# ZEM_SYSTEM the build: windows, under Wine (without it), or linux.
set -euo pipefail
system=${ZEM_SYSTEM:-windows}
folder=build/zemctl-tests/$system/sweep-$1
mkdir -p $folder
case $system in
  windows) wine build/windows/zemctl_sweep.exe $folder "$1" ;;
  linux) build/linux/zemctl_sweep $folder "$1" ;;
esac
