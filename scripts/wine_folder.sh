#!/usr/bin/env bash
# wine_folder.sh [SECONDS]: makes the Wine folder that WINEPREFIX names, once. With SECONDS Wine's server
# stays ready in it for so long after the last program: one that starts while the server is ending may
# fail without a word.
set -euo pipefail
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  wineboot --init
  wineserver --wait
fi
if [ $# -gt 0 ]; then
  wineserver --persistent="$1" </dev/null >/dev/null 2>&1
fi
