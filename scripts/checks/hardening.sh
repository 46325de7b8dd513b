#!/usr/bin/env bash
# hardening.sh FILE...: programs and libraries that are given to others are loaded at random addresses and run
# no data as code; they, and import libraries, name no folder of the machine that built them.
set -euo pipefail
bad=0

complain() {
  echo "$1" >&2
  bad=1
}

names_folder() {
  strings -a "$1" | grep -m 3 -E "(^|[^A-Za-z0-9._])/(usr|home|root|tmp|build|opt|mnt)/|$PWD"
}

windows_binary() {
  local headers sections flag
  headers=$(x86_64-w64-mingw32-objdump -p "$1")
  for flag in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    grep -q "^[[:space:]]*$flag$" <<<"$headers" || complain "$1: no $flag"
  done
  # Without relocations the loader could not move it, whatever the flags say.
  sections=$(x86_64-w64-mingw32-objdump -h "$1")
  grep -q ' \.reloc ' <<<"$sections" || complain "$1: no relocations"
  # Writable code: a section that says CODE but not READONLY.
  ! grep -A1 '^ *[0-9]' <<<"$sections" | grep CODE | grep -qv READONLY ||
    complain "$1: code that can be written to"
}

linux_binary() {
  local program dynamic
  program=$(readelf -lW "$1")
  dynamic=$(readelf -dW "$1")
  grep -q 'Elf file type is DYN' <<<"$program" || complain "$1: not position independent"
  grep -qE 'GNU_STACK .* RW ' <<<"$program" || complain "$1: a stack that can be run"
  grep -q 'GNU_RELRO' <<<"$program" || complain "$1: no read-only relocations"
  grep -q 'BIND_NOW' <<<"$dynamic" || complain "$1: binds late, so that its table stays writable"
  ! grep -qE 'LOAD .* RWE ' <<<"$program" || complain "$1: code that can be written to"
  ! grep -q 'TEXTREL' <<<"$dynamic" || complain "$1: relocations in code"
}

for file in "$@"; do
  case $(head -c 4 "$file" | tr -d '\0') in
    MZ*) windows_binary "$file" ;;
    $'\x7fELF') linux_binary "$file" ;;
    '!<ar') ;;
    *) complain "$file: not a binary" ;;
  esac
  if found=$(names_folder "$file"); then
    complain "$file names folders: $found"
  fi
done
exit $bad
