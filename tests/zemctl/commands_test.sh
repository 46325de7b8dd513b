#!/usr/bin/env bash
# zemctl list, info, reg, command and xu, and the exit codes.
source "$(dirname "$0")/support.sh"

expect 3 'no video-input device is attached' list
expect 3 'no camera matches (ZEM_E_FAIL, 0x80004005)' reg get isp 0
expect 0 'ZEM Simulated Camera' $sim list
expect 0 'firmware version:   01 02 03 04 05 06' $sim info
expect 0 '"firmware_version": "01 02 03 04 05 06"' $sim --json info
expect 0 'value:   0x5170' $sim reg get isp 0
expect 0 'value:   0x0000' $sim reg get isp 0x123456
expect 0 'written: yes' $sim reg set isp 0x123456 0xABCD
expect 0 'value:   0xEF' $sim reg set sensor 0x10 0xEF
expect 0 'value:   0xBEEF' $sim reg set sensor 0x10 0xBEEF --width 2
expect 2 'values of this space end at 0xFF' $sim reg set codec 0 0x100
expect 2 'addresses of this space end at 0xFFFF' $sim reg get vcm 0x10000
expect 2 'do not have that width' $sim reg get isp 0 --width 1
expect 0 'reply:   00 00 01 02 03 04 05 06' $sim command isp 0b
expect 0 'reply:   00 02 03 00 00 00 00 00 00 00 00 00 00 00 00 00' $sim command isp-ex 01 02 03
expect 2 'a block of this channel has 8 bytes' $sim command vcp 1 2 3 4 5 6 7 8 9
expect 2 'is not a byte in hexadecimal' $sim command vcp 1g
expect 0 'data:        51 70 01 00 5a 45 00 01' $sim xu get vendor 10 8
expect 0 'bytes moved: 8' $sim xu set vendor 1 '0a 00 00 00 00 00 00 00'
expect 7 'platform failure' $sim xu get vendor 99 8
expect 0 'present: yes' $sim xu check vendor
expect 8 'present: no' $sim xu check '{B42153BD-35D6-45CA-B203-4E0149B301BC}'
expect 2 'neither the name of a unit' $sim xu check nothing
expect 3 'no camera matches' $sim --index 1 info
expect 3 'no camera matches' $sim --pid 0x1234 info
expect 0 'firmware version' $sim --vid 0x5A45 --pid 0x8C00 info
expect 0 'firmware version' $sim info --device-path "$(device_path 0)"
expect 8 'the device has no vendor extension unit' $sim \
  --simulator-options '{"cameras":[{"vendorUnit":false}]}' \
  --device-path "$(device_path 0)" info
expect 7 'the command could not be written to the camera' $sim --simulator-fault unplug@1 reg get isp 0
expect 5 'the camera refused the command (ZEM_E_DEVICE_REFUSED, 0x80000001)' $sim \
  --simulator-fault refuse@2=5 reg get isp 0
expect 5 '"code": 5' $sim --json --simulator-fault refuse@2=5 reg get isp 0
expect 2 'no command is given' $sim
expect 0 'Exit codes' --help
