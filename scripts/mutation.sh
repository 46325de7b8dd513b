#!/usr/bin/env bash
# mutation.sh [ROOM,...] [COUNT] [--seed SEED] [--only TEXT] [--workers N] [--write]: which one-token faults
# in the library the tests notice. Takes an hour for all rooms; see docs/mutation.md.
source "$(dirname "$0")/setup.sh"

step "packages" install_missing "${native_packages[@]}" lld python3
step "configure native" cmake --preset native
step "build the tests" cmake --build --preset native --target zem_tests zem_linux_tests
exec nice -n 5 python3 -B scripts/mutation/run.py "$@"
