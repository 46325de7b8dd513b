#!/usr/bin/env bash
# The main job: builds the library, the host tool and the simulated camera, and lets the tool find the
# camera, open it, and read it. Without an argument those for Windows, under Wine; with "linux" those of
# this system.
source "$(dirname "$0")/scripts/setup.sh"

case ${1:-windows} in
  windows)
    step "packages" install_missing "${windows_packages[@]}"
    step "configure" cmake --preset windows
    scripts/wine_folder.sh >build/log/wine-folder.log 2>&1 &
    wine_folder=$!
    step "build the DLL" cmake --build --preset windows --target ZemUVCExtApi
    step "build zemctl and the simulator" cmake --build --preset windows --target zemctl
    step "Wine folder" wait $wine_folder
    tool=(wine build/windows/zemctl.exe)
    ;;
  linux)
    step "packages" install_missing "${linux_packages[@]}"
    step "configure" cmake --preset linux
    step "build the library" cmake --build --preset linux --target ZemUVCExtApi
    step "build zemctl" cmake --build --preset linux --target zemctl
    tool=(build/linux/zemctl)
    ;;
  *)
    echo "usage: $0 [windows|linux]" >&2
    exit 2
    ;;
esac

zemctl() {
  echo
  echo "\$ zemctl --simulator $*"
  "${tool[@]}" --simulator "$@" 2>&1
}

zemctl list
zemctl info
zemctl reg get isp 0
zemctl reg set isp 0x123456 0xABCD
zemctl command isp 0b
