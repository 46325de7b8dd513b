#!/usr/bin/env bash
# zemctl recover: the whole way on a simulated boot loader, and every place where it can break off.
source "$(dirname "$0")/rom_support.sh"
in_virtual_time
recover=(recover $work/image.bin --updater $work/code.bin --storage sf)

# From the boot loader to a camera that answers. The storage holds what the image says and nothing
# else.
blank
boot
with_boot 0 'firmware version: 01 02 03 04 05 06' "${recover[@]}" --yes
says 'found:            boot loader'
says 'updater:          loaded; its storage answers'
says 'verified:         74096 bytes read back, all as they should be'
says 'as read back from it; the camera runs and answers'
for phase in find updater start write compare restart; do
  says "$phase: 100 %"
done
stored $work/image.bin 18 74096 0
erased $((148 * 512)) $((262144 - 148 * 512))

# The storage answers already: no updater is needed, and none is sent.
blank
boot '"start":"storage",'
with_boot 0 'updater:  not loaded' "${recover[@]}" --yes --no-reset
says 'the camera was not restarted'
stored $work/image.bin 18 74096 0

# A running camera is sent into ROM boot first.
blank
boot '"start":"camera",'
with_boot 3 'no camera in ROM boot was found' "${recover[@]}" --yes --boot-wait 0
with_boot 0 'the camera runs and answers' "${recover[@]}" --yes --enter

# Nothing without a yes, and nothing in a dry run.
blank
boot
with_boot 11 'The storage sf of the camera in ROM boot at F: (boot loader VSN3), whose firmware version cannot be told, will be overwritten with' "${recover[@]}" </dev/null
expect 0 'header block  0x00000000  4096   fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00' \
  "${recover[@]}" --dry-run
says 'updater                   32768  fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00'
says 'updater                   4608   fa 55 66 02 00 09 00 00 00 00 00 00 00 00 00 00'
says 'jump                      0      fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00'
says 'reset                     0      fa 55 66 21 00 00 00 00 00 00 00 00 00 00 00 00'
erased 0 262144

# Bad files are refused before a camera is looked for.
expect 9 'short.bin says that its payload' recover $work/short.bin --storage sf --yes
expect 9 'too few for the header of a code image' recover $work/image.bin --storage sf --updater $work/tiny.bin --yes
expect 2 'a package goes to address 0' recover $work/package.bin --storage sf --as package --address 512 --yes

# ---- Breaking off ----

# The storage answers at once: the search takes 4 commands, the selection 1, the erase 1, the payload
# 3, the header block 1. Whatever ends it, it says how far it came and how to run it again.
again() {
  says 'This can be run again: zemctl --simulator --simulator-options "{'
  says " recover $work/image.bin --updater $work/code.bin --storage sf --yes$*"
}
boot '"start":"storage","faults":["refuse@5"],'
with_boot 7 'ZEMROMAPI_SwitchModePCAM_SF: the storage sf could not be selected: select storage (4 bytes): error 1117' \
  "${recover[@]}" --yes
says 'Camera: in ROM boot at F: (ZEM storage); nothing was erased or written in the storage sf. Next: Check that this camera has it'
again
erased 0 262144
boot '"start":"storage","faults":["unplug@8"],'
with_boot 7 'ZEMROMAPI_BurnFw: the camera in ROM boot did not carry it out: write storage 0x00009000 (32768 bytes): the volume is gone, error 1167' \
  "${recover[@]}" --yes
says 'Camera: its volume F: is gone; the storage sf holds 2 of 5 pieces (erased, payload 32768 of 70144 bytes, header block not written). Next:'
again
stored $work/image.bin 4114 32768 4096
erased 0 4096
boot '"start":"storage","faults":["refuse@9=2"],'
with_boot 7 'write storage 0x00011000 (4608 bytes): SCSI status 2' "${recover[@]}" --yes
says 'the storage sf holds 3 of 5 pieces (erased, payload 65536 of 70144 bytes, header block not written)'
erased 0 4096
boot '"start":"storage","faults":["garbage@8"],'
with_boot 10 'bytes of the storage are not those of the file' "${recover[@]}" --yes
says 'Do not reset the camera'
says 'the storage sf holds 5 of 5 pieces (erased, payload written, header block written)'
again
boot '"faults":["refuse@6=2"],'
with_boot 7 'ZEMROMAPI_LoadUpdater: the camera in ROM boot did not carry it out: download (32768 bytes): SCSI status 2' \
  "${recover[@]}" --yes
