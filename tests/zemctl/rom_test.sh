#!/usr/bin/env bash
# zemctl rom: each command on a simulated boot loader, what it leaves in the storage, what it refuses.
source "$(dirname "$0")/rom_support.sh"
blank

# Finding it.
expect 3 'no camera in ROM boot was found among the volumes C: to Z:' $sim rom info
boot
with_boot 0 'found:     boot loader' rom info
says 'signature: VSN3'
says 'identity:  aa 55 00 00 56 53 4e 33 00 00 00 00 00 00 00 00'
with_boot 3 'no ZEM storage was found' rom info --kind storage
boot '"letter":"Q","start":"storage",'
with_boot 0 'identity: 00 00 00 00 00 00 00 00 00 5a 45 4d 00 00 00 00' rom info --send-divider
boot '"responseFormat":2,'
with_boot 3 'no camera in ROM boot' rom info

# Going there from a running camera.
boot '"start":"camera",'
for way in both vcp8 vcp16; do
  with_boot 0 'found:  boot loader' rom enter --way $way
done
with_boot 0 'vendor unit' list
boot
with_boot 3 'no video-input device is attached' list

# Registers, selection, raw commands, reset.
with_boot 0 'written: yes' rom reg set 0x80001234 0x5A
with_boot 0 'value:   0x00' rom reg get 0x80001234
with_boot 2 '' rom reg set 0 256
with_boot 0 'data: aa 55 00 00 56 53 4e 33' rom command fa 55 66 01 --in 16
with_boot 11 'nothing was done' rom command fa 55 66 21 </dev/null
with_boot 0 'bytes sent: 0' rom command fa 55 66 21 --yes
with_boot 7 'ZEMROMAPI_ScsiCommand' rom command fa 55 66 7f --yes
with_boot 0 'reset: accepted' rom reset

# The enhanced area of an eMMC.
area=(rom make-enhanced-area 0x01020304 0xA5B6C7D8)
expect 0 'enhanced area           0      fa 55 66 22 01 01 02 03 04 a5 b6 c7 d8 00 00 00' \
  "${area[@]}" --dry-run
emmc=($sim --simulator-options '{"bootLoader":{"storages":[{"type":"emmc","size":512}]}}')
expect 11 'will get an enhanced area (0x01020304, 0xA5B6C7D8), which may erase it' \
  "${emmc[@]}" "${area[@]}" </dev/null
expect 0 'accepted: yes' "${emmc[@]}" "${area[@]}" --yes
says 'sent:     fa 55 66 22 01 01 02 03 04 a5 b6 c7 d8 00 00 00'
with_boot 7 'ZEMROMAPI_MkEmmcEhancedArea: the camera in ROM boot did not carry it out: make enhanced area: error 1117 (not accepted, 0x00000000)' \
  "${area[@]}" --yes
with_boot 2 '' rom make-enhanced-area 1 --yes
with_boot 2 '' rom make-enhanced-area 1 0x100000000 --yes

# Burning: nothing without a yes; every byte where it belongs; compared by reading back.
with_boot 11 'The storage sf of the camera in ROM boot at F: (boot loader VSN3) will be overwritten with' rom burn --storage sf $work/image.bin --address 0x10000 </dev/null
erased 0 262144
with_boot 0 'verified: 74096 bytes read back, all as they should be' \
  rom burn --storage sf $work/image.bin --address 0x10000 --yes
stored $work/image.bin 18 74096 65536
erased 0 65536
with_boot 0 'verified: 74096' rom verify --storage sf $work/image.bin --address 0x10000
printf 'X' | dd of=$flash bs=1 seek=70000 conv=notrunc status=none
with_boot 10 '1 of 74096 bytes of the storage are not those of the file; 0x00011170 holds 0x58' \
  rom verify --storage sf $work/image.bin --address 0x10000
with_boot 0 '"bytes": 70000' --json rom burn --storage sf $work/image.bin --yes
stored $work/image.bin 18 74096 0

blank
with_boot 0 'verified: 40000' rom burn-package --storage sf $work/package.bin --yes
stored $work/package.bin 18 40000 0
with_boot 0 'verified: 4796' rom burn-package --storage sf --v2 $work/package2.bin --yes
stored $work/package2.bin 30 4796 0

blank
with_boot 0 'verified: 41192' rom update-linux --storage sf $work/linux.bin --header-address 0x2000 --yes
stored $work/linux.bin 0 8192 8192
stored $work/linux.bin 8192 33000 65536
with_boot 0 'verified: 41192' rom update-linux --storage sf $work/linux.bin --header-address 0x2000 \
  --body-address 0x20000 --dump $work/dump.img --yes
