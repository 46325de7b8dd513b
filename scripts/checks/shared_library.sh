#!/usr/bin/env bash
# What the shared library of Linux shows: exactly the names of the interface, its own name, and no need
# but the C library's, in versions that the oldest supported system has.
set -euo pipefail
library=build/linux/libZemUVCExtApi.so

# The names of the DLL; of the three with Microsoft's decoration this system's own.
expected=$({
  sed -n 's/^  \([A-Za-z0-9_]*\)$/\1/p' exports/ZemUVCExtApi.def
  echo _Z10WREN_EuGetPvjS_t
  echo _Z19ZEMAPI_GetFWVersionPvPc
  echo _Z29ZEMROMAPI_SwitchModePCAM_DRAMPv
} | sort)
[ "$(grep -c '^  "' exports/ZemUVCExtApi.def)" -eq 3 ]
actual=$(nm -D --defined-only --without-symbol-versions "$library" | awk '$2 == "T" { print $3 }' | sort)
diff <(echo "$expected") <(echo "$actual")
# Nothing of another kind, such as data or a weak function; the version's own name aside.
[ "$(nm -D --defined-only --without-symbol-versions "$library" | awk '$2 != "T" { print $2, $3 }')" = \
  "A ZEMUVCEXTAPI_1" ]

dynamic=$(readelf -dW "$library")
grep -qF 'Library soname: [libZemUVCExtApi.so.1]' <<<"$dynamic"
needed=$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" | sort | paste -sd' ')
[ "$needed" = "ld-linux-x86-64.so.2 libc.so.6" ]

# Of its host it asks for one thing, and does without: the list of devices. zemctl has it to give.
asked=$(nm -D --undefined-only "$library" | awk '$1 == "w" && $2 !~ /^_|@/ { print $2 }')
[ "$asked" = ZemHostDeviceEnumerator ]
nm -D --defined-only build/linux/zemctl | grep -q ' T ZemHostDeviceEnumerator$'

# The newest version of the C library that is asked for is not newer than Debian 12's.
newest=$(nm -D --undefined-only "$library" | sed -n 's/.*@GLIBC_//p' | sort -V | tail -n 1)
[ "$(printf '%s\n2.36\n' "$newest" | sort -V | tail -n 1)" = 2.36 ]
if nm -D --undefined-only "$library" | grep -E ' (_Z|__cxa_(throw|guard|begin_catch|pure))'; then
  echo "$library: needs a C++ library" >&2
  exit 1
fi
