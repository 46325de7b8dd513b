#!/usr/bin/env bash
# The main job: builds the Windows DLL, the host tool and the simulated camera, and lets the tool find
# the camera, open it, and read it.
source "$(dirname "$0")/scripts/setup.sh"

step "packages" install_missing "${windows_packages[@]}"
step "configure" cmake --preset windows
scripts/wine_folder.sh >build/log/wine-folder.log 2>&1 &
wine_folder=$!
step "build the DLL" cmake --build --preset windows --target ZemUVCExtApi
step "build zemctl and the simulator" cmake --build --preset windows --target zemctl
step "Wine folder" wait $wine_folder

zemctl() {
  echo
  echo "\$ zemctl --simulator $*"
  wine build/windows/zemctl.exe --simulator "$@" 2>&1
}

zemctl list
zemctl info
zemctl reg get isp 0
zemctl reg set isp 0x123456 0xABCD
zemctl command isp 0b
