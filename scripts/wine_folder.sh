#!/usr/bin/env bash
# Makes the Wine folder that WINEPREFIX names, once.
set -euo pipefail
[ -f "$WINEPREFIX/system.reg" ] && exit
mkdir -p "$WINEPREFIX"
wineboot --init
wineserver --wait