stored $work/linux.bin 8192 33000 131072
[ "$(od -An -tx1 -j $((8192 + 16)) -N 4 $flash)" = " 20 00 00 00" ]
cmp -n 41192 -i 8192:8192 $work/dump.img $flash

blank
with_boot 0 'verified: 5000' rom update-partial --storage sf $work/partial.bin --address 0x3000 --yes
stored $work/partial.bin 0 5000 12288
with_boot 0 'verified: 5000' rom update-partial --storage sf --with-header $work/partial.bin --address 0x8000 --yes
stored $work/partial.bin 0 5000 32768
with_boot 0 'verified: 600' rom erase --storage sf 0x3000 600 --yes
erased 12288 1024
stored $work/partial.bin 1024 3976 13312
rm -f $work/read.bin
with_boot 0 'bytes read: 5000' rom read --storage sf $work/read.bin --address 0x8000 --size 5000
cmp $work/read.bin $work/partial.bin
with_boot 11 'read.bin is there already and will be overwritten' \
  rom read --storage sf $work/read.bin --address 0 --size 512 </dev/null
cmp $work/read.bin $work/partial.bin

# A range that no storage has is refused before a camera is looked for, and one that this storage has
# not when the camera refuses it: no file then.
expect 2 'the range ends behind the last address of a storage, 0xFFFFFFFF' \
  rom read --storage sf $work/none.bin --address 0xFFFFFE00 --size 513
with_boot 7 'read storage 0x0003FE00 (1024 bytes): error 1117' \
  rom read --storage sf $work/none.bin --address 0x3FE00 --size 1024
says 'Camera: in ROM boot at F: (boot loader VSN3). Next: This can be run again: zemctl'
[ ! -e $work/none.bin ]

# The storage must be named, and a selection of its own there is not: it would not outlive its run.
for command in "burn $work/image.bin" "burn-package $work/package.bin" "erase 0 512" \
  "update-linux $work/linux.bin --header-address 0" "update-partial $work/partial.bin --address 0" \
  "verify $work/image.bin" "read $work/none.bin --size 512"; do
  with_boot 2 '--storage is required' rom $command --yes
done
with_boot 2 '--storage is required' recover $work/image.bin --yes
with_boot 2 'select' rom select --storage sf
blank
with_boot 0 'storage:  spi-nand' rom update-partial $work/partial.bin --address 0 --yes --storage spi-nand
erased 0 262144

# Code and memory.
with_boot 0 'found: ZEM storage' rom load-updater $work/code.bin
says 'code:  70000'
boot '"afterJump":"bootLoader",'
with_boot 3 'its storage did not show up' rom load-updater $work/raw_code.bin
boot '"afterJump":"camera",'
with_boot 0 'firmware version: 01 02 03 04 05 06' rom load-mini-uvc $work/code.bin
boot
with_boot 11 'The memory of the camera in ROM boot at F: (boot loader VSN3) will be overwritten with' \
  rom load-memory $work/partial.bin --address 0x1000 --jump </dev/null
says '(5000 bytes from 0x00000000, download address 0x00001000) and what is loaded will be started'
expect 0 'download address  0x00001000  0      fa 55 66 0d 00 00 10 00 00 00 00 00 00 00 00 00' \
  rom load-memory $work/partial.bin --address 0x1000 --jump --dry-run
says 'select dram                   0      fa 55 66 06 80 00 00 00 00 00 00 00 00 00 00 00'
says 'file              0x00000000  5120   fa 55 66 08 00 00 00 00 00 0a 00 00 00 00 00 00'
says 'jump                          0      fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00'
with_boot 0 'file  0x00000000  5000' rom load-memory $work/partial.bin --address 0x1000 --yes
cmp -n 5000 $work/partial.bin $memory
with_boot 7 'ZEMROMAPI_LongJump' rom load-memory $work/partial.bin --jump --yes

# Packages.
rm -rf $work/unpacked && mkdir $work/unpacked
expect 0 'VSN_V3FW  12306   300' rom unpack $work/both.bin --into $work/unpacked
cmp $work/unpacked/VSN_V3BC $work/wanted_bc.bin
cmp $work/unpacked/VSN_V3FW $work/wanted_fw.bin
expect 11 'VSN_V3BC is there already' rom unpack $work/both.bin --into $work/unpacked </dev/null
expect 2 'is no folder' rom unpack $work/both.bin --into $work/nowhere

# A dry run needs no camera and says what would be sent.
expect 0 'select sf                 0      fa 55 66 06 05 00 00 00 00 00 00 00 00 00 00 00' \
  rom burn --storage sf $work/image.bin --address 0x10000 --dry-run
