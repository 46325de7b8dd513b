#!/usr/bin/env bash
# Which camera: what list shows of each, how one is chosen, and what is refused rather than written to
# another camera than the one that was meant.
source "$(dirname "$0")/support.sh"

two='{"cameras":[{"name":"Left"},{"name":"Right","chip":"516x"}]}'
others='{"cameras":[{"name":"Left"},{"name":"Webcam","vendorUnit":false,"productId":4660}]}'
pair() {
  local code=$1 text=$2
  shift 2
  expect "$code" "$text" $sim --simulator-options "$two" "$@"
}

# ---- list ----

expect 0 '  name:             Left' $sim --simulator-options "$others" list
says '  index:            0'
says '  vendor id:        0x5A45'
says '  product id:       0x8C00'
says '  place:            zem-simulator&0'
says '  vendor unit:      yes'
says '  firmware version: 01 02 03 04 05 06'
says '  serial number:    a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af b0 b1 b2 b3 b4 b5 b6 b7 b8 b9 ba bb bc bd be bf'
says "  path:             $(path 0)"
says "  device path:      $(device_path 0)"
says '  name:             Webcam'
says '  product id:       0x1234'
says '  vendor unit:      no'
pair 0 '  index:            1' list
says '  place:            zem-simulator&1'
# What could not be read is not shown as read.
expect 7 '  firmware version: not read: ZEMAPI_GetFWVersion' $sim --simulator-fault fail@2 list
says '  serial number:    a0 a1'
expect 7 '  serial number:    not read: ZEMAPI_GetSensorSN' $sim --simulator-fault fail@4 list
says '  firmware version: 01 02 03 04 05 06'

# ---- One that is chosen ----

right='device information: 51 60 01 00 5a 45 00 01'
pair 0 "$right" --index 1 info
pair 0 "$right" --name right info
pair 0 "$right" --path "$(path 1)" info
pair 0 "$right" --device-path "$(device_path 1)" info
pair 3 'no camera matches' --name Middle info
pair 3 'no camera matches' --index 2 info
expect 8 'the device has no vendor extension unit' $sim --simulator-options "$others" --name Webcam info

# Contradictions.
pair 2 '--index excludes --path' --path "$(path 1)" --index 0 info
pair 2 '--vid excludes --path' --path "$(path 1)" --vid 0x5A45 info
pair 2 '--path excludes --device-path' --path "$(path 1)" --device-path "$(device_path 1)" info
pair 2 '--name excludes --device-path' --name Right --device-path "$(device_path 1)" info
pair 2 '--pid excludes --name' --name Right --pid 0x8C00 info

# ---- None that is chosen ----

head -c 600 /dev/zero >$work/data.bin
# Reading takes the first one; nothing is written to a camera that may be another.
pair 0 'firmware version:   01 02 03 04 05 06' info
pair 0 'value:   0x5170' reg get isp 0
# doubtful ARGUMENTS...: refused, with the candidates.
doubtful() {
  pair 3 '2 cameras fit, and none of them was chosen' "$@"
  says '  --index 0: "Left" (5a45:8c00) at zem-simulator&0'
  says '  --index 1: "Right" (5a45:8c00) at zem-simulator&1'
  says 'Nothing was sent.'
}
doubtful --yes update firmware --chip 517x $work/data.bin
doubtful --yes update calibration $work/data.bin
doubtful data send $work/data.bin
doubtful reg set isp 0 1
doubtful command isp 0b
doubtful xu set vendor 1 0a
doubtful tune af 1
doubtful control set brightness 3
doubtful h264 start 640x480
doubtful h264 stop
doubtful h264 fps 30
doubtful encoding set rate-control dwPeakBitRate=1
doubtful stream select 1
doubtful stream probe --width 640
doubtful multicast select 1
doubtful --yes nvmem write 0 00
doubtful --yes table write 1 00
doubtful led 1
doubtful rom enter
doubtful --vid 0x5A45 --pid 0x8C00 reg set isp 0 1
pair 0 'written: yes' --index 1 reg set isp 0 1
pair 0 'written: yes' --name Left reg set isp 0 1
expect 3 '2 cameras fit' $sim --simulator-options '{"cameras":[{"name":"A"},{"name":"A"}]}' --name A reg set isp 0 1
expect 0 'written: yes' $sim --simulator-options "$others" reg set isp 0 1
