#!/usr/bin/env bash
# shared_state.sh BUILD: threads share nothing of the library but the flag of the address divider. Fails
# when any other variable that can be written to is in its objects and not a thread's own.
set -euo pipefail

mapfile -t objects < <(find "build/$1" -name '*.o*' \
  \( -path '*/ZemUVCExtApi.dir/*' -o -path '*/zem_system_platform.dir/*' \))
# Of each symbol the name and the section; what is only written to by the loader is no variable.
found=$(nm --demangle --format=sysv "${objects[@]}" |
  awk -F'|' '$7 ~ /^\.(bss|data)/ && $7 !~ /^\.data\.rel\.ro/ { print $1 }' |
  sed 's/ *$//' | grep -vE '^\.(bss|data)' | sort -u)
if [ "$found" != "zem::sendAddressDivider" ]; then
  echo "threads share:" "$found" >&2
  exit 1
fi