says 'the code was not started, 32768 of 70000 bytes of it loaded'
again

# waits LEAST MOST COMMAND...: the command waits for so many milliseconds.
waits() {
  local least=$1 most=$2 waited
  rm -f "$ZEM_WAITED"
  shift 2
  "$@"
  waited=$(cat "$ZEM_WAITED")
  [ "$waited" -ge "$least" ] && [ "$waited" -le "$most" ] ||
    { echo "$waited ms, wanted $least to $most: $*"; exit 1; }
}

# The wrong updater: nothing comes, the same boot loader comes, or the boot loader does not take it. The
# library itself would look for five minutes.
boot '"afterJump":"gone",'
waits 5000 6500 with_boot 3 'the updater was sent, but its storage did not show up within 5 s' "${recover[@]}" --yes
says 'Camera: no volume has answered since the loaded code was started; the code was loaded and started; nothing was erased or written'
says 'the updater of this camera'
again
boot '"afterJump":"bootLoader",'
waits 5000 6500 with_boot 3 'its storage did not show up within 5 s' "${recover[@]}" --yes
says 'Camera: in ROM boot at F: (boot loader VSN3)'
boot '"faults":["refuse@8"],'
waits 1000 2500 with_boot 3 'its storage did not show up within 1 s (jump: error 1117)' \
  "${recover[@]}" --yes --updater-wait 1
boot '"absentOpens":8,'
with_boot 3 'its storage did not show up within 1 s' "${recover[@]}" --yes --updater-wait 1
with_boot 0 'the camera runs and answers' "${recover[@]}" --yes --updater-wait 20

# What broke off is made good by the next run.
blank
boot '"start":"storage","faults":["unplug@8"],'
with_boot 7 'write storage' "${recover[@]}" --yes
boot
with_boot 0 'the camera runs and answers' "${recover[@]}" --yes
stored $work/image.bin 18 74096 0

# ---- The one camera ----

# Burned where this camera does not start from: written and verified, but it does not come back.
blank
with_boot 3 'but no further camera came within 1 s' "${recover[@]}" --yes --address 0x10000 --wait 1
says 'byte by byte as read back from it'
says 'Camera: in ROM boot at F: (boot loader VSN3); the storage sf holds 5 of 5 pieces'
says 'This code does not start from where it is'
again ' --address 0x10000 --wait 1'

# The camera beside it, with the same USB ids, is not taken for it; nor is one that was chosen.
beside=($sim --simulator-options '{"cameras":[{},{"name":"Other"}],"bootLoader":{}}')
expect 3 'but no further camera came within 1 s' "${beside[@]}" "${recover[@]}" --yes --address 0x10000 --wait 1
expect 3 'but no further camera came within 1 s' "${beside[@]}" "${recover[@]}" --yes --address 0x10000 --wait 1 --index 1
expect 0 '"ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0' "${beside[@]}" "${recover[@]}" --yes
expect 3 'but no camera came at zem-simulator&0 within 1 s' \
  $sim --simulator-options '{"cameras":[{},{}],"bootLoader":{"start":"camera"}}' \
  "${recover[@]}" --yes --enter --index 0 --address 0x10000 --wait 1
says 'camera before:  "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0'

# More than one in ROM boot.
two=($sim --simulator-options '{"cameras":[{},{"bootLoader":{"letter":"K"}}],"bootLoader":{}}')
expect 3 'more than one camera is in ROM boot: F: (boot loader VSN3), K: (boot loader VSN3)' \
  "${two[@]}" "${recover[@]}" --yes
says 'nothing was sent to any of them'
expect 0 'at zem-simulator&1' "${two[@]}" "${recover[@]}" --yes --drive K:
says 'drive:            K:'

# The question names the camera; a run that is told no has sent nothing.
running=($sim --simulator-options '{"cameras":[{},{"name":"Other","bootLoader":{"letter":"K","start":"camera"}}]}')
expect 11 'The storage sf of "Other" (5a45:8c00) at zem-simulator&1, firmware version 01 02 03 04 05 06, will be overwritten with' \
  "${running[@]}" "${recover[@]}" --enter --index 1 </dev/null
