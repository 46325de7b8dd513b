# Sourced by run.sh and test.sh: installs what is missing, says where Wine keeps its files.
set -euo pipefail

zem_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

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
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends "${missing[@]}" >/dev/null
}

# What the Windows build and Wine need.
windows_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-win32 wine wine64 googletest
  libcli11-dev nlohmann-json3-dev)

# A Wine folder of the project's own, quiet and without windows on the screen.
export WINEPREFIX=$zem_root/build/wine
export WINEDEBUG=-all
export WINEDLLOVERRIDES='winemenubuilder.exe,winedbg.exe,mscoree,mshtml='
unset DISPLAY

prepare_wine() {
  [ -f "$WINEPREFIX/system.reg" ] && return
  mkdir -p "$WINEPREFIX"
  wineboot --init >"$WINEPREFIX/boot.log" 2>&1
  wineserver --wait
}

# build PRESET
build() {
  cmake --preset "$1" >"$zem_root/build/configure-$1.log" ||
    { cat "$zem_root/build/configure-$1.log"; return 1; }
  cmake --build --preset "$1"
}

mkdir -p "$zem_root/build"
cd "$zem_root"
