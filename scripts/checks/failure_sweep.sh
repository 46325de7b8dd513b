#!/usr/bin/env bash
# Fails each transfer of each command of zemctl in turn; $1 is the half of the commands that is taken.
set -euo pipefail
folder=build/zemctl-tests/sweep-$1
mkdir -p $folder
wine build/windows/zemctl_sweep.exe $folder "$1"
