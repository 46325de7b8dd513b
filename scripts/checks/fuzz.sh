#!/usr/bin/env bash
# fuzz.sh NAME: one fuzzer for four seconds, from its seeds on. What it finds here is a regression.
set -euo pipefail

found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT
# An input that shows a fault stays in build/fuzz/.
build/fuzz/"$1"_fuzzer -max_total_time=4 -seed=1 -verbosity=0 -print_funcs=0 -artifact_prefix=build/fuzz/"$1-" \
  "$found" fuzz/seeds/"$1"