says 'Camera: it runs its firmware; nothing was erased or written'
expect 3 '2 cameras fit, and none of them was chosen' "${running[@]}" "${recover[@]}" --enter --yes
expect 0 'version before:   01 02 03 04 05 06' "${running[@]}" "${recover[@]}" --enter --index 1 --yes
says 'at zem-simulator&1'
# One is in ROM boot already, so that it is not clear whether it or the one that runs is meant.
expect 3 'a camera is in ROM boot already, at F:, and another one runs: "Other"' \
  "${beside[@]}" "${recover[@]}" --enter --yes
says 'nothing was sent to either'

# The version that it must show.
boot
with_boot 0 'firmware version: 01 02 03 04 05 06' "${recover[@]}" --yes --expect-version 010203040506
with_boot 10 'the camera shows firmware version 01 02 03 04 05 06 and not 01 02 03 04 05 07' \
  "${recover[@]}" --yes --expect-version '01 02 03 04 05 07'
with_boot 2 '"01" is no version of 6 bytes' "${recover[@]}" --yes --expect-version 01

# ---- Ctrl-C ----

in_real_time

# stop_at LINE CODE TEXT ARGUMENTS...: Ctrl-C once the run has shown LINE; it ends with CODE within five
# seconds and says TEXT.
stop_at() {
  local text=$3
  python3 - "$zemctl" "$out" "$1" "$2" "${@:4}" <<'PYTHON' || { echo "no stop at $1:"; cat $out; exit 1; }
import signal, subprocess, sys, time
zemctl, out, line, code, *arguments = sys.argv[1:]
with open(out, "w") as output:
    run = subprocess.Popen([*zemctl.split(), *arguments], stdin=subprocess.PIPE, stdout=output,
                           stderr=subprocess.STDOUT,
                           preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
deadline = time.monotonic() + 30
while run.poll() is None and line not in open(out).read() and time.monotonic() < deadline:
    time.sleep(0.01)
run.send_signal(signal.SIGINT)
sys.exit(run.wait(5) != int(code))
PYTHON
  says "$text"
}
# An image that takes a while: 256 pieces with their pauses.
python3 - $work <<'PYTHON'
import struct, sys
payload = bytes(8 << 20)
with open(f"{sys.argv[1]}/large.bin", "wb") as file:
    file.write(b"VSN_V2FW" + struct.pack("<HII", 1, 0x1234, len(payload)) + bytes(4096) + payload)
PYTHON
large=(recover $work/large.bin --storage sf)
slow=($sim --simulator-options '{"bootLoader":{"start":"storage","storages":[{"size":16777216}]}}')
stop_at 'Go on?' 12 'stopped by the user' "${slow[@]}" "${large[@]}"
says 'Camera: nothing was done. Next: This can be run again:'
stop_at 'write: 1' 12 'of 8388608 bytes, header block not written). Next: This can be run again: zemctl' \
  "${slow[@]}" "${large[@]}" --yes
says 'stopped by the user'
says 'Camera: in ROM boot at F: (ZEM storage); the storage sf holds '
stop_at 'compare: 1' 12 'the storage sf holds 258 of 258 pieces' "${slow[@]}" "${large[@]}" --yes
stop_at 'start: 0 %' 12 'no volume has answered since the loaded code was started' \
  $sim --simulator-options '{"bootLoader":{"afterJump":"gone"}}' "${recover[@]}" --yes --updater-wait 60
stop_at 'find: 0 %' 12 'no volume has answered' $sim "${recover[@]}" --yes --boot-wait 60
stop_at 'restart: 0 %' 12 'the storage sf holds 5 of 5 pieces' \
  $sim --simulator-options '{"bootLoader":{}}' "${recover[@]}" --yes --address 0x10000 --wait 60
stop_at 'find: 0 %' 12 'it was sent into ROM boot, and no volume has answered yet' \
  $sim --simulator-options '{"bootLoader":{"start":"camera","absentOpens":1000000}}' \
  "${recover[@]}" --yes --enter --boot-wait 60
says " recover $work/image.bin --updater $work/code.bin --storage sf --yes --boot-wait 60"
