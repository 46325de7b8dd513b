#!/usr/bin/env bash
# long_run.sh [ROUNDS]: so many rounds of a camera's life (10,000 without), in one process of this system
# and in one under Wine: opened, read, written, updated, sent into ROM boot, recovered. Prints what each
# process holds on the way and what that gains in 1,000 rounds; fails where it gains more than its bound.
source "$(dirname "$0")/setup.sh"

rounds=${1-10000}
step "packages" install_missing "${windows_packages[@]}"
for preset in linux windows; do
  step "configure $preset" cmake --preset $preset
  step "build for $preset" cmake --build --preset $preset --target zem_long_run
done
step "Wine folder" scripts/wine_folder.sh

status=0
for system in linux windows; do
  printf '\n%s\n' "$system"
  scripts/checks/long_run.sh $system "$rounds" || status=1
done
exit $status
