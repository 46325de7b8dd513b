#!/usr/bin/env bash
# docs/zemctl.schema.json: what every command prints with --json, when it does what it is asked for and
# when it does not, is as the schema says; no command of the tool is left out.
source "$(dirname "$0")/rom_support.sh"

head -c 1500 /dev/zero >$work/data.bin
printf '\xee\x00\x04\x00' >$work/store.bin
head -c 16 /dev/zero >$work/picture.raw
head -c 512 /dev/zero | tr '\0' '\377' >$work/blank.bin
blank
mkdir -p $work/unpacked
rm -f $work/unpacked/*
python3 - $work/firmware.bin <<'PYTHON'
import struct, sys
payload = bytes(1000)
header = b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + struct.pack("<HI", sum(payload) & 0xFFFF, 20 + len(payload))
open(sys.argv[1], "wb").write(header + payload)
PYTHON
$zemctl $sim --trace $work/one.trace info >$out
$zemctl $sim --trace $work/other.trace reg get isp 0 >$out
$zemctl completion bash >$work/completion

# Debian's, which is the one that has the validator.
/usr/bin/python3 -B tests/zemctl/schema_check.py docs/zemctl.schema.json "$zemctl" $work
