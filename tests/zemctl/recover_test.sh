#!/usr/bin/env bash
# zemctl recover: the whole way on a simulated boot loader, and every place where it can break off.
source "$(dirname "$0")/rom_support.sh"
recover=(recover $work/image.bin --updater $work/code.bin)

# From the boot loader to a camera that answers. The storage holds what the image says and nothing
# else.
blank
boot
with_boot 0 'camera:   firmware version 01 02 03 04 05 06' "${recover[@]}" --yes
says 'found:    boot loader'
says 'updater:  loaded; its storage answers'
says 'verified: 74096 bytes read back, all as they should be'
says 'as read back from it; the camera runs and answers'
for phase in find updater write compare restart; do
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
with_boot 3 'no camera in ROM boot was found' "${recover[@]}" --yes --wait 0
with_boot 0 'the camera runs and answers' "${recover[@]}" --yes --enter

# Nothing without a yes, and nothing in a dry run.
blank
boot
with_boot 11 'The storage sf will be overwritten' "${recover[@]}" </dev/null
expect 0 'header block  0x00000000  4096   fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00' \
  "${recover[@]}" --dry-run
says 'updater                   32768  fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00'
says 'updater                   4608   fa 55 66 02 00 09 00 00 00 00 00 00 00 00 00 00'
says 'jump                      0      fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00'
says 'reset                     0      fa 55 66 21 00 00 00 00 00 00 00 00 00 00 00 00'
erased 0 262144

# Bad files are refused before a camera is looked for.
expect 9 'short.bin says that its payload' recover $work/short.bin --yes
expect 9 'too few for the header of a code image' recover $work/image.bin --updater $work/tiny.bin --yes
expect 2 'a package goes to address 0' recover $work/package.bin --as package --address 512 --yes

# Breaking off. The storage answers at once: the search takes 2 + 2 commands, the selection 1, the
# erase 1, the payload 3, the header block 1.
boot '"start":"storage","faults":["refuse@5"],'
with_boot 7 'ZEMROMAPI_SwitchModePCAM_SF' "${recover[@]}" --yes
erased 0 262144
boot '"start":"storage","faults":["unplug@8"],'
with_boot 7 'ZEMROMAPI_BurnFw' "${recover[@]}" --yes
stored $work/image.bin 4114 32768 4096
erased 0 4096
boot '"start":"storage","faults":["garbage@8"],'
with_boot 10 'bytes of the storage are not those of the file' "${recover[@]}" --yes
says 'Do not reset the camera'
boot '"afterJump":"bootLoader",'
with_boot 3 'its storage did not show up' "${recover[@]}" --yes

# What broke off is made good by the next run.
boot
with_boot 0 'the camera runs and answers' "${recover[@]}" --yes
stored $work/image.bin 18 74096 0

# Burned where this camera does not start from: written and verified, but it does not come back.
blank
with_boot 3 'but no camera came within 0 s of the reset' "${recover[@]}" --yes --address 0x10000 \
  --camera-wait 0
says 'byte by byte as read back from it'