says 'erase         0x00010000  4096   fa 55 66 08 00 01 00 00 00 08 00 00 00 00 00 00'
says 'payload       0x00011000  32768  fa 55 66 08 00 01 10 00 00 40 00 00 00 00 00 00'
says 'payload       0x00021000  4608   fa 55 66 08 00 02 10 00 00 09 00 00 00 00 00 00'
says 'header block  0x00010000  4096   fa 55 66 08 00 01 00 00 00 08 00 00 00 00 00 00'
expect 0 'data       0x00000000  32768  fa 55 66 08 00 00 00 00 00 40 01 00 00 00 00 00' \
  rom burn-package --storage sf $work/package.bin --dry-run
expect 0 'body       0x00010000  32768  fa 55 66 08 00 01 00 00 00 40 00 00 00 00 00 00' \
  rom update-linux --storage sf $work/linux.bin --header-address 0x2000 --dry-run
expect 0 'file       0x00003000  5120   fa 55 66 08 00 00 30 00 00 0a 00 00 00 00 00 00' \
  rom update-partial --storage sf $work/partial.bin --address 0x3000 --dry-run
expect 0 'erase      0x00003000  1024   fa 55 66 08 00 00 30 00 00 02 00 00 00 00 00 00' \
  rom erase --storage sf 0x3000 600 --dry-run

# Files that are not what they should be are refused before a camera is looked for.
expect 9 'short.bin says that its payload of 70000 bytes begins at 4114, but it ends at 74113' \
  rom burn --storage sf $work/short.bin --yes
expect 9 'begins neither with VSN_V2BC nor with VSN_V2FW' rom burn --storage sf $work/linux.bin --yes
expect 9 'too few for the header of a package' rom burn-package --storage sf $work/tiny.bin --yes
expect 9 'but it ends at' rom burn-package --storage sf $work/image.bin --yes
expect 9 'too few for the beginning of a Linux package' \
  rom update-linux --storage sf $work/tiny.bin --header-address 0 --yes
expect 9 'too few for the header of a code image' rom load-updater $work/tiny.bin
expect 9 'cannot be opened' rom burn --storage sf $work/nothing.bin --yes
expect 9 'too few' rom unpack $work/tiny.bin

# Faults on the way. The search takes 4 commands and the selection 1.
blank
boot '"faults":["fail@6+2"],'
with_boot 0 'verified: 5000' rom update-partial --storage sf $work/partial.bin --address 0 --yes
boot '"faults":["fail@6=5"],'
with_boot 7 'ZEMROMAPI_PartialUpdate: the camera in ROM boot did not carry it out' \
  rom update-partial --storage sf $work/partial.bin --address 0 --yes
boot '"faults":["unplug@7"],'
with_boot 7 'ZEMROMAPI_ScsiCommand: the camera in ROM boot did not carry it out' \
  rom update-partial --storage sf $work/partial.bin --address 0 --yes

# What the library passes over is not done: a divider that was lost, an answer that is too short, a
# refusal that is a SCSI status only, a reset that was refused.
boot '"faults":["fail@5=5"],'
with_boot 7 'set address divider (4 bytes): error 5' rom info --send-divider
boot '"faults":["short@6=100"],'
with_boot 7 'read storage 0x00000000 (512 bytes): 100 of 512 bytes came' \
  rom read --storage sf $work/none.bin --size 512
[ ! -e $work/none.bin ]
boot '"faults":["refuse@6=2"],'
with_boot 7 'ZEMROMAPI_PartialUpdate: the camera in ROM boot did not carry it out: write storage 0x00000000 (5120 bytes): SCSI status 2' \
  rom update-partial $work/partial.bin --address 0 --storage sf --yes
says 'nothing was erased or written in the storage sf'
boot '"faults":["fail@5=5"],'
with_boot 7 'ZEMROMAPI_ResetSystem: the camera in ROM boot did not carry it out: reset: error 5' rom reset

# Two cameras in ROM boot: nothing without a choice.
two=($sim --simulator-options '{"cameras":[{},{"bootLoader":{"letter":"K","start":"storage"}}],"bootLoader":{}}')
for command in "info" "reset" "reg set 1 1" "erase 0 512 --storage sf" "load-updater $work/code.bin" \
  "load-memory $work/partial.bin" "command fa 55 66 21" "read $work/none.bin --size 512 --storage sf"; do
  expect 3 'more than one camera is in ROM boot: F: (boot loader VSN3), K: (ZEM storage)' \
    "${two[@]}" rom $command --yes
  says 'Camera: nothing was sent to any of them. Next: Choose one with --drive, or unplug the others.'
done
expect 0 'drive:    K:' "${two[@]}" rom info --drive k
expect 0 'drive:     F:' "${two[@]}" rom info --drive F:
expect 3 'no camera in ROM boot was found at G:; there is F: (boot loader VSN3), K: (ZEM storage)' \
  "${two[@]}" rom info --drive G:
expect 2 '"FG" is no drive' "${two[@]}" rom info --drive FG
