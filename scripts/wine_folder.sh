#!/usr/bin/env bash
# Makes the Wine folder that WINEPREFIX names, once. Windows open there without a screen.
set -euo pipefail
grep -qs '"Graphics"="null"' "$WINEPREFIX/user.reg" && exit
mkdir -p "$WINEPREFIX"
[ -f "$WINEPREFIX/system.reg" ] || wineboot --init
wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null
wineserver --wait
