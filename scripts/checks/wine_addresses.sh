#!/usr/bin/env bash
# A program under Wine runs without random addresses, where the system lets it: scripts/wine/wine.
set -euo pipefail
wanted=$(setarch --addr-no-randomize cat /proc/self/personality || cat /proc/self/personality)
coproc program { exec wine 'C:\windows\system32\cmd.exe' /c 'set /p answer='; }
for _ in {1..500}; do
  [ "$(cat "/proc/$program_PID/comm")" != cmd.exe ] || break
  sleep 0.02
done
found=$(cat "/proc/$program_PID/personality")
if [ "$found" != "$wanted" ]; then
  echo "personality $found, wanted $wanted"
  exit 1
fi
