#!/usr/bin/env bash
# The library takes no lock: fails when the given one, a DLL or an archive, has the guard of a static
# variable that a function initialises when it first comes by. That guard is a lock.
set -euo pipefail

symbols=$(nm -A "$1")
if ! grep -q '[TU] ZEMAPI_OpenDevice$' <<<"$symbols"; then
  echo "$1: its symbols cannot be seen" >&2
  exit 1
fi
if grep '__cxa_guard_acquire' <<<"$symbols" >&2; then
  echo "$1: initialises a static variable behind a lock" >&2
  exit 1
fi
