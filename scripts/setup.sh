# Sourced by run.sh and test.sh: installs what is missing, says where Wine keeps its files.
set -euo pipefail

# A bare machine has no locale, and without UTF-8 no program can make a file named with an accent. This
# one every Debian has.
export LC_ALL=C.UTF-8

zem_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Runs a command as root.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# Installs the Debian packages of the arguments that are not there yet.
install_missing() {
  local missing=()
  local package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}"
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends "${missing[@]}" >/dev/null
}

# The first second of the day on which CHANGELOG.md says that its newest version was made. What is packed has
# this time, whatever a checkout gives the files, and wherever no git is.
release_time() {
  local day
  day=$(sed -n '/^## /{s/.*(\(.*\))$/\1/p;q}' CHANGELOG.md)
  date -u -d "${day:?CHANGELOG.md does not say when}" +%s
}

# What the Windows build and Wine need.
windows_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-win32 wine wine64 googletest
  libcli11-dev nlohmann-json3-dev)

# What the library and the tool of this system need.
linux_packages=(cmake ninja-build g++ libcli11-dev nlohmann-json3-dev)

# What the native build needs.
native_packages=(cmake ninja-build clang libclang-rt-dev libgtest-dev libyuv-dev
  libcli11-dev nlohmann-json3-dev)

# What the tests in a kernel of their own need beside the native build: the machine, and what udev's
# programs are linked with. Kernel and udev themselves are not installed.
kernel_packages=(busybox-static libacl1 libblkid1 libcap2 libkmod2 libselinux1 qemu-system-x86 xz-utils)

# What the documentation's site needs.
docs_packages=(doxygen python3 python3-markdown)

# What the packages are made with, beside both builds and the site.
package_packages=(dpkg-dev llvm zip)

# A Wine folder of the project's own, quiet and without windows on the screen.
export WINEPREFIX=$zem_root/build/wine
export WINEDEBUG=-all
export WINEDLLOVERRIDES='winemenubuilder.exe,winedbg.exe,mscoree,mshtml='
unset DISPLAY
# Where the system lets a program choose its addresses; a container may not.
if setarch --addr-no-randomize true 2>/dev/null; then
  PATH=$zem_root/scripts/wine:$PATH
fi

# step WHAT COMMAND...: one line on the screen; what the command prints goes to a file of build/log, and
# is shown if it fails.
step() {
  local what=$1 log status=0 start=$SECONDS
  shift
  log=build/log/${what// /-}.log
  printf '%-32s' "$what"
  "$@" >"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    echo "FAILED"
    cat "$log"
    exit "$status"
  fi
  echo "ok ($((SECONDS - start)) s)"
}

mkdir -p "$zem_root/build/log"
cd "$zem_root"
